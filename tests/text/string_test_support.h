// Shared by the clsZKString tests: a fresh object and a check of raised errors.
#pragma once

#include <gtest/gtest.h>

#include "tsruntime/clsZKString.h"

namespace tsruntime::string_test {

inline Ref<clsZKString> NewString() { return New<clsZKString>(); }

// Runs `call`, which must raise; checks all five fields of the error.
template <class F>
void ExpectError(F&& call, int32_t number, StringView source, StringView description,
                 const std::string& context) {
  try {
    call();
    ADD_FAILURE() << context << ": no error raised";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), number) << context;
    EXPECT_EQ(ToUtf8(e.source()), ToUtf8(source)) << context;
    EXPECT_EQ(ToUtf8(e.description()), ToUtf8(description)) << context;
    EXPECT_EQ(ToUtf8(e.helpFile()), "") << context;
    EXPECT_EQ(e.helpContext(), 0) << context;
  }
}

// The host runtime's own error `code`, passed through unchanged.
template <class F>
void ExpectRuntimeError(F&& call, RuntimeError code, const std::string& context) {
  const int32_t number = static_cast<int32_t>(code);
  ExpectError(std::forward<F>(call), number, FromAscii(kRuntimeErrorSource),
              RuntimeErrorText(number), context);
}

}  // namespace tsruntime::string_test
