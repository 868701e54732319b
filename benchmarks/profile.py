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

Before that, files that nobody would write are read, with 2,000 and with 20,000 of something in one place: index tables, elements
of one content package with keys of their own, sets, in as many chains of 25 and of 250 levels, that come in any order,
elements that many packages claim, and essence containers with packages of their own. It fails if ten times as many take more
than 13 times the instructions.
"""

import argparse
import os
import random
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


def instructions_of(command):
    callgrind = output("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command)
    return int(re.search(r"Collected : (\d+)", callgrind)[1])


def counts(command, folder):
    """Instructions, allocations and system calls of one run."""
    heap = output("valgrind", "--undef-value-errors=no", "--leak-check=no", *command)
    trace = os.path.join(folder, "trace")
    output("strace", "-f", "-o", trace, *command)
    with open(trace, encoding="ascii", errors="replace") as calls:
        return (instructions_of(command),
                int(re.search(r"total heap usage: ([\d,]+) allocs", heap)[1].replace(",", "")),
                sum(1 for _ in calls))


def pack(octet, value):
    """A partition pack or the like; @p octet are octets 13 and 14 of the key."""
    return bytes.fromhex("060e2b34020501010d01020101") + octet + b"\0\x88" + len(value).to_bytes(8, "big") + value


def partition(kind, place, previous=0, footer=0, header=0, index=0, body_offset=0, body_sid=0):
    """A partition pack; @p header and @p index are the octets of what follows it."""
    return pack(kind, struct.pack(">HHIQQQQQIQI", 1, 3, 1, place, previous, footer, header, index, 2 if index else 0,
                                  body_offset, body_sid) + OP1A + struct.pack(">II", 0, 16))


def sparse_file(path, size, distance):
    """Partitions at equal distances, between which there is fill of zeros that no disk holds."""
    offsets = range(0, size, distance)
    with open(path, "wb") as file:
        for number, offset in enumerate(offsets):
            file.seek(offset)
            kind = b"\x02\x04" if number == 0 else b"\x03\x04"
            file.write(partition(kind, offset, previous=max(0, offset - distance), body_offset=offset, body_sid=1))
            end = min(offset + distance, size)
            fill = end - file.tell() - 25
            file.write(bytes.fromhex("060e2b34010101010301021001000000") + b"\x88" + fill.to_bytes(8, "big"))
        file.seek(size)
        entries = b"".join(struct.pack(">IQ", 1, offset) for offset in offsets)
        file.write(pack(b"\x11\x01", entries + (len(entries) + 29).to_bytes(4, "big")))
    return len(offsets)


# ---- Growth ----

SEQUENCE = "060e2b34025301010d01010101010f00"
SEQUENCE_TAGS = {0x3C0A: "060e2b34010101010101150200000000", 0x0201: "060e2b34010101020407010000000000",
                 0x0202: "060e2b34010101020702020101030000", 0x1001: "060e2b34010101020601010406090000"}
PACKAGE_TAGS = {0x3C0A: "060e2b34010101010101150200000000", 0x0202: "060e2b34010101020702020101030000",
                0x2701: "060e2b34010101020601010601000000", 0x3F07: "060e2b34010101040103040400000000",
                0x4401: "060e2b34010101010101151000000000", 0x4403: "060e2b34010101020601010406050000",
                0x4803: "060e2b34010101020601010402040000", 0x4804: "060e2b34010101020104010300000000",
                0x4B01: "060e2b34010101020530040500000000"}
SOUND = bytes.fromhex("060e2b34040101010103020202000000")
CHAINS = 80


def klv(key, value):
    return bytes.fromhex(key) + b"\x83" + len(value).to_bytes(3, "big") + value


def local_set(key, *items):
    return klv(key, b"".join(struct.pack(">HH", tag, len(value)) + value for tag, value in items))


def uid(number):
    return b"growth.." + number.to_bytes(8, "big")


def write_file(path, header=b"", index=b"", bodies=(b"",)):
    """A header partition, one for each essence container, the footer partition and the random index."""
    places = [0]
    with open(path, "wb") as file:
        file.write(partition(b"\x02\x04", 0, header=len(header)) + header)
        for body_sid, body in enumerate(bodies, 1):
            places.append(file.tell())
            file.write(partition(b"\x03\x04", places[-1], previous=places[-2], index=len(index), body_sid=body_sid) +
                       index + body)
        footer = file.tell()
        file.write(partition(b"\x04\x04", footer, previous=places[-1], footer=footer))
        entries = b"".join(struct.pack(">IQ", *entry) for entry in enumerate(places)) + struct.pack(">IQ", 0, footer)
        file.write(pack(b"\x11\x01", entries + struct.pack(">I", len(entries) + 29)))


def primer(tags):
    return klv("060e2b34020501010d01020101050100", struct.pack(">II", len(tags), 18) + b"".join(
        struct.pack(">H", tag) + bytes.fromhex(label) for tag, label in tags.items()))


def sequence(own, below):
    return local_set(SEQUENCE, (0x3C0A, uid(own)), (0x0201, SOUND), (0x0202, struct.pack(">q", 1)),
                     (0x1001, struct.pack(">II", len(below), 16) + b"".join(map(uid, below))))


def sets(count, levels):
    """Header metadata of chains of sets."""
    chained = [sequence(own, [own + 1] if (own + 1) % levels else []) for own in range(count)]
    random.shuffle(chained)
    return primer(SEQUENCE_TAGS) + b"".join(chained)


def index_tables(path, count):
    """Segments of tables with SIDs of their own."""
    write_file(path, index=b"".join(local_set(
        "060e2b34025301010d01020101100100", (0x3C0A, uid(number)), (0x3F0B, struct.pack(">ii", 25, 1)),
        (0x3F0C, struct.pack(">q", 0)), (0x3F0D, struct.pack(">q", 1)), (0x3F05, struct.pack(">I", 100)),
        (0x3F06, random.randbytes(4)), (0x3F07, random.randbytes(4))) for number in range(count)))


def elements(path, count):
    """One content package of elements of picture, sound and data. The header metadata is there for rewrap."""
    keys = [b"\x15\x01\x05\x00"] + [random.choice(b"\x15\x16\x17").to_bytes(1, "big") + random.randbytes(3)
                                     for _ in range(count - 1)]
    write_file(path, header=sets(1, 1),
               bodies=[b"".join(klv("060e2b34010201010d010301" + key.hex(), b"essence") for key in keys)])


def nested_sets(path, count):
    write_file(path, header=sets(count, count // CHAINS))


def containers(path, count):
    """Elements of one essence container, which as many packages claim as a batch can list."""
    packages = min(count // 5, 4000)

    def umid(number):
        return bytes.fromhex("060a2b340101010501010f20130000000000000000000000") + number.to_bytes(8, "big")

    def batch(first):
        return struct.pack(">II", packages, 16) + b"".join(map(uid, range(first, first + packages)))

    header = [local_set("060e2b34025301010d01010101012f00", (0x3C0A, uid(0)), (0x3B03, uid(1)), (0x3B09, OP1A)),
              local_set("060e2b34025301010d01010101011800", (0x3C0A, uid(1)), (0x1901, batch(2)),
                        (0x1902, batch(2 + packages)))]
    for number in range(2, 2 + packages):
        header.append(local_set("060e2b34025301010d01010101013700", (0x3C0A, uid(number)), (0x4401, umid(number))))
        header.append(local_set("060e2b34025301010d01010101012300", (0x3C0A, uid(number + packages)),
                                (0x2701, umid(number)), (0x3F07, struct.pack(">I", 1))))
    keys = [random.choice(b"\x15\x16\x17").to_bytes(1, "big") + random.randbytes(3) for _ in range(count)]
    write_file(path, header=primer({}) + b"".join(header),
               bodies=[b"".join(klv("060e2b34010201010d010301" + key.hex(), b"essence") for key in keys)])


def body_sids(path, count):
    """Essence containers of two edit units, each with a file package that says so."""
    header = [primer(PACKAGE_TAGS), local_set("060e2b34025301010d01010101012f00", (0x3C0A, uid(0)))]
    for body_sid in range(1, 1 + count):
        package, track, segment = (uid(4 * body_sid + part) for part in range(3))
        header.append(local_set("060e2b34025301010d01010101012300", (0x3C0A, uid(4 * body_sid + 3)),
                                (0x2701, 2 * package), (0x3F07, struct.pack(">I", body_sid))))
        header.append(local_set("060e2b34025301010d01010101013700", (0x3C0A, package), (0x4401, 2 * package),
                                (0x4403, struct.pack(">II", 1, 16) + track)))
        header.append(local_set("060e2b34025301010d01010101013b00", (0x3C0A, track), (0x4803, segment),
                                (0x4804, b"\x15\x01\x05\x00"), (0x4B01, struct.pack(">ii", 25, 1))))
        header.append(local_set(SEQUENCE, (0x3C0A, segment), (0x0202, struct.pack(">q", 2))))
    write_file(path, header=b"".join(header), bodies=[2 * klv("060e2b34010201010d01030115010500", b"essence")] * count)


def grow(work, rewrap, folder):
    """What takes far more than ten times the work for ten times as much."""
    random.seed(1)
    counted = [2000, 20000]
    made = [(index_tables, [(work, "index"), (work, "validate")]), (elements, [(work, "validate"), (rewrap,)]),
            (nested_sets, [(work, "metadata"), (work, "validate")]), (containers, [(work, "validate")]),
            (body_sids, [(rewrap,)])]
    failures = []
    print(f"{'instructions for each of':>26}")
    print(f"{counted[0]:12}  {counted[1]:12}  {'times':>11}  work")
    for make, commands in made:
        files = [os.path.join(folder, f"{count}.mxf") for count in counted]
        for file, count in zip(files, counted):
            make(file, count)
        for command in commands:
            out = [os.path.join(folder, "out.mxf")] if command == (rewrap,) else []
            first, second = (instructions_of([*command, file, *out]) for file in files)
            title = f"{os.path.basename(' '.join(command))}, {make.__name__.replace('_', ' ')}"
            print(f"{first / counted[0]:12.0f}  {second / counted[1]:12.0f}  {second / first:11.2f}  {title}", flush=True)
            if second > 13 * first:
                failures.append(f"{title}: ten times as many take {second / first:.1f} times the instructions")
    return failures


# ---- A huge file ----

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
        failures += grow(work, os.path.join(options.build, "tools", "rewrap"), folder)
        if not scan(work, folder):
            failures.append("scan takes too long, or reads too much or nothing")
    sys.exit("\n".join(failures) or 0)


if __name__ == "__main__":
    main()
