#!/usr/bin/env bash
# The exports written by the Windows build under Wine, read back on the host
# with the same checks as the native tests: the workbook by Debian's
# python3-openpyxl, the page as XML and through html.parser, the CSV's
# byte-order mark, separator and numbers.
#
#   check_exports.sh WINE-RUN EXE SOURCE-DIR OUT-DIR
set -euo pipefail
wine_run=$1 exe=$2 src=$3 out=$4
rm -rf "$out"
mkdir -p "$out"
"$wine_run" "$exe" "Z:$(printf '%s' "$out" | tr / '\\')"
dir="$out/Berichte für Kunden"
fail=0
expect() {  # expect FILE-OUTPUT LINE: the line must be in the output
    if ! grep -qxF -- "$2" <<<"$1"; then
        echo "missing: $2" >&2
        fail=1
    fi
}

xlsx=$(/usr/bin/python3 "$src/tests/reporting/xlsx_check.py" "$dir/report.xlsx")
expect "$xlsx" "sheets Records|Summary"
expect "$xlsx" "cell Records!A2 datetime 2026-03-02 00:00:00 | mm-dd-yy"
expect "$xlsx" "cell Records!B2 time 09:00:00 | hh:mm"
expect "$xlsx" "cell Records!H2 float 1.5 | 0.00"
expect "$xlsx" "cell Records!D3 str =HYPERLINK(\"x\") | General"
expect "$xlsx" "cached Records!J6 320"
expect "$xlsx" "cell Summary!A2 str Acme & Co | General"
expect "$xlsx" "chart Summary BarChart col 1 Summary!\$G\$2:\$G\$4 Summary!\$H\$2:\$H\$4 Hours per group"
expect "$xlsx" "part xl/charts/chart1.xml"
hm=$(/usr/bin/python3 "$src/tests/reporting/xlsx_check.py" "$dir/report-hm.xlsx")
expect "$hm" "cell Summary!B9 timedelta 11:49:00 | [h]:mm"

page=$(/usr/bin/python3 "$src/tests/reporting/page_check.py" "$dir/report.html")
expect "$page" "html-errors 0"
expect "$page" "outside 0"
expect "$page" "bars 3"
expect "$page" "summary Total|11.82|12.00|320.00|4"

csv=$(head -c 200 "$dir/report.csv" | od -An -c | tr -s ' ' | head -1)
if [[ "$csv" != " 357 273 277 D a t e ; S t a r t"* ]]; then
    echo "report.csv does not start with the byte-order mark and the header: $csv" >&2
    fail=1
fi
if ! grep -qF $'02.03.2026;09:00;10:30;Kick-off <script>alert(1)</script>;Acme & Co;Smith;;1,50;1,50;120,00\r' "$dir/report.csv"; then
    echo "report.csv: the first record is not as written natively" >&2
    fail=1
fi
[ -f "$dir/report-summary.csv" ] || { echo "report-summary.csv is missing" >&2; fail=1; }
leftover=$(find "$dir" -name '*.part' | wc -l)
[ "$leftover" = 0 ] || { echo "temporary files left: $leftover" >&2; fail=1; }
if [ "$fail" = 0 ]; then
    echo "exports written under Wine read back as expected"
fi
exit $fail
