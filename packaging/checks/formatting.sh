#!/bin/sh
# Every C++ source is formatted as .clang-format says. Untracked files count, ignored ones do not.
# usage: formatting.sh         prints what differs; 1 when something does
#        formatting.sh --fix   formats in place
set -eu
cd "$(dirname "$0")/../.."

list=$(mktemp)
trap 'rm -f "$list"' EXIT
# Without git (a source archive) the folders are searched instead.
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp'
else
    find qvr tools tests bench fuzz examples \( -name '*.h' -o -name '*.cpp' \) 2>/dev/null || true
fi | LC_ALL=C sort -u | while IFS= read -r name; do
    if [ -f "$name" ]; then printf '%s\n' "$name"; fi
done >"$list"

if [ ! -s "$list" ]; then
    echo "formatting: no sources found"
    exit 1
fi
if [ "${1:-}" = --fix ]; then
    tr '\n' '\0' <"$list" | xargs -0 clang-format -i
    echo "formatting: $(wc -l <"$list") files formatted"
    exit 0
fi
if ! tr '\n' '\0' <"$list" | xargs -0 clang-format --dry-run -Werror 2>&1; then
    echo "formatting: format the sources with ./run format"
    exit 1
fi
echo "formatting: $(wc -l <"$list") files"
