#!/bin/sh
# `cmake --install` into a scratch prefix: usage: install_test.sh <build dir>
# The program, its manual page, its completion and the bundled tag map land
# where man, bash-completion and the program look, and the program runs.
build=$1
prefix=$(mktemp -d) || exit 1
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null || exit 1
status=0
for file in bin/qortlv share/man/man1/qortlv.1 share/bash-completion/completions/qortlv \
            share/qortlv/3gpp-ps.tags; do
    if [ ! -s "$prefix/$file" ]; then
        echo "FAIL: $file is not installed"
        status=1
    fi
done
[ -x "$prefix/bin/qortlv" ] || { echo "FAIL: bin/qortlv is not executable"; status=1; }
version=$("$prefix/bin/qortlv" --version)
[ "$version" = "qortlv 10.3" ] || { echo "FAIL: the installed program answers '$version'"; status=1; }
[ $status -eq 0 ] && echo "install: every file in place"
exit $status
