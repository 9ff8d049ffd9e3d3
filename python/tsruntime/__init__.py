"""The Tessaly Runtime Library from Python, the way win32com.client drives automation objects.

    import tsruntime
    s = tsruntime.Dispatch("TSRuntimeLib.clsZKString")
    s.InWords(decimal.Decimal("1234.56"))   # 'одна тысяча двести тридцать четыре рубля 56 копеек'

Every object is late bound: its attributes are the members its class describes, found by
name in any case. This module holds no knowledge of any class. See docs/python.md.
"""

import os
import sys
import weakref

try:
    from . import _tsruntime as _rt
except ImportError as _cause:
    raise ImportError(
        f"tsruntime: the package in {os.path.dirname(os.path.abspath(__file__))} was found, "
        f"but its extension does not load into {sys.executable} (Python "
        f"{sys.version.split()[0]}): {_cause}. It is built for the system interpreter "
        "(/usr/bin/python3); use that one, or an interpreter of the same Python version "
        "with this folder's parent on its path (PYTHONPATH, or a .pth file in its "
        "site-packages: `tsrt --python-path` prints the folder). See docs/python.md."
    ) from _cause
from ._tsruntime import Empty, ErrorValue, Missing, Nothing, Null, SafeArray, __version__
# Conversion checks for the tests: Python -> Variant -> Python, and the type code taken.
from ._tsruntime import _roundtrip, _vartype
from . import _declarations as _decl
from . import constants

__all__ = [
    "AutomationError", "CDispatch", "Dispatch", "DispatchWithEvents", "PumpWaitingMessages",
    "SafeArray", "ErrorValue", "Null", "Empty", "Missing", "Nothing",
    "classes", "members", "enums", "constants", "Member", "Param", "BoundMember",
]


class AutomationError(Exception):
    """An error raised by the library or by the automation runtime beneath it.

    The five fields of an automation error: `number` (the library's own codes are
    negative, -2147220803 and the like; the runtime's are small: 5, 9, 13, 438...),
    `source`, `description`, `helpfile` and `helpcontext`.
    """

    def __init__(self, number, source, description, helpfile="", helpcontext=0):
        super().__init__(number, source, description, helpfile, helpcontext)
        self.number = number
        self.source = source
        self.description = description
        self.helpfile = helpfile
        self.helpcontext = helpcontext

    def __str__(self):
        return f"Error {self.number} ({self.source}): {self.description}"


class Param:
    """One parameter of a member: name, type name, optional, default, writes_back."""

    __slots__ = ("name", "type", "optional", "default", "writes_back")

    def __init__(self, info):
        for field in self.__slots__:
            setattr(self, field, info[field])

    def __repr__(self):
        text = f"{self.name} As {self.type}"
        if self.writes_back:
            text = "ByRef " + text
        if self.optional:
            text = "Optional " + text
            if self.default is not Missing:
                text += f" = {self.default!r}"
        return text


class Member:
    """One member of a class: its name, kind ("method", "get", "let", "set" or "event"),
    parameters, result type name (None for none), whether it is the default member, and
    its help string."""

    __slots__ = ("name", "kind", "params", "returns", "default", "help")

    def __init__(self, info, kind, default):
        self.name = info["name"]
        self.kind = kind
        self.params = tuple(Param(p) for p in info["params"])
        self.returns = info.get("returns")
        self.default = default
        self.help = info["help"]

    def __repr__(self):
        text = f"{self.kind} {self.name}({', '.join(map(repr, self.params))})"
        if self.returns:
            text += f" As {self.returns}"
        return text + (" [default]" if self.default else "")


def classes():
    """The ProgIDs of the classes Dispatch can create, sorted by class name."""
    return [progid for _, progid, creatable in _rt.class_names() if creatable]


def members(progid):
    """The members and events of a class by ProgID or bare name, in declaration order.
    KeyError when no such class is registered."""
    info = _rt.class_info(progid)
    if info is None:
        raise KeyError(progid)
    default = (info["default"] or "").lower()
    found = [Member(m, m["kind"], m["name"].lower() == default) for m in info["members"]]
    found += [Member(e, "event", False) for e in info["events"]]
    return found


def enums():
    """The library's enumerations: {enumeration name: {member name: value}}; as IntEnums
    in tsruntime.constants."""
    return {e["name"]: {m["name"]: m["value"] for m in e["members"]} for e in _rt.enum_info()}


class _ClassView:
    """A class's members indexed for attribute lookup, any case."""

    def __init__(self, info):
        self.info = info
        self.name = info["name"]
        self.enumerable = info["enumerable"]
        self.methods, self.gets, self.puts = {}, {}, {}
        for m in info["members"]:
            table = {"method": self.methods, "get": self.gets}.get(m["kind"], self.puts)
            table.setdefault(m["name"].lower(), m)
        # An enumerator of its own: a Next that hands its item back.
        step = self.methods.get("next")
        self.enumerator = bool(step and len(step["params"]) == 1
                               and step["params"][0]["writes_back"])


_views = {}


def _view_named(class_name):
    view = _views.get(class_name)
    if view is None:
        view = _views[class_name] = _ClassView(_rt.class_info(class_name))
    return view


def _view_of(handle):
    return _view_named(handle.class_name)


def _member_of(view, name, put=False):
    key = name.lower()
    if put:
        return view.puts[key]
    return view.methods.get(key) or view.gets.get(key) or view.puts[key]


def _member_signature(view, name, put=False, leading=()):
    member = _member_of(view, name, put)
    result = "None" if put else _decl.call_result(member)
    return _decl.signature(member["params"], result, leading)


# BoundMember's own description goes here, since its __doc__ describes the member it binds:
# a member bound to its object, called with positional and keyword arguments.
class BoundMember:
    __slots__ = ("_handle", "_name", "_put")

    def __init__(self, handle, name, put=False):
        self._handle, self._name, self._put = handle, name, put

    @property
    def __name__(self):
        return ("Set" if self._put else "") + self._name

    @property
    def __signature__(self):
        return _member_signature(_view_of(self._handle), self._name, self._put)

    @property
    def __doc__(self):
        return _member_of(_view_of(self._handle), self._name, self._put)["help"]

    def __get__(self, instance, owner=None):  # so that help() shows it as a routine
        return self

    def __call__(self, *args, **kwargs):
        if not self._put:
            return _rt.call(self._handle, self._name, args, kwargs)
        if kwargs:
            raise TypeError(f"Set{self._name} takes its index and value by position")
        _rt.put(self._handle, self._name, args)
        return None

    def __repr__(self):
        prefix = "Set" if self._put else ""
        return f"<member {self._handle.class_name}.{prefix}{self._name}>"


class _MemberSlot:
    """A member called like a method, as the class of its objects holds it: help() shows
    its declaration and help string; read on an object it is the bound member."""

    def __init__(self, view, name, put=False):
        self._name, self._put = name, put
        self.__name__ = ("Set" if put else "") + name
        self.__qualname__ = f"{view.name}.{self.__name__}"
        self.__doc__ = _member_of(view, name, put)["help"]
        self.__signature__ = _member_signature(view, name, put, leading=("self",))

    def __get__(self, instance, owner=None):
        if instance is None:
            return self
        return BoundMember(instance._handle, self._name, self._put)

    def __call__(self, instance, *args, **kwargs):
        return self.__get__(instance)(*args, **kwargs)


def _property(view, get, puts):
    """A property read and assigned by attribute, as the class of its objects holds it."""
    name = (get or puts[0])["name"]
    help_text = (get or puts[0])["help"]

    def read(obj):
        return _rt.call(obj._handle, name, (), {})

    def assign(obj, value):
        _rt.put(obj._handle, name, (value,))

    return property(read if get else None, assign if puts else None, None,
                    _decl.property_doc(name, get, puts, help_text))


def _class_doc(info):
    lines = [info["help"], "", info["progid"] + ("" if info["creatable"] else ", not creatable")]
    if info["default"]:
        lines.append(f"Default member: {info['default']} (obj(...), obj[...])")
    for e in info["events"]:
        params = ", ".join(p["name"] for p in e["params"])
        lines.append(f"Event {e['name']}({params}): {e['help']}")
    return "\n".join(lines)


_typed = {}


def _typed_class(class_name):
    """The CDispatch subclass named after the library class: help(obj) lists its members
    with their declarations and help strings. Lookup stays late bound, in any case."""
    cls = _typed.get(class_name)
    if cls is not None:
        return cls
    view = _view_named(class_name)
    namespace = {"__module__": __name__, "__doc__": _class_doc(view.info)}
    all_puts = {}
    for m in view.info["members"]:
        if m["kind"] in ("let", "set"):
            all_puts.setdefault(m["name"].lower(), []).append(m)
    for key, m in view.methods.items():
        namespace[m["name"]] = _MemberSlot(view, m["name"])
    for key, m in view.gets.items():
        if m["name"] in namespace:
            continue
        if m["required"]:
            namespace[m["name"]] = _MemberSlot(view, m["name"])
        else:
            puts = [p for p in all_puts.get(key, ()) if p["required"] == 1]
            namespace[m["name"]] = _property(view, m, puts)
    for key, puts in all_puts.items():
        name = puts[0]["name"]
        if puts[0]["required"] >= 2:
            namespace.setdefault("Set" + name, _MemberSlot(view, name, put=True))
        elif key not in view.gets and name not in namespace:
            namespace[name] = _property(view, None, puts)
    cls = _typed[class_name] = type(view.name, (CDispatch,), namespace)
    return cls


def _items(handle):
    while True:
        found, item = _rt.call(handle, "Next", (None,), {})
        if not found:
            return
        yield item


class CDispatch:
    """A late-bound library object.

    obj.Method(args, Name=value)  calls a method (named arguments by parameter name)
    obj.Prop / obj.Prop = v       reads or assigns a property (an object assigns by set)
    obj.Prop(index)               reads an indexed property
    obj.SetProp(index, v)         assigns an indexed property
    obj(args), obj[key]           the default member; obj[key] = v assigns it
    for item in obj               enumerates through NewEnum
    len(obj)                      the Count property
    """

    # Assigning a name that is no property raises AttributeError, catching misspellings.
    # Event handler objects relax this so that handlers can keep their own state.
    _strict_attributes = True

    def __new__(cls, handle=None):
        # An object comes back as an instance of the subclass named after its class.
        if cls is CDispatch and handle is not None:
            cls = _typed_class(handle.class_name)
        return object.__new__(cls)

    def __init__(self, handle):
        object.__setattr__(self, "_handle", handle)
        object.__setattr__(self, "_view", _view_of(handle))

    def __getattr__(self, name):
        if name.startswith("_"):
            raise AttributeError(name)
        view, key = self._view, name.lower()
        member = view.methods.get(key)
        if member is not None:
            return BoundMember(self._handle, member["name"])
        member = view.gets.get(key)
        if member is not None:
            if member["required"]:
                return BoundMember(self._handle, member["name"])
            return _rt.call(self._handle, member["name"], (), {})
        if key.startswith("set") and key[3:] in view.puts:
            return BoundMember(self._handle, view.puts[key[3:]]["name"], put=True)
        raise AttributeError(f"'{view.name}' object has no member '{name}'")

    def __setattr__(self, name, value):
        member = None if name.startswith("_") else self._view.puts.get(name.lower())
        if member is not None:
            _rt.put(self._handle, member["name"], (value,))
        elif self._strict_attributes and not name.startswith("_"):
            raise AttributeError(f"'{self._view.name}' object has no property '{name}' to assign")
        else:
            object.__setattr__(self, name, value)

    def __call__(self, *args, **kwargs):
        return _rt.call(self._handle, None, args, kwargs)

    def __getitem__(self, key):
        return _rt.call(self._handle, None, key if isinstance(key, tuple) else (key,), {})

    def __setitem__(self, key, value):
        _rt.put(self._handle, None, (*(key if isinstance(key, tuple) else (key,)), value))

    def __iter__(self):
        view = self._view
        if view.enumerator:
            return _items(self._handle)
        if view.enumerable:
            return _items(_rt.call(self._handle, "NewEnum", (), {})._handle)
        raise TypeError(f"'{view.name}' object is not iterable")

    def __len__(self):
        count = self._view.gets.get("count")
        if count is None or count["required"]:
            raise TypeError(f"'{self._view.name}' object has no Count")
        return _rt.call(self._handle, count["name"], (), {})

    def __bool__(self):
        return True

    def __eq__(self, other):
        if not isinstance(other, CDispatch):
            return NotImplemented
        return self._handle == other._handle

    def __hash__(self):
        return hash(self._handle)

    def __dir__(self):
        view = self._view
        names = {m["name"] for table in (view.methods, view.gets) for m in table.values()}
        names |= {m["name"] for m in view.puts.values() if m["required"] < 2}
        names |= {"Set" + m["name"] for m in view.puts.values() if m["required"] >= 2}
        return sorted(names | set(super().__dir__()))

    def __repr__(self):
        return f"<tsruntime.CDispatch {self._view.name}>"


_rt.install_hooks(CDispatch, AutomationError)


def Dispatch(progid):
    """A new object of the class with this ProgID ("TSRuntimeLib.clsZKString") or bare
    name ("clsZKString"), any case; a CDispatch is returned as it is. AutomationError 429
    when no such class can be created."""
    if isinstance(progid, CDispatch):
        return progid
    if not isinstance(progid, str):
        raise TypeError("Dispatch takes a ProgID or a CDispatch")
    return CDispatch(_rt.create(progid))


class _EventsDispatch(CDispatch):
    _strict_attributes = False


def _handler_name(event):
    # ThatTime -> OnThatTime; an event already named OnChanged keeps its name.
    return event if event.startswith("On") else "On" + event


def _deliver(target, event, args):
    instance = target()
    if instance is None:
        return
    # Looked up on the class: a handler is a method, never a member of the library object.
    if getattr(type(instance), _handler_name(event), None) is not None:
        getattr(instance, _handler_name(event))(*args)


def DispatchWithEvents(progid, user_event_class):
    """Creates the object and connects its events to a handler, as win32com does.

    The result is both the object (a CDispatch) and an instance of `user_event_class`,
    whose __init__ runs with no arguments. Each event calls the method "On" + event name
    (an event whose name already begins with "On", such as OnChanged, calls the method of
    that name) synchronously, with the event's arguments, inside the library call that
    raised it. Events without a method are ignored; a handler's return value is ignored.
    An exception in a handler is raised by that library call once it returns. The
    connection lasts as long as the returned object.
    """
    handle = Dispatch(progid)._handle
    cls = type(user_event_class.__name__,
               (_EventsDispatch, user_event_class, _typed_class(handle.class_name)), {})
    instance = cls.__new__(cls)
    CDispatch.__init__(instance, handle)
    user_event_class.__init__(instance)
    target = weakref.ref(instance)
    connection = _rt.connect(handle, lambda event, args: _deliver(target, event, args))
    object.__setattr__(instance, "_connection", connection)
    return instance


def PumpWaitingMessages(firstMessage=-1, lastMessage=-1):
    """Runs the events waiting on this thread and returns 0 (1 would mean a quit request).

    Timer ticks (CTimer's ThatTime) and window messages reach their handlers here, on
    the thread's Qt event loop, once a user-interface class is in use; before that
    nothing waits and this returns at once. An exception in a handler run by the pump is
    raised here. The arguments are accepted for compatibility and ignored.
    """
    _rt.pump()
    return 0
