#!/usr/bin/env bash
# Makes the Debian packages of a build, looks at what they say and hold, and uses them as outside projects do.
# usage: packages.sh BUILD_DIR MAKE_CLIP
set -euo pipefail
. "$(dirname "$0")/outside.sh"

build=$1
make_clip=$2
work=$build/tests/packages
sample=$work/sample.mxf
rm -rf "$work"
mkdir -p "$work"
cd "$work"

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/made"
runtime=$(echo "$work"/made/libbryxmxf[0-9]*.deb)
development=$(echo "$work"/made/libbryxmxf-dev_*.deb)

# expect PACKAGE FIELD REGEX: what the control file says.
expect() {
    local value
    value=$(dpkg-deb --field "$1" "$2")
    [[ $value =~ ^$3$ ]] || { echo "${1##*/}: $2 is \"$value\", not $3" >&2 && return 1; }
}

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

# files_of PACKAGE: what is no folder.
files_of() { dpkg-deb --fsys-tarfile "$1" | tar -t | grep -v '/$' | sed 's,^\./usr/,,' | sort; }

echo "== what the packages hold"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
(cd "$work/prefix" && find . ! -type d -printf '%P\n') | sort >installed
sort -m <(files_of "$runtime") <(files_of "$development") >packaged
diff installed packaged
if files_of "$runtime" | grep -v '/libbryxmxf\.so\.[0-9.]*$'; then
    echo "The package for those who run programs holds more than a library" >&2
    exit 1
fi

for package in "$runtime" "$development"; do
    dpkg-deb --extract "$package" "$work/root"
done
"$make_clip" "$sample" 12
use "$work/root/usr" --target consumer
