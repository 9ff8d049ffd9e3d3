"""The library's enumerations as IntEnums, and every enumeration member by its own name too,
as win32com.client.constants offers them:

    from tsruntime.constants import xeZK_TRIM_TYPE, xcZKLANG_ENG
    s.Trim("xxabcxx", "x", xeZK_TRIM_TYPE.xcZK_TRIM_BOTH)

A member is an int wherever the library takes a number. help() on an enumeration lists its
members with their help strings. Made from the type information when first imported.
"""

from enum import IntEnum

from ._tsruntime import enum_info as _enum_info


def _publish():
    names = globals()
    for e in _enum_info():
        enum = IntEnum(e["name"], [(m["name"], m["value"]) for m in e["members"]],
                       module=__name__)
        listing = "\n".join(f"  {m['name']} = {m['value']}: {m['help']}" for m in e["members"])
        enum.__doc__ = f"{e['help']}\n\n{listing}"
        for m in e["members"]:
            member = enum[m["name"]]
            if member.name == m["name"]:  # not an alias of an earlier member
                member.__doc__ = m["help"]
            names[m["name"]] = member
        names[e["name"]] = enum


_publish()
