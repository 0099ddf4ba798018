#!/usr/bin/env bash
# The bash completion: usage: completion_test.sh <qortlv.bash> <qortlv>
# Completes option words and file names as a shell would ask for them, and
# knows every option that -help lists.
set -u
export LC_ALL=C
source "$1" || exit 1
binary=$(realpath "$2")
failures=0

# expect "what is typed, word by word" "the completions, blank-separated"
expect()
{
    local typed=$1 wanted=$2 got
    read -r -a COMP_WORDS <<<"$typed"
    [[ $typed == *" " ]] && COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _qortlv
    got=$(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ')
    got=${got% }
    if [[ $got != "$wanted" ]]; then
        echo "FAIL: '$typed' completes to '$got', not '$wanted'"
        failures=$((failures + 1))
    fi
}

scratch=$(mktemp -d) || exit 1
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" && touch alpha.der alps.txt beta.ber && mkdir also

expect "qortlv -sy" "-syntax"
expect "qortlv -p" "-pad -pem"
expect "qortlv -no" "-noaddition -nocdrheaders -noshort -notitles"
expect "qortlv --" "--help --version"
expect "qortlv -b al" "alpha.der alps.txt also"
expect "qortlv -TEXT b" "beta.ber"
expect "qortlv -pe al" "alpha.der alps.txt also"
expect "qortlv -pad " "0x00 0xFF"
expect "qortlv -p 0x" "0x00 0xFF"
expect "qortlv -syntax -z" "-zfixencoding -znotrace"
expect "qortlv -zf " "alpha.der alps.txt also beta.ber"
expect "qortlv -notitles be" "beta.ber"
expect "qortlv -hexadecimal -h" "-help -hexadecimal"

# Every option of the help text, the extensions' too.
listed=$("$binary" -help | sed -n 's/^  \(--*[a-z0-9]*\).*/\1/p')
[[ -n $listed ]] || { echo "FAIL: -help lists no option"; failures=$((failures + 1)); }
for option in $listed; do
    expect "qortlv $option" "$option"
done

[[ $failures -eq 0 ]] || exit 1
echo "completion: every case passed"
