#!/bin/sh
# The program shown in README.md is examples/host.cpp, which the tests build and run, line by line.
# usage: readmeProgram.sh    prints the differences; 1 when there are some
set -eu
cd "$(dirname "$0")/../.."

shown=$(mktemp)
trap 'rm -f "$shown"' EXIT
awk '/^```cpp$/ { inside = 1; next } /^```$/ { inside = 0 } inside' README.md >"$shown"
if [ ! -s "$shown" ]; then
    echo "readmeProgram: README.md shows no program (a block that opens with \`\`\`cpp)"
    exit 1
fi
if ! diff -u -- examples/host.cpp "$shown"; then
    echo "readmeProgram: README.md does not show examples/host.cpp as it is"
    exit 1
fi
echo "readmeProgram: $(wc -l <"$shown") lines"
