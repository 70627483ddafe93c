#!/usr/bin/env python3
"""Other people's sounds through vantrel: decoded ones, and several of them, compared with FFmpeg's.
Usage: sounds_test.py RUNNER VANTREL.exe FOLDER    (RUNNER starts a Windows program)"""

import array
import os
import shutil
import subprocess
import sys

RATE = 44100
# A tone whose pitch rises, so that it is like itself at no other time.
TONE = f"aevalsrc='0.5*sin(2*PI*(200+300*t)*t)':s={RATE}:d=2"
OTHER_TONE = f"sine=frequency=990:duration=2:sample_rate={RATE}"
H264 = ["-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-pix_fmt", "yuv420p"]


def ffmpeg(*arguments):
    return subprocess.run(["ffmpeg", "-v", "error", "-y", *arguments], check=True, capture_output=True).stdout


def probe(path, entries, *arguments):
    return subprocess.run(["ffprobe", "-v", "error", *arguments, "-show_entries", entries, "-of", "csv=p=0", path],
                          check=True, capture_output=True, text=True).stdout.split()


def sound_of(path, form="s16le", stream=0):
    return ffmpeg("-i", path, "-map", f"0:a:{stream}", "-f", form, "-ac", "1", "-ar", str(RATE), "-")


def samples_of(path):
    return array.array("h", sound_of(path))


def lag(samples, reference, at):
    """How many samples later than at `at` there is what the reference has at 1 s, or None."""
    piece = reference[RATE:RATE + 2000:10]
    def difference(shift):
        found = samples[at + shift:at + shift + 2000:10]
        return sum(abs(a - b) for a, b in zip(found, piece)) / len(piece) if len(found) == len(piece) else 1e9
    best = min(range(-3000, 3000), key=difference)
    return best if difference(best) < 100 else None


class Clips:
    def __init__(self, runner, vantrel, folder):
        self.runner, self.vantrel, self.folder = runner, vantrel, folder
        self.failures = 0

    def make(self, name, *arguments):
        path = f"{self.folder}/{name}"
        ffmpeg("-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=2", *arguments, path)
        return path

    def pass_through(self, path, *options):
        output = f"{self.folder}/out.avi"
        windows = ["Z:" + os.path.realpath(name).replace("/", "\\") for name in (path, output)]
        subprocess.run([self.runner, self.vantrel, *windows, "--overwrite", "--quiet", *options], check=True)
        return output

    def expect(self, condition, text):
        print(("ok      " if condition else "FAILED  ") + text)
        self.failures += not condition


def check_decoded(clips, name, options):
    """Decoded, as long as it was, and within a millisecond where it was."""
    path = clips.make(name, *options)
    late = round(float(probe(path, "stream=start_time", "-select_streams", "a:0")[0]) * RATE)
    reference = samples_of(path)
    found = samples_of(clips.pass_through(path))
    later = lag(found, reference, RATE + late)
    clips.expect(later is not None and abs(later) <= RATE // 1000, f"{name}: {later} samples late")
    longer = (len(found) - late - len(reference)) / RATE
    clips.expect(abs(longer) < 0.03, f"{name}: {longer:.3f} s longer than FFmpeg's")


def check_one_of_two(clips):
    """One of two sounds, without a change of a single bit. GStreamer lists them in any order."""
    path = clips.make("two.mov", "-f", "lavfi", "-i", TONE, "-f", "lavfi", "-i", OTHER_TONE, "-map", "0", "-map",
                      "1", "-map", "2", *H264, "-c:a", "pcm_s24le")
    output = clips.pass_through(path)
    both = [sound_of(path, "s24le", stream) for stream in (0, 1)]
    clips.expect(both[0] != both[1] and sound_of(output, "s24le") in both, "two.mov: one of its sounds")
    streams = probe(output, "stream=codec_name")
    clips.expect(streams[1:] == ["pcm_s24le"], f"two.mov: {streams}")


def main():
    clips = Clips(*sys.argv[1:])
    shutil.rmtree(clips.folder, ignore_errors=True)
    os.makedirs(clips.folder)
    tone = ["-f", "lavfi", "-i", TONE, *H264, "-c:a", "aac"]
    check_decoded(clips, "aac.mp4", tone)
    check_decoded(clips, "late.mp4", ["-itsoffset", "0.5", *tone])
    check_decoded(clips, "mp3.avi", [*tone[:4], "-c:v", "mjpeg", "-c:a", "libmp3lame"])
    check_one_of_two(clips)
    if clips.failures:
        sys.exit(f"{clips.failures} checks failed")
    shutil.rmtree(clips.folder)


main()
