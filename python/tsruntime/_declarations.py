"""How the members of the type information read in Python: what each parameter takes, what a
call returns (written-back arguments included), and the help text beside it.

`help()` on the package's objects and the generated stubs (.pyi) both come from here, so
an editor and the interpreter show the same declaration. Types are written as stub text.
"""

import inspect
import keyword

from ._tsruntime import Missing

ARRAY_IN = "SafeArray | list[Any] | tuple[Any, ...]"
REQUIRED = inspect.Parameter.empty

# Per declared type: what Python passes for a parameter of it (values convert as the host
# runtime converts; these are the natural ones), and what comes back for a result of it.
# An object parameter also takes AutomationError (as the Err object) and any Python
# object with the members the library calls (a subclassing client).
_TYPES = {
    "Integer": ("int", "int"), "Long": ("int", "int"), "Byte": ("int", "int"),
    "Single": ("float", "float"), "Double": ("float", "float"),
    "Currency": ("Decimal | float", "Decimal"), "Decimal": ("Decimal | float", "Decimal"),
    "Date": ("datetime.date | float", "datetime.datetime"),
    "String": ("str", "str"), "Boolean": ("bool", "bool"),
    "Error": ("ErrorValue", "ErrorValue"),
    "Object": ("object", "Any"),
}


def passed_type(type_name):
    if type_name.endswith("()"):
        return ("bytes | bytearray | " if type_name == "Byte()" else "") + ARRAY_IN
    return _TYPES.get(type_name, ("Any",))[0]


def returned_type(type_name, class_name=None):
    """An object of a known class comes back as that class; one of no known class, which
    may also be None for Nothing, as Any."""
    if class_name:
        return class_name
    if type_name is None:
        return "None"
    if type_name.endswith("()"):
        return "bytes | SafeArray" if type_name == "Byte()" else "SafeArray"
    return _TYPES.get(type_name, ("Any", "Any"))[1]


def python_name(name):
    return name + "_" if keyword.iskeyword(name) else name


def _fits(value, annotation):
    """Whether `value` can stand as the default of a parameter of this annotation."""
    if annotation == "Any":
        return True
    kinds = {bool: "bool", int: "int", float: "float", str: "str"}
    kind = kinds.get(type(value))
    if kind is None:
        return False
    return kind in annotation.split(" | ") or (kind == "int" and "float" in annotation)


def parameters(params):
    """(name, annotation, default) per parameter; default is REQUIRED for a required one
    and `Missing` for an optional one without a default value. Optional parameters that
    a required one follows are taken as required, as Python has it."""
    last_required = max((i for i, p in enumerate(params) if not p["optional"]), default=-1)
    out = []
    for i, p in enumerate(params):
        annotation = passed_type(p["type"])
        default = p["default"] if p["optional"] and i > last_required else REQUIRED
        if default is None:  # an Empty default: None passes as Empty
            annotation = annotation if annotation == "Any" else annotation + " | None"
        elif default is not REQUIRED and default is not Missing and not _fits(default, annotation):
            default = Missing
        out.append((python_name(p["name"]), annotation, default))
    return out


def default_text(default):
    """The default as stub text: a short literal, or `...`."""
    if default is Missing:
        return "..."
    text = repr(default)
    return text if len(text) <= 40 else "..."


def call_result(member):
    """What calling the member returns: its result, then each written-back parameter in
    order (None for one left out that has no default); a member with no result returns
    the written values alone, a single one unwrapped."""
    parts = []
    if member["returns"] is not None:
        parts.append(returned_type(member["returns"], member.get("returns_class")))
    written = [p for p in member["params"] if p["writes_back"]]
    if not written:
        return parts[0] if parts else "None"
    for p in written:
        t = returned_type(p["type"])
        if p["optional"] and p["default"] is Missing and t != "Any":
            t += " | None"
        parts.append(t)
    if member["returns"] is None and len(parts) == 1:
        return parts[0]
    return f"tuple[{', '.join(parts)}]"


class _TypeText:
    """An annotation that shows as stub text in signatures."""

    def __init__(self, text):
        self.text = text

    def __repr__(self):
        return self.text


def signature(params, result, leading=()):
    """An inspect.Signature for `help()`, the same as the stub declares."""
    made = [inspect.Parameter(n, inspect.Parameter.POSITIONAL_OR_KEYWORD) for n in leading]
    for name, annotation, default in parameters(params):
        made.append(inspect.Parameter(
            name, inspect.Parameter.POSITIONAL_OR_KEYWORD,
            default=default,
            annotation=_TypeText(annotation)))
    return inspect.Signature(made, return_annotation=_TypeText(result))


def property_doc(name, get, puts, help_text):
    """The text help() shows for a property read and assigned by attribute."""
    if get is None:
        kind = "write-only"
        shown = " | ".join(sorted({passed_type(p["params"][-1]["type"]) for p in puts}))
    else:
        kind = "read/write" if puts else "read-only"
        shown = returned_type(get["returns"], get.get("returns_class"))
    return f"{name}: {shown}  ({kind})\n\n{help_text}"
