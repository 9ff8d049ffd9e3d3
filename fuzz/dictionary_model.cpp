// The dictionary against the list model of its tests, driven by any input: every sort
// and compare mode, keys that collide and differ only in case, bad indexes, and an
// OnChanged handler that changes the dictionary again while the event is delivered.
// Results, errors, events and the entries must agree after every step. One step stores
// a chain of dictionaries or arrays nested tens of thousands deep, released when the
// dictionary is cleared or goes.
#include <cstdlib>

#include "../tests/containers/dictionary_list_model.h"
#include "fuzz_input.h"
#include "tsruntime/clsZKDictionary.h"

using namespace tsruntime;
using container_tests::ErrorNumberOf;
using container_tests::ListModel;

namespace {

void Check(bool same) {
  if (!same) std::abort();
}

class Pair {
 public:
  explicit Pair(fuzz::Input& in) : in_(in) {
    SortMode(static_cast<int32_t>(in.Below(4)));
    d_->LetCompareMode(m_.compare = static_cast<int32_t>(in.Below(2)));
    d_->OnChanged([this](const Variant& item) { heard_.push_back(item); });
    // The handler's own change, drawn once so that both sides make the same one.
    reaction_ = static_cast<int>(in.Below(5));
    reaction_item_ = Item();
    reaction_value_ = Value();
    d_->OnChanged([this](const Variant&) {
      React([this](int op, const Variant& i, const Variant& v) { Apply(*d_, op, i, v); });
    });
    m_.on_changed = [this](const Variant&) {
      React([this](int op, const Variant& i, const Variant& v) { Apply(m_, op, i, v); });
    };
  }

  void Run() {
    for (int step = 0; step < 200 && !in_.empty(); ++step) {
      Step(in_.Below(117));
      Check(d_->Count() == m_.Count() && heard_ == m_.events);
    }
    Check(d_->Changed() == m_.changed);
    Check(static_cast<int32_t>(d_->SortMode()) == (m_.list.empty() ? m_.sort : 0));
    for (int32_t i = 0; i < m_.Count(); ++i) {
      Check(d_->Key(Variant(i)) == Variant(m_.list[i].key));
      Check(d_->Data(Variant(i)) == m_.list[i].value);
    }
  }

 private:
  void SortMode(int32_t mode) {
    d_->LetSortMode(static_cast<xeTS_DICTIONARY_SORT>(m_.sort = mode));
  }
  Variant Key() { return Variant(in_.Text(3)); }
  Variant Item() {
    const int32_t n = m_.Count();
    switch (in_.Below(8)) {
      case 0: return Variant(static_cast<int32_t>(in_.Below(n + 3)) - 1);
      case 1: return Variant(in_.Below(n + 2) + 0.5);
      case 2: return Variant(in_.Byte() % 2 == 0);
      case 3: return Variant::Null();
      case 4: return n > 0 ? Variant(ToUpper(m_.list[in_.Below(n)].key)) : Key();
      default: return Key();
    }
  }
  Variant Value() { return in_.Byte() % 4 ? Variant(static_cast<int32_t>(in_.Byte())) : Key(); }

  // Both sides take the same operation; those that may raise must raise alike.
  template <class Side>
  static void Apply(Side& side, int op, const Variant& item, const Variant& value) {
    switch (op) {
      case 1: side.Add(item, value); break;
      case 2: side.Remove(item); break;
      case 3: side.LetData(item, value); break;
      case 4: side.LetKey(item, value); break;
      default: break;
    }
  }

  template <class F>
  void React(F apply) {
    if (reacting_) return;  // one level: the handler's change raises no further change
    reacting_ = true;
    try {
      apply(reaction_, reaction_item_, reaction_value_);
    } catch (...) {
      reacting_ = false;
      throw;
    }
    reacting_ = false;
  }

  void Step(uint32_t op) {
    const Variant item = op < 40 && in_.Byte() % 8 ? Key() : Item();
    // A second marker byte keeps the costly chains rare among random inputs.
    const Variant value = op == 116 && in_.Byte() == 0x5C ? Deep() : Value();
    if (op < 40 || op == 116) {
      d_->Add(item, value), m_.Add(item, value);
    } else if (op < 60) {
      d_->Remove(item), m_.Remove(item);
    } else if (op < 75) {
      Check(ErrorNumberOf([&] { d_->LetData(item, value); }) ==
            ErrorNumberOf([&] { m_.LetData(item, value); }));
    } else if (op < 90) {
      d_->LetKey(item, value), m_.LetKey(item, value);
    } else if (op < 105) {
      Check(d_->Exists(item) == m_.Exists(item));
      const int i = m_.Locate(item);
      Check(d_->Data(item) == (i < 0 ? Variant::Nothing() : m_.list[i].value));
      Check(d_->Key(item) == (container_tests::IsKey(item) ? item
                              : i >= 0                      ? Variant(m_.list[i].key)
                                                            : Variant()));
    } else if (op < 110) {
      SortMode(static_cast<int32_t>(in_.Below(4)));
    } else if (op < 115) {
      d_->LetCompareMode(m_.compare = static_cast<int32_t>(in_.Below(2)));
    } else if (op == 115) {
      d_->Clear(), m_.Clear();
    }
  }

  // A dictionary holding the next as a value (or an array that holds the next), far
  // deeper than the stack could follow by recursion. Arrays go between dictionaries
  // only: copying a value copies its arrays, and each Add copies.
  Variant Deep() {
    const int depth = in_.U16() / 2;
    const bool arrays = in_.Byte() % 2;
    Variant v(int32_t{0});
    for (int i = 0; i < depth; ++i) {
      if (arrays) {
        std::vector<Variant> one(1);
        one[0] = std::move(v);
        v = Variant(SafeArray::FromVariants(std::move(one)));
      }
      auto next = New<clsZKDictionary>();
      next->Add(Variant(u"k"), v);
      v = Variant(next);
    }
    return v;
  }

  fuzz::Input& in_;
  Ref<clsZKDictionary> d_ = New<clsZKDictionary>();
  ListModel m_;
  std::vector<Variant> heard_;
  int reaction_ = 0;
  Variant reaction_item_, reaction_value_;
  bool reacting_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ScopedLocale locale("ru_RU");
  fuzz::Input in(data, size);
  Pair(in).Run();
  return 0;
}
