// Every name a host can list carries its help string: one line of English that ends
// with a full stop, the way an object browser shows it under the declaration.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {
namespace {

// What is wrong with a help string, or "" when nothing is. A sentence starts with a
// capital, a digit, a quote, or a name of the interface (a word with a capital in it).
std::string Fault(const String& help) {
  const auto upper = [](char16_t c) { return c >= u'A' && c <= u'Z'; };
  const auto any = [&](auto pred) { return std::ranges::any_of(help, pred); };
  if (help.empty() || help.back() != u'.') return "no full stop at the end";
  if (any([](char16_t c) { return c == u'\r' || c == u'\n'; })) return "more than one line";
  if (any([](char16_t c) { return c >= 0x0400 && c <= 0x04FF; })) return "not in English";
  const StringView first = StringView(help).substr(0, help.find(u' '));
  const bool digit = first[0] >= u'0' && first[0] <= u'9';
  if (!digit && first[0] != u'"' && std::ranges::none_of(first, upper)) {
    return "no capital letter at the start";
  }
  return "";
}

TEST(HelpStrings, EveryClassMemberEventAndEnumerationMemberHasOneLineOfEnglish) {
  std::vector<std::string> faults;
  auto check = [&](const String& help, const String& what) {
    if (const std::string fault = Fault(help); !fault.empty()) {
      faults.push_back(ToUtf8(what) + ": " + fault);
    }
  };
  size_t members = 0;
  for (const ClassInfo* listed : RegisteredClasses()) {
    const ClassInfo& c = *FindClass(listed->name);  // a module's classes load here
    check(c.help, c.name);
    for (const MemberInfo& m : c.members) check(m.help, c.name + u"." + m.name);
    for (const EventInfo& e : c.events) check(e.help, c.name + u" event " + e.name);
    members += c.members.size();
  }
  for (const EnumInfo* e : RegisteredEnums()) {
    check(e->help, e->name);
    for (const EnumMember& m : e->members) check(m.help, e->name + u"." + m.name);
  }
  EXPECT_THAT(faults, testing::IsEmpty());
  EXPECT_GT(members, 250u) << "the user-interface module's classes did not load";
}

}  // namespace
}  // namespace tsruntime
