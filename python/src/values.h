// Python values to Variants and back.
//
//   None <-> Empty         str <-> String          bool <-> Boolean
//   int -> Long (a Double beyond 32 bits, overflow 6 beyond 2^53); Integer, Long, Byte -> int
//   float <-> Double; Single -> float    decimal.Decimal -> Currency; Currency, Decimal -> Decimal
//   datetime.datetime, datetime.date -> Date -> datetime.datetime
//   bytes, bytearray -> byte array (lower bound 0) -> bytes when one-dimensional from 0
//   list, tuple -> Variant array (lower bound 0); SafeArray <-> any array, bounds kept
//   Null, Empty, Missing, Nothing markers; ErrorValue <-> Error; wrappers <-> Object
//
// A Python value with no counterpart raises TypeError; a value the library cannot hold
// (a date before the year 100, an amount beyond the currency range) raises the library's
// own error, as the host runtime would.
#pragma once

#include <pybind11/pybind11.h>

#include "tsruntime/automation/variant.h"

namespace tsruntime::python {

namespace py = pybind11;

// The named markers; each is a singleton, compared with `is`.
struct Marker {
  enum Kind { kNull, kEmpty, kMissing, kNothing } kind;
};

// An Error-typed value carrying its SCODE.
struct ErrorMarker {
  int32_t scode = 0;
};

// A library object held by Python; the wrapper classes of the package keep one.
struct ObjectHandle {
  Ref<Object> object;
};

// An array as Python sees it (the `SafeArray` type), bounds and element type kept.
struct ArrayHolder {
  SafeArray array;
};

// What the package supplies at import: the wrapper class objects come back in (built
// from an ObjectHandle, keeping it as `_handle`), and the exception class errors become.
struct Hooks {
  py::object dispatch_class;
  py::object error_class;  // called with (number, source, description, helpfile, helpcontext)
};
Hooks& GetHooks();

// The marker singletons, created when the module loads.
py::object MarkerObject(Marker::Kind kind);

Variant ToVariant(py::handle value);
py::object ToPython(const Variant& value);

// Sets `error` as the pending Python exception, of the package's exception class.
// Never throws: if the exception cannot be built, that failure is what is pending.
void RaiseInPython(const Error& error);

// Register the Python types: the markers and ErrorValue (values.cpp), SafeArray
// (arrays.cpp).
void BindValues(py::module_& m);
void BindArrays(py::module_& m);

}  // namespace tsruntime::python
