#!/bin/sh
# Rules that no compiler checks:
#   memory   only operator new, and never an array of it: `new T[n]` throws for a negative or huge n in whatever form
#   bitmaps  only CDib follows its own pointer to the pixels; the rest asks rowsOf(), which looks at header and storage
#   flags    every build with sanitizers names float-cast-overflow, which "undefined" of g++ does not include; every
#            source is compiled with -ffp-contract=off and without fast-math (cmake/compilerOptions.cmake)
#   folders  tests run beside each other: one that writes has a TemporaryFolder, never the folder all share
# usage: sourceRules.sh BUILD    a configured build folder; prints what breaks a rule; 1 when something does
set -eu
if [ $# -ne 1 ]; then
    echo "usage: sourceRules.sh BUILD" >&2
    exit 2
fi
commands=$(readlink -f -- "$1")/compile_commands.json
cd "$(dirname "$0")/../.."

# lines PATTERN WHY FILE...: prints the lines of the files that match outside comments, and fails when there are any
lines() {
    pattern=$1
    why=$2
    shift 2
    awk -v pattern="$pattern" -v why="$why" '
        { code = $0; sub("//.*", "", code) }
        code ~ pattern { printf "%s:%d: %s: %s\n", FILENAME, FNR, $0, why; found = 1 }
        END { exit found }
    ' "$@"
}

bad=0
sources=$(find qvr -name '*.h' -o -name '*.cpp' | LC_ALL=C sort)
others=$(printf '%s\n' "$sources" | grep -v '^qvr/image/CDib')
tests=$(find tests fuzz -name '*.h' -o -name '*.cpp' | grep -v -e /temporaryFolder.h -e /hostTest.cpp)
word='(^|[^A-Za-z0-9_])'
# shellcheck disable=SC2086 # lists of files without blanks
{
    lines "${word}new +([(][^)]*[)] *)?[A-Za-z_][A-Za-z0-9_:<> ]*[[]|make_unique(_for_overwrite)?<[^;(]*[[][]]>" \
        "an array is asked for with makeBytes or makePixels" $sources || bad=1
    lines "${word}(malloc|calloc|realloc|strn?dup|aligned_alloc|posix_memalign|alloca|mmap) *[(]" \
        "memory is asked for with operator new" $sources || bad=1
    lines '([.]|->)Bits([^A-Za-z0-9_]|$)' "pixels of a bitmap are reached with rowsOf" $others || bad=1
    lines 'TempDir[(]|temp_directory_path|"/tmp|"/dev/shm' "tests write into a TemporaryFolder of their own" $tests || bad=1
}
if grep -n '"QVR_SANITIZE"' CMakePresets.json | grep -v 'undefined,float-cast-overflow'; then
    echo "CMakePresets.json: float-cast-overflow is missing"
    bad=1
fi
compiled=$(grep -c '"command":' "$commands" || true)
if [ "$compiled" -eq 0 ]; then
    echo "sourceRules: no compile command in $commands"
    exit 1
fi
if grep '"command":' "$commands" |
    grep -E -v -e ' -ffp-contract=off .*-c ' | sed -E 's/.* -c ([^ "]+)".*/\1: compiled without -ffp-contract=off/' |
    grep .; then
    bad=1
fi
if grep -E -q -e ' -(Ofast|ffast-math|funsafe-math-optimizations|ffinite-math-only|fassociative-math) ' "$commands"; then
    echo "$commands: a source is compiled with fast-math"
    bad=1
fi
[ "$bad" -eq 0 ] || exit 1
echo "sourceRules: $(printf '%s\n' "$sources" | wc -l) files, $compiled compile commands"
