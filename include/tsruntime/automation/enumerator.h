// Enumerator: what a class's `NewEnum` returns, the automation runtime's enumeration
// protocol. It walks a snapshot of the values taken when it was made.
#pragma once

#include <vector>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

class Enumerator : public Object {
 public:
  explicit Enumerator(std::vector<Variant> items) : items_(std::move(items)) {}
  TSRUNTIME_CLASS_INFO;

  // Stores the next value in `Item` and returns True, or returns False at the end.
  bool Next(Variant& Item);
  // Skips `Count` values; False when fewer were left.
  bool Skip(int32_t Count);
  void Reset() { pos_ = 0; }

 private:
  std::vector<Variant> items_;
  size_t pos_ = 0;
};

}  // namespace tsruntime
