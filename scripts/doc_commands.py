"""How check_docs.py runs a command line of the documents.

Commands run in a folder of their own, in which a clip lies and everything else is as in the project, but
for docs/. RULES says for each kind of command whether it is run as it stands or in a reduced form. What
the options of vantrel have to do is in doc_vantrel.py.
"""

import glob
import json
import os
import re
import shlex
import shutil
import subprocess

from doc_vantrel import CLIP_SIZE, OPTIONS, VantrelRun, Wrong, demand

TIME_LIMIT = 300
CLIP_RATE = 10
CLIP_FRAMES = 5
# What stands in sentences for something of the reader's own.
PLACEHOLDERS = {"VIDEO": "clip.mp4", "IN": "clip.avi", "OUT.avi": "out.avi", "N": "25", "WxH": "320x240"}
CLSID = "{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}"


class Runner:
    def __init__(self, root, build):
        self.root, self.build = root, build
        self.bin = os.path.join(build, "bin")
        self.sandbox = os.path.join(build, "docs_test")
        self.done, self.run_count, self.reduced_count = {}, 0, 0
        self.vantrel_runs = set()
        self.was_registered = None
        self.make_sandbox()

    def make_sandbox(self):
        shutil.rmtree(self.sandbox, ignore_errors=True)
        os.makedirs(os.path.join(self.sandbox, "docs"))
        for name in os.listdir(self.root):
            if name not in ("docs", ".git"):
                os.symlink(os.path.join(self.root, name), os.path.join(self.sandbox, name))
        self.make_clip("clip.mp4", ["-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p"])
        self.make_clip("clip.avi", ["-c:v", "mpeg4", "-q:v", "3"])

    def make_clip(self, name, options):
        subprocess.run(
            ["ffmpeg", "-v", "error", "-f", "lavfi", "-i",
             "testsrc2=size=%dx%d:rate=%d" % (*CLIP_SIZE, CLIP_RATE), "-frames:v", str(CLIP_FRAMES)]
            + options + [os.path.join(self.sandbox, name)], check=True)

    def check(self, command, in_sentence):
        """What is wrong with a command, or nothing. The same command is run once."""
        if command not in self.done:
            self.done[command] = self.try_command(command, in_sentence)
        return self.done[command]

    def try_command(self, command, in_sentence):
        try:
            for part in re.split(r"\s+&&\s+", command):
                self.try_part(part, in_sentence)
        except Wrong as wrong:
            return str(wrong)
        except subprocess.TimeoutExpired:
            return f"it takes longer than {TIME_LIMIT} s"
        return None

    def try_part(self, command, in_sentence):
        for pattern, rule in RULES:
            match = re.fullmatch(pattern, command)
            if match:
                reduced = rule(self, command, match, in_sentence)
                self.reduced_count += bool(reduced)
                self.run_count += not reduced
                return
        raise Wrong("the test does not know this command: scripts/doc_commands.py")

    def shell(self, command):
        """Runs it in the sandbox; a program of Windows by way of Wine."""
        environment = dict(os.environ, WINEPREFIX=os.environ.get("WINEPREFIX", self.root + "/build/wine"))
        return subprocess.run(["bash", "-c", command], cwd=self.sandbox, env=environment, text=True,
                              errors="replace", stdin=subprocess.DEVNULL, timeout=TIME_LIMIT,
                              capture_output=True)

    def succeed(self, command):
        result = self.shell(command)
        demand(result.returncode == 0, f"exit code {result.returncode}: {(result.stderr + result.stdout)[-500:]}")
        return result.stdout

    def wine(self, program, *arguments):
        return shlex.join([self.root + "/scripts/wine.sh", program, *arguments])

    def is_registered(self):
        query = self.wine("reg", "query", rf"HKCR\CLSID\{CLSID}\InprocServer32", "/reg:32")
        return self.shell(query).returncode == 0

    def register(self, *arguments):
        program = self.wine(r"C:\windows\syswow64\regsvr32.exe", "/s", *arguments, "TavoResample.ax")
        self.succeed(f"cd {shlex.quote(self.bin)} && {program}")

    def finish(self):
        """Leaves the registry as it was."""
        if self.was_registered is not None and self.was_registered != self.is_registered():
            self.register(*([] if self.was_registered else ["/u"]))

    def summary(self):
        return f"{len(self.done)} command lines: {self.run_count} run, {self.reduced_count} in a reduced form"


# Rules: each returns True where it runs less than what stands there.


def run_vantrel(runner, command, _, in_sentence):
    """As it stands. --pages, which waits for somebody to press OK, is run as --play: vantrel_pages_test
    presses its buttons."""
    splitter = shlex.shlex(command, posix=True, punctuation_chars=False)
    splitter.whitespace_split, splitter.escape, splitter.commenters = True, "", ""  # as Windows does
    words = list(splitter)
    if in_sentence:
        words = [PLACEHOLDERS.get(word, word) for word in words]
    run = VantrelRun(words)
    if in_sentence and not run.files and not {"--cpu", "--list", "--help", "--version"} & set(run.options):
        return True  # names options, which are known
    words = ["--play" if word == "--pages" else word for word in words]
    if tuple(words) not in runner.vantrel_runs:
        runner.vantrel_runs.add(tuple(words))
        finish_vantrel(runner, run, words)
    return "--pages" in run.options


def finish_vantrel(runner, run, words):
    run.prepare(runner.sandbox)
    if "--registered" in run.options:
        prepare_registration(runner)
        runner.register()
    run.output = runner.succeed(runner.wine(runner.bin + "/vantrel.exe", *words[1:]))
    if run.target:
        run.read_target()
    for name, value in run.options.items():
        OPTIONS[name][1](run, value)


def prepare_registration(runner):
    if runner.was_registered is None:
        runner.was_registered = runner.is_registered()


def run_regsvr32(runner, command, _, __):
    """With the 32-bit program of Wine, whichever of the two is meant."""
    prepare_registration(runner)
    off = "/u" in command
    if off:
        runner.register()
    runner.register(*(["/u"] if off else []))
    demand(runner.is_registered() != off, "the registry does not show it")
    return True


def run_as_it_is(runner, command, _, __):
    runner.succeed(command)


def run_with_own_clip(runner, command, match, __):
    """With the clip of the test in place of the reader's."""
    if "/tests/" not in command:  # examples use the registered module
        prepare_registration(runner)
        runner.register()
    clip = runner.sandbox + "/clip.avi"
    command = command.replace(r"'Z:\path\to\clip.avi'", shlex.quote("Z:" + clip.replace("/", "\\")))
    runner.succeed(re.sub(r"build/demo/clip/\S+", clip, command))
    return True


def check_packages(runner, command, _, __):
    """scripts/test.sh has installed them, or this build could not have been made."""
    packages = command.split("install ")[1].split()
    missing = runner.shell(shlex.join(["dpkg-query", "-W", *packages])).stderr
    demand(not missing, missing)
    return True


def presets(runner):
    with open(runner.root + "/CMakePresets.json", encoding="utf-8") as file:
        return [p["name"] for p in json.load(file)["configurePresets"] if not p.get("hidden")]


def find_in_cmake(runner, text):
    return subprocess.run(["grep", "-rqF", "--include=CMakeLists.txt", "--include=*.cmake", text]
                          + [os.path.join(runner.root, name) for name in os.listdir(runner.root) if name != "build"]
                          ).returncode == 0


def check_cmake(runner, command, match, _):
    """Builds are made by scripts/test.sh, from the same presets: here names have to be right."""
    for name in re.findall(r"--preset (\S+)", command):
        demand(name in presets(runner), f"there is no preset {name}")
    for name in re.findall(r"-D(TAVO_\w+)=", command):
        demand(find_in_cmake(runner, name), f"there is no option {name}")
    for name in re.findall(r"--target (\S+)", command):
        demand(find_in_cmake(runner, f"add_executable({name}"), f"there is no target {name}")
    for name in re.findall(r"-R (\w+)", command):
        demand(find_in_cmake(runner, f"NAME {name}") or find_in_cmake(runner, f"tavo_test({name}"),
               f"there is no test {name}")
    return True


def check_script(runner, command, match, _):
    """Scripts that take long are run by CI and by hand. Their usage has to have room for the arguments."""
    words = shlex.split(command)
    path = os.path.join(runner.root, words[0])
    demand(os.access(path, os.X_OK), f"{words[0]} is no program")
    with open(path, encoding="utf-8") as file:
        text = file.read()
    demand(len(words) == 1 or re.search(r"Usage: " + re.escape(words[0]) + r" \S", text),
           f"{words[0]} takes no arguments")
    for word in words[1:]:
        if words[0] == "scripts/test.sh" and re.fullmatch(r"[a-z]+\d*", word):
            demand(word in [*presets(runner), "package"], f"there is no preset {word}")
        if words[0] == "scripts/fuzz.sh" and re.fullmatch(r"[A-Z]\w+", word):
            demand(os.path.isdir(f"{runner.root}/tests/fuzz/corpus/{word}"), f"there is no target {word}")
        if word.startswith("--"):
            demand(word in text, f"{words[0]} has no {word}")
    return True


def check_fuzzer(runner, command, match, _):
    demand(os.path.isdir(f"{runner.root}/tests/fuzz/corpus/{match.group(1)}"), "there is no such target")
    return True


def only_on_windows(runner, command, match, _):
    """Programs of Windows and of its SDK, which Wine does not have. Files of ours that they are given exist."""
    for name in re.findall(r"\S+\.ps1", command):
        demand(os.path.exists(f"{runner.root}/scripts/{name}"), f"there is no {name}")
    return True


def check_sdk(runner, command, match, _):
    """For application programmers: tests/sdk builds and runs the same sources. The C and C++ command lines are
    compiled as far as the syntax; of the others the files that they name have to be there."""
    sdk = os.path.join(runner.root, "sdk")
    for name in re.findall(r"\S+\.(?:cpp|cs?|pas|py)\b", command):
        demand(glob.glob(os.path.join(sdk, name.replace("\\", "/"))), f"sdk/ has no {name}")
    if command.startswith("live_resize "):
        demand(os.path.exists(sdk + "/cpp/live_resize.cpp"), "sdk/ has no live_resize")
    if "-w64-mingw32-" in command:
        syntax = re.sub(r"-I include", "-I ../settings", re.sub(r"-o \S+", "-fsyntax-only", command))
        runner.succeed(f"cd {shlex.quote(sdk)} && {syntax}")
    return True


RULES = [
    (r"vantrel( .*)?", run_vantrel),
    (r"(%WINDIR%\\SysWOW64\\)?regsvr32 (/u )?TavoResample\.ax", run_regsvr32),
    (r"i686-w64-mingw32-(g\+\+|gcc)(-posix)? .* -o build/.*", run_as_it_is),
    (r"\S+-w64-mingw32-(g\+\+|gcc)(-posix)? .*", check_sdk),
    (r"(\S+\\csc|mcs|fpc|cl|python) .*", check_sdk),
    (r"live_resize VIDEO \d+ \d+ .*", check_sdk),
    (r"scripts/wine\.sh build/win32/bin/vantrel\.exe", check_script),
    (r"scripts/wine\.sh build/\S+\.exe .*", run_with_own_clip),
    (r"scripts/draw_timeline\.py .*", run_as_it_is),
    (r"(sudo )?apt-get install [a-z0-9:+. -]+", check_packages),
    (r"cmake --preset( \S+( -D\S+)*)?", check_cmake),
    (r"cmake --build --preset \S+( --target \S+)?", check_cmake),
    (r"cmake -S \. -B build/\S+ -G Ninja( -D\S+)*|cmake --build build/\S+", check_cmake),
    (r"(TAVO_\w+=\d+ )?(xvfb-run -a )?ctest --preset \S+( -R \S+)?", check_cmake),
    (r"build/fuzz/tests/fuzz/fuzz_(\w+) FILE", check_fuzzer),
    (r"scripts/(demo|test|soak|fuzz|bench|screenshots|guide_pictures|kernel_pictures|run_csharp)\.(sh|py)( .*)?", check_script),
    (r"(powershell|appverif|gflags|windbg) .*|pip install comtypes", only_on_windows),
]
