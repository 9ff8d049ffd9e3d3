// Type information across the C boundary: classes, members, parameters, events, enums.
#include <algorithm>

#include "c_boundary.h"

namespace tsruntime::capi {
namespace {

int32_t MemberKindCode(MemberKind kind) {
  switch (kind) {
    case MemberKind::kMethod: return TSRT_MEMBER_METHOD;
    case MemberKind::kPropertyGet: return TSRT_MEMBER_GET;
    case MemberKind::kPropertyLet: return TSRT_MEMBER_LET;
    case MemberKind::kPropertySet: return TSRT_MEMBER_SET;
  }
  return TSRT_MEMBER_METHOD;
}

// Fills `*info` from `p`; 0 when the default value cannot be copied (out of memory).
int DescribeParam(const ParamInfo& p, tsrt_param_info* info) {
  tsrt_param_info out{};
  out.name = Borrow(p.name);
  out.type = static_cast<uint16_t>(p.type);
  out.optional = p.optional ? 1 : 0;
  out.writes_back = p.writesBack ? 1 : 0;
  const Variant value = p.optional ? p.defaultValue : Variant::Missing();
  if (Guard(nullptr, [&] { ToC(value, &out.default_value); }) != TSRT_OK) return 0;
  *info = out;
  return 1;
}

// The registry is complete once the library has loaded and never changes after, so one
// snapshot serves every call; ProgIDs are built here once so that they can be borrowed.
struct Catalog {
  std::vector<const ClassInfo*> classes;
  std::vector<String> prog_ids;
  std::vector<const EnumInfo*> enums;
};

const Catalog& Registry() noexcept {
  static const Catalog catalog = [] {
    Catalog made;
    // Out of memory here leaves the catalog empty rather than throwing into C.
    Guard(nullptr, [&] {
      Catalog full{RegisteredClasses(), {}, RegisteredEnums()};
      for (const ClassInfo* c : full.classes) full.prog_ids.push_back(c->progId());
      made = std::move(full);
    });
    return made;
  }();
  return catalog;
}
const std::vector<const EnumInfo*>& Enums() { return Registry().enums; }

// The class as registered now. A class named ahead of its module is looked up again,
// which loads the module, so that its members and help strings are there whichever
// handle the host took from the listing; the name alone when the module cannot load.
const ClassInfo* Live(const tsrt_class* cls) noexcept {
  const ClassInfo* c = FromHandle(cls);
  if (!c) return nullptr;
  const ClassInfo* live = c;
  Guard(nullptr, [&] {
    if (const ClassInfo* found = FindClass(c->name)) live = found;
  });
  return live;
}

}  // namespace
}  // namespace tsruntime::capi

using namespace tsruntime;
using namespace tsruntime::capi;

extern "C" {

size_t tsrt_class_count(void) { return Registry().classes.size(); }

const tsrt_class* tsrt_class_at(size_t index) {
  const auto& classes = Registry().classes;
  return index < classes.size() ? ToHandle(classes[index]) : nullptr;
}

const tsrt_class* tsrt_class_find(const uint16_t* name, size_t length) {
  return ToHandle(FindClass(ViewOf(name, length)));
}

const tsrt_class* tsrt_object_class(const tsrt_object* object) {
  const Object* o = FromHandle(object);
  return o ? ToHandle(&o->classInfo()) : nullptr;
}

int tsrt_class_describe(const tsrt_class* cls, tsrt_class_info* info) {
  const ClassInfo* c = Live(cls);
  if (!c || !info) return 0;
  const auto& classes = Registry().classes;
  const size_t at = static_cast<size_t>(
      std::find_if(classes.begin(), classes.end(),
                   [c](const ClassInfo* listed) { return listed->name == c->name; }) -
      classes.begin());
  if (at == classes.size()) return 0;
  const String& prog_id = Registry().prog_ids[at];
  *info = tsrt_class_info{Borrow(c->name),
                          Borrow(prog_id),
                          c->creatable && c->factory ? 1 : 0,
                          c->enumerable() ? 1 : 0,
                          Borrow(c->defaultMember),
                          c->members.size(),
                          c->events.size()};
  return 1;
}

int tsrt_class_member(const tsrt_class* cls, size_t member, tsrt_member_info* info) {
  const ClassInfo* c = Live(cls);
  if (!c || !info || member >= c->members.size()) return 0;
  const MemberInfo& m = c->members[member];
  *info = tsrt_member_info{Borrow(m.name), MemberKindCode(m.kind),
                           static_cast<uint16_t>(m.returnType),
                           m.returnClass ? ToHandle(&m.returnClass()) : nullptr,
                           m.params.size()};
  return 1;
}

int tsrt_class_member_param(const tsrt_class* cls, size_t member, size_t param,
                            tsrt_param_info* info) {
  const ClassInfo* c = Live(cls);
  if (!c || !info || member >= c->members.size()) return 0;
  const auto& params = c->members[member].params;
  return param < params.size() ? DescribeParam(params[param], info) : 0;
}

int tsrt_class_event(const tsrt_class* cls, size_t event, tsrt_event_info* info) {
  const ClassInfo* c = Live(cls);
  if (!c || !info || event >= c->events.size()) return 0;
  *info = tsrt_event_info{Borrow(c->events[event].name), c->events[event].params.size()};
  return 1;
}

int tsrt_class_event_param(const tsrt_class* cls, size_t event, size_t param,
                           tsrt_param_info* info) {
  const ClassInfo* c = Live(cls);
  if (!c || !info || event >= c->events.size()) return 0;
  const auto& params = c->events[event].params;
  return param < params.size() ? DescribeParam(params[param], info) : 0;
}

size_t tsrt_enum_count(void) { return Enums().size(); }

int tsrt_enum_describe(size_t index, tsrt_text* name, size_t* member_count) {
  if (index >= Enums().size()) return 0;
  if (name) *name = Borrow(Enums()[index]->name);
  if (member_count) *member_count = Enums()[index]->members.size();
  return 1;
}

int tsrt_enum_member(size_t index, size_t member, tsrt_text* name, int32_t* value) {
  if (index >= Enums().size() || member >= Enums()[index]->members.size()) return 0;
  const EnumMember& m = Enums()[index]->members[member];
  if (name) *name = Borrow(m.name);
  if (value) *value = m.value;
  return 1;
}

int tsrt_class_help(const tsrt_class* cls, tsrt_text* help) {
  const ClassInfo* c = Live(cls);
  if (!c || !help) return 0;
  *help = Borrow(c->help);
  return 1;
}

int tsrt_class_member_help(const tsrt_class* cls, size_t member, tsrt_text* help) {
  const ClassInfo* c = Live(cls);
  if (!c || !help || member >= c->members.size()) return 0;
  *help = Borrow(c->members[member].help);
  return 1;
}

int tsrt_class_event_help(const tsrt_class* cls, size_t event, tsrt_text* help) {
  const ClassInfo* c = Live(cls);
  if (!c || !help || event >= c->events.size()) return 0;
  *help = Borrow(c->events[event].help);
  return 1;
}

int tsrt_enum_help(size_t index, tsrt_text* help) {
  if (index >= Enums().size() || !help) return 0;
  *help = Borrow(Enums()[index]->help);
  return 1;
}

int tsrt_enum_member_help(size_t index, size_t member, tsrt_text* help) {
  if (index >= Enums().size() || !help || member >= Enums()[index]->members.size()) return 0;
  *help = Borrow(Enums()[index]->members[member].help);
  return 1;
}

}  // extern "C"
