"""Writes the tsruntime package's type stubs from the library's type information.

    python3 make_stubs.py PACKAGE_DIR

PACKAGE_DIR is the built package (it is imported from its parent folder). Writes
__init__.pyi (stubs.pyi's fixed part, a class per library class, Dispatch overloads keyed
by ProgID), constants.pyi (an IntEnum per enumeration) and py.typed. Declarations come from
tsruntime._declarations, as help() shows them.
"""

import os
import sys


def docstring(text, indent):
    text = text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"')
    return f'{indent}"""{text}"""\n'


def params_text(params, leading=("self",)):
    parts = list(leading)
    for name, annotation, default in decl.parameters(params):
        part = f"{name}: {annotation}"
        if default is not decl.REQUIRED:
            part += " = " + decl.default_text(default)
        parts.append(part)
    return ", ".join(parts)


def method(name, params, result, help_text, indent="    "):
    return (f"{indent}def {name}({params_text(params)}) -> {result}:\n"
            + docstring(help_text, indent + "    "))


def describe_class(info):
    members = info["members"]
    methods, gets, puts = {}, {}, {}
    for m in members:
        table = {"method": methods, "get": gets}.get(m["kind"], puts)
        table.setdefault(m["name"].lower(), []).append(m)
    out = [f"class {info['name']}(CDispatch):\n", docstring(info["help"], "    ")]
    declared = set()

    def add(text, name):
        if name not in declared:
            declared.add(name)
            out.append(text)

    for ms in methods.values():
        m = ms[0]
        add(method(m["name"], m["params"], decl.call_result(m), m["help"]), m["name"])
    for key, (get, *_) in gets.items():
        if get["required"]:
            add(method(get["name"], get["params"], decl.call_result(get), get["help"]),
                get["name"])
            continue
        assignable = [p for p in puts.get(key, ()) if p["required"] == 1]
        text = (f"    @property\n    def {get['name']}(self) -> "
                f"{decl.returned_type(get['returns'], get['returns_class'])}:\n"
                + docstring(get["help"], "        "))
        if assignable:
            text += setter(get["name"], assignable)
        add(text, get["name"])
    for key, ps in puts.items():
        p = ps[0]
        if p["required"] >= 2:
            add(method("Set" + p["name"], p["params"], "None", p["help"]), "Set" + p["name"])
        elif key not in gets:
            # Type checkers take an assignment's type from the getter, so a write-only
            # property declares one of the type it is assigned.
            add(f"    @property\n    def {p['name']}(self) -> {assigned_type(ps)}:\n"
                + docstring(p["help"], "        ")
                + setter(p["name"], ps), p["name"])
    out.extend(special_methods(info, methods, gets, puts))
    return "".join(out)


def assigned_type(puts):
    types = sorted({decl.passed_type(p["params"][-1]["type"]) for p in puts})
    return "Any" if "Any" in types else " | ".join(types)


def setter(name, puts):
    return f"    @{name}.setter\n    def {name}(self, value: {assigned_type(puts)}) -> None: ...\n"


def special_methods(info, methods, gets, puts):
    """The default member as obj(...) and obj[...], For Each, and len()."""
    out = []
    default = (info["default"] or "").lower()
    target = (methods.get(default) or gets.get(default) or [None])[0]
    if target is not None:
        result = decl.call_result(target)
        out.append(f"    def __call__({params_text(target['params'])}) -> {result}: ...\n")
        keys = decl.parameters(target["params"])
        if keys:
            key_type = (keys[0][1] if len(keys) == 1
                        else "tuple[" + ", ".join(k[1] for k in keys) + "]")
            out.append(f"    def __getitem__(self, key: {key_type}) -> {result}: ...\n")
            assign = [p for p in puts.get(default, ()) if p["required"] == len(keys) + 1]
            if assign:
                value = decl.passed_type(assign[0]["params"][-1]["type"])
                out.append(f"    def __setitem__(self, key: {key_type}, value: {value})"
                           " -> None: ...\n")
    step = methods.get("next", [None])[0]
    if info["enumerable"] or (step and len(step["params"]) == 1
                              and step["params"][0]["writes_back"]):
        out.append("    def __iter__(self) -> Iterator[Any]: ...\n")
    count = gets.get("count", [None])[0]
    if count is not None and not count["required"]:
        out.append("    def __len__(self) -> int: ...\n")
    return out


def dispatch_overloads(infos):
    out = []
    for info in infos:
        if not info["creatable"]:
            continue
        ids = f'"{info["progid"]}", "{info["name"]}"'
        out.append(f"@overload\ndef Dispatch(progid: Literal[{ids}]) -> {info['name']}: ...\n")
    out.append("@overload\ndef Dispatch(progid: _D) -> _D: ...\n")
    out.append("@overload\ndef Dispatch(progid: str) -> Any: ...\n")
    return "".join(out)


def constants_stub():
    out = ['"""The library\'s enumerations as IntEnums, every member also by its own name."""\n',
           "from enum import IntEnum\n"]
    flat = []
    for e in rt.enum_info():
        out.append(f"\nclass {e['name']}(IntEnum):\n" + docstring(e["help"], "    "))
        for m in e["members"]:
            out.append(f"    {m['name']} = {m['value']}\n" + docstring(m["help"], "    "))
            flat.append(f"{m['name']}: {e['name']}\n")
    return "".join(out) + "\n" + "".join(flat)


def main():
    package = os.path.abspath(sys.argv[1])
    template = os.path.join(os.path.dirname(os.path.abspath(__file__)), "stubs.pyi")
    sys.path.insert(0, os.path.dirname(package))
    global decl, rt
    from tsruntime import _declarations as decl
    from tsruntime import _tsruntime as rt

    infos = [rt.class_info(name) for name, _, _ in rt.class_names()]
    with open(template, encoding="utf-8") as f:
        fixed = f.read()
    classes = "\n\n".join(describe_class(info) for info in infos)
    write(os.path.join(package, "__init__.pyi"),
          fixed + "\n\n" + classes + "\n\n" + dispatch_overloads(infos))
    write(os.path.join(package, "constants.pyi"), constants_stub())
    write(os.path.join(package, "py.typed"), "")


def write(path, text):
    """Replaces the file whole, so that a failed run never leaves half a stub."""
    with open(path + ".new", "w", encoding="utf-8") as f:
        f.write(text)
    os.replace(path + ".new", path)


if __name__ == "__main__":
    main()
