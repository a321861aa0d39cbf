#!/bin/sh
# phrases-to-utf16.sh IN OUT
# Turns the phrase table source (UTF-8, one row per key, TAB-separated) into
# the LANGUAGE resource: UTF-16LE starting with the byte-order mark FF FE,
# every line ended by CR LF, the last one included. Blank lines are dropped;
# a UTF-8 byte-order mark and CR LF line ends in the source are accepted.
# Only tools of a base Debian system: sh, sed, printf, iconv (libc-bin).
set -eu
in=$1
out=$2
LC_ALL=C
export LC_ALL
tmp="$out.tmp.$$"
trap 'rm -f "$tmp"' EXIT
{
    # U+FEFF in UTF-8; iconv turns it into FF FE.
    printf '\357\273\277'
    # '$a\' ends a last line that lacks its newline; then strip a source BOM
    # and CRs, drop blank lines and end every line with CR (LF follows).
    sed -e '$a\' "$in" | sed -e '1s/^\xEF\xBB\xBF//' -e 's/\r$//' -e '/^[[:space:]]*$/d' -e 's/$/\r/'
} | iconv -f UTF-8 -t UTF-16LE >"$tmp"
mv "$tmp" "$out"
trap - EXIT
