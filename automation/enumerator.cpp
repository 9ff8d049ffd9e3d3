#include "tsruntime/automation/enumerator.h"

namespace tsruntime {

bool Enumerator::Next(Variant& Item) {
  if (pos_ >= items_.size()) return false;
  Item = items_[pos_++];
  return true;
}

bool Enumerator::Skip(int32_t Count) {
  for (int32_t i = 0; i < Count; ++i) {
    if (pos_ >= items_.size()) return false;
    ++pos_;
  }
  return true;
}

TSRUNTIME_DEFINE_CLASS(Enumerator) {
  static const ClassInfo info = ClassBuilder<Enumerator>("Enumerator")
                                    .NotCreatable()
                                    .Method("Next", &Enumerator::Next, {"Item"})
                                    .Method("Skip", &Enumerator::Skip, {"Count"})
                                    .Method("Reset", &Enumerator::Reset)
                                    .Build();
  return info;
}

}  // namespace tsruntime
