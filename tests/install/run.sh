#!/usr/bin/env bash
# Installs a build of the library and uses it as outside projects do: by CMake, by pkg-config, with the tools and the examples.
# usage: run.sh BUILD_DIR
set -euo pipefail
. "$(dirname "$0")/outside.sh"

build=$1
# The same path each time, not a random one, lets ccache know what it has compiled before.
work=$build/tests/install
sample=$work/sample.mxf
rm -rf "$work"
mkdir -p "$work"

# Moved after installation, so that a path fixed at installation time does not go unnoticed.
cmake --install "$build" --prefix "$work/staging" >/dev/null
mv "$work/staging" "$work/prefix"

for folder in tools examples; do
    echo "== the $folder as a project of their own"
    configure_and_build "$work/prefix" "$here/../../$folder" "$work/$folder"
done
"$work/tools/make_clip" "$sample" 12

use "$work/prefix"
