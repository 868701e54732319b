#!/usr/bin/env python3
"""Checks what the strictest checks find in files that are known.

usage: findings.py [--update] INSPECT EXPECTED FILE...

EXPECTED tells of files by name how many findings of each level and message they have; each has been looked at, and is
true. In other FILEs, nothing is to be an error. With --update, EXPECTED is written again. The exit status is 1 when there
is any difference.
"""

import argparse
import collections
import json
import os
import subprocess
import sys


def findings(inspect, path):
    report = json.loads(subprocess.run([inspect, "--json", "--validate", "strict", path], capture_output=True).stdout)
    return dict(sorted(collections.Counter(f"{finding['level']}: {finding['message'].split(' - ')[0]}"
                                           for finding in report["findings"]).items()))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("inspect")
    parser.add_argument("expected")
    parser.add_argument("files", nargs="+", metavar="FILE")
    options = parser.parse_args()
    found = {os.path.basename(path): findings(options.inspect, path) for path in options.files}
    if options.update:
        with open(options.expected, "w", encoding="ascii") as file:
            json.dump({name: seen for name, seen in sorted(found.items())}, file, indent=1)
            file.write("\n")
        return
    with open(options.expected, encoding="ascii") as file:
        expected = json.load(file)
    good = True
    for name, seen in found.items():
        wanted = expected.get(name, {what: count for what, count in seen.items() if what.startswith("warning: ")})
        for what in sorted(seen.keys() | wanted.keys()):
            if seen.get(what, 0) != wanted.get(what, 0):
                good = False
                print(f"{name}: {seen.get(what, 0)} instead of {wanted.get(what, 0)} of {what}")
    print(f"findings of {len(found)} files, {len(found.keys() & expected.keys())} of them with known ones")
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
