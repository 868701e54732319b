#!/usr/bin/env python3
"""Checks what inspect says of MXF files against independent readings of the same files.

usage: check.py [--sample FILE]... [--run-in FILE]... [--registers FOLDER] INSPECT FILE...

A file is read here in the plainest way, as keys, lengths and values; by ffprobe, which cuts the essence into packets;
and by MediaInfo. All three must be able to read a FILE; a sample may be beyond ffprobe and MediaInfo. A file given with
--run-in is read again and again with octets in front of its header partition. Where a sample comes with a reading of
its header metadata in RegXML, and the registers of SMPTE are at hand, that is compared too.

For every file one line says what was compared, and a line for each disagreement follows it. The exit status is 1 when
there is any disagreement.
"""

import argparse
import bisect
import contextlib
import json
import mmap
import os
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field

import metadata

TIMEOUT = 60  # seconds, for any program that is run here


# ---- The plain reading: SMPTE ST 336 for the triplets, ST 377-1 for partitions, ST 379 for essence elements ----

PARTITION_PACK = bytes.fromhex("060e2b34020501010d01020101")  # then kind, status and a zero
RANDOM_INDEX_PACK = bytes.fromhex("060e2b34020501010d01020101110100")
INDEX_SEGMENT = bytes.fromhex("060e2b34025301010d01020101100100")
FILL = bytes.fromhex("060e2b34010101010301021001000000")
MAX_RUN_IN = 65535
RUN_IN_END = PARTITION_PACK[:11]

PARTITION_KINDS = {0x02: "header", 0x03: "body", 0x04: "footer"}
PARTITION_STATUS = {
    0x01: "openIncomplete",
    0x02: "closedIncomplete",
    0x03: "openComplete",
    0x04: "closedComplete",
    0x11: "genericStream",
}
# Name in the report of inspect, and octets in the pack.
PARTITION_FIELDS = (
    ("majorVersion", 2),
    ("minorVersion", 2),
    ("kagSize", 4),
    ("thisPartition", 8),
    ("previousPartition", 8),
    ("footerPartition", 8),
    ("headerByteCount", 8),
    ("indexByteCount", 8),
    ("indexSID", 4),
    ("bodyOffset", 8),
    ("bodySID", 4),
)
ESSENCE_KINDS = {
    0x05: "picture", 0x15: "picture",
    0x06: "sound", 0x16: "sound",
    0x07: "data", 0x17: "data",
    0x18: "compound",
}
SYSTEM_ITEMS = (0x04, 0x14)


class Malformed(Exception):
    """The file is not a sequence of triplets as it should be."""


@dataclass
class Element:
    """A triplet of a body: where its key, its value and what comes next begin."""

    key: bytes
    start: int
    value: int
    end: int
    body_sid: int

    @property
    def size(self):
        return self.end - self.value


@dataclass
class Reading:
    size: int
    run_in: int
    partitions: list = field(default_factory=list)
    random_index: list = None
    elements: list = field(default_factory=list)
    others: list = field(default_factory=list)
    system_elements: int = 0
    content_packages: int = 0
    index_segments: list = field(default_factory=list)
    header_metadata: list = field(default_factory=list)  # key, start and value of each triplet
    bodies: list = field(default_factory=list)  # body SID, start and end of each

    def in_words_of_inspect(self):
        return {
            "fileSize": self.size,
            "runIn": self.run_in,
            "partitions": self.partitions,
            "randomIndex": self.random_index,
            "essence": totals(self.elements, lambda key: {"kind": essence_kind(key)}),
            "otherElements": totals(self.others, lambda key: {}),
            "systemElements": self.system_elements,
            "contentPackages": self.content_packages,
            "indexSegments": self.index_segments,
        }


def totals(elements, properties):
    """How many elements and octets there are of each key, in the order of the keys.

    Keys that differ in the version of the registry alone are one key, shown as it occurs first.
    """
    rows = {}
    for element in elements:
        key = element.key
        row = rows.setdefault(
            key[:7] + key[8:], {"key": urn(key), **properties(key), "elements": 0, "bytes": 0})
        row["elements"] += 1
        row["bytes"] += element.size
    return sorted(rows.values(), key=lambda row: row["key"])


def number(octets):
    return int.from_bytes(octets, "big")


def urn(label):
    digits = label.hex()
    return "urn:smpte:ul:" + ".".join(digits[i:i + 8] for i in range(0, 32, 8))


def is_like(key, pattern):
    """Whether the key is that of the pattern, in whatever version of the registry (octet 8 of the label)."""
    return key[:7] == pattern[:7] and key[8:len(pattern)] == pattern[8:]


def essence_kind(key):
    """What an essence element holds, of the Generic Container or a private one, or None if the key is no such."""
    if key[:4] == bytes.fromhex("060e2b34") and key[4:6] == b"\x01\x02" and key[8] == 0x0e:
        return "data"
    if key[:7] == bytes.fromhex("060e2b34010201") and key[8:12] == bytes.fromhex("0d010301"):
        return ESSENCE_KINDS.get(key[12])
    return None


def is_system_element(key):
    return (key[:5] == bytes.fromhex("060e2b3402") and key[6] == 1 and key[8:12] == bytes.fromhex("0d010301")
            and key[12] in SYSTEM_ITEMS)


def triplets(data, position):
    """Yields key, start of key, start of value and end of value of each triplet up to the end of the file."""
    while position < len(data):
        key = data[position:position + 16]
        if len(key) < 16 or key[:4] != PARTITION_PACK[:4]:
            raise Malformed(f"no key at {position}")
        value = position + 17
        length = number(data[value - 1:value])
        if length >= 0x80:
            octets = length & 0x7F
            length = number(data[value:value + octets])
            value += octets
        if value + length > len(data) or value > len(data):
            raise Malformed(f"the triplet at {position} goes on behind the end of the file")
        yield key, position, value, value + length
        position = value + length


def partition(key, start, value):
    if key[14] not in PARTITION_STATUS:
        raise Malformed(f"the partition pack at {start} has an unknown status")
    report = {"offset": start, "kind": PARTITION_KINDS[key[13]], "status": PARTITION_STATUS[key[14]]}
    position = 0
    for name, octets in PARTITION_FIELDS:
        report[name] = number(value[position:position + octets])
        position += octets
    report["operationalPattern"] = urn(value[position:position + 16])
    count, item = number(value[position + 16:position + 20]), number(value[position + 20:position + 24])
    labels = value[position + 24:]
    if count * item > len(labels) or (count > 0 and item != 16):
        raise Malformed(f"the partition pack at {start} has no proper batch of essence containers")
    report["essenceContainers"] = [urn(labels[i * 16:i * 16 + 16]) for i in range(count)]
    return report


def random_index(value, start, end):
    if len(value) % 12 != 4 or number(value[-4:]) != end - start:
        raise Malformed(f"the random index pack at {start} does not state its length")
    return [{"bodySID": number(value[i:i + 4]), "byteOffset": number(value[i + 4:i + 12])}
            for i in range(0, len(value) - 4, 12)]


def index_segment(start, value):
    items, at = {}, 0
    while at < len(value):
        size = number(value[at + 2:at + 4])
        items[number(value[at:at + 2])] = value[at + 4:at + 4 + size]
        at += 4 + size
    rate = items[0x3F0B]
    return {
        "offset": start,
        "indexStartPosition": number(items[0x3F0C]),
        "indexDuration": number(items[0x3F0D]),
        "editUnitByteCount": number(items.get(0x3F05, b"")),
        "indexSID": number(items.get(0x3F06, b"")),
        "bodySID": number(items[0x3F07]),
        "indexEditRate": f"{number(rate[:4])}/{number(rate[4:])}",
        "sliceCount": number(items.get(0x3F08, b"")),
        "posTableCount": number(items.get(0x3F0E, b"")),
        "deltaEntries": number(items.get(0x3F09, b"")[:4]),
        "entries": number(items.get(0x3F0A, b"")[:4]),
    }


def read(data):
    run_in = data.find(RUN_IN_END, 0, MAX_RUN_IN + len(RUN_IN_END))
    if run_in < 0:
        raise Malformed("no header partition")
    reading = Reading(len(data), run_in)
    current = None
    first = None  # the key of the first element of the body
    body = None  # where the body of the partition begins; None while only fill followed the partition pack
    for key, start, value, end in triplets(data, run_in):
        if is_like(key, PARTITION_PACK) and key[13] in PARTITION_KINDS:
            current = partition(key, start, data[value:end])
            reading.partitions.append(current)
            body = first = None
        elif is_like(key, RANDOM_INDEX_PACK):
            reading.random_index = random_index(data[value:end], start, end)
        elif is_like(key, FILL):
            if body is not None and reading.bodies and reading.bodies[-1][1] == body:
                reading.bodies[-1][2] = end
            continue
        elif current is None:
            raise Malformed("no header partition")
        else:
            if body is None:
                # Byte counts begin behind the fill that follows the pack.
                index = start + current["headerByteCount"]
                body = index + current["indexByteCount"]
            if start < index:
                reading.header_metadata.append((key, start, data[value:end]))
            elif start < body and is_like(key, INDEX_SEGMENT):
                reading.index_segments.append(index_segment(start, data[value:end]))
            if start < body:
                continue
            if reading.bodies and reading.bodies[-1][1] == body:
                reading.bodies[-1][2] = end
            else:
                reading.bodies.append([current["bodySID"], body, end])
            if is_system_element(key) or essence_kind(key):
                first = first or key
                reading.content_packages += is_like(key, first)
            if is_system_element(key):
                reading.system_elements += 1
            elif essence_kind(key):
                reading.elements.append(Element(key, start, value, end, current["bodySID"]))
            else:
                reading.others.append(Element(key, start, value, end, current["bodySID"]))
    return reading


# ---- Comparing ----

class Check:
    """What was compared about one file, and where the readings disagree."""

    def __init__(self, name):
        self.name = name
        self.compared = {}  # by reader: how many values were compared, by what they are about
        self.problems = []

    def same(self, reader, what, inspected, other):
        """Compares what inspect says with what another reader says; of an object, the members that the reader has."""
        self._count(reader, what, leaves(other))
        self.problems += differences(what, inspected, other, reader)

    def holds(self, reader, what, condition, problem):
        self._count(reader, what, 1)
        if not condition:
            self.problems.append(problem)

    def not_compared(self, reader, reason):
        self.compared.setdefault(reader, {})[reason] = 0

    def report(self):
        parts = [f"{reader} {sum(counts.values())} ({', '.join(counts)})" for reader, counts in self.compared.items()]
        print(f"{'DIFFERS' if self.problems else 'same   '} {self.name}: {', '.join(parts)}")
        for problem in self.problems:
            print(f"        {problem}")
        return not self.problems

    def _count(self, reader, what, values):
        counts = self.compared.setdefault(reader, {})
        counts[what] = counts.get(what, 0) + values


def leaves(value):
    if isinstance(value, (dict, list)) and value:
        return sum(map(leaves, value.values() if isinstance(value, dict) else value))
    return 1


def differences(path, inspected, other, reader):
    if isinstance(other, dict) and isinstance(inspected, dict):
        for name, value in other.items():
            if name in inspected:
                yield from differences(f"{path}.{name}", inspected[name], value, reader)
            else:
                yield f"{path}.{name}: {reader} says {value!r}, inspect does not say it"
    elif isinstance(other, list) and isinstance(inspected, list) and len(other) == len(inspected):
        for i, value in enumerate(other):
            yield from differences(f"{path}[{i}]", inspected[i], value, reader)
    elif type(other) is not type(inspected) or other != inspected:
        yield f"{path}: inspect says {inspected!r}, {reader} says {other!r}"


def run(*command):
    # Programs speak of the file by its name, which need not be text.
    return subprocess.run(command, capture_output=True, text=True, errors="replace", timeout=TIMEOUT, check=False)


def grave(report):
    return [finding for finding in report["findings"] if finding["level"] != "warning"]


def ask_inspect(check, inspect, path):
    """What inspect says of the file, None if it does not answer."""
    result = run(inspect, "--json", path)
    try:
        report = json.loads(result.stdout)
        expected = 1 if grave(report) else 0
    except (ValueError, KeyError, TypeError) as problem:
        check.problems.append(
            f"inspect ended with {result.returncode} and no report ({problem}): {result.stderr.strip()}")
        return None
    check.same("inspect", "exit status", result.returncode, expected)
    for row in ("essence", "otherElements"):
        report.get(row, []).sort(key=lambda element: element["key"])
    return report


def compare_own(check, report, reading):
    for name, value in reading.in_words_of_inspect().items():
        check.same("plain reading", name, report.get(name), value)


def octets_of(*command):
    return subprocess.run(command, capture_output=True, timeout=TIMEOUT, check=False).stdout


def extracted(inspect, path, selection):
    """What extract, which stands beside inspect, writes."""
    return octets_of(os.path.join(os.path.dirname(inspect), "extract"), path, selection, "-")


def compare_extract(check, inspect, path, reading, data):
    tracks = {}
    for element in reading.elements + reading.others:
        if element.key[4] == 1:  # an individual item, as essence is
            tracks.setdefault((element.key, element.body_sid), []).append(data[element.value:element.end])
    for (key, body_sid), values in tracks.items():
        check.holds("plain reading", "extracted octets",
                    extracted(inspect, path, f"{urn(key)}@{body_sid}") == b"".join(values),
                    f"{urn(key)}@{body_sid}: extract has other octets than the elements")


# ---- ffprobe ----

def is_aes3_of_d10(key):
    """Sound elements of ST 386 hold AES3 subframes, which ffprobe turns into plain samples."""
    return key[12] == 0x06 and key[14] == 0x10


def compare_essence(check, inspect, path, key, stream, is_sample):
    """Whether extract writes the octets that ffmpeg copies."""
    own = extracted(inspect, path, urn(key))
    copied = octets_of("ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", f"0:{stream}", "-c", "copy",
                    "-f", "data", "-")
    if is_sample and not copied:
        check.not_compared("ffmpeg", "no essence that it copies")
        return
    check.holds("ffmpeg", "extracted essence", own == copied and copied,
                f"{urn(key)}: extract has {len(own)} octets, which are not the {len(copied)} of ffmpeg")


def compare_ffprobe(check, inspect, path, report, reading, is_sample):
    result = run("ffprobe", "-v", "error", "-of", "json", "-show_entries",
                 "packet=stream_index,pos,size:format=size:format_tags=operational_pattern_ul,timecode", path)
    if result.returncode != 0 or result.stderr:
        check.not_compared("ffprobe", "reads it with errors")
        if not is_sample:
            check.problems.append(f"ffprobe: {result.stderr.strip()}")
        return
    # A property that is required and not there does not keep ffprobe from reading.
    check.same("ffprobe", "no errors", [finding["message"] for finding in grave(report)
                                        if not finding["message"].startswith("missing ")], [])

    probed = json.loads(result.stdout)
    check.same("ffprobe", "fileSize", report["fileSize"], int(probed["format"]["size"]))
    check.same("ffprobe", "operational pattern", report["partitions"][0]["operationalPattern"],
               "urn:smpte:ul:" + probed["format"]["tags"]["operational_pattern_ul"])

    # ffprobe has it from the timecode track, inspect from the system item of the first content package.
    if report["firstTimecode"] is not None and "timecode" in probed["format"]["tags"]:
        check.same("ffprobe", "timecode", report["firstTimecode"], probed["format"]["tags"]["timecode"])

    starts = [element.start for element in reading.elements]
    packets = {}  # by key: for each element by its index, the sizes of the packets in it
    streams = {}  # by key: the index of the stream that ffprobe makes of the elements
    for packet in probed["packets"]:
        position = int(packet.get("pos", -1))
        index = bisect.bisect_right(starts, position) - 1
        if index < 0 or position >= reading.elements[index].end:
            check.problems.append(f"ffprobe has a packet at {position}, where no essence element is")
            return
        streams[reading.elements[index].key] = packet["stream_index"]
        sizes = packets.setdefault(reading.elements[index].key, {})
        sizes.setdefault(index, []).append(int(packet["size"]))

    essence = {row["key"]: row for row in report["essence"]}
    check.same("ffprobe", "essence keys", sorted(essence), sorted(urn(key) for key in packets))
    for key, by_element in packets.items():
        row = essence.get(urn(key), {"elements": None, "bytes": None})
        check.same("ffprobe", "elements", row["elements"], len(by_element))
        if not is_aes3_of_d10(key):
            check.same("ffprobe", "octets of essence", row["bytes"], sum(map(sum, by_element.values())))
            check.holds("ffprobe", "size of each element",
                        all(sum(sizes) == reading.elements[i].size for i, sizes in by_element.items()),
                        f"{urn(key)}: the packets of ffprobe are not as large as the elements they are in")
            compare_essence(check, inspect, path, key, streams[key], is_sample)


# ---- MediaInfo ----

MEDIAINFO_STATUS = {
    "openIncomplete": "Open / Incomplete",
    "closedIncomplete": "Closed / Incomplete",
    "openComplete": "Open / Complete",
    "closedComplete": "Closed / Complete",
}
MEDIAINFO_KINDS = {"Video": "picture", "Audio": "sound"}

# Of the zeros that an MPEG-2 or AVC stream ends with MediaInfo leaves up to three out.
MEDIAINFO_TRIMS = {"MPEG Video": 3, "AVC": 3}
# It takes the size of uncompressed pictures from the index table, and counts keys, lengths and system items in.
MEDIAINFO_ESTIMATES = {"YUV"}


def mediainfo(path, parse_speed):
    tracks = json.loads(run("mediainfo", f"--ParseSpeed={parse_speed}", "--Output=JSON", path).stdout)["media"]["track"]
    return tracks[0], [track for track in tracks if track["@type"] in MEDIAINFO_KINDS]


def pattern_name(label):
    """The name of an operational pattern: its item and package complexity are octets 13 and 14 of the label."""
    item, package = bytes.fromhex(label.removeprefix("urn:smpte:ul:").replace(".", ""))[12:14]
    return "OP-Atom" if item == 0x10 else f"OP-{item}{chr(ord('a') + package - 1)}"


def compare_mediainfo(check, path, report, is_sample):
    # Frames are counted in the metadata by a quick reading, octets in the essence by a thorough one.
    general, tracks = mediainfo(path, 0.5)
    sizes = {track.get("ID"): track.get("StreamSize") for track in mediainfo(path, 1)[1]}

    first, last = report["partitions"][0], report["partitions"][-1]
    for what, value, member in (
        ("fileSize", str(report["fileSize"]), "FileSize"),
        ("operational pattern", pattern_name(first["operationalPattern"]), "Format_Profile"),
        ("status", MEDIAINFO_STATUS.get(first["status"]), "Format_Settings"),
        ("footer", str(report["fileSize"] - last["offset"]), "FooterSize"),
    ):
        if member in general or not is_sample:
            check.same("MediaInfo", what, value, general.get(member))

    if is_sample:
        # Of essence that it does not know it may show what the descriptor says of colours, as a track without format.
        tracks = [track for track in tracks if "Format" in track]
    if is_sample and not tracks:
        check.not_compared("MediaInfo", "no essence that it knows")
        return
    containers = {label[-17:].replace(".", "") for label in first["essenceContainers"]}
    for track_type, kind in MEDIAINFO_KINDS.items():
        rows = [row for row in report["essence"] if row["kind"] == kind]
        of_kind = [track for track in tracks if track["@type"] == track_type]
        check.same("MediaInfo", f"{kind} keys", len(rows), len(of_kind))
        for row, track in zip(rows, of_kind):
            label = track["CodecID"].split("-")[0].lower()
            check.holds("MediaInfo", "essence containers", label in containers,
                        f"MediaInfo has essence container {label}, which the header partition does not announce")
            if row["elements"] > 1 and "FrameCount" in track:
                check.same("MediaInfo", "frames", row["elements"], int(track["FrameCount"]))
            size = sizes.get(track.get("ID"))
            if size and track["Format"] not in MEDIAINFO_ESTIMATES:
                size = int(size.split(" / ")[0])
                check.holds("MediaInfo", f"octets of {kind}",
                            0 <= row["bytes"] - size <= MEDIAINFO_TRIMS.get(track["Format"], 0),
                            f"{row['key']}: inspect says {row['bytes']} octets, MediaInfo {size}")


def compare_metadata(check, path, report, reading, registers):
    metadata.compare_plain(check, report, metadata.read_sets(reading.header_metadata))
    folder, name = os.path.split(path)
    regxml = os.path.join(folder, "regxml", os.path.splitext(name)[0] + ".xml")
    if registers and os.path.exists(regxml):
        metadata.compare_regxml(check, report, regxml, registers)


def check_file(inspect, path, registers=None, is_sample=False):
    check = Check(os.path.basename(path))
    report = ask_inspect(check, inspect, path)
    if report:
        try:
            with mapped(path) as data:
                reading = read(data)
                compare_extract(check, inspect, path, reading, data)
        except Malformed as problem:
            check.problems.append(f"plain reading: {problem}")
        else:
            compare_own(check, report, reading)
            compare_metadata(check, path, report, reading, registers)
            if report.get("partitions"):
                compare_ffprobe(check, inspect, path, report, reading, is_sample)
                compare_mediainfo(check, path, report, is_sample)
    return check.report()


@contextlib.contextmanager
def mapped(path):
    with open(path, "rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as data:
        yield data


# ---- Run-in ----

def run_in_of(length):
    """Octets that look like the beginning of a partition pack again and again, to the last, and never are one."""
    lure = PARTITION_PACK[:8] + PARTITION_PACK[:10] + PARTITION_PACK[:4]
    return (lure * (length // len(lure) + 1))[-length:]


def shifted(value, octets):
    """What a report, or a part of one, says when everything stands that many octets further on."""
    if isinstance(value, dict):
        return {name: member + octets if name in ("offset", "partition", "position", "fileSize", "runIn") else shifted(member, octets)
                for name, member in value.items()}
    if isinstance(value, list):
        return [shifted(entry, octets) for entry in value]
    return value


def is_generalized(label):
    return int(label.split(".")[3][:2], 16) < 0x10


def compare_run_in(check, inspect, path, plain, length):
    who = f"run-in of {length}"
    report = ask_inspect(check, inspect, path)
    if report is None:
        return
    if length > MAX_RUN_IN:
        check.same(who, "fatal finding", [(finding["level"], finding["message"]) for finding in report["findings"]],
                   [("fatal", "invalid run-in")])
        check.same(who, "no partition", report["partitions"], [])
        return
    with mapped(path) as data:
        compare_own(check, report, read(data))
    # The library objects to a run-in once for each partition that states a generalized operational pattern.
    objection = "generalized operational pattern with run-in"
    objections = [finding for finding in report["findings"] if finding["message"].startswith(objection)]
    check.same(who, "objections", [(finding["level"], finding["position"]) for finding in objections],
               [("error", row["offset"]) for row in report["partitions"] if is_generalized(row["operationalPattern"])])
    report["findings"] = [finding for finding in report["findings"] if finding not in objections]
    for name, value in shifted(plain, length).items():
        check.same(who, name, report.get(name), value)


def check_run_in(inspect, path):
    check = Check(f"{os.path.basename(path)} with run-in")
    plain = ask_inspect(check, inspect, path)
    if plain:
        with tempfile.TemporaryDirectory() as folder:
            longer = os.path.join(folder, "run-in.mxf")
            for length in (1, MAX_RUN_IN, MAX_RUN_IN + 1):
                with open(longer, "wb") as output, open(path, "rb") as source:
                    output.write(run_in_of(length))
                    shutil.copyfileobj(source, output)
                compare_run_in(check, inspect, longer, plain, length)
    return check.report()


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--sample", action="append", default=[], metavar="FILE",
                           help="a file that ffprobe and MediaInfo need not understand")
    arguments.add_argument("--run-in", action="append", default=[], metavar="FILE",
                           help="a file without run-in to be read with some as well")
    arguments.add_argument("--registers", metavar="FOLDER", help="tables of the registers of SMPTE")
    arguments.add_argument("inspect", help="the program to be checked")
    arguments.add_argument("files", nargs="+", metavar="FILE")
    options = arguments.parse_args()

    registers = metadata.Registers(options.registers) if options.registers else None
    results = [check_file(options.inspect, path) for path in options.files]
    results += [check_file(options.inspect, path, registers, is_sample=True) for path in options.sample]
    results += [check_run_in(options.inspect, path) for path in options.run_in]
    sys.exit(0 if all(results) else 1)


if __name__ == "__main__":
    main()
