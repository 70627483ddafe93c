#!/usr/bin/env python3
"""The declarations of the settings interface agree with its description: the header in both forms,
C#, Pascal, Python, and the identifiers in the manifest. Each reader must also notice a declaration
that was changed.

Usage: check_declarations.py PROJECT_FOLDER
"""

import ast
import json
import re
import sys
from pathlib import Path

PREFIXES = {"VantrelScaleMethod": "VantrelMethod", "VantrelPixelFormat": "VantrelFormat",
            "VantrelVideoType": "VantrelType"}


# What readers raise where a declaration has another form.
UNREADABLE = (ValueError, KeyError, AttributeError, IndexError)


def described(text):
    """What the others are held against: identifiers, methods in the order of slots, codes."""
    data = json.loads(text)
    interface = data["interface"]
    methods = []
    for slot, method in enumerate(interface["methods"], 3):
        if method["slot"] != slot or method["result"] != "int32":
            raise ValueError(f"{method['name']} has not slot {slot}, or another result")
        arguments = [(a["type"], a["direction"]) for a in method["arguments"]]
        methods.append((method["name"], arguments))
    return {
        "classes": {c["name"]: c["id"].upper() for c in data["classes"]},
        "interface": interface["id"].upper(),
        "methods": methods,
        "codes": {name: list(values.items()) for name, values in data["enumerations"].items()},
    }


def id_of(text):
    """The identifier of {0x..., 0x..., 0x..., {0x.., ...}}."""
    numbers = [int(n, 16) for n in re.findall(r"0x([0-9a-fA-F]+)", text)]
    tail = "".join(f"{n:02X}" for n in numbers[3:])
    return f"{numbers[0]:08X}-{numbers[1]:04X}-{numbers[2]:04X}-{tail[:4]}-{tail[4:]}"


def c_argument(text):
    kind = text.replace("*", " ").split()[0]
    return ({"int": "int32", "double": "double"}[kind], "out" if "*" in text else "in")


def c_arguments(text):
    return [c_argument(a) for a in text.split(",") if a.strip()]


def header_facts(text):
    ids = {}
    for comment, name, body in re.findall(
            r"/\* \{([0-9A-F-]+)\}[^/]*\*/\nVANTREL_CONST \w+ (\w+) = \{(.*?)\};", text, re.S):
        ids[name] = id_of(body)
        if comment != ids[name]:
            raise ValueError(f"{name} has another identifier in its comment")
    interface = ids.pop("IID_IVantrelSettings")
    macro = re.search(r"__CRT_UUID_DECL\(\w+, (.*?)\)", text, re.S).group(1)
    uuid = re.search(r'uuid\("(.*?)"\)', text).group(1).upper()
    if {id_of(macro), uuid} != {interface}:
        raise ValueError("__uuidof has another identifier")
    codes = {}
    for name, body in re.findall(r"enum (\w+) VANTREL_INT \{(.*?)\};", text, re.S):
        codes[name] = [(n, int(v)) for n, v in re.findall(r"(\w+) = (\d+)", body)]
    return {"classes": ids, "interface": interface, "codes": codes}


def read_cpp(text):
    methods = re.findall(r"virtual int STDMETHODCALLTYPE (\w+)\((.*?)\) = 0;", text)
    return header_facts(text) | {"methods": [(n, c_arguments(a)) for n, a in methods]}


def read_c(text):
    table = re.findall(r"(\w+)\(STDMETHODCALLTYPE\* (\w+)\)\(IVantrelSettings\* This(?:, )?(.*?)\);", text)
    if [entry[1] for entry in table[:3]] != ["QueryInterface", "AddRef", "Release"]:
        raise ValueError("the table does not begin with IUnknown")
    if {entry[0] for entry in table[3:]} != {"int"}:
        raise ValueError("a result is no int")
    # The macros pass on what they get, in its order.
    macros = re.findall(r"#define IVantrelSettings_(\w+)\(This(?:, )?(.*?)\)[\s\\]*"
                        r"\(\(This\)->lpVtbl->(\w+)\(This(?:, )?(.*?)\)\)", text)
    if any((m[0], m[1]) != (m[2], m[3]) for m in macros):
        raise ValueError("a macro calls something else")
    names = [(e[1], [a.split()[-1].strip("*") for a in e[2].split(",") if a]) for e in table]
    if [(m[0], m[1].split(", ") if m[1] else []) for m in macros] != names:
        raise ValueError("the macros are not those of the table")
    return header_facts(text) | {"methods": [(e[1], c_arguments(e[2])) for e in table[3:]]}


def read_csharp(text):
    def argument(words):
        direction = "out" if words[0] == "out" else "in"
        kind = words[-2]
        if kind in PREFIXES:
            expected = words[-1].replace("type", "videotype")
            if not kind.lower().endswith(expected):
                raise ValueError(f"{kind} for {words[-1]}")
        return ("double" if kind == "double" else "int32" if kind in {"int", *PREFIXES} else kind,
                direction)

    body = re.search(r"public interface IVantrelSettings\s*\{(.*?)\}", text, re.S).group(1)
    lines = [line.strip() for line in body.strip().splitlines()]
    methods = []
    for line in lines:
        name, arguments = re.fullmatch(r"\[PreserveSig\] int (\w+)\((.*?)\);", line).groups()
        methods.append((name, [argument(a.split()) for a in arguments.split(",") if a]))
    codes = {}
    for name, values in re.findall(r"public enum (\w+)\s*\{(.*?)\}", text, re.S):
        codes[name] = [(PREFIXES[name] + n, int(v)) for n, v in re.findall(r"(\w+) = (\d+)", values)]
    ids = re.findall(r'Guid (\w+)Class = new Guid\("(.*?)"\)', text)
    classes = {"CLSID_" + ("VantrelFilter" if n == "Filter" else n): v for n, v in ids}
    interface = re.search(r'ComImport, Guid\("(.*?)"\), InterfaceType\(ComInterfaceType.'
                          r"InterfaceIsIUnknown", text).group(1)
    return {"classes": classes, "interface": interface, "methods": methods, "codes": codes}


def read_pascal(text):
    def arguments(text):
        result = []
        for group in filter(None, text.split(";")):
            names, kind = group.split(":")
            direction = "out" if names.strip().startswith("out ") else "in"
            kind = {"LongInt": "int32", "Double": "double"}[kind.strip()]
            result += [(kind, direction)] * len(names.split(","))
        return result

    methods = re.findall(r"function (\w+)(?:\((.*?)\))?: LongInt; stdcall;", text)
    codes = {}
    for name, body in re.findall(r"\{ (\w+) \}\n((?:  \w+ = \d+;\n)+)", text):
        codes[name] = [(n, int(v)) for n, v in re.findall(r"(\w+) = (\d+);", body)]
    return {
        "classes": dict(re.findall(r"(CLSID_\w+): TGUID = '\{(.*?)\}'", text)),
        "interface": re.search(r"interface\(IUnknown\)\s*\['\{(.*?)\}'\]", text).group(1),
        "methods": [(n, arguments(a)) for n, a in methods],
        "codes": codes,
    }


def read_python(text):
    def guid(call):
        return call.args[0].value.strip("{}")

    def kind(node):
        out = isinstance(node, ast.Call) and node.func.id == "POINTER"
        name = (node.args[0] if out else node).id
        return ({"c_int": "int32", "c_double": "double"}[name], "out" if out else "in")

    facts = {"classes": {}, "codes": {}}
    for node in ast.parse(text).body:
        if isinstance(node, ast.Assign) and node.targets[0].id.startswith("CLSID_"):
            facts["classes"][node.targets[0].id] = guid(node.value)
        elif isinstance(node, ast.ClassDef) and node.bases[0].id == "IntEnum":
            facts["codes"][node.name] = [
                (PREFIXES[node.name] + a.targets[0].id, a.value.value) for a in node.body]
        elif isinstance(node, ast.ClassDef) and node.name == "IVantrelSettings":
            fields = {a.targets[0].id: a.value for a in node.body}
            facts["interface"] = guid(fields["_iid_"])
            if any(m.args[0].id != "c_int" for m in fields["_methods_"].elts):
                raise ValueError("a result is no c_int")
            facts["methods"] = [(m.args[1].value, [kind(a) for a in m.args[2].elts])
                                for m in fields["_methods_"].elts]
    return facts


def read_manifest(text):
    return set(re.findall(r'<comClass clsid="\{(.*?)\}"', text))


READERS = {
    "the header in C++": ("settings/vantrel_settings.h", read_cpp),
    "the header in C": ("settings/vantrel_settings.h", read_c),
    "C#": ("sdk/csharp/Vantrel.cs", read_csharp),
    "Pascal": ("sdk/pascal/Vantrel.pas", read_pascal),
    "Python": ("sdk/python/vantrel.py", read_python),
}

# Each of these must be noticed, wherever its words stand.
CHANGES = [("SetScaleMethod", "SetOutputFormat"), ("GetSystemFps", "GetModuleTime"),
           ("ilinearSse = 12", "ilinearSse = 13"), ("4E0DB2C5", "4E0DB2C6"),
           ("80650FA1", "80650FA2"), ("0x80650fa1", "0x80650fa2"), ("0x4e0db2c5", "0x4e0db2c6")]


def swapped(text, first, second):
    """Only names change places: of a changed number nothing goes back."""
    if second.isalpha():
        return text.replace(first, "\0").replace(second, first).replace("\0", second)
    return text.replace(first, second)


def reads_as(reader, text, wanted):
    try:
        return reader(text) == wanted
    except UNREADABLE:
        return False


def main():
    root = Path(sys.argv[1])
    wanted = described((root / "sdk/vantrel.json").read_text())
    faults = []
    for name, (path, reader) in READERS.items():
        text = (root / path).read_text()
        try:
            found = reader(text)
            faults += [f"{name}: {key}: {found[key]} and not {wanted[key]}"
                       for key in wanted if found[key] != wanted[key]]
        except UNREADABLE as fault:
            faults.append(f"{name}: it is not written as expected: {fault!r}")
        for first, second in CHANGES:
            changed = swapped(text, first, second)
            if changed != text and reads_as(reader, changed, wanted):
                faults.append(f"{name}: {second} for {first} is not noticed")
    manifest = read_manifest((root / "sdk/manifest/live_resize.exe.manifest").read_text())
    if manifest != set(wanted["classes"].values()):
        faults.append(f"the manifest: {manifest}")
    ast.parse((root / "sdk/python/live_resize.py").read_text())
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
