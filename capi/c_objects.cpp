// Objects across the C boundary: creation, counting, invocation and events.
#include <cstring>

#include "c_boundary.h"

namespace tsruntime::capi {
namespace {

// C variants being built for the caller; freed unless handed over.
class PendingVariants {
 public:
  explicit PendingVariants(size_t n) : items_(n, tsrt_variant{}) {}
  ~PendingVariants() {
    for (tsrt_variant& v : items_) tsrt_variant_clear(&v);
  }
  PendingVariants(const PendingVariants&) = delete;
  PendingVariants& operator=(const PendingVariants&) = delete;

  tsrt_variant* data() { return items_.data(); }
  tsrt_variant& operator[](size_t i) { return items_[i]; }
  // Moves item `i` into `*to` (cleared first); nothing is left to free here.
  void HandOver(size_t i, tsrt_variant* to) {
    tsrt_variant_clear(to);
    *to = items_[i];
    items_[i] = tsrt_variant{};
  }

 private:
  std::vector<tsrt_variant> items_;
};

InvokeKind KindOf(int32_t kind) {
  switch (kind) {
    case TSRT_INVOKE_CALL: return InvokeKind::kCall;
    case TSRT_INVOKE_LET: return InvokeKind::kLet;
    case TSRT_INVOKE_SET: return InvokeKind::kSet;
  }
  RaiseRuntime(RuntimeError::kInvalidCall);
}

StringView MemberName(const Object& object, const uint16_t* member, size_t length) {
  if (member) return ViewOf(member, length);
  const String& name = object.classInfo().defaultMember;
  if (name.empty()) RaiseRuntime(RuntimeError::kNotSupported);
  return name;
}

// Passes one raised event to a C callback, and what the callback stored back.
void Deliver(tsrt_event_callback callback, void* user, StringView event,
             std::vector<Variant>& args) {
  const String name(event);  // 0-terminated, as texts handed out are
  PendingVariants c(args.size());
  for (size_t i = 0; i < args.size(); ++i) ToC(args[i], &c[i]);
  callback(user, reinterpret_cast<const uint16_t*>(name.c_str()), name.size(), c.data(),
           args.size());
  for (size_t i = 0; i < args.size(); ++i) args[i] = FromC(c[i]);
}

}  // namespace
}  // namespace tsruntime::capi

using namespace tsruntime;
using namespace tsruntime::capi;

extern "C" {

tsrt_status tsrt_create(const uint16_t* prog_id, size_t length, tsrt_object** object,
                        tsrt_error** error) {
  if (object) *object = nullptr;
  return Guard(error, [&] {
    if (!object) RaiseRuntime(RuntimeError::kInvalidCall);
    Ref<Object> made = CreateObject(ViewOf(prog_id, length));
    made->AddRef();  // the caller's count, outliving `made`
    *object = ToHandle(made.get());
  });
}

void tsrt_object_addref(tsrt_object* object) {
  if (Object* o = FromHandle(object)) o->AddRef();
}

int32_t tsrt_object_release(tsrt_object* object) {
  Object* o = FromHandle(object);
  if (!o) return 0;
  const int32_t left = o->RefCount() - 1;
  o->Release();
  return left;
}

tsrt_status tsrt_invoke(tsrt_object* object, const uint16_t* member, size_t member_length,
                        int32_t kind, tsrt_argument* args, size_t arg_count,
                        tsrt_variant* result, tsrt_error** error) {
  if (result) std::memset(result, 0, sizeof *result);
  return Guard(error, [&] {
    Object* o = FromHandle(object);
    if (!o) RaiseRuntime(RuntimeError::kObjectNotSet);
    if (arg_count && !args) RaiseRuntime(RuntimeError::kInvalidCall);
    const InvokeKind how = KindOf(kind);
    const StringView name = MemberName(*o, member, member_length);
    std::vector<Argument> list;
    list.reserve(arg_count);
    for (size_t i = 0; i < arg_count; ++i) {
      list.push_back(Argument{String(ViewOf(args[i].name.chars, args[i].name.length)),
                              FromC(args[i].value)});
    }
    const Invocation done = InvokeMember(*o, name, how, list);

    // Everything is converted before the caller's memory changes, so a failure here
    // leaves the arguments as they were.
    PendingVariants out(arg_count + 1);
    std::vector<bool> written(arg_count, false);
    ToC(done.result, &out[arg_count]);
    for (size_t k = 0; k < done.member->params.size(); ++k) {
      const int from = done.origin[k];
      if (!done.member->params[k].writesBack || from < 0) continue;
      ToC(list[static_cast<size_t>(from)].value, &out[static_cast<size_t>(from)]);
      written[static_cast<size_t>(from)] = true;
    }
    for (size_t i = 0; i < arg_count; ++i) {
      if (written[i]) out.HandOver(i, &args[i].value);
    }
    if (result) out.HandOver(arg_count, result);
  });
}

tsrt_status tsrt_connect(tsrt_object* object, tsrt_event_callback callback, void* user,
                         int32_t* cookie, tsrt_error** error) {
  if (cookie) *cookie = 0;
  return Guard(error, [&] {
    Object* o = FromHandle(object);
    if (!o) RaiseRuntime(RuntimeError::kObjectNotSet);
    if (!callback || !cookie) RaiseRuntime(RuntimeError::kInvalidCall);
    *cookie = o->Connect([callback, user](StringView event, std::vector<Variant>& args) {
      Deliver(callback, user, event, args);
    });
  });
}

void tsrt_disconnect(tsrt_object* object, int32_t cookie) {
  if (Object* o = FromHandle(object)) o->Disconnect(cookie);
}

}  // extern "C"
