# shellcheck shell=bash
# Builds and runs the outside project of this folder with an installed library. Sourced by the tests here, which set
# work, the folder for what they make, and the sample file to read.

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

# configure_and_build TREE SOURCE_DIR BUILD_DIR [BUILD_ARGUMENT...]
configure_and_build() {
    cmake -S "$2" -B "$3" -DCMAKE_PREFIX_PATH="$1"
    cmake --build "$3" "${@:4}"
}

# try PROGRAM: it lists the tracks of a file, and catches what the library throws at one that is none.
try() {
    [[ $("$1" "$sample" | grep -c '^MaterialPackage, track [123]: 12 edit units$') -eq 6 ]]
    if "$1" "$work/consumer/CMakeLists.txt" 2>"$work/message"; then return 1; fi
    grep -q '^invalid run-in at octet [0-9]' "$work/message"
}

# use TREE [BUILD_ARGUMENT...]: by CMake and by pkg-config.
use() {
    local tree=$1 flags libdir
    mkdir "$work/consumer"
    cp "$here/CMakeLists.txt" "$work/consumer"
    # What users paste first is what is built here.
    awk '/^```cpp$/ { inside = 1; next } /^```$/ && inside { exit } inside' "$here/../../README.md" \
        >"$work/consumer/main.cpp"

    echo "== an outside CMake project"
    configure_and_build "$tree" "$work/consumer" "$work/consumer/build" "${@:2}"
    try "$work/consumer/build/consumer"

    echo "== pkg-config"
    PKG_CONFIG_PATH=$(dirname "$(find "$tree" -name bryxmxf.pc)")
    export PKG_CONFIG_PATH
    read -ra flags < <(pkg-config --cflags --libs bryxmxf)
    "${CXX:-c++}" -std=c++17 "$work/consumer/main.cpp" "${flags[@]}" -o "$work/plain"
    libdir=$(pkg-config --variable=libdir bryxmxf)
    LD_LIBRARY_PATH=$libdir try "$work/plain"
}
