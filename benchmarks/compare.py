#!/usr/bin/env python3
"""Times pieces of work with MXF files: the library's programs, plain programs over the same octets, and ffmpeg.

usage: compare.py BUILD [--scale N] [--rounds N] [--keep FOLDER] [--growth | --against BUILD] [--check]

BUILD is the folder of the release build. Prints one table: what the library takes as a multiple of the plain program, and
of ffmpeg if that is there, each the fastest of some rounds in which the contenders take turns; and the most memory that the
library's program took in any round. All read from the page cache; written files are new, and not synchronised. Where little
of a file is wanted, ffmpeg opens it and copies nothing.

Before anything is timed, the very commands are run once, to show that they deliver the same: as many partitions, elements
and octets, and the same essence, also in what they write.

With --growth, the table shows the library alone, with files of 1/100, 1/10 and all of the scale, and how many times as long
each step takes as the one before.

With --against, the table shows the library of this build and of an older one, in turn, and the older one once more: medians
of processor time, as a multiple of the older one's.

With --check, it fails if the library is not ahead of ffmpeg, or if reading with essence is slower than 0.9 times the speed of
plain reading, but for tiny elements; with --growth, if time grows faster than the file, or memory grows with it; with
--against, if anything takes 1.03 times as long as before, or more than what the older build differs from itself.
"""

import argparse
import hashlib
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import types
import typing

HAS_FFMPEG = shutil.which("ffmpeg") is not None
FFMPEG = ("ffmpeg", "-nostdin", "-v", "error", "-y")


def run(*command):
    """The output of a program, and what it says beside."""
    result = subprocess.run([str(part) for part in command], capture_output=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} fails: {result.stderr.decode().strip()}")
    return result.stdout, result.stderr


# ---- Files ----

class File(typing.NamedTuple):
    name: str
    path: str
    form: str = ""     # in which ffmpeg writes it; it writes none of sound alone in frames
    size: str = ""     # of its elements, by name, if the library made it
    elements: int = 0  # of these

    @property
    def is_for_ffmpeg(self):
        """ffmpeg takes 20 seconds to read a million elements of unequal size, each time."""
        return HAS_FFMPEG and self.size != "uneven"


OWN_FILES = {"large": 1000, "mono": 1000000, "small": 1000000, "uneven": 1000000}  # how many elements of a size
TINY = ("small", "uneven")


def make_files(folder, work, scale):
    """The files of the table: about as much essence in each."""
    seconds = max(0.2, 30 * scale)
    picture = f"testsrc2=size=720x576:rate=25:duration={seconds},noise=alls=80:allf=t"  # so that it takes octets
    sound = f"sine=frequency=440:sample_rate=48000:duration={seconds}"
    both = ("-f", "lavfi", "-i", picture, "-f", "lavfi", "-i", sound, "-c:v", "mpeg2video")
    recipes = {
        "long GOP": ("mxf", *both, "-b:v", "50M", "-maxrate", "50M", "-bufsize", "10M", "-qmin", "1", "-g", "12", "-bf", "2",
                     "-c:a", "pcm_s16le"),
        "intra": ("mxf", *both, "-qscale:v", "1", "-g", "1", "-bf", "0", "-pix_fmt", "yuv422p", "-c:a", "pcm_s24le"),
        "D-10": ("mxf_d10", *both, "-pix_fmt", "yuv422p", "-b:v", "50000k", "-minrate", "50000k", "-maxrate", "50000k",
                 "-bufsize", "2000000", "-rc_init_occupancy", "2000000", "-g", "1", "-bf", "0", "-intra_vlc", "1",
                 "-non_linear_quant", "1", "-qmin", "1", "-qmax", "3", "-ps", "1", "-flags", "+ildct+low_delay", "-dc", "10",
                 "-c:a", "pcm_s16le"),
        "clip-wrapped": ("mxf_opatom", "-f", "lavfi", "-i",
                         f"sine=frequency=440:sample_rate=48000:duration={2000 * scale}", "-c:a", "pcm_s16le"),
    }
    files = []
    for name, (form, *arguments) in recipes.items() if HAS_FFMPEG else ():
        files.append(File(name, os.path.join(folder, f"{name.replace(' ', '-')}-{scale:g}.mxf"), form))
        if not os.path.exists(files[-1].path):
            run(*FFMPEG, *arguments, "-f", form, files[-1].path)
    for size, count in OWN_FILES.items():
        path = os.path.join(folder, f"{size}-{scale:g}.mxf")
        files.append(File(f"{size} sound elements", path, "", size, max(1, round(count * scale))))
        if not os.path.exists(path):
            run(work, f"write-{size}", path, files[-1].elements)
    for file in files:
        with open(file.path, "rb") as octets:  # into the page cache
            while octets.read(1 << 24):
                pass
    return files


def heading(file):
    print(f"{file.name}, {os.path.getsize(file.path) / 2**20:.1f} MiB", flush=True)


# ---- Work ----

def rows(programs, file, out):
    """The rows of a file: a title, and the commands of the contenders."""
    copy = (*FFMPEG, "-i", file.path, "-map", "0", "-c", "copy")

    def contenders(own, plain, ffmpeg=None):
        return {"own": own, "plain": plain, **({"ffmpeg": ffmpeg} if ffmpeg and file.is_for_ffmpeg else {})}

    for title, work in (("read with essence", "read"), ("validate", "validate"), ("read without essence", "skip")):
        yield title, contenders((programs.work, work, file.path), (programs.work, "plain", file.path),
                                (*copy, "-f", "null", "-"))
    for title, work in (("scan structure", "scan"), ("header metadata", "metadata"), ("index", "index")):
        yield title, contenders((programs.work, work, file.path), (programs.work, "plain-scan", file.path),
                                (*copy, "-t", "0", "-f", "null", "-"))
    yield "rewrap", contenders((programs.rewrap, file.path, out), ("cp", file.path, out),
                               file.form and (*copy, "-f", file.form, out))
    if file.size:
        yield "write from memory", contenders((programs.work, f"write-{file.size}", out, file.elements),
                                              (programs.work, f"plain-write-{file.size}", out, file.elements))


class Measurement(typing.NamedTuple):
    seconds: float
    processor: float  # seconds of these
    memory: float     # MiB
    output: str


def measured(programs, command, out):
    """One run, which makes a new file if it writes."""
    if os.path.exists(out):
        os.remove(out)
    if out in command:
        os.sync()  # what others have written would slow down the one who writes next
    output, remarks = run(programs.measure, *command)
    nanoseconds, processor, kibibytes = map(int, remarks.split()[-3:])
    return Measurement(nanoseconds / 1e9, processor / 1e9, kibibytes / 1024, output.decode(errors="replace"))


def turns(programs, contenders, rounds, out):
    """The measurements of each contender; they take turns."""
    runs = {name: [] for name in contenders}
    for _ in range(rounds):
        for name, command in contenders.items():
            runs[name].append(measured(programs, command, out))
    return runs


def race(programs, contenders, rounds, out):
    """The fewest seconds and the most memory of each contender."""
    return {name: (min(run.seconds for run in some), max(run.memory for run in some))
            for name, some in turns(programs, contenders, rounds, out).items()}


def row(ratios, best, title):
    seconds, memory = best
    print(*(f"{ratio:8.2f}" if ratio is not None else f"{'-':>8}" for ratio in ratios), f"{seconds:9.4f} {memory:6.1f}", title,
          sep="  ", flush=True)


# ---- The same of all ----

def digest(*command):
    """A digest of the octets that a program prints. It must print some."""
    with subprocess.Popen([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
        found = hashlib.file_digest(process.stdout, "md5").hexdigest()
    if process.returncode != 0 or found == hashlib.md5(b"").hexdigest():
        sys.exit(f"{' '.join(map(str, command))} fails, or delivers nothing")
    return found


def streams(programs, path):
    """The keys of picture and sound, by what ffmpeg calls the streams."""
    keys = {}
    for key, kind in re.findall(r"^  (urn:smpte:ul:\S+) +(picture|sound)", run(programs.inspect, path)[0].decode(), re.M):
        letter = {"picture": "v", "sound": "a"}[kind]
        keys[f"{letter}:{sum(stream[0] == letter for stream in keys)}"] = key
    return keys


def essence(programs, path, work="copy"):
    """A digest of what the library delivers of each stream."""
    return {stream: digest(programs.work, work, path, key) for stream, key in streams(programs, path).items()}


def check_same(programs, file, out):
    """Fails unless all contenders find as much in a file, and deliver and write the same essence."""
    keys = streams(programs, file.path)
    delivered = {work: essence(programs, file.path, work) for work in ("copy", "copy-checked")}
    delivered["extract"] = {stream: digest(programs.extract, file.path, key, "-") for stream, key in keys.items()}
    if file.is_for_ffmpeg:
        delivered["ffmpeg"] = {stream: digest(*FFMPEG, "-i", file.path, "-map", f"0:{stream}", "-c", "copy", "-f", "data", "-")
                               for stream in keys}
        if file.form == "mxf_d10":  # not compared: of AES3 sound, ffmpeg takes the samples out
            delivered["ffmpeg"]["a:0"] = delivered["copy"]["a:0"]
    seen = {"octets": {"the file": os.path.getsize(file.path)}}
    for title, contenders in rows(programs, file, out):
        for name, command in contenders.items():
            output = measured(programs, command, out).output
            for what, count in re.findall(r"^(.+) (\d+)$", output, re.M):
                seen.setdefault(what, {})[f"{title}, {name}"] = int(count)
            if out in command:
                is_bare = title == "write from memory" and name == "plain"
                delivered[f"{title}, {name}"] = {"a:0": digest("cat", out)} if is_bare else essence(programs, out)
    if file.elements:
        seen["elements"]["the file"] = file.elements
    # The index tables of some files do not tell how many edit units there are; of the others, each is asked for.
    seen["edit units"]["the file"] = (1 if file.form in ("mxf_d10", "mxf_opatom") else
                                      seen["elements"]["read with essence, own"] // len(keys))
    for what, counts in seen.items():
        if len(set(counts.values())) != 1 or 0 in counts.values():
            sys.exit(f"{file.name}: not the same {what}: {counts}")
    for name, digests in delivered.items():
        if digests != delivered["copy"] or not digests:
            sys.exit(f"{file.name}: not the same essence: {name} has {digests}, copy {delivered['copy']}")


# ---- The tables ----

def comparison(programs, files, out, rounds):
    """Prints the table; returns what is too slow."""
    print("   plain    ffmpeg    seconds     MiB  work")
    failures = []
    for file in files:
        heading(file)
        check_same(programs, file, out)
        for title, contenders in rows(programs, file, out):
            best = race(programs, contenders, rounds, out)
            ratios = {name: best["own"][0] / best[name][0] for name in best}
            row([ratios["plain"], ratios.get("ffmpeg")], best["own"], title)
            if ratios.get("ffmpeg", 0) >= 1:
                failures.append(f"{file.name}: {title} is not ahead of ffmpeg")
            if title == "read with essence" and file.size not in TINY and ratios["plain"] > 1 / 0.9:
                failures.append(f"{file.name}: {title} is slower than 0.9 times the speed of plain reading")
    return failures


def growth(programs, sizes, out, rounds):
    """Prints how the library's programs take to files of growing size; returns what grows too fast."""
    print("   times   seconds     MiB  work")
    failures = []
    for steps in zip(*sizes):
        taken = {}
        for file in steps:
            heading(file)
            for title, contenders in rows(programs, file, out):
                own = race(programs, {"own": contenders["own"]}, rounds, out)["own"]
                before = taken.setdefault(title, [])
                row([own[0] / before[-1][0] if before else None], own, title)
                before.append(own)
        for title, (first, second, third) in taken.items():
            if third[0] > 20 * second[0]:
                failures.append(f"{file.name}: {title} takes more than 20 times as long for 10 times as much")
            # An index of uneven edit units has to be known; vectors take up to twice as much while they grow.
            is_kept = file.size == "uneven" and title in ("index", "rewrap", "write from memory")
            if third[1] > first[1] + 1 + (file.elements * 48 / 2**20 if is_kept else 0):
                failures.append(f"{file.name}: the memory for '{title}' grows")
    return failures


def regression(programs, old, files, out, rounds):
    """Prints what this build takes as a multiple of the old one; returns what has become slower."""
    print("     new  old again    seconds  work")
    failures = []
    for file in files:
        heading(file)
        commands = [{title: contenders["own"] for title, contenders in rows(some, file, out)} for some in (programs, old)]
        for title in commands[0]:
            contenders = {"new": commands[0][title], "old": commands[1][title], "old again": commands[1][title]}
            taken = {name: statistics.median(run.processor for run in some)
                     for name, some in turns(programs, contenders, rounds, out).items()}
            ratio, spread = taken["new"] / taken["old"], taken["old again"] / taken["old"]
            print(f"{ratio:8.3f}  {spread:9.3f}  {taken['new']:9.4f}  {title}", flush=True)
            if ratio > max(1.03, spread, 1 / spread):
                failures.append(f"{file.name}: {title} takes {ratio:.3f} times as long as before")
    return failures


def programs_of(build):
    folders = {"work": "benchmarks/bryx_work", "measure": "benchmarks/bryx_measure", "extract": "tools/extract",
               "inspect": "tools/inspect", "rewrap": "tools/rewrap"}
    return types.SimpleNamespace(**{name: os.path.join(build, path) for name, path in folders.items()})


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--scale", type=float, default=1)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--keep")
    parser.add_argument("--growth", action="store_true")
    parser.add_argument("--against", metavar="BUILD")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    programs = programs_of(options.build)
    if not HAS_FFMPEG:
        print("ffmpeg is not there: the files that it makes are left out, and what it takes")
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or temporary
        os.makedirs(folder, exist_ok=True)
        out = os.path.join(temporary, "out.mxf")
        if options.growth:
            sizes = [make_files(folder, programs.work, options.scale * share) for share in (0.01, 0.1, 1)]
            failures = growth(programs, sizes, out, options.rounds)
        else:
            files = make_files(folder, programs.work, options.scale)
            if options.against:
                failures = regression(programs, programs_of(options.against), files, out, options.rounds)
            else:
                failures = comparison(programs, files, out, options.rounds)
    sys.exit(options.check and "\n".join(failures) or 0)


if __name__ == "__main__":
    main()
