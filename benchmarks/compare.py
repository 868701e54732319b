#!/usr/bin/env python3
"""Times pieces of work with MXF files: the library's programs, plain programs over the same octets, and ffmpeg.

usage: compare.py BUILD [--scale N] [--rounds N] [--keep FOLDER] [--growth]

BUILD is the folder of the release build. Prints one table: what the library takes as a multiple of the plain program, and
of ffmpeg if that is there, each the fastest of some rounds in which the contenders take turns. All read from the page
cache; written files are new, and not synchronised. Before anything is timed, the contenders are shown to deliver the same
octets. With --growth, the table shows the library alone, with files of 1, 10 and 100 times the size.
"""

import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, **options)


# ---- Files ----

OWN_FILES = {"large": 1000, "small": 1000000}  # the elements in files that the library writes, by their size


def make_files(folder, work, scale):
    """The files of the table, by name: about as much essence in each."""
    seconds = 30 * scale
    picture = f"testsrc2=size=720x576:rate=25:duration={seconds},noise=alls=80:allf=t"  # so that it takes octets
    sound = f"sine=frequency=440:sample_rate=48000:duration={seconds}"
    ffmpeg = ("ffmpeg", "-nostdin", "-v", "error", "-y")
    d10 = ("-c:v", "mpeg2video", "-pix_fmt", "yuv422p", "-b:v", "50000k", "-minrate", "50000k", "-maxrate", "50000k",
           "-bufsize", "2000000", "-rc_init_occupancy", "2000000", "-g", "1", "-bf", "0", "-intra_vlc", "1",
           "-non_linear_quant", "1", "-qmin", "1", "-qmax", "3", "-ps", "1", "-flags", "+ildct+low_delay", "-dc", "10",
           "-c:a", "pcm_s16le", "-f", "mxf_d10")
    recipes = {
        "long GOP": ("-f", "lavfi", "-i", picture, "-f", "lavfi", "-i", sound, "-c:v", "mpeg2video", "-b:v", "50M",
                     "-maxrate", "50M", "-bufsize", "10M", "-qmin", "1", "-g", "12", "-bf", "2", "-c:a", "pcm_s16le"),
        "intra": ("-f", "lavfi", "-i", picture, "-f", "lavfi", "-i", sound, "-c:v", "mpeg2video", "-qscale:v", "1",
                  "-g", "1", "-bf", "0", "-pix_fmt", "yuv422p", "-c:a", "pcm_s24le"),
        "D-10": ("-f", "lavfi", "-i", picture, "-f", "lavfi", "-i", sound, *d10),
        "clip-wrapped": ("-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=48000:duration={1000 * scale}",
                         "-c:a", "pcm_s16le", "-f", "mxf_opatom"),
    }
    files = {}
    for name, arguments in recipes.items() if shutil.which("ffmpeg") else ():
        files[name] = os.path.join(folder, name.replace(" ", "-") + ".mxf")
        if not os.path.exists(files[name]):
            run(*ffmpeg, *arguments, files[name])
    for size, count in OWN_FILES.items():
        name = f"{size} sound elements"
        files[name] = os.path.join(folder, size + ".mxf")
        if not os.path.exists(files[name]):
            run(work, "write-" + size, files[name], round(count * scale))
    for path in files.values():
        with open(path, "rb") as file:  # into the page cache
            while file.read(1 << 24):
                pass
    return files


# ---- The same octets ----

def digest(*command):
    """The number and a digest of the octets that a program prints."""
    octets = run(*command).stdout
    return len(octets), hashlib.md5(octets).hexdigest()


def check_same(work, examples, name, path, folder):
    """Fails unless what the library delivers is what ffmpeg copies: as it is timed, and after rewrapping."""
    again = os.path.join(folder, "again.mxf")
    run(os.path.join(examples, "rewrap"), path, again)
    listing = run(os.path.join(examples, "inspect"), path).stdout.decode()
    keys = {kind: key for key, kind in reversed(re.findall(r"^  (urn:smpte:ul:\S+) +(picture|sound)", listing, re.M))}
    if not keys:
        sys.exit(f"{name}: there is no essence to compare")
    for kind, key in keys.items():
        delivered = {mode: digest(work, mode, path, key) for mode in ("copy", "copy-checked")}
        delivered["extract"] = digest(os.path.join(examples, "extract"), path, key, "-")
        delivered["copy of rewrap"] = digest(work, "copy", again, key)
        # Of AES3 sound, ffmpeg takes the samples out.
        if shutil.which("ffmpeg") and (kind, name) != ("sound", "D-10"):
            stream = {"picture": "v:0", "sound": "a:0"}[kind]
            delivered["ffmpeg"] = digest("ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", f"0:{stream}", "-c",
                                         "copy", "-f", "data", "-")
        if len(set(delivered.values())) != 1 or delivered["copy"][0] == 0:
            sys.exit(f"{name}: not the same octets of {key}: {delivered}")
    os.remove(again)


# ---- Timing ----

def timed(command):
    """Seconds of wall time of one run, and the memory in MiB that it says it took; None if it fails."""
    start = time.perf_counter()
    result = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    seconds = time.perf_counter() - start
    if result.returncode != 0:
        return None
    memory = re.search(rb"^memory (\d+)$", result.stdout, re.M)
    return seconds, f"{int(memory[1]) / 1024:.1f}" if memory else "-"


def compare(contenders, rounds, out):
    """The fastest run of each contender; they take turns, and all that write make the file out anew."""
    best = {}
    for _ in range(rounds):
        for name, command in contenders.items():
            if os.path.exists(out):
                os.remove(out)
            if out in command:
                os.sync()  # what others have written would slow down the one who writes next
            once = timed(command)
            if once is not None:
                best[name] = min(best.get(name, once), once)
            elif name != "other":  # which writes no file of sound alone
                sys.exit(f"{' '.join(map(str, command))} fails")
    return best


def reading_works(work, path):
    """The library's part of the rows that read a file: a title, and the command."""
    return [
        ("read with essence", (work, "read", path)),
        ("validate", (work, "validate", path)),
        ("read without essence", (work, "skip", path)),
        ("scan structure", (work, "scan", path)),
        ("header metadata", (work, "metadata", path)),
        ("index", (work, "index", path)),
    ]


def works(work, rewrap, name, path, out):
    """The rows of a file: a title, the library's program, a plain one, ffmpeg's."""
    written = "mxf_opatom" if name == "clip-wrapped" else "mxf_d10" if name == "D-10" else "mxf"
    copy = ("ffmpeg", "-nostdin", "-v", "quiet", "-y", "-i", path, "-map", "0", "-c", "copy")
    whole = (*copy, "-f", "null", "-")
    opening = (*copy, "-t", "0", "-f", "null", "-")
    for title, own in reading_works(work, path):
        is_whole = title in ("read with essence", "validate", "read without essence")
        yield title, own, (work, "plain" if is_whole else "plain-scan", path), whole if is_whole else opening
    yield "rewrap", (rewrap, path, out), ("cp", path, out), (*copy, "-f", written, out)


def row(ratios, best, title):
    seconds, memory = best
    print(*(f"{ratio:8.2f}" if ratio is not None else f"{'-':>8}" for ratio in ratios), f"{seconds:9.4f} {memory:>6}", title,
          sep="  ", flush=True)


def comparison(work, examples, files, folder, rounds):
    has_ffmpeg = shutil.which("ffmpeg") is not None
    out = os.path.join(folder, "out.mxf")
    rewrap = os.path.join(examples, "rewrap")
    print("   plain    ffmpeg    seconds     MiB  work")

    def line(title, own, plain, other=None):
        contenders = {"own": own, "plain": plain, **({"other": other} if other and has_ffmpeg else {})}
        best = compare(contenders, rounds, out)
        row([best["own"][0] / best[name][0] if name in best else None for name in ("plain", "other")], best["own"], title)

    for name, path in files.items():
        print(f"{'':39}{name}, {os.path.getsize(path) / 2**20:.0f} MiB")
        check_same(work, examples, name, path, folder)
        for title, own, plain, other in works(work, rewrap, name, path, out):
            line(title, own, plain, other)
    for size, count in OWN_FILES.items():
        print(f"{'':39}{count} {size} elements from memory")
        line("write", (work, "write-" + size, out, count), (work, "plain-write-" + size, out, count))


def growth(work, examples, folder, scale, rounds):
    """The library's programs with files of growing size: seconds as multiples of those with the smallest file."""
    out = os.path.join(folder, "out.mxf")
    print("   times   seconds     MiB  work")
    for size, count in (("large", 100 * scale), ("small", 10000 * scale), ("uneven", 10000 * scale)):
        first = {}
        for factor in (1, 10, 100):
            path = os.path.join(folder, "growing.mxf")
            elements = max(1, round(count * factor))
            rows = [("write", (work, "write-" + size, out, elements)), *reading_works(work, path),
                    ("rewrap", (os.path.join(examples, "rewrap"), path, out))]
            run(work, "write-" + size, path, elements)
            print(f"{'':29}{elements} {size} elements, {os.path.getsize(path) / 2**20:.0f} MiB")
            for title, command in rows:
                best = compare({"own": command}, rounds, out)["own"]
                row([best[0] / first.setdefault(title, best[0])], best, title)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--scale", type=float, default=1)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--keep")
    parser.add_argument("--growth", action="store_true")
    options = parser.parse_args()
    work = os.path.join(options.build, "benchmarks", "bryx_work")
    examples = os.path.join(options.build, "examples")
    with tempfile.TemporaryDirectory() as temporary:
        if options.growth:
            growth(work, examples, temporary, options.scale, options.rounds)
        else:
            folder = options.keep or temporary
            os.makedirs(folder, exist_ok=True)
            comparison(work, examples, make_files(folder, work, options.scale), temporary, options.rounds)


if __name__ == "__main__":
    main()
