"""A plain reading of header metadata (SMPTE ST 377-1), and that of another program in RegXML (ST 2001-1), to compare
with what inspect says.
"""

import csv
import os
import re
import struct
import xml.etree.ElementTree as ElementTree

PRIMER_PACK = bytes.fromhex("060e2b34020501010d01020101050100")
INSTANCE_UID = "060e2b34.01010101.01011502.00000000"


def groups(octets):
    digits = octets.hex()
    return ".".join(digits[i:i + 8] for i in range(0, len(digits), 8))


def plain_label(text):
    """A label without its version, which tells nothing apart."""
    digits = text.removeprefix("urn:smpte:ul:").replace(".", "")
    return digits[:14] + digits[16:]


def read_sets(triplets):
    """By offset, the key of each local set and the octets of its properties by label."""
    tags, sets = {}, {}
    for key, start, value in triplets:
        if key[:7] + key[8:] == PRIMER_PACK[:7] + PRIMER_PACK[8:]:
            count, size = struct.unpack(">II", value[:8])
            entries = [value[8 + i * size:8 + i * size + 18] for i in range(count)]
            tags = {entry[:2]: groups(entry[2:]) for entry in entries}
        elif key[4:6] in (b"\x02\x53", b"\x02\x13"):
            properties, at = {}, 0
            while at < len(value):
                size = int.from_bytes(value[at + 2:at + 4], "big")
                properties[tags[value[at:at + 2]]] = value[at + 4:at + 4 + size]
                at += 4 + size
            sets[start] = (groups(key), properties)
    return sets


# ---- What inspect says, back in octets ----

def integer(number, size):
    return (number & ((1 << (8 * size)) - 1)).to_bytes(size, "big")


def encodings(value, octets):
    """The octets that a value of the report may stand for, given how many there are."""
    size = len(octets)
    if isinstance(value, bool):
        return [bytes([value])]
    if isinstance(value, int):
        return [integer(value, size)] if size in (1, 2, 4, 8) else []
    if isinstance(value, list):
        if size < 8:
            return []
        count, item = struct.unpack(">II", octets[:8])
        elements = [octets[8 + i * item:8 + (i + 1) * item] for i in range(count)]
        matches = count == len(value) and all(element in encodings(said, element)
                                              for said, element in zip(value, elements))
        return [octets] if matches and size == 8 + count * item else []
    texts = [value.encode("utf-16-be"), value.encode("utf-8")]
    candidates = texts + [text + bytes(size - len(text)) for text in texts if len(text) < size]
    for prefix in ("urn:smpte:ul:", "urn:smpte:umid:", "urn:uuid:", ""):
        if value.startswith(prefix):
            try:
                candidates.append(bytes.fromhex(value.removeprefix(prefix).replace(".", "").replace("-", "")))
            except ValueError:
                pass
    numbers = value.replace("/", ".").split(".")
    if all(number.lstrip("-").isdigit() for number in numbers):
        candidates += [b"".join(integer(int(number), width) for number in numbers) for width in (2, 4)]
    if len(value) == 24 and value[10] == "T":
        year, month, day = value[:10].split("-")
        hour, minute, second = value[11:19].split(":")
        candidates.append(struct.pack(">hBBBBBB", int(year), int(month), int(day), int(hour), int(minute), int(second),
                                      int(value[20:23]) // 4))
    if size == 16 and value[:1].isalpha():  # a pixel layout
        layout, at = b"", 0
        while at < len(value):
            end = at + 1
            while end < len(value) and value[end].isdigit():
                end += 1
            layout += value[at].encode() + bytes([int(value[at + 1:end] or 0) & 0xFF])
            at = end
        candidates.append(layout + bytes(size - len(layout)) if len(layout) <= size else b"")
    return candidates


def compare_plain(check, report, sets):
    """Every set that inspect knows has all its properties, with the values in the file."""
    who = "plain reading"
    inspected = {entry["offset"]: entry for region in report["metadata"] for entry in region["sets"]}
    unknown = {finding["message"].split(" - ")[1] for finding in report["findings"]
               if finding["message"].startswith("unrecognized (dark) metadata")}
    for offset, (key, properties) in sets.items():
        if offset not in inspected:
            check.holds(who, "sets of unknown classes", "urn:smpte:ul:" + key in unknown,
                        f"the set at {offset} is not in the report")
            continue
        entry = inspected.pop(offset)
        said = {plain_label(row["ul"]): row["value"] for row in entry["properties"] + entry["dark"]}
        said[plain_label(INSTANCE_UID)] = entry["instanceUID"]
        check.same(who, "properties", sorted(said), sorted(map(plain_label, properties)))
        for label, octets in properties.items():
            value = said.get(plain_label(label))
            check.holds(who, "values", octets in encodings(value, octets) or (octets == bytes(8) and value == []),
                        f"{entry['set']} at {offset}, {label}: inspect says {value!r}, the file {octets.hex()}")
    check.same(who, "sets", sorted(inspected), [])


# ---- RegXML ----

class Registers:
    """What the names of an independent reading stand for."""

    def __init__(self, folder):
        def rows(name):
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                return list(csv.DictReader(file, delimiter="\t", quoting=csv.QUOTE_NONE))

        self.labels = {}  # by name, since sets may have properties of one name
        for row in rows("groups.tsv"):
            label = plain_label(row["property_ul"].replace(" ", "").lower())
            self.labels.setdefault(row["property"], set()).add(label)
        self.numbers = {}
        for row in rows("types.tsv"):
            for facet in row["facets"].split("; "):
                name, _, number = facet.partition("=")
                if number.isdigit():
                    self.numbers[name] = int(number)


    def label(self, element, candidates):
        """The label of a property, of those that there are in its set."""
        labels = self.labels[name_of(element)]
        return min(labels & candidates or labels)


def name_of(element):
    return element.tag.split("}")[1]


def is_set(element):
    return any(name_of(child) == "InstanceID" for child in element)


def normal(registers, element, packages):
    """The value of a property in the words of inspect."""
    if len(element):
        if all(map(is_set, element)):
            targets = [child.find("{*}InstanceID").text for child in element]
            return targets if len(targets) > 1 else targets[0]
        if name_of(element[0]) == "Major":
            return ".".join(str(registers.numbers.get(child.text, child.text)) for child in element)
        return [child.text for child in element]
    text = element.text or ""
    if name_of(element) == "FormatVersion":
        major, minor = text.split(".")
        return str(256 * int(major) + int(minor))
    if name_of(element) == "PrimaryPackage":
        return packages.get(text, text)
    # Characters that XML cannot hold stand as their numbers.
    return re.sub(r"\$#x([0-9a-f]+);", lambda match: chr(int(match.group(1), 16)), text)


def compare_regxml(check, report, path, registers):
    who = "RegXML"
    root = ElementTree.parse(path).getroot()
    packages = {element.find("{*}PackageID").text: element.find("{*}InstanceID").text
                for element in root.iter() if element.find("{*}PackageID") is not None}
    inspected = {entry["instanceUID"]: entry for entry in report["metadata"][0]["sets"]}
    for element in filter(is_set, root.iter()):
        entry = inspected.get(element.find("{*}InstanceID").text)
        if entry is None:
            check.holds(who, "sets of unknown classes", name_of(element).startswith("IAData"),
                        f"{name_of(element)} is not in the report")
            continue
        said = {plain_label(row["ul"]): row["value"] for row in entry["properties"] + entry["dark"]}
        said[plain_label(INSTANCE_UID)] = entry["instanceUID"]
        labels = [registers.label(child, said.keys()) for child in element]
        check.same(who, "properties", sorted(said), sorted(labels))
        for child, label in zip(element, labels):
            value = said.get(label)
            other = normal(registers, child, packages)
            if isinstance(value, list):
                value = list(map(str, value))
                value = value[0] if len(value) == 1 and isinstance(other, str) else value
                other = [] if other == "" else other
            else:
                value = str(value)
            if isinstance(other, str) and len(other) == 20 and other.endswith("Z"):
                value = value.replace(".000Z", "Z")
            check.same(who, "values", value, other)
