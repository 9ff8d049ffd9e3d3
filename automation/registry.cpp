#include <algorithm>
#include <atomic>
#include <deque>
#include <string>
#include <vector>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/modules.h"

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

// A class named ahead of its module: listed as `stub` until the module's own
// registration arrives in `loaded`, which the module's load may store from any thread.
struct ModuleClass {
  ClassInfo stub;
  std::string module;
  std::atomic<const ClassInfo*> loaded{nullptr};
};

std::deque<ModuleClass>& ModuleClasses() {  // a deque: entries never move
  static std::deque<ModuleClass> classes;
  return classes;
}

ModuleClass* ModuleClassOf(const ClassInfo* info) {
  for (ModuleClass& m : ModuleClasses()) {
    if (&m.stub == info) return &m;
  }
  return nullptr;
}

ModuleClass* ModuleClassNamed(StringView name) {
  for (ModuleClass& m : ModuleClasses()) {
    if (EqualsAsciiNoCase(m.stub.name, name)) return &m;
  }
  return nullptr;
}

// The module's class when it is loaded, else the stub.
const ClassInfo* Current(const ClassInfo* info) {
  const ModuleClass* m = ModuleClassOf(info);
  if (!m) return info;
  const ClassInfo* loaded = m->loaded.load(std::memory_order_acquire);
  return loaded ? loaded : info;
}

template <class T>
void InsertSorted(std::vector<const T*>& list, const T* item) {
  auto at = std::lower_bound(list.begin(), list.end(), item,
                             [](const T* a, const T* b) { return a->name < b->name; });
  list.insert(at, item);
}

}  // namespace

bool RegisterClass(const ClassInfo& info) {
  // The module's class replaces its stub in place: the list never changes after the
  // library has loaded, so other threads may read it while a module loads.
  if (ModuleClass* m = ModuleClassNamed(info.name)) {
    m->loaded.store(&info, std::memory_order_release);
    return true;
  }
  InsertSorted(Classes(), &info);
  return true;
}

bool RegisterModuleClasses(std::string_view module_file,
                           std::initializer_list<ModuleClassName> classes) {
  for (const ModuleClassName& c : classes) {
    ModuleClass& m = ModuleClasses().emplace_back();
    m.module = module_file;
    m.stub.name = FromAscii(c.name);
    m.stub.creatable = c.creatable;
    // Reached only when the module failed to load.
    m.stub.factory = []() -> Ref<Object> { RaiseRuntime(RuntimeError::kCannotCreateObject); };
    InsertSorted(Classes(), static_cast<const ClassInfo*>(&m.stub));
  }
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
    if (!EqualsAsciiNoCase(c->name, name)) continue;
    if (const ModuleClass* m = ModuleClassOf(c); m && !m->loaded.load(std::memory_order_acquire)) {
      LoadModule(m->module);
    }
    return Current(c);
  }
  return nullptr;
}

std::vector<const ClassInfo*> RegisteredClasses() {
  std::vector<const ClassInfo*> out = Classes();
  for (const ClassInfo*& c : out) c = Current(c);
  return out;
}
std::vector<const EnumInfo*> RegisteredEnums() { return Enums(); }

Ref<Object> CreateObject(StringView name) {
  const ClassInfo* c = FindClass(name);
  if (!c || !c->creatable || !c->factory) RaiseRuntime(RuntimeError::kCannotCreateObject);
  return c->factory();
}

bool ClassInfo::enumerable() const { return find(u"NewEnum", MemberKind::kMethod) != nullptr; }

const MemberInfo* ClassInfo::find(StringView member, MemberKind kind) const {
  for (const MemberInfo& m : members) {
    if (m.kind == kind && m.name.size() == member.size() && EqualsAsciiNoCase(m.name, member)) {
      return &m;
    }
  }
  return nullptr;
}

}  // namespace tsruntime
