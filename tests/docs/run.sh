#!/usr/bin/env bash
# Compiles, links and runs the code of the README and the guides, and compares the list of checks in them with the real one.
#
# The blocks of a page that are marked cpp, one after the other, make a program, which ends with the block that has
# main(); the blocks after that make the next one. Those behind the last main() are compiled only. A program is given the
# name of a clip, and exits with 0; what it leaves of the clip, or writes in its place, is a file without errors. A block
# marked output shows what the program before it prints.
#
# usage: run.sh BUILD_DIR LIBRARY MAKE_CLIP INSPECT
set -euo pipefail

build=$1 library=$2 make_clip=$3 inspect=$4
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$build/tests/docs
rm -rf "$work"
mkdir -p "$work"
cd "$work"
"$make_clip" clip.mxf 50

awk '
    function fail(reason) {
        print FILENAME ":" FNR ": " reason > "/dev/stderr"
        failed = 1
        exit 1
    }
    FNR == 1 {
        page = FILENAME
        gsub(/^.*\/|\.md$/, "", page)
        count = 0
        source = program = ""
    }
    /^```/ && kind != "" { # the end of a block
        if (kind == "cpp" && hasMain) {
            program = page count
            source = ""
        }
        kind = ""
        next
    }
    /^```cpp$/ {
        if (source == "") {
            count += 1
            source = page count ".cpp"
            hasMain = 0
        }
        print "#line " FNR + 1 " \"" FILENAME "\"" > source
    }
    /^```output$/ && program == "" { fail("no program ends before this output") }
    /^```/ {
        kind = $0 == "```" ? "text" : substr($0, 4)
        next
    }
    kind == "cpp" {
        print > source
        hasMain = hasMain || /^int main\(/
    }
    kind == "output" { print > (program ".expected") }
    END { exit failed }
' "$root/README.md" "$root"/docs/*.md

# check NAME: the program or the fragments of that name.
check() {
    local name=$1
    # Compiled by itself, which ccache remembers, and as strictly as users may compile.
    ${CMAKE_CXX_COMPILER_LAUNCHER-} "${CXX:-c++}" -std=c++17 -Wall -Wextra -Wpedantic -Werror -I"$root" \
        -c "$name.cpp" -o "$name.o"
    grep -q '^int main(' "$name.cpp" || return 0
    "${CXX:-c++}" "$name.o" "$library" "-Wl,-rpath,${library%/*}" -o "$name"
    mkdir "$name.run"
    cd "$name.run"
    cp ../clip.mxf .
    "../$name" clip.mxf >output || { echo "$name: exit code $?" >&2 && return 1; }
    [[ ! -e ../$name.expected ]] || diff --label "$name: expected" --label "$name: printed" -u "../$name.expected" output
    "$inspect" clip.mxf >findings || { echo "$name: the clip has errors now" >&2 && return 1; }
}
export -f check
export root library inspect

ls README1.cpp >/dev/null # there is at least the program that users paste first
# shellcheck disable=SC2016 # what bash is given expands its own argument
printf '%s\0' *.cpp | xargs -0 -n 1 basename -z -s .cpp |
    xargs -0 -n 1 -P "${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" bash -euo pipefail -c 'check "$1"' check

# The guide lists the checks that there are.
diff --label validation.md --label 'inspect --checks' -u \
    <(sed -n '/^### /,$p' "$root/docs/validation.md") <("$inspect" --checks | sed -n '/^### /,$p')
