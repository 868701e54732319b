#!/usr/bin/env bash
# Installs a build of the library, and uses what is installed as outside projects do. Each step is a test of its own: the
# first installs, which the others need; packages needs the consumer's programs as well.
# usage: run.sh BUILD_DIR install
#        run.sh BUILD_DIR headers              each header compiles on its own
#        run.sh BUILD_DIR consumer MAKE_CLIP   programs, by CMake and by pkg-config
#        run.sh BUILD_DIR programs             the tools and the examples as projects of their own
#        run.sh BUILD_DIR packages             what the Debian packages say and hold
set -euo pipefail

build=$1
here=$(cd "$(dirname "$0")" && pwd)
# The same path each time, not a random one, lets ccache know what it has compiled before.
work=$build/tests/install
prefix=$work/prefix
sample=$work/sample.mxf

# fresh FOLDER: empties it.
fresh() {
    rm -rf "$1"
    mkdir -p "$1"
}

# configure SOURCE_DIR BUILD_DIR
configure() { cmake -S "$1" -B "$2" -DCMAKE_PREFIX_PATH="$prefix"; }

# try PROGRAM: it lists the tracks of a file, and catches what the library throws at one that is none.
try() {
    [[ $("$1" "$sample" | grep -c '^MaterialPackage, track [123]: 12 edit units$') -eq 6 ]]
    if "$1" "$work/consumer/CMakeLists.txt" 2>"$work/message"; then return 1; fi
    grep -q '^invalid run-in at octet [0-9]' "$work/message"
}

libdir() { dirname "$(find "$1" -name 'libbryxmxf.so' | head -n 1)"; }

install_it() {
    fresh "$work"
    # Moved after installation, so that a path fixed at installation time does not go unnoticed.
    cmake --install "$build" --prefix "$work/staging" >/dev/null
    mv "$work/staging" "$prefix"
}

headers() {
    configure "$here" "$work/headers"
    cmake --build "$work/headers" --target headers
}

consumer() {
    local flags
    fresh "$work/consumer"
    "$1" "$sample" 12
    cp "$here/CMakeLists.txt" "$here/names.cpp" "$work/consumer"
    # What users paste first is what is built here.
    awk '/^```cpp$/ { inside = 1; next } /^```$/ && inside { exit } inside' "$here/../../README.md" \
        >"$work/consumer/main.cpp"

    echo "== an outside CMake project"
    configure "$work/consumer" "$work/consumer/build"
    cmake --build "$work/consumer/build" --target consumer names
    try "$work/consumer/build/consumer"

    echo "== an application with names of its own"
    [[ $("$work/consumer/build/names" "$sample") == "12 tracks, shelf 42 of a ShelfMark" ]]

    echo "== pkg-config"
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name bryxmxf.pc)")
    export PKG_CONFIG_PATH
    read -ra flags < <(pkg-config --cflags --libs bryxmxf)
    "${CXX:-c++}" -std=c++17 "$work/consumer/main.cpp" "${flags[@]}" -o "$work/consumer/plain"
    [[ $(pkg-config --variable=libdir bryxmxf) -ef $(libdir "$prefix") ]]
    LD_LIBRARY_PATH=$(libdir "$prefix") try "$work/consumer/plain"
}

programs() {
    for folder in tools examples; do
        echo "== the $folder as a project of their own"
        configure "$here/../../$folder" "$work/$folder"
        cmake --build "$work/$folder"
    done
    "$work/tools/make_clip" "$work/clip.mxf" 12
    "$work/tools/inspect" "$work/clip.mxf" >/dev/null
}

# expect PACKAGE FIELD REGEX: what the control file says.
expect() {
    local value
    value=$(dpkg-deb --field "$1" "$2")
    [[ $value =~ ^$3$ ]] || { echo "${1##*/}: $2 is \"$value\", not $3" >&2 && return 1; }
}

packages() {
    local runtime development version name package root=$work/packages/root
    fresh "$work/packages"
    cd "$work/packages"
    cpack --config "$build/CPackConfig.cmake" -G DEB -B made
    runtime=$(echo made/libbryxmxf[0-9]*.deb)
    development=$(echo made/libbryxmxf-dev_*.deb)

    echo "== what the packages say"
    dpkg-deb --info "$runtime"
    dpkg-deb --info "$development"
    version=$(dpkg-deb --field "$runtime" Version)
    name=$(dpkg-deb --field "$runtime" Package)
    expect "$runtime" Section libs
    expect "$runtime" Depends '(.*, )?libc6 \(>=.*libstdc\+\+6 \(>=.*'
    expect "$development" Package libbryxmxf-dev
    expect "$development" Section libdevel
    expect "$development" Depends "$name \(= $version\), libboost-dev"
    for package in "$runtime" "$development"; do
        expect "$package" Version '[0-9]+\.[0-9]+\.[0-9]+-1'
        expect "$package" Architecture "$(dpkg --print-architecture)"
        expect "$package" Maintainer '.+'
        expect "$package" Description '.+'
    done
    # A package is named after the shared object that programs load, and tells those who package programs so.
    dpkg-deb --ctrl-tarfile "$runtime" | tar -xO ./shlibs | grep -qx "libbryxmxf ${name#libbryxmxf} $name (>= .*)"

    echo "== what the packages hold"
    if dpkg-deb --fsys-tarfile "$runtime" | tar -t | grep -v '/$' | grep -v '/libbryxmxf\.so\.[0-9.]*$'; then
        echo "The package for those who run programs holds more than a library" >&2
        return 1
    fi
    dpkg-deb --extract "$runtime" "$root"
    dpkg-deb --extract "$development" "$root"
    # Both together are what is installed, but for the library, of which only what programs need is left.
    diff -r --no-dereference --exclude 'libbryxmxf.so.*.*' "$prefix" "$root/usr"
    LD_LIBRARY_PATH=$(libdir "$root/usr") try "$work/consumer/plain"
}

case $2 in
install) install_it ;;
*) "${@:2}" ;;
esac
