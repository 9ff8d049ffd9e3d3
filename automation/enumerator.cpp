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
                                    .Help(u"Steps through a collection's items for For Each; "
                                          u"handed out by NewEnum, not created by hosts.")
                                    .NotCreatable()
                                    .Method("Next", &Enumerator::Next, {"Item"})
                                    .Help(u"Puts the next item into Item and returns True; False "
                                          u"past the end.")
                                    .Method("Skip", &Enumerator::Skip, {"Count"})
                                    .Help(u"Passes over the next Count items; False when fewer "
                                          u"were left.")
                                    .Method("Reset", &Enumerator::Reset)
                                    .Help(u"Goes back to the first item.")
                                    .Build();
  return info;
}

}  // namespace tsruntime
