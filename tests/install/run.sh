#!/usr/bin/env bash
# Installs a build of the library and uses it as outside projects do: by CMake, by pkg-config and with the examples.
# usage: run.sh BUILD_DIR
set -euo pipefail

build=$1
here=$(cd "$(dirname "$0")" && pwd)
# The same path each time, not a random one, lets ccache know what it has compiled before.
work=$build/tests/install
rm -rf "$work"
mkdir -p "$work"

# Moved after installation, so that a path fixed at installation time does not go unnoticed.
cmake --install "$build" --prefix "$work/staging" >/dev/null
mv "$work/staging" "$work/prefix"

configure_and_build() { # SOURCE_DIR BUILD_DIR
    cmake -S "$1" -B "$2" -DCMAKE_PREFIX_PATH="$work/prefix"
    cmake --build "$2"
}

# What users paste first is what is built here.
mkdir "$work/consumer"
cp "$here/CMakeLists.txt" "$work/consumer"
sed -n '/^```cpp$/,/^```$/{/^```/d;p}' "$here/../../README.md" >"$work/consumer/main.cpp"

# It lists three partitions of a file, and catches what the library throws at one that is none.
try() { # PROGRAM
    [[ $("$1" "$work/sample.mxf" | grep -c '^urn:smpte:ul:') -eq 3 ]]
    if "$1" "$work/consumer/CMakeLists.txt" 2>"$work/message"; then return 1; fi
    grep -q '^invalid run-in at octet [0-9]' "$work/message"
}

echo "== the examples as a project of their own"
configure_and_build "$here/../../examples" "$work/examples"
"$work/examples/make_clip" "$work/sample.mxf" 12

echo "== an outside CMake project"
configure_and_build "$work/consumer" "$work/consumer/build"
try "$work/consumer/build/consumer"

echo "== pkg-config"
pc_file=$(find "$work/prefix" -name bryxmxf.pc)
export PKG_CONFIG_PATH="${pc_file%/*}"
read -ra flags < <(pkg-config --cflags --libs bryxmxf)
"${CXX:-c++}" -std=c++17 "$work/consumer/main.cpp" "${flags[@]}" -o "$work/plain"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir bryxmxf)
export LD_LIBRARY_PATH
try "$work/plain"
