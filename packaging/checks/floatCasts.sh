#!/bin/sh
# A float becomes an integer in toInt() and toInt64() alone: anywhere else a value out of range is undefined behaviour.
# The other casts, by file, are in loops for the vectoriser over values whose range is settled before.
# usage: floatCasts.sh BUILD    a configured build folder; prints what differs from the list; 1 when something does
set -eu
if [ $# -ne 1 ]; then
    echo "usage: floatCasts.sh BUILD" >&2
    exit 2
fi
build=$(readlink -f -- "$1")
cd "$(dirname "$0")/../.."

list=$(mktemp)
found=$(mktemp)
trap 'rm -f "$list" "$found" "$found.casts"' EXIT
cat >"$list" <<'LIST'
3 qvr/image/detail/displayTable.cpp
2 qvr/image/detail/greyRow.cpp
1 qvr/model/detail/thumbnail.cpp
2 qvr/platform/detail/numbers.h
LIST
if ! find qvr -name '*.cpp' | LC_ALL=C sort | xargs clang-query -p "$build" \
    -c 'match castExpr(hasCastKind("CK_FloatingToIntegral"), isExpansionInFileMatching("/qvr/"))' >"$found" 2>&1; then
    tail -n 20 "$found"
    exit 1
fi
# Each place once, however many sources include it.
sed -n -E "s|^$PWD/(qvr/[^:]+:[0-9]+:[0-9]+): note: .*|\1|p" "$found" | LC_ALL=C sort -u >"$found.casts"
if ! cut -d : -f 1 "$found.casts" | uniq -c | sed 's/^ *//' | diff -- "$list" -; then
    cat "$found.casts"
    echo "floatCasts: use toInt() or toInt64() of qvr/platform/detail/numbers.h"
    exit 1
fi
echo "floatCasts: $(wc -l <"$found.casts") casts, as listed"
