// Small helpers the container tests share.
#pragma once

#include <functional>
#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime::container_tests {

inline Variant I(int32_t i) { return Variant(i); }

// The number of the error `action` raises, or 0 when it raises none.
inline int ErrorNumberOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

// Invokes a member by name with positional arguments, as a late-bound host does.
inline Variant CallByName(Object& o, StringView member, InvokeKind kind,
                          std::vector<Variant> values) {
  std::vector<Argument> args;
  for (Variant& v : values) args.push_back({{}, std::move(v)});
  return Invoke(o, member, kind, args);
}

}  // namespace tsruntime::container_tests
