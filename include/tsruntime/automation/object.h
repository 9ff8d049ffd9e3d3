// Reference-counted automation objects.
//
// Every public class derives from `Object`. Its count is intrusive because the interface
// mixes counted references (`Ref<T>`, what a variable of object type holds) with raw
// addresses that hold no count. An object is destroyed when its last `Ref` goes, and its
// destructor then does what the class's "on destruction" rules say.
//
// Objects that will be handed to the library by reference are made with `New<T>()`.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "tsruntime/automation/string.h"

namespace tsruntime {

struct ClassInfo;
class Variant;

class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  // The class's type information: its members for late binding (see dispatch.h).
  virtual const ClassInfo& classInfo() const = 0;

  void AddRef() const { ++count_; }
  void Release() const {
    if (--count_ == 0) delete this;
  }
  int32_t RefCount() const { return count_; }

  // Late-bound event sinks. A sink receives the event's name and its arguments
  // synchronously, on the thread that raised it, in the order sinks were connected.
  using EventSink = std::function<void(StringView event, std::vector<Variant>& args)>;
  int Connect(EventSink sink);
  void Disconnect(int cookie);

 protected:
  // Delivers an event to every connected sink.
  void RaiseEvent(StringView event, std::vector<Variant>& args);

 private:
  mutable int32_t count_ = 0;  // objects live on one thread; no atomics needed
  std::vector<std::pair<int, EventSink>> sinks_;
  int next_cookie_ = 1;
};

// A counted reference to an object; empty is the host language's `Nothing`.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  explicit Ref(T* p) : p_(p) {
    if (p_) p_->AddRef();
  }
  Ref(const Ref& o) : Ref(o.p_) {}
  Ref(Ref&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  template <class U>
  Ref(const Ref<U>& o) : Ref(static_cast<T*>(o.get())) {}
  ~Ref() {
    if (p_) p_->Release();
  }
  Ref& operator=(Ref o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }

  T* get() const { return p_; }
  T* operator->() const { return p_; }
  T& operator*() const { return *p_; }
  explicit operator bool() const { return p_ != nullptr; }
  friend bool operator==(const Ref& a, const Ref& b) { return a.p_ == b.p_; }

 private:
  T* p_ = nullptr;
};

template <class T, class... Args>
Ref<T> New(Args&&... args) {
  return Ref<T>(new T(std::forward<Args>(args)...));
}

// Casts an object reference to a class; empty when the object is of another class.
template <class T>
Ref<T> RefCast(const Ref<Object>& o) {
  return Ref<T>(dynamic_cast<T*>(o.get()));
}

}  // namespace tsruntime
