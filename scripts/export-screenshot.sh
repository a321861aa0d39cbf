#!/usr/bin/env bash
# A picture of the report's HTML page as a browser shows and prints it: the native
# hb_export_sample writes the sample report's exports, Debian's Chromium
# renders the page headless (no network, a new empty profile) to a PNG.
#
#   scripts/export-screenshot.sh [BUILD-DIR]    (default: build/native)
#
# Result: build/screenshots/report-html.png and, printed, report-html.pdf
# (the exports themselves in build/screenshots/exports).
set -euo pipefail
HB_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-$HB_ROOT/build/native}
shots=$HB_ROOT/build/screenshots
browser=$(command -v chromium || true)
if [ -z "$browser" ]; then
    echo "error: chromium is not installed (apt-get install chromium)" >&2
    exit 1
fi
if [ ! -x "$build/hb_export_sample" ]; then
    echo "error: $build/hb_export_sample is not built (cmake --build $build --target hb_export_sample)" >&2
    exit 1
fi
rm -rf "$shots/exports"
mkdir -p "$shots/exports"
"$build/hb_export_sample" "$shots/exports"
page="$shots/exports/Berichte für Kunden/report.html"
profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
chrome() {
    "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
        --disable-background-networking --disable-component-update --disable-sync \
        --user-data-dir="$profile" "$@" "file://$page" >/dev/null 2>&1 </dev/null
}
rm -f "$shots/report-html.png" "$shots/report-html.pdf"
chrome --window-size=1200,1600 --screenshot="$shots/report-html.png"
[ -s "$shots/report-html.png" ] || { echo "error: no screenshot was written" >&2; exit 1; }
# Printed as the user would print it to PDF: the page's print style sheet
# asks for A4 (595 x 842 points).
chrome --print-to-pdf="$shots/report-html.pdf" --no-pdf-header-footer
if ! grep -aq 'MediaBox \[0 0 59[45]\.[0-9]* 84[12]\.[0-9]*\]' "$shots/report-html.pdf"; then
    echo "error: the page did not print on A4" >&2
    exit 1
fi
echo "build/screenshots/report-html.png"
echo "build/screenshots/report-html.pdf"
