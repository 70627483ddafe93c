#!/usr/bin/env python3
"""Checks all Markdown files: links lead somewhere, pictures are there, tests that are
named exist, and every command line does what the text says.

Usage: scripts/check_docs.py [BUILD]    (BUILD: the 32-bit build with tests; build/win32 by default)

Commands stand in blocks without a language or of "sh", and in spans of code that begin with a program's
name. doc_commands.py says how each is run; one that it does not know is an error. Needs a display, and
Wine, FFmpeg and ImageMagick.
"""

import os
import re
import sys

sys.dont_write_bytecode = True
import doc_commands  # beside this file

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LARGEST_PICTURE = 400 * 1024
# Spans of code that begin so are commands; the others are names, values and formulas.
PROGRAMS = r"(?:vantrel|regsvr32|cmake|ctest|xvfb-run|powershell|appverif|gflags|windbg|mcs|fpc|cl|python|pip|scripts/\S+)"
# What changed in older versions need not be true any more.
HISTORY = "CHANGELOG.md"
FENCE = re.compile(r"^```(\S*)\s*$")


class Document:
    def __init__(self, path):
        self.path = path
        self.folder = os.path.dirname(path)
        with open(os.path.join(ROOT, path), encoding="utf-8") as file:
            self.lines = file.read().split("\n")
        self.blocks = []  # (number of the first line, language, lines)
        self.prose = []  # lines, empty where a block stands
        block = None
        for number, line in enumerate(self.lines, 1):
            fence = FENCE.match(line)
            if fence and block is None:
                block = (number + 1, fence.group(1), [])
            elif fence and not fence.group(1):
                self.blocks.append(block)
                block = None
            elif block is not None:
                block[2].append(line)
            self.prose.append("" if fence or block is not None else line)
        if block is not None:
            raise SystemExit(f"error: {path}: the block of line {block[0]} has no end")

    def anchors(self):
        found = set()
        for line in self.prose:
            heading = re.match(r"#+ +(.*)", line)
            if heading:
                text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading.group(1)).lower()
                found.add(re.sub(r"[^\w\- ]", "", text).strip().replace(" ", "-"))
        return found

    def commands(self):
        """(line, command, whether it stands in a sentence)"""
        for first, language, lines in self.blocks:
            if language not in ("", "sh"):
                continue
            begun = ""
            for number, line in enumerate(lines, first):
                begun += line[:-1] if line.endswith("\\") else line
                if not line.endswith("\\"):
                    command = re.sub(r"\s+#\s.*", "", begun).strip()
                    if command:
                        yield number, command, False
                    begun = ""
        text = "\n".join(self.prose)
        for span in re.finditer(r"`([^`\n]*(?:\n[^`\n]*)?)`", text):
            command = " ".join(span.group(1).split())
            if re.match(PROGRAMS + " ", command):
                yield text.count("\n", 0, span.start()) + 1, command, True

    def links(self):
        """(line, text, target)"""
        text = "\n".join(self.prose)
        for link in re.finditer(r"\[((?:[^][]|\n)*)\]\(([^)\s]+)\)", text):
            yield text.count("\n", 0, link.start()) + 1, link.group(1), link.group(2)
        for link in re.finditer(r"(?:src|srcset|href)=\"([^\"]+)\"", text):
            yield text.count("\n", 0, link.start()) + 1, "", link.group(1)


def read_documents():
    paths = []
    for folder, folders, names in os.walk(ROOT):
        folders[:] = [name for name in folders if name not in ("build", ".git")]
        paths += [os.path.relpath(os.path.join(folder, name), ROOT) for name in names if name.endswith(".md")]
    return {path: Document(path) for path in sorted(paths)}


def check_links(documents, complain):
    """Returns what each document links."""
    linked = {path: set() for path in documents}
    for document in documents.values():
        for line, text, target in document.links():
            if re.match(r"[a-z]+:", target):
                continue
            path, _, anchor = target.partition("#")
            path = os.path.normpath(os.path.join(document.folder, path)) if path else document.path
            linked[document.path].add(path)
            whole = os.path.join(ROOT, path)
            if not os.path.exists(whole):
                complain(document.path, line, f"{target} does not exist")
            elif anchor and path in documents and anchor not in documents[path].anchors():
                complain(document.path, line, f"{path} has no heading for #{anchor}")
            elif path.startswith("tests/") and re.fullmatch(r"\w+", text):
                with open(whole, encoding="utf-8") as file:
                    if not re.search(rf"\b{text}\b", file.read()):
                        complain(document.path, line, f"{path} has no {text}")
    return linked


def check_pictures(linked, complain):
    for folder, _, names in os.walk(os.path.join(ROOT, "docs")):
        for name in names:
            path = os.path.relpath(os.path.join(folder, name), ROOT)
            if not name.endswith((".png", ".svg")):
                continue
            if path not in linked:
                complain(path, 0, "no document shows it")
            if os.path.getsize(os.path.join(ROOT, path)) > LARGEST_PICTURE:
                complain(path, 0, f"is larger than {LARGEST_PICTURE} bytes")


def check_deliberate(listed, complain):
    """What is odd on purpose is in the list of docs/kernels.md."""
    for top in ("cpu", "dshow", "filter", "host", "module", "pages", "picture", "regulator", "resample", "settings"):
        for folder, _, names in os.walk(os.path.join(ROOT, top)):
            for name in names:
                path = os.path.relpath(os.path.join(folder, name), ROOT)
                with open(os.path.join(ROOT, path), encoding="utf-8", errors="replace") as file:
                    if "Deliberate:" in file.read() and path not in listed:
                        complain(path, 0, "has a deliberate oddity that docs/kernels.md does not name")


def check_options(documents, complain):
    """An option by itself is one of vantrel's, or of a script's."""
    scripts = ""
    for name in os.listdir(os.path.join(ROOT, "scripts")):
        if name.endswith((".sh", ".py", ".ps1")) and not name.startswith("doc_"):
            with open(os.path.join(ROOT, "scripts", name), encoding="utf-8") as file:
                scripts += file.read()
    for document in documents.values():
        for number, line in enumerate(document.prose, 1):
            for option in re.findall(r"`(--[a-z][a-z-]*)", line):
                if option not in doc_commands.OPTIONS and option not in scripts:
                    complain(document.path, number, f"there is no option {option}")


def check_paths(documents, complain):
    """Files and folders of the project that a sentence names are there."""
    tops = "|".join(name for name in os.listdir(ROOT) if name != "build" and os.path.isdir(os.path.join(ROOT, name)))
    for document in documents.values():
        for number, line in enumerate(document.prose, 1):
            for path in re.findall(rf"`((?:{tops})/[\w./-]*)`", line):
                stands_for_another = document.path == HISTORY or re.search(r"/[A-Z]+/", path)
                if not stands_for_another and not os.path.exists(os.path.join(ROOT, path)):
                    complain(document.path, number, f"there is no {path}")


def main():
    if len(sys.argv) > 2:
        sys.exit(__doc__)
    build = os.path.abspath(sys.argv[1] if len(sys.argv) == 2 else os.path.join(ROOT, "build/win32"))
    complaints = []

    def complain(path, line, text):
        complaints.append(f"{path}:{line}: {text}")

    documents = read_documents()
    linked = check_links(documents, complain)
    check_pictures(set().union(*linked.values()), complain)
    check_deliberate(linked["docs/kernels.md"], complain)
    check_options(documents, complain)
    check_paths(documents, complain)
    runner = doc_commands.Runner(ROOT, build)
    for document in documents.values():
        for line, command, in_sentence in document.commands() if document.path != HISTORY else ():
            problem = runner.check(command, in_sentence)
            if problem:
                complain(document.path, line, f"{command}\n    {problem}")
    runner.finish()
    print(f"{len(documents)} documents, {runner.summary()}")
    if complaints:
        sys.exit("\n".join(["error: the documents are not right:"] + complaints))


main()
