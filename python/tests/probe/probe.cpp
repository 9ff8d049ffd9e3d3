// PyProbe: a class loaded only by the Python tests, for the member shapes no library class
// has: a written-back argument with no result, one with a default, an event not named
// On..., and an error with help fields.
#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

class PyProbe : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  void Twice(int32_t& Value) {
    Value *= 2;
    std::vector<Variant> args{Variant(Value)};
    RaiseEvent(u"Doubled", args);
  }
  bool Bump(int32_t& Start) { return ++Start > 0; }
  [[noreturn]] void Fail(int32_t Number) {
    throw Error(Number, u"PyProbe.Fail", u"Failed on purpose", u"probe.chm", 42);
  }
};

TSRUNTIME_DEFINE_CLASS(PyProbe) {
  static const ClassInfo info =
      ClassBuilder<PyProbe>("PyProbe")
          .Method("Twice", &PyProbe::Twice, {"Value"})
          .Method("Bump", &PyProbe::Bump, {Opt("Start", Variant(int32_t{10}))})
          .Method("Fail", &PyProbe::Fail, {"Number"})
          .Event("Doubled", {"Value"})
          .Build();
  return info;
}

}  // namespace tsruntime
