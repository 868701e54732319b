#!/usr/bin/env python3
"""Times pieces of work with MXF files: the library's programs, plain programs over the same octets, and ffmpeg.

usage: compare.py BUILD [--scale N] [--rounds N] [--keep FOLDER]

BUILD is the folder of the release build. Prints one table: what the library takes as a multiple of the plain program, and
of ffmpeg if that is there, each the fastest of some rounds in which the contenders take turns. All read from the page
cache; written files are not synchronised. Before anything is timed, the contenders are shown to deliver the same octets.
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
    for name, arguments in recipes.items():
        files[name] = os.path.join(folder, name.replace(" ", "-") + ".mxf")
        if not os.path.exists(files[name]):
            run(*ffmpeg, *arguments, files[name])
    files["small sound elements"] = os.path.join(folder, "small.mxf")
    if not os.path.exists(files["small sound elements"]):
        run(work, "make-sound", files["small sound elements"])
    for path in files.values():
        with open(path, "rb") as file:  # into the page cache
            while file.read(1 << 24):
                pass
    return files


# ---- The same octets ----

def check_same(extract, rewrap, name, path, folder):
    """Fails unless the essence that the library delivers is that which ffmpeg copies, before and after rewrapping."""
    again = os.path.join(folder, "again.mxf")
    run(rewrap, path, again)
    for kind in "va":
        stream = subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", f"0:{kind}:0?", "-c", "copy",
                                 "-f", "data", "-"], capture_output=True).stdout
        if not stream or (kind, name) == ("a", "D-10"):  # of AES3 sound, ffmpeg takes the samples out
            continue
        digest = hashlib.md5(stream).digest()
        for copy in (path, again):
            keys = re.findall(r"^  (urn:smpte:ul:\S+) +(picture|sound)",
                              run(os.path.join(os.path.dirname(extract), "inspect"), copy).stdout.decode(), re.M)
            wanted = [key for key, what in keys if what == {"v": "picture", "a": "sound"}[kind]]
            if hashlib.md5(run(extract, copy, wanted[0], "-").stdout).digest() != digest:
                sys.exit(f"{name}: the library and ffmpeg deliver different octets of {wanted[0]}")
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


def compare(contenders, rounds):
    """The fastest run of each contender; they take turns."""
    best = {}
    for _ in range(rounds):
        for name, command in contenders.items():
            once = timed(command)
            if once is not None:
                best[name] = min(best.get(name, once), once)
            elif name != "other":  # which writes no file of sound alone
                sys.exit(f"{' '.join(map(str, command))} fails")
    return best


def works(work, rewrap, name, path, out, has_ffmpeg):
    """The rows of a file: a title, the library's program, a plain one, ffmpeg's."""
    written = "mxf_opatom" if name == "clip-wrapped" else "mxf_d10" if name == "D-10" else "mxf"
    copy = ("ffmpeg", "-nostdin", "-v", "quiet", "-y", "-i", path, "-map", "0", "-c", "copy")
    opening = (*copy, "-t", "0", "-f", "null", "-")
    rows = [
        ("read with essence", (work, "read", path), (work, "plain", path), (*copy, "-f", "null", "-")),
        ("validate", (work, "validate", path), (work, "plain", path), (*copy, "-f", "null", "-")),
        ("read without essence", (work, "skip", path), (work, "plain", path), (*copy, "-f", "null", "-")),
        ("scan structure", (work, "scan", path), (work, "plain-scan", path), opening),
        ("header metadata", (work, "metadata", path), (work, "plain-scan", path), opening),
        ("index", (work, "index", path), (work, "plain-scan", path), opening),
        ("rewrap", (rewrap, path, out), ("cp", path, out), (*copy, "-f", written, out)),
    ]
    return [(title, own, plain, other if has_ffmpeg else None) for title, own, plain, other in rows]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("--scale", type=float, default=1)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--keep")
    options = parser.parse_args()
    work = os.path.join(options.build, "benchmarks", "bryx_work")
    examples = os.path.join(options.build, "examples")
    has_ffmpeg = shutil.which("ffmpeg") is not None
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or temporary
        os.makedirs(folder, exist_ok=True)
        files = make_files(folder, work, options.scale)
        out = os.path.join(temporary, "out.mxf")
        print(f"{'/ plain':>8} {'/ ffmpeg':>9} {'seconds':>9} {'MiB':>6}  work")
        for name, path in files.items():
            print(f"{'':34}  {name}, {os.path.getsize(path) / 2**20:.0f} MiB")
            check_same(os.path.join(examples, "extract"), os.path.join(examples, "rewrap"), name, path, temporary)
            for title, own, plain, other in works(work, os.path.join(examples, "rewrap"), name, path, out, has_ffmpeg):
                contenders = {"own": own, "plain": plain}
                if other is not None:
                    contenders["other"] = other
                best = compare(contenders, options.rounds)
                seconds, memory = best["own"]
                ffmpeg = f"{seconds / best['other'][0]:9.2f}" if "other" in best else f"{'-':>9}"
                print(f"{seconds / best['plain'][0]:8.2f} {ffmpeg} {seconds:9.4f} {memory:>6}  {title}")


if __name__ == "__main__":
    main()
