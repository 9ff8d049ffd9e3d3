// Small helpers the container tests share.
#pragma once

#include <pthread.h>

#include <functional>
#include <tuple>
#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime::container_tests {

inline Variant I(int32_t i) { return Variant(i); }

// The number, source, description, help file and help context of the error `action`
// raises; all empty or 0 when it raises none.
using ErrorFields = std::tuple<int32_t, String, String, String, int32_t>;
inline ErrorFields ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const Error& e) {
    return {e.number(), e.source(), e.description(), e.helpFile(), e.helpContext()};
  }
  return {};
}
inline int ErrorNumberOf(const std::function<void()>& action) {
  return std::get<0>(ErrorOf(action));
}

// Invokes a member by name with positional arguments, as a late-bound host does.
inline Variant Call(Object& o, StringView member, InvokeKind kind, std::vector<Variant> values) {
  std::vector<Argument> args;
  for (Variant& v : values) args.push_back({{}, std::move(v)});
  return Invoke(o, member, kind, args);
}

// Runs `body` to its end on a thread with a 256 KiB stack, where one call per level of a
// deep tree would overflow; False if no thread could start.
inline bool OnSmallStack(std::function<void()> body) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, 256 * 1024);
  pthread_t thread;
  auto run = [](void* f) -> void* {
    (*static_cast<std::function<void()>*>(f))();
    return nullptr;
  };
  const bool started = pthread_create(&thread, &attr, run, &body) == 0;
  if (started) pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
  return started;
}

}  // namespace tsruntime::container_tests
