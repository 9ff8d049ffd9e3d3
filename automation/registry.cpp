#include <algorithm>
#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {
namespace {

// Filled while the library loads, before any host thread can look; read-only after.
std::vector<const ClassInfo*>& Classes() {
  static std::vector<const ClassInfo*> classes;
  return classes;
}

std::vector<const EnumInfo*>& Enums() {
  static std::vector<const EnumInfo*> enums;
  return enums;
}

template <class T>
void InsertSorted(std::vector<const T*>& list, const T* item) {
  auto at = std::lower_bound(list.begin(), list.end(), item,
                             [](const T* a, const T* b) { return a->name < b->name; });
  list.insert(at, item);
}

}  // namespace

bool RegisterClass(const ClassInfo& info) {
  InsertSorted(Classes(), &info);
  return true;
}

bool RegisterEnum(const EnumInfo& info) {
  InsertSorted(Enums(), &info);
  return true;
}

const ClassInfo* FindClass(StringView name) {
  constexpr StringView kPrefix = u"TSRuntimeLib.";
  if (name.size() > kPrefix.size() &&
      EqualsAsciiNoCase(name.substr(0, kPrefix.size()), kPrefix)) {
    name.remove_prefix(kPrefix.size());
  }
  for (const ClassInfo* c : Classes()) {
    if (EqualsAsciiNoCase(c->name, name)) return c;
  }
  return nullptr;
}

std::vector<const ClassInfo*> RegisteredClasses() { return Classes(); }
std::vector<const EnumInfo*> RegisteredEnums() { return Enums(); }

Ref<Object> CreateObject(StringView name) {
  const ClassInfo* c = FindClass(name);
  if (!c || !c->creatable || !c->factory) RaiseRuntime(RuntimeError::kCannotCreateObject);
  return c->factory();
}

bool ClassInfo::enumerable() const { return find(u"NewEnum", MemberKind::kMethod) != nullptr; }

const MemberInfo* ClassInfo::find(StringView member, MemberKind kind) const {
  for (const MemberInfo& m : members) {
    if (m.kind == kind && EqualsAsciiNoCase(m.name, member)) return &m;
  }
  return nullptr;
}

}  // namespace tsruntime
