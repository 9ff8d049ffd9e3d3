// What every function of the C interface shares: the conversions between C and library
// values, the error out-parameter, and the guard that keeps exceptions on this side.
#pragma once

#include <cstdlib>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/tsruntime_c.h"

// Internal to the library: hosts reach these only through the tsrt_* functions.
#pragma GCC visibility push(hidden)
namespace tsruntime::capi {

// Handles are the objects themselves: the intrusive count is the handle's count.
inline Object* FromHandle(tsrt_object* o) { return reinterpret_cast<Object*>(o); }
inline const Object* FromHandle(const tsrt_object* o) {
  return reinterpret_cast<const Object*>(o);
}
inline tsrt_object* ToHandle(Object* o) { return reinterpret_cast<tsrt_object*>(o); }
inline const ClassInfo* FromHandle(const tsrt_class* c) {
  return reinterpret_cast<const ClassInfo*>(c);
}
inline const tsrt_class* ToHandle(const ClassInfo* c) {
  return reinterpret_cast<const tsrt_class*>(c);
}

// Text the caller passes; NULL with a length is taken as empty.
inline StringView ViewOf(const uint16_t* chars, size_t length) {
  if (!chars) return {};
  return StringView(reinterpret_cast<const char16_t*>(chars), length);
}
// Borrowed text pointing into a string that outlives the caller's use (type information).
inline tsrt_text Borrow(const String& s) {
  return tsrt_text{reinterpret_cast<const uint16_t*>(s.c_str()), s.size()};
}

// malloc that reports failure the way the rest of the library does.
void* Allocate(size_t bytes, bool zeroed = false);
// A 0-terminated copy of `s` from Allocate.
uint16_t* CopyChars(StringView s);

// Library values to C and back. `ToC` fills an Empty variant and leaves it Empty when it
// fails; `FromC` raises type mismatch (13) for a type code or array it cannot read.
void ToC(const Variant& v, tsrt_variant* out);
Variant FromC(const tsrt_variant& v);

// Reports the exception being handled through the out-parameter, when there is one: a
// library error as it is, running out of memory as error 7, anything else as error 51.
// Never throws; if the report itself cannot be allocated the caller sees the status alone.
void ReportCurrentException(tsrt_error** error) noexcept;

// Runs `body` so that no exception crosses the C boundary.
template <class F>
tsrt_status Guard(tsrt_error** error, F&& body) noexcept {
  if (error) *error = nullptr;
  try {
    body();
    return TSRT_OK;
  } catch (...) {
    ReportCurrentException(error);
    return TSRT_FAILED;
  }
}

}  // namespace tsruntime::capi
#pragma GCC visibility pop
