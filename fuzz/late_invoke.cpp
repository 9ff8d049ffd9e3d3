// Late binding driven by any input: calls on the classes that touch nothing outside the
// process, with members picked from their type information or made up, any number of
// positional and named arguments, names real or not, and values of every Variant type
// (arrays with extreme bounds, objects returned by earlier calls). Every call returns or
// raises an Error; nothing crashes or leaks. One step repeats the previous call many
// times, so that a call whose cost grows with repetition shows as a time-out.
#include <algorithm>
#include <string_view>

#include "fuzz_input.h"
#include "tsruntime/automation/dispatch.h"

using namespace tsruntime;

namespace {

// Classes whose members read and write nothing but their arguments and their object.
constexpr std::u16string_view kClasses[] = {
    u"clsZKRunTimeLib", u"clsZKString",     u"clsZKStringConcat", u"clsZKArray",
    u"clsZKmd5",        u"clsZKDictionary", u"clsZKStorage",      u"clsZKStorageNodes",
    u"clsZKStorageItems", u"clsZKMem"};
constexpr size_t kPool = 8;

struct Call {
  Ref<Object> target;
  String member;
  InvokeKind kind = InvokeKind::kCall;
  std::vector<Argument> args;
};

class Session {
 public:
  explicit Session(fuzz::Input& in) : in_(in) {}

  void Run() {
    for (int step = 0; step < 12 && !in_.empty(); ++step) {
      // Two marker bytes, so that random inputs seldom spend their time repeating.
      if (in_.Byte() == 0xA7 && in_.Byte() == 0x5C) {
        const int times = std::min<int>(in_.U16(), repeats_left_);
        repeats_left_ -= times;
        for (int i = 0; i < times && last_.target; ++i) Perform(last_);
        continue;
      }
      last_ = Next();
      Perform(last_);
    }
  }

 private:
  Variant PoolObject() {
    return pool_.empty() ? Variant::Nothing() : Variant(pool_[in_.Below(pool_.size())]);
  }

  Call Next() {
    Call call;
    const ClassInfo* info = FindClass(kClasses[in_.Below(std::size(kClasses))]);
    // Objects go only into new ones: a pooled object never comes to hold another, so
    // no two can hold each other and leak.
    const bool pooled = in_.Byte() % 4 == 0 && !pool_.empty();
    call.target = pooled ? pool_[in_.Below(pool_.size())] : CreateObject(info->name);
    const ClassInfo& cls = call.target->classInfo();
    const size_t pick = in_.Below(static_cast<uint32_t>(cls.members.size()) + 1);
    const MemberInfo* member = pick < cls.members.size() ? &cls.members[pick] : nullptr;
    call.member = member ? member->name : in_.Text(8);
    call.kind = static_cast<InvokeKind>(in_.Below(3));
    for (uint32_t n = in_.Below(6); n > 0; --n) {
      Argument a;
      if (in_.Below(4) == 0) {
        const bool real = member && !member->params.empty() && in_.Byte() % 2;
        a.name = real ? member->params[in_.Below(member->params.size())].name : in_.Text(6);
      }
      a.value = in_.Below(8) == 0 && !pooled ? PoolObject() : fuzz::AnyVariant(in_);
      call.args.push_back(std::move(a));
    }
    return call;
  }

  void Perform(Call& call) {
    try {
      std::vector<Argument> args = call.args;
      const Variant result = Invoke(*call.target, call.member, call.kind, args);
      if (result.isObject() && result.asObject() && pool_.size() < kPool) {
        pool_.push_back(result.asObject());
      }
    } catch (const Error&) {
    }
  }

  fuzz::Input& in_;
  std::vector<Ref<Object>> pool_;
  Call last_;
  int repeats_left_ = 1 << 16;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  Session(in).Run();
  return 0;
}
