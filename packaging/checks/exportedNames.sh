#!/bin/sh
# The names that the shared library exports are the ones listed in packaging/exported-names.txt: a name that
# appears or vanishes unnoticed would bind or break hosts.
# usage: exportedNames.sh LIBRARY            compares; 1 and the differences when there are some
#        exportedNames.sh --update LIBRARY   rewrites the list
set -eu
update=0
if [ "${1:-}" = --update ]; then
    update=1
    shift
fi
if [ $# -ne 1 ]; then
    echo "usage: exportedNames.sh [--update] LIBRARY" >&2
    exit 2
fi
library=$(readlink -f -- "$1") || library=$1
cd "$(dirname "$0")/../.."
list=packaging/exported-names.txt

if [ ! -f "$library" ]; then
    echo "exportedNames: $library is missing: build the library first"
    exit 1
fi
found=$(mktemp)
trap 'rm -f "$found"' EXIT

# Instances of the standard library's templates come and go with the compiler's inlining and are not ours.
nm -D --defined-only -C -- "$library" | sed -E 's/^[0-9a-f]* *[A-Za-z] //' |
    sed -E '/^((typeinfo|typeinfo name|vtable|VTT|guard variable) for )?([^(<]* )?(std|__gnu_cxx|__cxxabiv1)::/d' |
    LC_ALL=C sort -u >"$found"
if [ ! -s "$found" ]; then
    echo "exportedNames: $library exports nothing"
    exit 1
fi
if [ "$update" -eq 1 ]; then
    cp "$found" "$list"
    echo "exportedNames: $(wc -l <"$list") names written to $list"
    exit 0
fi
if [ ! -f "$list" ]; then
    echo "exportedNames: $list is missing: write it with ./run exports"
    exit 1
fi
if ! difference=$(diff -- "$list" "$found"); then
    printf '%s\n' "$difference" | sed -n -e 's/^< /no longer exported: /p' -e 's/^> /newly exported: /p'
    echo "exportedNames: if this is meant, update the list with ./run exports"
    exit 1
fi
echo "exportedNames: $(wc -l <"$list") names"
