#!/usr/bin/env python3
"""The interfaces of DirectShow that sdk/ declares for C#, Pascal and Python have the identifiers and the
tables of the platform's C headers: methods in their order, arguments in their kind. C# declares whole
tables, the others as much as is called. Declarations that were changed must be noticed.

Usage: check_directshow.py PROJECT_FOLDER C_COMPILER
"""

import ast
import re
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
from check_declarations import UNREADABLE, id_of  # noqa: E402

# Kinds of arguments: 4 and 8 (bytes), double, word (as wide as a pointer), wide and bstr (strings), guid,
# @IPin (an interface), and * before the kind of what a pointer leads to.
C_KINDS = {"long": "4", "LONG": "4", "ULONG": "4", "DWORD": "4", "FILTER_STATE": "4", "PIN_DIRECTION": "4",
           "OAFilterState": "4", "LONGLONG": "8", "REFERENCE_TIME": "8", "double": "double",
           "LONG_PTR": "word", "DWORD_PTR": "word", "OAEVENT": "word", "OAHWND": "word", "LPCWSTR": "wide",
           "LPWSTR": "wide", "BSTR": "bstr", "GUID": "guid", "CLSID": "guid"}
CSHARP_KINDS = {"int": "4", "PinDirection": "4", "FilterState": "4", "SeekingFlags": "4", "long": "8",
                "double": "double", "IntPtr": "word", "Guid": "guid"}
PASCAL_KINDS = {"LongInt": "4", "LongWord": "4", "Int64": "8", "Pointer": "word", "PWideChar": "wide",
                "TGUID": "guid", "PGUID": "*guid"}
PYTHON_KINDS = {"c_int": "4", "c_long": "4", "c_ulong": "4", "c_longlong": "8", "c_double": "double",
                "c_void_p": "word", "c_wchar_p": "wide"}
STRINGS = {"LPWStr": "wide", "BStr": "bstr"}
ENUMS = {"PinDirection": "PINDIR_", "FilterState": "State_", "SeekingFlags": "AM_SEEKING_"}
WHOLE = {"IPin", "IEnumPins", "IMediaFilter", "IBaseFilter", "IGraphBuilder", "IMediaControl", "IMediaEvent",
         "IMediaEventEx", "IMediaSeeking"}


def c_kind(text):
    base = text.replace("const", "").replace("*", " ").split()[0]
    stars = text.count("*")
    if re.fullmatch("I[A-Z]\\w+", base):
        return "*" * (stars - 1) + "@" + base
    return "*" * stars + C_KINDS.get(base, base)


def header_facts(compiler):
    """Identifiers and numbers by name, and for each interface whether it is an IDispatch, and its methods."""
    command = [compiler, "-DCINTERFACE", "-DINITGUID", "-E", "-P", "-x", "c", "-"]
    # A function of the same name makes GetTimeFormat a macro.
    source = "#include <windows.h>\n#undef GetTimeFormat\n#include <dshow.h>\n"
    text = subprocess.run(command, input=source, text=True, check=True, capture_output=True).stdout
    ids = {name: id_of(body) for name, body in re.findall(r"const GUID [^;=]*?(\w+) = \{( 0x.*?)\};", text)}
    numbers = {name.lower(): int(value, 0)
               for name, value in re.findall(r"\b((?:PINDIR|State|AM_SEEKING)_\w+) = (\w+)", text)}
    tables = {}
    for name, body in re.findall(r"typedef struct (\w+)Vtbl \{(.*?)\} \1Vtbl;", text, re.S):
        table = re.findall(r"(\w+) \([^*]*\*(\w+)\)\((.*?)\);", body, re.S)
        dispatch = [entry[1] for entry in table[3:4]] == ["GetTypeInfoCount"]
        methods = [(entry[1], entry[0], [c_kind(a) for a in entry[2].split(",")[1:]])
                   for entry in table[7 if dispatch else 3:]]
        tables[name] = (dispatch, methods)
    return {"ids": ids, "numbers": numbers, "tables": tables}


def csharp_kind(attributes, mode, kind, array):
    if array and not ("Out" in attributes and "LPArray" in attributes):
        raise ValueError("an array that does not come back")
    managed = "".join(re.findall(r"UnmanagedType\.(\w+)", attributes))
    if kind == "string":
        kind = STRINGS[managed]
    elif kind == "object":
        kind = "@" + managed
    else:
        kind = "@" + kind if kind in WHOLE else CSHARP_KINDS[kind]
    return "*" * bool(mode or array) + kind


def read_csharp(text):
    argument = r"(?:\[([^\]]*)\] )?(out |ref )?(\w+)(\[\])? \w+"
    interfaces = {}
    for guid, base, name, body in re.findall(
            r'\[ComImport, Guid\("(.*?)"\), InterfaceType\(ComInterfaceType\.InterfaceIs(\w+)\)\]\n'
            r"public interface (\w+)\n\{\n(.*?)\}\n", text, re.S):
        methods = []
        statements = re.sub(r"\s+", " ", re.sub("//.*", "", body)).split(";")
        for statement in filter(None, map(str.strip, statements)):
            method, arguments = re.fullmatch(r"\[PreserveSig\] int (\w+)\((.*)\)", statement).groups()
            if arguments and not re.fullmatch(f"{argument}(?:, {argument})*", arguments):
                raise ValueError(arguments)
            methods.append((method, [csharp_kind(*a) for a in re.findall(argument, arguments)]))
        interfaces[name] = (guid, {"Dual": True, "IUnknown": False}[base], methods)
    if set(interfaces) != WHOLE or text.count("ComImport") != len(WHOLE):
        raise ValueError("these are not the interfaces")
    numbers = {}
    for name, body in re.findall(r"public enum (\w+)\n\{(.*?)\}", text, re.S):
        numbers |= {ENUMS[name] + n: int(v) for n, v in re.findall(r"(\w+) = (\d+)", body)}
    graph = re.search(r'FilterGraphClass = new Guid\("(.*?)"\)', text).group(1)
    return {"graph": graph, "numbers": numbers, "interfaces": interfaces}


def read_pascal(text):
    def arguments(text):
        for group in filter(None, map(str.strip, text.split(";"))):
            mode, names, kind = re.fullmatch(r"(out |var |const )?([\w, ]+): (\w+)", group).groups()
            if kind in interfaces:
                kind = "@" + kind
            else:
                kind = PASCAL_KINDS[kind]
            yield from ["*" * (mode in {"out ", "var "}) + kind] * len(names.split(","))

    interfaces = {}
    for name, base, guid, body in re.findall(
            r"(\w+) = interface\((\w+)\)\s*\['\{(.*?)\}'\](.*?)\n  end;", text, re.S):
        methods = list(interfaces[base][2]) if base in interfaces else []
        functions = re.findall(r"function (\w+)(?:\((.*?)\))?: HResult;\s*stdcall;", body)
        if len(functions) != body.count("function"):
            raise ValueError(f"a function of {name} is not written as expected")
        methods += [(n, list(arguments(a))) for n, a in functions]
        interfaces[name] = (guid, base == "IDispatch", methods)
    numbers = {n: int(v) for n, v in re.findall(r"(AM_SEEKING_\w+) = (\d+);", text)}
    graph = re.search(r"CLSID_FilterGraph: TGUID = '\{(.*?)\}'", text).group(1)
    return {"graph": graph, "numbers": numbers, "interfaces": interfaces}


def read_python(text):
    def kind(node):
        if isinstance(node, ast.Name):
            return PYTHON_KINDS[node.id]
        inner = node.args[0]
        if isinstance(inner, ast.Name) and inner.id in facts["interfaces"]:
            return "@" + inner.id
        return "*" + kind(inner)

    def method(node):
        if node.args[0].id not in {"HRESULT", "c_int"}:
            raise ValueError(node.args[0].id)
        return (node.args[1].value, [kind(a) for a in node.args[2].elts] if node.args[2:] else None)

    facts = {"numbers": {}, "interfaces": {}}
    for node in ast.parse(text).body:
        if isinstance(node, ast.ClassDef):
            fields = {a.targets[0].id: a.value for a in node.body}
            facts["interfaces"][node.name] = (fields["_iid_"].args[0].value.strip("{}"),
                                              node.bases[0].id == "IDispatch",
                                              [method(m) for m in fields["_methods_"].elts])
        elif isinstance(node, ast.Assign) and node.targets[0].id.startswith("AM_SEEKING_"):
            facts["numbers"][node.targets[0].id] = node.value.value
        elif isinstance(node, ast.Assign) and node.targets[0].id == "CLSID_FilterGraph":
            facts["graph"] = node.value.args[0].value.strip("{}")
    return facts


def fits(platform, declared):
    if declared == "word":
        return platform in {"word", "wide"} or platform[0] in "*@"
    if platform.startswith("*") and declared.startswith("*"):
        return fits(platform[1:], declared[1:])
    return platform == declared


def faults_of(facts, header, whole):
    if facts["graph"].upper() != header["ids"]["CLSID_FilterGraph"]:
        yield "CLSID_FilterGraph has another identifier"
    for name, value in facts["numbers"].items():
        if header["numbers"].get(name.lower()) != value:
            yield f"{name} is not {value}"
    for name, (guid, dispatch, methods) in facts["interfaces"].items():
        platform_dispatch, platform = header["tables"][name]
        if guid.upper() != header["ids"]["IID_" + name] or dispatch != platform_dispatch:
            yield f"{name} has another identifier or base"
        if len(methods) > len(platform) or whole and len(methods) < len(platform):
            yield f"{name} has {len(methods)} methods instead of {len(platform)}"
        for (method, kinds), (wanted, result, wanted_kinds) in zip(methods, platform):
            if method != wanted or result != "HRESULT":
                yield f"{name}: {method} stands in the place of {result} {wanted}"
            elif kinds is not None and (len(kinds) != len(wanted_kinds) or
                                        not all(map(fits, wanted_kinds, kinds))):
                yield f"{name}.{method} takes {kinds} instead of {wanted_kinds}"


READERS = {
    "C#": (["sdk/csharp/DirectShow.cs", "sdk/csharp/LiveResize.cs"], read_csharp),
    "Pascal": (["sdk/pascal/LiveResize.pas"], read_pascal),
    "Python": (["sdk/python/live_resize.py"], read_python),
}

# Each of these must be noticed.
CHANGES = {
    "C#": [("Run(long start)", "Run(int start)"), ("out long duration", "out int duration"),
           ("[PreserveSig] int Render(", "void Render("), ("ref long stop,", "long stop,"),
           ("LPWStr)] string id", "BStr)] string id"), ("BStr)] string file)", "LPWStr)] string file)"),
           ("[Out, MarshalAs(UnmanagedType.LPArray, SizeParamIndex = 0)] ", ""), ("IPin[] pins", "IPin pins"),
           ("IntPtr data);", "int data);"), ("out IPin pin);", "IPin pin);"), ("Reconnect(IPin pin", "Reconnect("),
           ("out IEnumPins pins", "out IPin pins"), ("56A86891", "56A86892"), ("36B73880", "36B73881"),
           ("E436EBB3", "E436EBB4"), ("InterfaceIsDual", "InterfaceIsIUnknown"), ("Segment = 16", "Segment = 15"),
           ("Output = 1", "Output = 2"), ("string name, out IBaseFilter", "string name, int more, out IBaseFilter")],
    "Pascal": [("function GetTimeFormat(out format: TGUID): HResult; stdcall;\n", ""),
               ("out current: Int64", "out current: LongInt"), ("function Pause", "function Break"),
               ("IMediaSeeking = interface(IUnknown)", "IMediaSeeking = interface(IDispatch)"),
               ("56A868B6", "56A868B7"), ("E436EBB3", "E436EBB4"), ("Positioning = 1;", "Positioning = 2;"),
               ("stop: Pointer; ", ""), ("interface(IMediaFilter)", "interface(IUnknown)")],
    "Python": [('        STDMETHOD(HRESULT, "GetDuration"),\n', ""), ("POINTER(c_longlong)]", "POINTER(c_long)]"),
               ('"Pause"', '"Break"'), ("IMediaControl(IDispatch)", "IMediaControl(IUnknown)"),
               ("56A868B6", "56A868B7"), ("E436EBB3", "E436EBB4"), ("Positioning = 1", "Positioning = 2"),
               ("[POINTER(IPin), POINTER(IPin)]", "[POINTER(IPin)]")],
}


def changed_texts(language, text):
    for old, new in CHANGES[language]:
        if old not in text:
            raise SystemExit(f"{language}: there is no {old} to change")
        yield f"{new} for {old}", text.replace(old, new)
    if language == "C#":
        methods = list(re.finditer(r" {4}\[PreserveSig\][^;]*;\n", text))
        for method, following in zip(methods, methods[1:] + [None]):
            yield f"the lack of {method[0]}", text[:method.start()] + text[method.end():]
            if following and following.start() == method.end():
                yield (f"{method[0]} behind its successor",
                       text[:method.start()] + following[0] + method[0] + text[following.end():])


def main():
    root = Path(sys.argv[1])
    header = header_facts(sys.argv[2])
    faults = []
    for language, (paths, reader) in READERS.items():
        text = "".join((root / path).read_text() for path in paths)
        whole = language == "C#"
        try:
            faults += [f"{language}: {fault}" for fault in faults_of(reader(text), header, whole)]
        except UNREADABLE as fault:
            faults.append(f"{language}: it is not written as expected: {fault!r}")
        for change, changed in changed_texts(language, text):
            try:
                noticed = any(faults_of(reader(changed), header, whole))
            except UNREADABLE:
                noticed = True
            if not noticed:
                faults.append(f"{language}: {change} is not noticed")
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
