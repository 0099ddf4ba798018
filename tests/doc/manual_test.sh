#!/bin/sh
# The manual page: usage: manual_test.sh <qortlv.1> <qortlv>
# It renders without a single warning, and names every option that -help
# lists. Exit 77 (skipped) only where neither groff nor mandoc is installed.
page=$1
binary=$2
scratch=$(mktemp -d) || exit 1
trap 'rm -rf "$scratch"' EXIT

if command -v groff >/dev/null 2>&1; then
    groff -ww -man -Tutf8 "$page" >/dev/null 2>"$scratch/warnings"
    groff -man -Tascii -P-cbou "$page" >"$scratch/text" 2>>"$scratch/warnings"
elif command -v mandoc >/dev/null 2>&1; then
    mandoc -man -T lint -W warning "$page" >"$scratch/warnings" 2>&1
    mandoc -man -T ascii "$page" 2>>"$scratch/warnings" | col -b >"$scratch/text"
else
    echo "manual: neither groff nor mandoc is installed; not checked"
    exit 77
fi
status=0
if [ -s "$scratch/warnings" ]; then
    echo "FAIL: the manual page renders with warnings:"
    cat "$scratch/warnings"
    status=1
fi
for section in NAME SYNOPSIS DESCRIPTION OPTIONS LAYOUTS "CDR HEADERS AND PADDING" REPAIR \
               "EXIT STATUS" FILES EXAMPLES; do
    grep -qx "$section" "$scratch/text" || { echo "FAIL: no section $section"; status=1; }
done
listed=$("$binary" -help | sed -n 's/^  \(--*[a-z0-9]*\).*/\1/p')
[ -n "$listed" ] || { echo "FAIL: -help lists no option"; status=1; }
for option in $listed -zfixencoding -znotrace; do
    # An option's own entry: the option at the start of an indented line.
    grep -q "^       $option\( \|$\)" "$scratch/text" || { echo "FAIL: no entry for $option"; status=1; }
done
[ $status -eq 0 ] && echo "manual: renders cleanly, every option has its entry"
exit $status
