#!/bin/sh
# installed BUILD: installs a build into a folder of its own and builds examples/host.cpp against it twice, the ways that
# the README names: find_package and pkg-config. Both programs are run.
set -eu
build=$1
root=$(cd -- "$(dirname -- "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix"

mkdir "$work/host"
cp "$root/examples/host.cpp" "$work/host/"
cat >"$work/host/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
find_package(QVRModel CONFIG REQUIRED)
add_executable(host host.cpp)
target_link_libraries(host PRIVATE QVR::Model)
CMAKE
cmake -G Ninja -S "$work/host" -B "$work/host/build" -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$work/host/build"
"$work/host/build/host" >"$work/by-cmake.txt"

library=$(dirname -- "$(find "$work/prefix" -name qvr-model.pc)")/..
flags=$(PKG_CONFIG_PATH="$library/pkgconfig" pkg-config --cflags --libs qvr-model)
# shellcheck disable=SC2086 # flags are words
c++ -o "$work/host-by-pkg-config" "$work/host/host.cpp" $flags
LD_LIBRARY_PATH="$library" "$work/host-by-pkg-config" >"$work/by-pkg-config.txt"
cmp "$work/by-cmake.txt" "$work/by-pkg-config.txt"
grep -q '^window ' "$work/by-cmake.txt"
