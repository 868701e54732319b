#!/usr/bin/env python3
"""Counts what the library does for each element: instructions, allocations, system calls. Counts are the same each time.

usage: profile.py BUILD [--elements N]

BUILD is the folder of the release build. Each work is done with N elements and with twice as many; the table shows the
difference, so that what is done once for a file does not count. There is a partition for each 250 elements. The reader has
a buffer of its own for all of them. Fails if there are allocations for elements rather than for partitions, more system calls
than two for a large element or than one for some of the small ones, or if essence is touched by anything but the system calls:
then there would be an instruction for each few octets. At last, a sparse file of 100 GiB with a partition for each 10 seconds
of 50 Mbit/s is scanned by its random index; that fails if it takes a second, or if more is read than the partition packs and
what a stream's buffer takes in with them.
"""

import argparse
import os
import re
import struct
import subprocess
import sys
import tempfile
import time

OP1A = bytes.fromhex("060e2b34040101010d01020101010900")
SIZES = {"small": 64, "large": 200000}
MOST_CALLS = {"small": 0.1, "large": 2.1}


def output(*command):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, text=True).stderr


def counts(command, folder):
    """Instructions, allocations and system calls of one run."""
    callgrind = output("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command)
    heap = output("valgrind", "--undef-value-errors=no", "--leak-check=no", *command)
    trace = os.path.join(folder, "trace")
    output("strace", "-f", "-o", trace, *command)
    with open(trace, encoding="ascii", errors="replace") as calls:
        return (int(re.search(r"Collected : (\d+)", callgrind)[1]),
                int(re.search(r"total heap usage: ([\d,]+) allocs", heap)[1].replace(",", "")),
                sum(1 for _ in calls))


def pack(octet, value):
    """A partition pack or the like; @p octet are octets 13 and 14 of the key."""
    return bytes.fromhex("060e2b34020501010d01020101") + octet + b"\0\x88" + len(value).to_bytes(8, "big") + value


def sparse_file(path, size, distance):
    """Partitions at equal distances, between which there is fill of zeros that no disk holds."""
    offsets = range(0, size, distance)
    with open(path, "wb") as file:
        for number, offset in enumerate(offsets):
            file.seek(offset)
            kind = b"\x02\x04" if number == 0 else b"\x03\x04"
            file.write(pack(kind, struct.pack(">HHIQQQQQIQI", 1, 3, 1, offset, max(0, offset - distance), 0, 0, 0, 0,
                                              offset, 1) + OP1A + struct.pack(">II", 0, 16)))
            end = min(offset + distance, size)
            fill = end - file.tell() - 25
            file.write(bytes.fromhex("060e2b34010101010301021001000000") + b"\x88" + fill.to_bytes(8, "big"))
        file.seek(size)
        entries = b"".join(struct.pack(">IQ", 1, offset) for offset in offsets)
        file.write(pack(b"\x11\x01", entries + (len(entries) + 29).to_bytes(4, "big")))
    return len(offsets)


def scan(work, folder):
    """Whether a huge file is scanned without reading much of it."""
    path = os.path.join(folder, "huge.mxf")
    partitions = sparse_file(path, 100 << 30, 62500000)
    trace = os.path.join(folder, "trace")
    output("strace", "-f", "-P", path, "-e", "trace=read,readv,pread64", "-o", trace, work, "scan", path)
    with open(trace, encoding="ascii", errors="replace") as calls:
        read = sum(int(count) for count in re.findall(r"= (\d+)$", calls.read(), re.M))
    start = time.perf_counter()
    seen = subprocess.run([work, "scan", path], check=True, capture_output=True, text=True).stdout
    seconds = time.perf_counter() - start
    print(f"{read / 2**20:.1f} MiB read of 100 GiB, {partitions} partitions, {seconds:.3f} s  scan")
    return f"partitions {partitions}\n" in seen and 0 < read < partitions * 4 * 8192 and seconds < 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--elements", type=int, default=20000)
    options = parser.parse_args()
    work = os.path.join(options.build, "benchmarks", "bryx_work")
    failures = []
    print(f"{'instructions':>26}  {'allocations':>11}  {'system calls':>22}")
    print(f"{'each':>12}  {'/ octet':>12}  {'each':>11}  {'each':>11} {'/ MiB':>10}  work")
    with tempfile.TemporaryDirectory() as folder:
        for size, octets in SIZES.items():
            numbers = [options.elements, 2 * options.elements]
            if size == "large":
                numbers = [number // 20 for number in numbers]
            files = [os.path.join(folder, f"{number}.mxf") for number in numbers]
            for number, file in zip(numbers, files):
                output(work, f"write-{size}", file, number)
            more = numbers[1] - numbers[0]
            for name in (f"write-{size}", "read", "validate", "skip"):
                first, second = (counts((work, name, file, number), folder) for number, file in zip(numbers, files))
                instructions, allocations, calls = ((b - a) / more for a, b in zip(first, second))
                if allocations > 0.1 or calls > MOST_CALLS[size] or (size == "large" and instructions > octets / 50):
                    failures.append(f"{name} does too much for each of {size} elements")
                print(f"{instructions:12.0f}  {instructions / octets:12.4f}  {allocations:11.4f}  "
                      f"{calls:11.4f} {calls / octets * 2**20:10.2f}  {name}, {size} elements", flush=True)
            for file in files:
                os.remove(file)
        if not scan(work, folder):
            failures.append("scan takes too long, or reads too much or nothing")
    sys.exit("\n".join(failures) or 0)


if __name__ == "__main__":
    main()
