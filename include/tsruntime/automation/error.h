// The one error type of the library and the host runtime's own error numbers.
//
// Every failure that reaches a host is an `Error` carrying the five fields of an
// automation error: number, source, description, help file and help context. The
// library's own numbers are `xeZK_ERROR_CODES` (see tsruntime/clsZKRunTimeLib.h);
// failures of the host runtime itself (bad conversions, bad indexes, missing files)
// keep the runtime's numbers listed in `RuntimeError` and its standard English texts.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "tsruntime/automation/string.h"

namespace tsruntime {

// The host runtime's error numbers that the library raises or lets through.
enum class RuntimeError : int32_t {
  kInvalidCall = 5,            // "Invalid procedure call or argument"
  kOverflow = 6,               // "Overflow"
  kOutOfMemory = 7,            // "Out of memory"
  kSubscriptOutOfRange = 9,    // "Subscript out of range"
  kDivisionByZero = 11,        // "Division by zero"
  kTypeMismatch = 13,          // "Type mismatch"
  kBadFileNameOrNumber = 52,   // "Bad file name or number"
  kFileNotFound = 53,          // "File not found"
  kFileAlreadyOpen = 55,       // "File already open"
  kDeviceIoError = 57,         // "Device I/O error"
  kFileAlreadyExists = 58,     // "File already exists"
  kDiskFull = 61,              // "Disk full"
  kInputPastEndOfFile = 62,    // "Input past end of file"
  kPermissionDenied = 70,      // "Permission denied"
  kPathFileAccessError = 75,   // "Path/File access error"
  kPathNotFound = 76,          // "Path not found"
  kObjectNotSet = 91,          // "Object variable or With block variable not set"
  kInvalidUseOfNull = 94,      // "Invalid use of Null"
  kObjectRequired = 424,       // "Object required"
  kCannotCreateObject = 429,   // "ActiveX component can't create object"
  kNotSupported = 438,         // "Object doesn't support this property or method"
  kNamedArgumentNotFound = 448,  // "Named argument not found"
  kArgumentNotOptional = 449,    // "Argument not optional"
  kWrongArgumentCount = 450,     // "Wrong number of arguments or invalid property assignment"
};

// The source the host runtime gives errors raised inside the library's own code.
inline constexpr char kRuntimeErrorSource[] = "ZKRuntimeLib";

// An automation error. Thrown by value, caught by reference.
class Error : public std::exception {
 public:
  Error(int32_t number, String source, String description, String help_file = {},
        int32_t help_context = 0);

  int32_t number() const { return number_; }
  const String& source() const { return source_; }
  const String& description() const { return description_; }
  const String& helpFile() const { return help_file_; }
  int32_t helpContext() const { return help_context_; }

  // UTF-8 "Error NUMBER (SOURCE): DESCRIPTION", for logs and std::exception users.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  int32_t number_;
  String source_;
  String description_;
  String help_file_;
  int32_t help_context_;
  std::string what_;
};

// The standard English description of a host runtime error number
// ("Application-defined or object-defined error" for numbers it does not know).
String RuntimeErrorText(int32_t number);

// Raises the host runtime's error `code` with its standard text and the source
// `kRuntimeErrorSource`. This is how every runtime failure inside the library surfaces.
[[noreturn]] void RaiseRuntime(RuntimeError code);

}  // namespace tsruntime
