// The library's error codes, the interface language, and the one way every class
// raises an error.
//
// A public operation that fails raises an `Error` whose number is one of
// `xeZK_ERROR_CODES`, whose source is "ZKRuntimeLib." + class + "." + operation (note
// the lower-case "t", unlike the class `clsZKRunTimeLib`), and whose description takes
// one of two forms:
//
//   - own form (`RaiseOwn`): the library detected the condition itself; a fixed text,
//     no help file, no help context.
//   - wrapping form (`RaiseWrapped`): something failed inside the operation; the caught
//     description, then for each argument CR LF + name + " = '" + value + "'", with the
//     caught help file and help context passed on.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <new>
#include <string_view>

#include "tsruntime/automation/error.h"
#include "tsruntime/automation/string.h"

namespace tsruntime {

// Each class owns a block of one hundred; the block's first member only marks it.
enum xeZK_ERROR_CODES : int32_t {
  xcZKERR_START_CLASS_STRING = -2147220804,
  xcZKERR_STRING_INSTRRIGHT = -2147220803,
  xcZKERR_START_CLASS_SYSTEM = -2147220704,
  xcZKERR_SYSTEM_KBDL = -2147220703,
  xcZKERR_START_CLASS_FS = -2147220604,
  xcZKERR_FS_DIRSMAKE = -2147220603,
  xcZKERR_FS_DIRRENAME = -2147220602,
  xcZKERR_FS_PATHSHORT2LONG = -2147220601,
  xcZKERR_FS_DIRKILL = -2147220600,
  xcZKERR_FS_FILEKILL = -2147220599,
  xcZKERR_FS_FILERENAME = -2147220598,
  xcZKERR_FS_DIRSCAN = -2147220597,
  xcZKERR_START_CLASS_ARRAY = -2147220504,
  xcZKERR_ARRAY_SORTBUBBLE = -2147220503,
  xcZKERR_ARRAY_SORTQUICK = -2147220502,
  xcZKERR_ARRAY_SORTSEL = -2147220501,
  xcZKERR_START_CLASS_REG = -2147220404,
  xcZKERR_START_CLASS_INI = -2147220304,
  xcZKERR_INI_NOFILE = -2147220303,
  xcZKERR_INI_NOSTRING = -2147220302,  // declared, never raised
  xcZKERR_INI_KEYMISSING = -2147220301,
  xcZKERR_INI_FILELOAD = -2147220300,
  xcZKERR_INI_FILESAVE = -2147220299,
  xcZKERR_START_CLASS_STORAGE = -2147220204,
  xcZKERR_STORAGE_DATATYPE = -2147220203,
  xcZKERR_STORAGE_INDEX = -2147220202,
  xcZKERR_STORAGE_NOITEMS = -2147220201,
  xcZKERR_STORAGE_NAMEREQ = -2147220200,  // declared, never raised
  xcZKERR_STORAGE_ISROOT = -2147220199,   // declared, never raised
};

enum xeZK_INTERFACE_LANGUAGE : int32_t {
  xcZKLANG_RUS = 0,
  xcZKLANG_ENG = 1,
};

// The calling thread's interface language. Any value may be stored; every non-zero
// value means English.
int32_t InterfaceLanguage();
void SetInterfaceLanguage(int32_t language);
// `russian` when the thread's language is 0, `english` otherwise.
String LanguageText(StringView russian, StringView english);

// "ZKRuntimeLib." + class + "." + operation.
String ErrorSource(std::string_view class_name, std::string_view operation);

// Raises the own form of an error.
[[noreturn]] void RaiseOwn(int32_t code, std::string_view class_name,
                           std::string_view operation, String description);

// One argument line of the wrapping form.
struct ArgumentText {
  std::string_view name;
  String value;
};

// Raises the wrapping form of an error around `caught`.
[[noreturn]] void RaiseWrapped(int32_t code, std::string_view class_name,
                               std::string_view operation, const Error& caught,
                               std::initializer_list<ArgumentText> arguments = {});

// Runs `body`; any failure in it leaves as the wrapping form with the argument lines
// given (the error trap that covers a whole operation).
template <class F>
auto WithErrorTrap(int32_t code, std::string_view class_name, std::string_view operation,
                   std::initializer_list<ArgumentText> arguments, F&& body)
    -> decltype(body()) {
  try {
    return body();
  } catch (const Error& e) {
    RaiseWrapped(code, class_name, operation, e, arguments);
  } catch (const std::bad_alloc&) {
    RaiseWrapped(code, class_name, operation,
                 Error(static_cast<int32_t>(RuntimeError::kOutOfMemory), {},
                       RuntimeErrorText(static_cast<int32_t>(RuntimeError::kOutOfMemory))),
                 arguments);
  }
}

// The same with no argument lines.
template <class F>
auto WithErrorTrap(int32_t code, std::string_view class_name, std::string_view operation,
                   F&& body) -> decltype(body()) {
  return WithErrorTrap(code, class_name, operation, {}, std::forward<F>(body));
}

}  // namespace tsruntime
