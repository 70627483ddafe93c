"""For doc_commands.py: a command line of vantrel, and what each option has to do."""

import json
import os
import re
import shutil
import subprocess

CLIP_SIZE = (480, 270)


class Wrong(Exception):
    """What a command did not do."""


def demand(condition, text):
    if not condition:
        raise Wrong(text)


class VantrelRun:
    """A command line of vantrel, and what came of it."""

    def __init__(self, words):
        self.options, self.files, self.output = {}, [], ""
        words = list(words[1:])
        while words:
            word = words.pop(0)
            if not word.startswith("-"):
                self.files.append(word)
                continue
            name, equals, value = word.partition("=")
            demand(name in OPTIONS, f"the test does not know the option {name}")
            wants_value = OPTIONS[name][0]
            if wants_value and not equals:
                demand(words, f"{name} wants a value")
                value = words.pop(0)
            self.options[name] = value
        # The outputs' folder, where there is one; else the last name is the output.
        self.folder = self.options.get("--output-folder")
        if self.folder is None and self.files and self.files[-1].endswith(("/", "\\")):
            self.folder = self.files.pop()
        names_target = len(self.files) > 1 and self.folder is None and not {"--play", "--pages"} & set(self.options)
        self.sources = self.files[:-1] if names_target else self.files
        self.target = self.files[-1] if names_target else None

    def prepare(self, sandbox):
        """Sources that are named exist, whatever they are called; outputs do not, but where --overwrite is."""
        self.sandbox = sandbox
        names = [name.replace("\\", "/") for name in self.sources]
        if self.folder is not None:
            self.folder = self.folder.replace("\\", "/").rstrip("/")
            folder = os.path.realpath(f"{sandbox}/{self.folder}")
            demand(folder.startswith(os.path.realpath(sandbox) + "/"), f"{self.folder} is no folder of its own")
            shutil.rmtree(folder, ignore_errors=True)
            os.makedirs(f"{sandbox}/{self.folder}")
            first = os.path.splitext(os.path.basename(names[0]))[0].replace("*", "a").replace("?", "a")
            self.target = f"{self.folder}/{first}.avi"
        for name in names:
            for letter in "ab" if re.search("[*?]", name) else "a":
                path = f"{sandbox}/" + name.replace("*", letter).replace("?", letter)
                os.makedirs(os.path.dirname(path), exist_ok=True)
                if not os.path.exists(path):
                    shutil.copy(f"{sandbox}/clip" + (".avi" if path.endswith(".avi") else ".mp4"), path)
        if not self.target:
            return
        path = f"{sandbox}/{self.target}"
        for name in os.listdir(os.path.dirname(path)):
            if name.lower() == os.path.basename(path).lower():  # one file for Windows
                os.remove(os.path.join(os.path.dirname(path), name))
        if "--overwrite" in self.options:
            with open(path, "w", encoding="ascii") as file:
                file.write("what was there before")
        if "--dry-run" in self.options:
            self.target = None

    def read_target(self):
        result = subprocess.run(
            ["ffprobe", "-v", "error", "-select_streams", "v:0", "-count_frames", "-show_entries",
             "stream=width,height,r_frame_rate,nb_read_frames", "-of", "json", f"{self.sandbox}/{self.target}"],
            capture_output=True, text=True)
        demand(result.returncode == 0, f"{self.target} cannot be read: {result.stderr.strip()}")
        stream = json.loads(result.stdout)["streams"][0]
        demand(int(stream["nb_read_frames"]) > 0, f"{self.target} has no frames")
        self.size = (stream["width"], stream["height"])
        self.rate = stream["r_frame_rate"]


def check_size(run, value):
    if run.target:
        wanted = tuple(int(side) or CLIP_SIZE[i] for i, side in enumerate(value.split("x")))
        demand(run.size == wanted, f"the file is not {value}")


def check_fit(run, value):
    if run.target:
        box = [int(side) for side in value.split("x")]
        width, height = run.size
        demand(width <= min(box[0], CLIP_SIZE[0]) and height <= min(box[1], CLIP_SIZE[1]), "it is too large")
        demand(abs(width / height - CLIP_SIZE[0] / CLIP_SIZE[1]) < 0.02, "it has another shape")
        demand(width == box[0] or height == box[1] or (width, height) == CLIP_SIZE, "it is too small")


def check_fps(run, value):
    if run.target:
        top, bottom = map(int, run.rate.split("/"))
        rate = int(round(float(value) * 100)) / 100
        demand(abs(top / bottom - rate) < 0.001, f"the file has {top}/{bottom} frames per second")


def check_graph(run, _):
    demand("Mira Vantrel\n" in run.output, "no graph is printed")


def check_cpu(run, _):
    demand("Row operations" in run.output, "the row operations are not printed")


def check_list(run, _):
    demand("RGB565" in run.output and "Bi-Linear SSE" in run.output, "formats or methods are not printed")


def check_help(run, _):
    demand("Usage: vantrel" in run.output, "no help is printed")


def check_json(run, _):
    try:
        json.loads(run.output.strip().split("\n")[-1])
    except ValueError as error:
        raise Wrong("it prints no JSON") from error


def check_log(run, value):
    if run.target:
        with open(f"{run.sandbox}/{value}", encoding="utf-8-sig") as file:
            demand(len(file.read().split()) > 1, f"{value} has no line for a frame")


def check_dry_run(run, _):
    demand(run.output.strip(), "it does not say what would be done")


def check_quiet(run, _):
    demand(not run.output.strip(), "it prints something")


def check_no_sound(run, _):
    demand("Sound  " not in run.output, "there is sound")


def nothing_more(run, _):
    pass


# name: (takes a value, what has to hold afterwards)
OPTIONS = {
    "--size": (True, check_size), "--fit": (True, check_fit), "--fps": (True, check_fps),
    "--method": (True, nothing_more), "--format": (True, nothing_more), "--type": (True, nothing_more),
    # Of --overwrite: a text stood there, and now there are frames.
    "--as-is": (False, nothing_more), "--no-sound": (False, check_no_sound), "--overwrite": (False, nothing_more),
    "--registered": (False, nothing_more), "--module": (True, nothing_more),
    "--graph": (False, check_graph), "--quiet": (False, check_quiet), "--play": (False, nothing_more),
    "--pages": (False, nothing_more), "--cpu": (False, check_cpu), "--list": (False, check_list),
    "--output-folder": (True, nothing_more), "--dry-run": (False, check_dry_run),
    "--start": (True, nothing_more), "--duration": (True, nothing_more),
    "--json": (False, check_json), "--log": (True, check_log), "--publish": (False, nothing_more),
    "--help": (False, check_help), "--version": (False, nothing_more),
}
