#include "tsruntime/automation/object.h"

#include <algorithm>

#include "tsruntime/automation/variant.h"

namespace tsruntime {

Object::~Object() = default;

int Object::Connect(EventSink sink) {
  const int cookie = next_cookie_++;
  sinks_.emplace_back(cookie, std::move(sink));
  return cookie;
}

void Object::Disconnect(int cookie) {
  std::erase_if(sinks_, [cookie](const auto& s) { return s.first == cookie; });
}

void Object::RaiseEvent(StringView event, std::vector<Variant>& args) {
  // A sink may connect or disconnect while it runs; deliver to those present now.
  const auto sinks = sinks_;
  Ref<Object> keep_alive;  // a sink may drop the host's last reference
  if (count_ > 0) keep_alive = Ref<Object>(this);
  for (const auto& [cookie, sink] : sinks) sink(event, args);
}

}  // namespace tsruntime
