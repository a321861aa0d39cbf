#!/usr/bin/env bash
# The main job: installs what is missing (Debian 12, as root), builds
# HBAddin.dll for x64 and x86 with MinGW-w64, and runs the Windows
# self-checks under Wine (build/win64/wineprefix), printing what they
# verified. Later issues make it the full Outlook session.
#
#   bash scripts/run.sh
set -uo pipefail
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
cd "$HB_ROOT" || exit 1

echo "Hourbook for Outlook v4: main job"
hb_say "Debian packages"
hb_ensure_packages || exit 1

hb_say "Building HBAddin.dll for 64-bit Outlook (preset win64)"
hb_build win64 HBAddin hb_selfcheck || exit 1
hb_say "Building HBAddin.dll for 32-bit Outlook (preset win32)"
hb_build win32 HBAddin || exit 1

hb_say "The two DLLs"
for arch in win64 win32; do
    dll="$(hb_build_dir "$arch")/HBAddin.dll"
    triple=x86_64-w64-mingw32
    [ "$arch" = win32 ] && triple=i686-w64-mingw32
    format=$("$triple-objdump" -f "$dll" | sed -n 's/.*file format //p' | head -n 1)
    imports=$("$triple-objdump" -p "$dll" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr '\n' ' ')
    printf '   %-22s %9d bytes, %s; imports only system DLLs: %s\n' "$dll" \
        "$(stat -c %s "$dll")" "$format" "$imports"
done

hb_say "Windows self-checks under Wine (x64 loaded and run; x86 read as data)"
win64=$(cd "$(hb_build_dir win64)" && pwd)
win32=$(cd "$(hb_build_dir win32)" && pwd)
"$win64/wine-run.sh" "$win64/hb_selfcheck.exe" "$(hb_winpath "$win32/HBAddin.dll")" </dev/null
rc=$?
# The build tree's wineserver would leave by itself in a few seconds.
WINEPREFIX="$win64/wineprefix" wineserver -k >/dev/null 2>&1

hb_say "Result"
if [ $rc -eq 0 ]; then
    echo "   main job: both DLLs built, Windows self-checks passed under Wine"
else
    echo "   main job: Windows self-checks FAILED ($rc failed checks)"
fi
exit $rc
