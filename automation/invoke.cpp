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

Invocation Call(Object& object, const MemberInfo& m, std::vector<Argument>& args) {
  const size_t n = m.params.size();
  std::vector<Variant> bound(n, Variant::Missing());
  std::vector<int> origin(n, -1);

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
    bound[k] = a.value;
    origin[k] = static_cast<int>(i);
  }
  for (size_t k = 0; k < n; ++k) {
    if (!bound[k].isMissing()) continue;
    if (!m.params[k].optional) RaiseRuntime(RuntimeError::kArgumentNotOptional);
    bound[k] = m.params[k].defaultValue;
    origin[k] = -1;  // left out: there is no caller's variable to write back to
  }

  Invocation done{&m, Variant(), {}, std::move(origin)};
  try {
    done.result = m.call(object, bound);
  } catch (const std::bad_alloc&) {
    RaiseRuntime(RuntimeError::kOutOfMemory);
  } catch (const std::length_error&) {
    RaiseRuntime(RuntimeError::kOutOfMemory);
  }
  for (size_t k = 0; k < n; ++k) {
    if (m.params[k].writesBack && done.origin[k] >= 0) args[done.origin[k]].value = bound[k];
  }
  done.params = std::move(bound);
  return done;
}

}  // namespace

Invocation InvokeMember(Object& object, StringView member, InvokeKind kind,
                        std::vector<Argument>& args) {
  const MemberInfo* m = ResolveMember(object.classInfo(), member, kind, args);
  if (!m) RaiseRuntime(RuntimeError::kNotSupported);
  Ref<Object> keep_alive;  // the call may release the caller's last reference
  if (object.RefCount() > 0) keep_alive = Ref<Object>(&object);
  return Call(object, *m, args);
}

Variant Invoke(Object& object, StringView member, InvokeKind kind,
               std::vector<Argument>& args) {
  return InvokeMember(object, member, kind, args).result;
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
