// Type information across the C boundary: classes, members, parameters, events, enums.
#include <algorithm>
#include <map>
#include <mutex>

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

// The registry changes once more when a separately loaded module (the user interface)
// registers its classes in place of the names listed up front, so the list is read
// afresh on each call. ProgIDs are built once per class and kept, so that they can be
// borrowed for as long as the library is loaded.
const String* ProgIdOf(const ClassInfo* c) noexcept {
  static std::mutex mutex;
  static std::map<const ClassInfo*, String> prog_ids;
  const String* found = nullptr;
  Guard(nullptr, [&] {
    std::lock_guard lock(mutex);
    auto at = prog_ids.find(c);
    if (at == prog_ids.end()) at = prog_ids.emplace(c, c->progId()).first;
    found = &at->second;
  });
  return found;
}

std::vector<const ClassInfo*> Classes() noexcept {
  std::vector<const ClassInfo*> classes;
  Guard(nullptr, [&] { classes = RegisteredClasses(); });
  return classes;
}

std::vector<const EnumInfo*> Enums() noexcept {
  std::vector<const EnumInfo*> enums;
  Guard(nullptr, [&] { enums = RegisteredEnums(); });
  return enums;
}

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

size_t tsrt_class_count(void) { return Classes().size(); }

const tsrt_class* tsrt_class_at(size_t index) {
  const auto classes = Classes();
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
  const auto classes = Classes();
  if (std::find(classes.begin(), classes.end(), c) == classes.end()) return 0;
  const String* prog_id = ProgIdOf(c);
  if (!prog_id) return 0;
  *info = tsrt_class_info{Borrow(c->name),
                          Borrow(*prog_id),
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
  const auto enums = Enums();
  if (index >= enums.size()) return 0;
  if (name) *name = Borrow(enums[index]->name);
  if (member_count) *member_count = enums[index]->members.size();
  return 1;
}

int tsrt_enum_member(size_t index, size_t member, tsrt_text* name, int32_t* value) {
  const auto enums = Enums();
  if (index >= enums.size() || member >= enums[index]->members.size()) return 0;
  const EnumMember& m = enums[index]->members[member];
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
  const auto enums = Enums();
  if (index >= enums.size() || !help) return 0;
  *help = Borrow(enums[index]->help);
  return 1;
}

int tsrt_enum_member_help(size_t index, size_t member, tsrt_text* help) {
  const auto enums = Enums();
  if (index >= enums.size() || !help || member >= enums[index]->members.size()) return 0;
  *help = Borrow(enums[index]->members[member].help);
  return 1;
}

}  // extern "C"
