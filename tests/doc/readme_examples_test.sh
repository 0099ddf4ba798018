#!/bin/sh
# Every example command of the README runs as written from the clone and
# lists something: usage: readme_examples_test.sh <source dir> <qortlv>
cd "$1" || exit 1
binary=$2
status=0
examples=$(sed -n 's|^    build/qortlv ||p' README.md)
[ -n "$examples" ] || { echo "FAIL: the README shows no example"; exit 1; }
echo "$examples" | while read -r arguments; do
    # The words of an example are options and file names: no quoting in them.
    # shellcheck disable=SC2086
    "$binary" $arguments >/dev/null 2>&1
    result=$?
    if [ $result -ne 0 ]; then
        echo "FAIL: qortlv $arguments ends with status $result"
        exit 1
    fi
done || status=1
[ $status -eq 0 ] && echo "README: every example runs"
exit $status
