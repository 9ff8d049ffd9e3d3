// "Did you mean ...?": the known name nearest to a mistyped one.
//
//   NearestName near(u"InWrds");
//   for (const MemberInfo& m : info.members) near.Consider(m.name);
//   near.Best()   // "InWords"
#pragma once

#include <optional>
#include <string>

#include "tsruntime/automation/string.h"

namespace tsrt {

class NearestName {
 public:
  explicit NearestName(tsruntime::StringView typed);

  void Consider(tsruntime::StringView candidate);

  // The candidate fewest edits away (letters inserted, dropped, changed or swapped, case
  // ignored), when few enough to be a slip of the keyboard: one for a short name, up to
  // three for a long one. Nothing when no candidate is that close.
  std::optional<std::string> Best() const;

 private:
  tsruntime::String typed_;
  tsruntime::String best_;
  size_t best_distance_;
};

}  // namespace tsrt
