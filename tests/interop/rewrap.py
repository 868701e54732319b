#!/usr/bin/env python3
"""Checks that rewrap loses nothing: compares what inspect, ffprobe, ffmpeg and MediaInfo say of a file and of that
file written again.

usage: rewrap.py INSPECT FOLDER FILE...

Each FILE is rewrapped in several layouts; the results of one of them are left in FOLDER. For every file one line says
what was compared, and a line for each disagreement follows it. The exit status is 1 when there is any disagreement.
"""

import json
import os
import sys

import check

LAYOUTS = {
    "as it comes": [],
    "grid and partitions": ["--kag", "512", "--partition-duration", "7", "--verify"],
    "large grid, index at the end": ["--kag", "65536", "--index", "footer", "--header-space", "100000"],
    "same layout": ["--keep-layout", "--verify"],
}
LEFT_IN_FOLDER = "grid and partitions"

FFPROBE_ENTRIES = ("stream=codec_name,profile,width,height,pix_fmt,sample_rate,channels,nb_frames,duration,r_frame_rate,"
                   "field_order:format=duration:format_tags=timecode,material_package_umid")
# What follows from the layout, from the name of the file or from when it was written.
MEDIAINFO_OF_THE_FILE = ("FileSize", "StreamSize", "FooterSize", "HeaderSize", "DataSize", "OverallBitRate", "IsTruncated",
                         "File_Modified_Date", "File_Modified_Date_Local", "Format_Settings", "FileExtension",
                         "Format_Version", "extra", "CompleteName", "Conformance", "StreamSize_Proportion",
                         "Format_Settings_Wrapping", "BitRate", "Bits-Pixel_Frame")


def described(inspect, path):
    report = json.loads(check.run(inspect, "--json", path).stdout)
    closed = [row for row in report["partitions"] if row["status"].startswith("closed")]
    offsets = {row["offset"] for row in closed}
    regions = [row for row in report["metadata"] if row["partition"] in offsets] or report["metadata"]
    for region in regions:
        for entry in region["sets"]:
            del entry["offset"]
            if entry["set"] == "Preface":  # has the version of its file
                entry["properties"] = [row for row in entry["properties"] if row["name"] != "version"]
    return {
        "metadata": regions[-1]["sets"] if regions else None,
        "essence": sorted(report["essence"], key=lambda row: row["key"]),
        "otherElements": sorted(report["otherElements"], key=lambda row: row["key"]),
        "systemElements": report["systemElements"],
        "contentPackages": report["contentPackages"],
        "firstTimecode": report["firstTimecode"],
        "lastTimecode": report["lastTimecode"],
        "errors": sorted({finding["message"] for finding in check.grave(report)}),
    }


def probed(path):
    result = check.run("ffprobe", "-v", "warning", "-of", "json", "-show_entries", FFPROBE_ENTRIES, path)
    warnings = {line.split("] ", 1)[-1] for line in result.stderr.splitlines() if path not in line}
    return json.loads(result.stdout or "{}"), warnings


def stream_hashes(path):
    result = check.run("ffmpeg", "-nostdin", "-v", "error", "-i", path, "-map", "0", "-c", "copy", "-f", "streamhash",
                       "-hash", "md5", "-")
    return result.stdout


def media(path):
    tracks = json.loads(check.run("mediainfo", "--Output=JSON", path).stdout)["media"]["track"]
    # A value that several partitions repeat comes with slashes in between.
    return [{name: "/".join(sorted(set(value.split(" / ")))) for name, value in track.items()
             if name not in MEDIAINFO_OF_THE_FILE} for track in tracks]


def bodies(path):
    """The octets of each body up to the end of its last triplet, by body SID."""
    result = {}
    with check.mapped(path) as data:
        for body_sid, start, end in check.read(data).bodies:
            result.setdefault(body_sid, []).append(data[start:end])
    return result


def check_file(inspect, folder, path):
    checked = check.Check(f"{os.path.basename(path)} rewrapped")
    rewrap = os.path.join(os.path.dirname(inspect), "rewrap")
    source, source_probed, source_hashes, source_media = described(inspect, path), probed(path), stream_hashes(path), media(path)
    for layout, options in LAYOUTS.items():
        out = os.path.join(folder, os.path.basename(path))
        again = out + ".again"
        for target in (out, again):
            result = check.run(rewrap, path, target, "--fixed-uids", *options)
            if result.returncode != 0:
                checked.problems.append(f"{layout}: rewrap ended with {result.returncode}: {result.stderr.strip()}")
        if checked.problems:
            break
        with open(out, "rb") as first, open(again, "rb") as second:
            checked.holds(layout, "same octets twice", first.read() == second.read(), f"{layout}: differs from run to run")
        os.remove(again)
        for name, value in described(inspect, out).items():
            if name == "errors":
                checked.holds(layout, name, set(value) <= set(source[name]), f"{layout}: new errors: {value}")
            else:
                checked.same(layout, name, value, source[name])
        result, warnings = probed(out)
        checked.same(layout, "ffprobe", result, source_probed[0])
        new_warnings = warnings - source_probed[1]
        if "error reading header metadata" in source_probed[1]:
            # So it ends at an index table segment with an edit rate of 0/0, before it can say that it knows no essence.
            # The writer refuses such a rate, and that of the track is written.
            new_warnings -= {"no essence"}
        checked.holds(layout, "warnings of ffprobe", not new_warnings, f"{layout}: ffprobe has new warnings: {new_warnings}")
        checked.same(layout, "streams of ffmpeg", stream_hashes(out), source_hashes)
        checked.same(layout, "MediaInfo", media(out), source_media)
        if layout == "same layout":
            checked.holds(layout, "octets of bodies", bodies(out) == bodies(path), f"{layout}: bodies differ")
        if layout == LEFT_IN_FOLDER:
            os.rename(out, out + ".kept")
        else:
            os.remove(out)
    if os.path.exists(out + ".kept"):
        os.rename(out + ".kept", out)
    return checked.report()


def main():
    inspect, folder, *paths = sys.argv[1:]
    results = [check_file(inspect, folder, path) for path in paths]
    sys.exit(0 if all(results) else 1)


if __name__ == "__main__":
    main()
