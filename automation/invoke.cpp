#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

const MemberInfo* ResolveMember(const ClassInfo& c, StringView name, InvokeKind kind,
                                const std::vector<Argument>& args) {
  switch (kind) {
    case InvokeKind::kCall: {
      const MemberInfo* m = c.find(name, MemberKind::kMethod);
      return m ? m : c.find(name, MemberKind::kPropertyGet);
    }
    case InvokeKind::kLet:
    case InvokeKind::kSet: {
      // An object assigned by a let goes to the set when the class has one.
      const bool object = !args.empty() && args.back().value.isObject();
      const MemberKind first = kind == InvokeKind::kSet || object ? MemberKind::kPropertySet
                                                                  : MemberKind::kPropertyLet;
      const MemberKind second = first == MemberKind::kPropertySet ? MemberKind::kPropertyLet
                                                                  : MemberKind::kPropertySet;
      const MemberInfo* m = c.find(name, first);
      return m ? m : c.find(name, second);
    }
  }
  return nullptr;
}

namespace {

// Parameters a call binds without a heap allocation for their origins.
constexpr size_t kInlineParams = 16;

// Binds `args` to the parameters of `m`: `bound` receives each parameter's value in
// parameter order (its default when left out), `origin` the index of the argument that
// filled it, or -1.
void Bind(const MemberInfo& m, const std::vector<Argument>& args, std::vector<Variant>& bound,
          int* origin) {
  const size_t n = m.params.size();
  std::fill(origin, origin + n, -1);

  // A let or set takes the assigned value from its last positional argument, so that
  // `obj.Tag = v` reaches the value parameter even when an optional index comes first.
  const bool assigns =
      m.kind == MemberKind::kPropertyLet || m.kind == MemberKind::kPropertySet;
  size_t value_arg = args.size();
  if (assigns && n > 0) {
    for (size_t i = args.size(); i-- > 0;) {
      if (args[i].name.empty()) {
        value_arg = i;
        break;
      }
    }
  }
  const size_t positional_params = value_arg < args.size() ? n - 1 : n;

  size_t position = 0;
  for (size_t i = 0; i < args.size(); ++i) {
    const Argument& a = args[i];
    size_t k;
    if (i == value_arg) {
      k = n - 1;
    } else if (a.name.empty()) {
      if (position >= positional_params) RaiseRuntime(RuntimeError::kWrongArgumentCount);
      k = position++;
    } else {
      k = n;
      for (size_t j = 0; j < n; ++j) {
        if (EqualsAsciiNoCase(m.params[j].name, a.name)) k = j;
      }
      if (k == n) RaiseRuntime(RuntimeError::kNamedArgumentNotFound);
    }
    // The same parameter twice, by name or by a position a name already took.
    if (origin[k] >= 0) RaiseRuntime(RuntimeError::kNamedArgumentNotFound);
    origin[k] = static_cast<int>(i);
  }
  // Each value is copied once, straight into its place.
  bound.clear();
  bound.reserve(n);
  for (size_t k = 0; k < n; ++k) {
    const Variant* value = origin[k] >= 0 ? &args[static_cast<size_t>(origin[k])].value : nullptr;
    if (!value || value->isMissing()) {
      if (!m.params[k].optional) RaiseRuntime(RuntimeError::kArgumentNotOptional);
      value = &m.params[k].defaultValue;
      origin[k] = -1;  // left out: there is no caller's variable to write back to
    }
    bound.emplace_back(*value);
  }
}

Variant CallBound(Object& object, const MemberInfo& m, std::vector<Variant>& bound) {
  try {
    return m.call(object, bound);
  } catch (const std::bad_alloc&) {
    RaiseRuntime(RuntimeError::kOutOfMemory);
  } catch (const std::length_error&) {
    RaiseRuntime(RuntimeError::kOutOfMemory);
  }
}

const MemberInfo& Resolved(Object& object, StringView member, InvokeKind kind,
                           const std::vector<Argument>& args) {
  const MemberInfo* m = ResolveMember(object.classInfo(), member, kind, args);
  if (!m) RaiseRuntime(RuntimeError::kNotSupported);
  return *m;
}

}  // namespace

Invocation InvokeMember(Object& object, StringView member, InvokeKind kind,
                        std::vector<Argument>& args) {
  const MemberInfo& m = Resolved(object, member, kind, args);
  Ref<Object> keep_alive;  // the call may release the caller's last reference
  if (object.RefCount() > 0) keep_alive = Ref<Object>(&object);
  Invocation done{&m, Variant(), {}, std::vector<int>(m.params.size())};
  Bind(m, args, done.params, done.origin.data());
  done.result = CallBound(object, m, done.params);
  for (size_t k = 0; k < m.params.size(); ++k) {
    if (m.params[k].writesBack && done.origin[k] >= 0) {
      args[done.origin[k]].value = done.params[k];
    }
  }
  return done;
}

// The same as InvokeMember without the report, which most calls do not need: the
// origins of a few parameters stay on the stack and written-back values are moved.
Variant Invoke(Object& object, StringView member, InvokeKind kind,
               std::vector<Argument>& args) {
  const MemberInfo& m = Resolved(object, member, kind, args);
  Ref<Object> keep_alive;
  if (object.RefCount() > 0) keep_alive = Ref<Object>(&object);
  const size_t n = m.params.size();
  int inline_origin[kInlineParams];
  std::vector<int> heap_origin(n > kInlineParams ? n : 0);
  int* origin = n > kInlineParams ? heap_origin.data() : inline_origin;
  std::vector<Variant> bound;
  Bind(m, args, bound, origin);
  Variant result = CallBound(object, m, bound);
  for (size_t k = 0; k < n; ++k) {
    if (m.params[k].writesBack && origin[k] >= 0) args[origin[k]].value = std::move(bound[k]);
  }
  return result;
}

Variant InvokeDefault(Object& object, std::vector<Argument>& args) {
  const ClassInfo& c = object.classInfo();
  if (c.defaultMember.empty()) RaiseRuntime(RuntimeError::kNotSupported);
  return Invoke(object, c.defaultMember, InvokeKind::kCall, args);
}

namespace dispatch_detail {

SafeArray& TakeArray(Variant& slot) {
  if (!slot.isArray()) RaiseRuntime(RuntimeError::kTypeMismatch);
  return slot.asArray();
}

Ref<Object> TakeObject(const Variant& slot) {
  if (slot.isObject()) return slot.asObject();
  if (slot.isEmpty() || slot.isMissing()) return {};
  RaiseRuntime(RuntimeError::kTypeMismatch);
}

void CheckParams(const ClassInfo& info, const MemberInfo& member, size_t given) {
  if (given != member.params.size()) {
    throw std::logic_error("tsruntime: " + ToUtf8(info.name) + "." + ToUtf8(member.name) +
                           " describes " + std::to_string(given) + " parameters, takes " +
                           std::to_string(member.params.size()));
  }
}

void ShareAccessorHelp(ClassInfo& info) {
  for (MemberInfo& m : info.members) {
    if (!m.help.empty() || m.kind == MemberKind::kMethod) continue;
    for (const MemberInfo& other : info.members) {
      if (other.kind != MemberKind::kMethod && !other.help.empty() &&
          EqualsAsciiNoCase(other.name, m.name)) {
        m.help = other.help;
        break;
      }
    }
  }
}

}  // namespace dispatch_detail
}  // namespace tsruntime
