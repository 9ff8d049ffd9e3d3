#include "tsruntime/automation/error.h"

#include <string>

namespace tsruntime {

Error::Error(int32_t number, String source, String description, String help_file,
             int32_t help_context)
    : number_(number),
      source_(std::move(source)),
      description_(std::move(description)),
      help_file_(std::move(help_file)),
      help_context_(help_context),
      what_("Error " + std::to_string(number) + " (" + ToUtf8(source_) +
            "): " + ToUtf8(description_)) {}

String RuntimeErrorText(int32_t number) {
  const char* text = "Application-defined or object-defined error";
  switch (static_cast<RuntimeError>(number)) {
    case RuntimeError::kInvalidCall: text = "Invalid procedure call or argument"; break;
    case RuntimeError::kOverflow: text = "Overflow"; break;
    case RuntimeError::kOutOfMemory: text = "Out of memory"; break;
    case RuntimeError::kSubscriptOutOfRange: text = "Subscript out of range"; break;
    case RuntimeError::kDivisionByZero: text = "Division by zero"; break;
    case RuntimeError::kTypeMismatch: text = "Type mismatch"; break;
    case RuntimeError::kBadFileNameOrNumber: text = "Bad file name or number"; break;
    case RuntimeError::kFileNotFound: text = "File not found"; break;
    case RuntimeError::kFileAlreadyOpen: text = "File already open"; break;
    case RuntimeError::kDeviceIoError: text = "Device I/O error"; break;
    case RuntimeError::kFileAlreadyExists: text = "File already exists"; break;
    case RuntimeError::kDiskFull: text = "Disk full"; break;
    case RuntimeError::kInputPastEndOfFile: text = "Input past end of file"; break;
    case RuntimeError::kPermissionDenied: text = "Permission denied"; break;
    case RuntimeError::kPathFileAccessError: text = "Path/File access error"; break;
    case RuntimeError::kPathNotFound: text = "Path not found"; break;
    case RuntimeError::kObjectNotSet:
      text = "Object variable or With block variable not set";
      break;
    case RuntimeError::kInvalidUseOfNull: text = "Invalid use of Null"; break;
    case RuntimeError::kObjectRequired: text = "Object required"; break;
    case RuntimeError::kCannotCreateObject: text = "ActiveX component can't create object"; break;
    case RuntimeError::kNotSupported: text = "Object doesn't support this property or method"; break;
    case RuntimeError::kNamedArgumentNotFound: text = "Named argument not found"; break;
    case RuntimeError::kArgumentNotOptional: text = "Argument not optional"; break;
    case RuntimeError::kWrongArgumentCount:
      text = "Wrong number of arguments or invalid property assignment";
      break;
  }
  return FromAscii(text);
}

void RaiseRuntime(RuntimeError code) {
  const auto number = static_cast<int32_t>(code);
  throw Error(number, FromAscii(kRuntimeErrorSource), RuntimeErrorText(number));
}

}  // namespace tsruntime
