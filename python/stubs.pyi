"""The Tessaly Runtime Library from Python, the way win32com.client drives automation objects.

Type stubs: the fixed part of the package, then a class per library class with each
member's parameters, types, defaults and written-back tuples, and Dispatch overloads keyed
by ProgID, all generated from the library's type information.
"""

import datetime
import inspect
from decimal import Decimal
from typing import Any, Iterator, Literal, TypeVar, overload

from . import constants as constants

__all__ = [
    "AutomationError", "CDispatch", "Dispatch", "DispatchWithEvents", "PumpWaitingMessages",
    "SafeArray", "ErrorValue", "Null", "Empty", "Missing", "Nothing",
    "classes", "members", "enums", "constants", "Member", "Param", "BoundMember",
]

class _Marker:
    """The type of the markers Null, Empty, Missing and Nothing."""
    def __bool__(self) -> bool: ...

Null: _Marker
Empty: _Marker
Missing: _Marker
Nothing: _Marker

class ErrorValue:
    """An Error-typed value: the SCODE it carries."""
    scode: int
    def __init__(self, scode: int) -> None: ...

class SafeArray:
    """An array of the library, with its bounds."""
    def __init__(self, items: Any = ..., lbound: int = ..., vartype: int = ...) -> None: ...
    @staticmethod
    def dimensioned(bounds: list[tuple[int, int]], vartype: int = ...) -> SafeArray: ...
    @staticmethod
    def undimensioned(vartype: int = ...) -> SafeArray: ...
    @property
    def vartype(self) -> int: ...
    @property
    def typename(self) -> str: ...
    @property
    def dims(self) -> int: ...
    @property
    def bounds(self) -> list[tuple[int, int]]: ...
    def lbound(self, dim: int = ...) -> int: ...
    def ubound(self, dim: int = ...) -> int: ...
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, position: int) -> Any: ...
    @overload
    def __getitem__(self, position: slice) -> list[Any]: ...
    def __iter__(self) -> Iterator[Any]: ...
    def get(self, *index: int) -> Any: ...
    def set(self, *index_and_value: Any) -> None: ...
    def tolist(self) -> list[Any]: ...
    def tobytes(self) -> bytes: ...

class AutomationError(Exception):
    """An error raised by the library or by the automation runtime beneath it."""
    number: int
    source: str
    description: str
    helpfile: str
    helpcontext: int
    def __init__(self, number: int, source: str, description: str, helpfile: str = ...,
                 helpcontext: int = ...) -> None: ...

class Param:
    """One parameter of a member."""
    name: str
    type: str
    optional: bool
    default: Any
    writes_back: bool

class Member:
    """One member of a class, with its help string."""
    name: str
    kind: str
    params: tuple[Param, ...]
    returns: str | None
    default: bool
    help: str

class BoundMember:
    """A member bound to its object."""
    __signature__: inspect.Signature
    def __call__(self, *args: Any, **kwargs: Any) -> Any: ...

class CDispatch:
    """A late-bound library object; the classes below say what each one offers."""
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...
    def __bool__(self) -> bool: ...

_D = TypeVar("_D", bound=CDispatch)

def classes() -> list[str]: ...
def members(progid: str) -> list[Member]: ...
def enums() -> dict[str, dict[str, int]]: ...
def DispatchWithEvents(progid: str | CDispatch, user_event_class: type) -> Any: ...
def PumpWaitingMessages(firstMessage: int = ..., lastMessage: int = ...) -> int: ...
