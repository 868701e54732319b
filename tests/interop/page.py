#!/usr/bin/env python3
"""Checks the HTML pages that inspect writes of MXF files against a plain reading of the same files.

usage: page.py INSPECT FILE...

Each FILE is drawn as it is, cut off, with a partition pack overwritten and with hostile texts in its metadata; FILEs
without the texts that the hostile ones take the place of, or without a second partition, are not changed in that way.
For every page one line says what was checked, and a line for each problem follows it. The exit status is 1 when there
is any.
"""

import collections
import html.parser
import os
import re
import subprocess
import sys
import tempfile

from check import (FILL, PARTITION_PACK, RANDOM_INDEX_PACK, Malformed, PARTITION_KINDS, RUN_IN_END, essence_kind,
                   is_like, is_system_element, triplets)

MAX_PAGE = 4 << 20
# Texts of the files that ffmpeg makes, and others of that length that would show if they were not escaped.
HOSTILE = {"FFmpeg": "<b>\"'&", "OP1a Muxer": "</script>\u202e", "OPAtom Muxer": "</style>\u202e\x07\x80<"}
BLOCK_KINDS = {"partition pack", "fill", "random index", "picture", "sound", "data", "compound", "system"}


class Page(html.parser.HTMLParser):
    """What a page consists of, and what is wrong with its markup."""

    VOID = {"meta", "input", "br"}
    CLOSED_BY_NEXT = {"td", "th"}

    def __init__(self, text):
        super().__init__(convert_charrefs=True)
        self.ids, self.links, self.problems, self.open = collections.Counter(), set(), [], []
        self.tags, self.text, self.code = collections.Counter(), [], []
        self.drawing = []  # position and octets of each block of the file, in the order in which they are drawn
        self.rows = {}  # the cells of the tables of blocks, by position
        self.feed(text)
        self.close()
        if self.open:
            self.problems.append(f"never closed: {self.open}")

    def handle_starttag(self, tag, attributes):
        names = [name for name, _ in attributes]
        attributes = dict(attributes)
        self.tags[tag] += 1
        self.ids[attributes.get("id")] += 1
        self.problems += [f"{tag} with {name}" for name in names
                          if name in ("src", "srcset", "action", "data") or name.startswith("on")
                          or names.count(name) > 1]
        target = attributes.get("href")
        if target is not None:
            self.links.add(target)
        if tag == "a" and "parts" in self.open and target:
            octets = re.search(r"flex-grow:(\d+)", attributes["style"])
            self.drawing.append((int(target.removeprefix("#at-")), int(octets[1])))
        if tag == "tr":
            at = re.fullmatch(r"at-(\d+)", attributes.get("id", ""))
            self.row = self.rows.setdefault(int(at[1]), []) if at else None
        elif tag == "td" and self.row is not None:
            self.row.append("")
        if tag not in self.VOID | self.CLOSED_BY_NEXT:
            self.open.append("parts" if attributes.get("class") == "parts" else tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() not in (tag, "parts"):
            self.problems.append(f"</{tag}> at {self.getpos()} closes nothing")

    def handle_data(self, data):
        if self.open[-1:] in (["script"], ["style"]):
            self.code.append(data)
        else:
            self.text.append(data)
            if "tr" in self.open and self.row:
                self.row[-1] += data


def kind_of(key):
    if is_like(key, PARTITION_PACK) and key[13] in PARTITION_KINDS:
        return "partition pack"
    for pattern, kind in ((FILL, "fill"), (RANDOM_INDEX_PACK, "random index")):
        if is_like(key, pattern):
            return kind
    return "system" if is_system_element(key) else essence_kind(key)


def check_blocks(page, data):
    """Compares the blocks of a page with the triplets that stand in them."""
    run_in = data.find(RUN_IN_END)
    starts = {}  # kind and end of each triplet by its start, as far as they can be read
    try:
        for key, start, _, end in triplets(data, run_in):
            starts[start] = kind_of(key), end
    except Malformed:
        pass
    problems = []
    for position, (name, _, in_hex, octets, _, count, contents, *_) in page.rows.items():
        end = position + int(octets)
        if int(in_hex, 16) != position:
            problems.append(f"{position} is not {in_hex}")
        sums, at, number = collections.Counter(), position, 0
        while at in starts and at < end:
            kind, following = starts[at]
            sums[kind] += following - at
            at, number = following, number + 1
        if name in ("run-in", "not readable") or not number:
            continue
        if at != end or number != int(count):
            problems.append(f"{name} at {position} has {octets} octets, {count} triplets; it should end at {at}")
        if name in ("interleaved", "left out"):
            shares = {kind.strip(): float(share) for kind, share in re.findall(r"([a-z ]*[a-z]) ([\d.]+) %", contents)}
            problems += [f"{name} at {position}: {kind} has {sums[kind]} octets, not {shares.get(kind)} %"
                         for kind in BLOCK_KINDS if abs(100 * sums[kind] / int(octets) - shares.get(kind, 0)) > 0.06]
        elif set(sums) != ({name} if name in BLOCK_KINDS else {None}):
            problems.append(f"{name} at {position} holds {dict(sums)}")
    return problems


def check(inspect, what, data, folder, expected=(), tags=None):
    """Prints what is wrong with the page of a file with that data.

    @param expected texts that the page shows, @param tags how many of each it has, if that is known
    @return whether nothing is wrong, and how many of each tag there are
    """
    source, target = os.path.join(folder, "<img>&.mxf"), os.path.join(folder, "page.html")
    with open(source, "wb") as file:
        file.write(data)
    plain = subprocess.run([inspect, source], capture_output=True)
    run = subprocess.run([inspect, source, "--html", target], capture_output=True)
    problems = []
    if (run.returncode, run.stdout, run.stderr) != (plain.returncode, plain.stdout, plain.stderr):
        problems.append(f"--html changes the report: {run.stderr.decode()}")
    with open(target, "rb") as file:
        octets = file.read()
    page = Page(octets.decode("utf-8", "strict"))
    problems += page.problems
    problems += [f"{link} leads nowhere" for link in page.links if link[:1] != "#" or link[1:] not in page.ids]
    problems += [f"id {name} is there {count} times" for name, count in page.ids.items() if name and count > 1]
    problems += [f"outside reference {found}" for found in re.findall(r"//\w|url\(|@import|fetch", "".join(page.code))]
    problems += [f"<{tag}>" for tag in page.tags.keys() & {"img", "link", "iframe", "object", "embed", "form", "base"}]
    if tags is not None and page.tags != tags:
        problems.append(f"markup from the file: {page.tags - tags}")
    if [position for position, _ in page.drawing] != [0] * bool(page.drawing) + [sum(pair) for pair in page.drawing[:-1]]:
        problems.append("the blocks do not follow one another")
    if sum(octets for _, octets in page.drawing) != len(data):
        problems.append("the blocks are not as long as the file")
    if set(page.rows) != {position for position, _ in page.drawing}:
        problems.append("a block without a row, or the other way round")
    problems += check_blocks(page, data)
    text = "".join(page.text)
    problems += [f"{wanted!r} is not shown" for wanted in ("<img>&.mxf", *expected) if wanted not in text]
    if len(octets) > MAX_PAGE:
        problems.append(f"{len(octets)} octets are too many")
    print(f"{'FAILED' if problems else 'passed'}  {what}: {len(page.drawing)} blocks, {len(page.links)} links")
    for problem in problems[:20]:
        print(f"        {problem}")
    return not problems, page.tags


def many_partitions(data, count):
    """The header partition, then nothing but body partitions."""
    packs = [(start, end) for key, start, _, end in triplets(data, data.find(RUN_IN_END))
             if kind_of(key) == "partition pack"]
    body = bytearray(data[packs[0][0]:packs[0][1]])
    body[13] = 3
    return data[:packs[1][0]] + bytes(body) * count


def check_refusals(inspect, path, folder):
    """An OUT that cannot be written, one that is the file itself, and a file that cannot be read twice."""
    with open(path, "rb") as file:
        data = file.read()
    copy, target = os.path.join(folder, "copy.mxf"), os.path.join(folder, "piped.html")
    with open(copy, "wb") as file:
        file.write(data)
    results = [subprocess.run([inspect, copy, "--html", bad], capture_output=True)
               for bad in (os.path.join(folder, "none", "page.html"), copy)]
    good = all(run.returncode == 1 and run.stderr for run in results)
    with open(copy, "rb") as file:
        good = good and file.read() == data
    run = subprocess.run(f'cat "{copy}" | "{inspect}" /dev/stdin --html "{target}"', shell=True, capture_output=True)
    with open(target, encoding="utf-8") as file:
        good = good and "the input cannot seek" in file.read() and run.stdout
    print(f"{'passed' if good else 'FAILED'}  pages that cannot be written or drawn")
    return good


def check_file(inspect, path, folder):
    name = os.path.basename(path)
    with open(path, "rb") as file:
        data = file.read()
    good, tags = check(inspect, name, data, folder)
    results = [good, check(inspect, f"{name} cut off", data[:len(data) * 2 // 3], folder)[0]]
    keys = [(start, key) for key, start, _, _ in triplets(data, data.find(RUN_IN_END))
            if kind_of(key) in ("partition pack", "random index")]
    if len(keys) > 3 and is_like(keys[-1][1], RANDOM_INDEX_PACK):
        damaged = data[:keys[1][0]] + bytes(16) + data[keys[1][0] + 16:]
        last = f"{len(keys) - 2} {PARTITION_KINDS[keys[-2][1][13]]}"
        results.append(check(inspect, f"{name} damaged", damaged, folder, ["not readable", last])[0])
    hostile, shown = data, []
    for text, bad in HOSTILE.items():
        if text.encode("utf-16-be") in data:
            hostile = hostile.replace(text.encode("utf-16-be"), bad.encode("utf-16-be"))
            shown.append(re.match(r"[ -~]+", bad)[0])
    if shown:
        results.append(check(inspect, f"{name} with hostile texts", hostile, folder, shown, tags)[0])
    return all(results)


def main():
    inspect, *paths = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        results = [check_file(inspect, path, folder) for path in paths]
        with open(paths[0], "rb") as file:
            many = many_partitions(file.read(), 70000)
        results += [check(inspect, "many partitions", many, folder, ["partitions left out"])[0],
                    check_refusals(inspect, paths[0], folder)]
    sys.exit(0 if all(results) else 1)


main()
