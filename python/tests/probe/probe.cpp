// PyProbe: a class loaded only by the Python tests. It has one member of each shape the
// dispatch layer can describe, so the module's generic paths are tested on their own.
#include <map>

#include "tsruntime/automation/enumerator.h"

namespace tsruntime {

class PyProbe : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // Hands its argument back untouched: a Variant round trip through the dispatch layer.
  Variant Echo(const Variant& Value) { return Value; }
  // The type code the argument arrived as.
  int32_t TypeOf(const Variant& Value) { return TypeCode(Value.type()); }

  // Text = Before + Text + After; counts calls in Calls when given; returns the new length.
  int32_t Wrap(String& Text, const String& Before, const String& After, int32_t* Calls) {
    Text = Before + Text + After;
    if (Calls) ++*Calls;
    return static_cast<int32_t>(Text.size());
  }
  // No result, one written-back argument.
  void Twice(int32_t& Value) { Value *= 2; }
  // A written-back argument with a default value.
  bool Bump(int32_t& Start) {
    Start += 1;
    return true;
  }

  // An array with the given bounds, each element its own index times ten.
  SafeArray Span(int32_t Lower, int32_t Upper) {
    SafeArray a(VarType::kLong, {Bounds{Lower, Upper}});
    for (int32_t i = Lower; i <= Upper; ++i) a.set(i, Variant(i * 10));
    return a;
  }
  // "lower..upper:count" of each dimension, as the array arrived.
  String Shape(const SafeArray& Data) {
    String text;
    for (const Bounds& b : Data.bounds()) {
      if (!text.empty()) text += u" ";
      text += FromAscii(std::to_string(b.lower) + ".." + std::to_string(b.upper) + ":" +
                        std::to_string(b.count()));
    }
    return text.empty() ? u"undimensioned" : text;
  }
  // Adds one to every element, in place.
  void Increment(SafeArray& Data) {
    for (Variant& v : Data.elements()) v = Variant(ToLong(v) + 1);
  }

  [[noreturn]] void Fail(int32_t Number) {
    throw Error(Number, u"PyProbe.Fail", u"Failed on purpose", u"probe.chm", 42);
  }

  // A keyed store: Item is the default member, indexed get, let and set; events on change.
  Variant Item(const String& Key) {
    auto it = items_.find(Key);
    return it == items_.end() ? Variant::Nothing() : it->second;
  }
  void LetItem(const String& Key, const Variant& Value) {
    items_[Key] = Value;
    std::vector<Variant> args{Variant(Key)};
    RaiseEvent(u"Changed", args);
  }
  void SetItem(const String& Key, Ref<Object> Value) { LetItem(Key, Variant(std::move(Value))); }
  void Remove(const String& Key) {
    items_.erase(Key);
    std::vector<Variant> args{Variant(Key), Variant(static_cast<int32_t>(items_.size()))};
    RaiseEvent(u"OnRemoved", args);
  }
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  Ref<Enumerator> NewEnum() {
    std::vector<Variant> values;
    for (const auto& [key, value] : items_) values.push_back(value);
    return New<Enumerator>(std::move(values));
  }

  String Caption() const { return caption_; }
  void LetCaption(const String& value) { caption_ = value; }

 private:
  std::map<String, Variant> items_;
  String caption_;
};

TSRUNTIME_DEFINE_CLASS(PyProbe) {
  static const ClassInfo info =
      ClassBuilder<PyProbe>("PyProbe")
          .Method("Echo", &PyProbe::Echo, {"Value"})
          .Method("TypeOf", &PyProbe::TypeOf, {"Value"})
          .Method("Wrap", &PyProbe::Wrap,
                  {"Text", Opt("Before", Variant(String(u"["))),
                   Opt("After", Variant(String(u"]"))), Opt("Calls")})
          .Method("Twice", &PyProbe::Twice, {"Value"})
          .Method("Bump", &PyProbe::Bump, {Opt("Start", Variant(int32_t{10}))})
          .Method("Span", &PyProbe::Span, {"Lower", "Upper"})
          .Method("Shape", &PyProbe::Shape, {"Data"})
          .Method("Increment", &PyProbe::Increment, {"Data"})
          .Method("Fail", &PyProbe::Fail, {"Number"})
          .Get("Item", &PyProbe::Item, {"Key"})
          .Let("Item", &PyProbe::LetItem, {"Key", "Value"})
          .Set("Item", &PyProbe::SetItem, {"Key", "Value"})
          .Method("Remove", &PyProbe::Remove, {"Key"})
          .Get("Count", &PyProbe::Count)
          .Method("NewEnum", &PyProbe::NewEnum)
          .Get("Caption", &PyProbe::Caption)
          .Let("Caption", &PyProbe::LetCaption, {"RHS"})
          .Default("Item")
          .Event("Changed", {"Key"})
          .Event("OnRemoved", {"Key", "Count"})
          .Build();
  return info;
}

}  // namespace tsruntime
