#!/bin/sh
# Every exported operation that takes an argument is called by tests/extremes, which gives it extreme ones: the names that
# its program binds to are compared with the list of exported names.
# usage: everyOperation.sh PROGRAM
set -eu
if [ $# -ne 1 ] || [ ! -f "$1" ]; then
    echo "usage: everyOperation.sh PROGRAM (the built extremes_tests)" >&2
    exit 2
fi
program=$(readlink -f -- "$1")
cd "$(dirname "$0")/../.."
names=$(mktemp)
called=$(mktemp)
trap 'rm -f "$names" "$called"' EXIT

# Not of interest: no arguments, destructors, internal names (they begin in lower case), and what is virtual and called
# through a pointer, which leaves no name in the program.
grep '(' packaging/exported-names.txt | grep -vE '\(\)|~|(^|::)[a-z][A-Za-z]*\(|^qvr::' |
    grep -vE '^(CDC::DrawText|dcm(CR|DX)?(Series|Image)::(Create|CreateImage|Open|OpenImage|ReadUndoData))\(' >"$names"
nm -DC --undefined-only -- "$program" | sed -E 's/^ *[A-Za-z] //; s/@.*//' >"$called"
if missing=$(grep -vxFf "$called" "$names"); then
    printf '%s\n' "$missing" | sed 's/^/not called: /'
    exit 1
fi
echo "everyOperation: $(wc -l <"$names") operations"
