#!/usr/bin/env python3
"""Checks what inspect and extract take of the system: memory on files far larger than that, and system calls for what
inspect skips.

usage: check.py INSPECT EXTRACT

Prints a line for each measure. The exit status is 1 when a limit is passed.
"""

import os
import re
import struct
import subprocess
import sys
import tempfile

PARTITION_PACK = bytes.fromhex("060e2b34020501010d01020101020300")
OP1A = bytes.fromhex("060e2b34040101010d01020101010900")
PICTURE = bytes.fromhex("060e2b34010201010d01030115010500")
MIB = 1 << 20


def klv_head(key, length):
    return key + b"\x88" + length.to_bytes(8, "big")


def sparse_file(path, count, length):
    """A header partition, then elements that are holes in the file but for their keys and lengths."""
    pack = struct.pack(">HHIQQQQQIQI", 1, 3, 1, 0, 0, 0, 0, 0, 0, 0, 1) + OP1A + struct.pack(">II", 0, 16)
    with open(path, "wb") as file:
        file.write(klv_head(PARTITION_PACK, len(pack)) + pack)
        for _ in range(count):
            file.write(klv_head(PICTURE, length))
            file.seek(length, os.SEEK_CUR)
        file.truncate(file.tell())


def peak_memory(take, *command):
    """MiB of a run of a command, and what take makes of the stream that it writes."""
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    output = take(process.stdout)
    _, _, usage = os.wait4(process.pid, 0)
    return usage.ru_maxrss / 1024, output


def text_of(stream):
    return stream.read().decode()


def size_of(stream):
    return sum(map(len, iter(lambda: stream.read(MIB), b"")))


def system_calls(inspect, path):
    """Calls of a run of inspect."""
    run = subprocess.run(["strace", "-f", "-c", inspect, path], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    return int(re.search(r"(\d+)(?:\s+\d+)? total$", run.stderr.decode(), re.MULTILINE).group(1))


def main():
    inspect, extract = sys.argv[1:]
    passed = True

    def limit(what, value, highest):
        nonlocal passed
        passed = passed and value <= highest
        print(f"{'within' if value <= highest else 'BEYOND'}  {what}: {value:.1f} of {highest:.1f}")

    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "sparse.mxf")
        for count, length in ((1, 10 << 30), (50000, 200000)):
            sparse_file(path, count, length)
            memory, output = peak_memory(text_of, inspect, path)
            if not re.search(rf"picture +{count} +{count * length}\b", output):
                sys.exit(f"inspect does not count {count} elements of {length} octets:\n{output}")
            limit(f"MiB of memory for {os.path.getsize(path) >> 20} MiB in {count} elements", memory, 32)
            memory, _ = peak_memory(text_of, inspect, path, "--html", os.path.join(folder, "page.html"))
            limit(f"MiB of memory to draw {count} elements", memory, 32)

        # One clip-wrapped element.
        clip = (4 << 30) + 7
        sparse_file(path, 1, clip)
        memory, octets = peak_memory(size_of, extract, path, "0x15010500", "-")
        if octets != clip:
            sys.exit(f"extract writes {octets} octets of {clip}")
        limit(f"MiB of memory to extract an element of {clip >> 20} MiB", memory, 32)

        sparse_file(path, 1, 100)
        base = system_calls(inspect, path)
        sparse_file(path, 2500, 200000)
        limit("system calls for each skipped element of 200 KB", (system_calls(inspect, path) - base) / 2499, 2.01)

        for claimed in ((1 << 63) - 200, (1 << 63) - 1, (1 << 64) - 1):
            sparse_file(path, 0, 0)
            with open(path, "ab") as file:
                file.write(klv_head(PICTURE, claimed) + b"and no more")
            memory, output = peak_memory(text_of, inspect, path)
            if not re.search(r"^ +fatal +\d+ ", output, re.MULTILINE):
                sys.exit(f"inspect has nothing fatal to say of a length of {claimed}:\n{output}")
            limit(f"MiB of memory for a claimed length of {claimed:#x}", memory, 32)
    sys.exit(0 if passed else 1)


main()
