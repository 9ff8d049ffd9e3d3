// A call through the C interface beside the same late-bound call made from C++.
//
// Each case "<Call>/<case>/tsruntime" builds C arguments, calls tsrt_invoke and reads
// the C result; its peer "<Call>/<case>/peer" does the same work with the C++ `Invoke`.
// The ratio printed after the table is what the C boundary adds: converting values to
// and from the C structs and guarding against exceptions.
#include <cstring>

#include "string_peer_ratio.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/tsruntime_c.h"

namespace {

using namespace tsruntime;

const uint16_t* U16(const char16_t* s) { return reinterpret_cast<const uint16_t*>(s); }

tsrt_object* CreateC(const char16_t* prog_id) {
  tsrt_object* o = nullptr;
  tsrt_create(U16(prog_id), std::char_traits<char16_t>::length(prog_id), &o, nullptr);
  return o;
}

// clsZKRunTimeLib.Language: a member that does almost nothing, so the call is the cost.
void PropertyRead_C(benchmark::State& state) {
  tsrt_object* lib = CreateC(u"TSRuntimeLib.clsZKRunTimeLib");
  for (auto _ : state) {
    tsrt_variant result;
    tsrt_invoke(lib, U16(u"Language"), 8, TSRT_INVOKE_CALL, nullptr, 0, &result, nullptr);
    benchmark::DoNotOptimize(result.value.long_value);
  }
  tsrt_object_release(lib);
}

void PropertyRead_Cxx(benchmark::State& state) {
  Ref<Object> lib = CreateObject(u"TSRuntimeLib.clsZKRunTimeLib");
  for (auto _ : state) {
    std::vector<Argument> none;
    benchmark::DoNotOptimize(Invoke(*lib, u"Language", InvokeKind::kCall, none).asLong());
  }
}

// clsZKString.GetLeft: two texts in, one out.
const char16_t kText[] = u"Иванов Пётр Сергеевич=директор";

void Texts_C(benchmark::State& state) {
  tsrt_object* s = CreateC(u"TSRuntimeLib.clsZKString");
  for (auto _ : state) {
    tsrt_argument args[2];
    std::memset(args, 0, sizeof args);
    tsrt_variant_set_string(&args[0].value, U16(kText), std::size(kText) - 1, nullptr);
    tsrt_variant_set_string(&args[1].value, U16(u"="), 1, nullptr);
    tsrt_variant result;
    tsrt_invoke(s, U16(u"GetLeft"), 7, TSRT_INVOKE_CALL, args, 2, &result, nullptr);
    benchmark::DoNotOptimize(result.value.string.length);
    tsrt_variant_clear(&result);
    for (tsrt_argument& a : args) tsrt_variant_clear(&a.value);
  }
  tsrt_object_release(s);
}

void Texts_Cxx(benchmark::State& state) {
  Ref<Object> s = CreateObject(u"TSRuntimeLib.clsZKString");
  for (auto _ : state) {
    std::vector<Argument> args = {{String(), Variant(kText)}, {String(), Variant(u"=")}};
    benchmark::DoNotOptimize(Invoke(*s, u"GetLeft", InvokeKind::kCall, args).asString().size());
  }
}

// clsZKString.Filter with a named caret written back.
void WrittenBack_C(benchmark::State& state) {
  tsrt_object* s = CreateC(u"TSRuntimeLib.clsZKString");
  for (auto _ : state) {
    tsrt_argument args[3];
    std::memset(args, 0, sizeof args);
    tsrt_variant_set_string(&args[0].value, U16(u"a-b-c-d"), 7, nullptr);
    tsrt_variant_set_string(&args[1].value, U16(u"-"), 1, nullptr);
    args[2].name = tsrt_text{U16(u"SelStart"), 8};
    tsrt_variant_set_long(&args[2].value, 6);
    tsrt_variant result;
    tsrt_invoke(s, U16(u"Filter"), 6, TSRT_INVOKE_CALL, args, 3, &result, nullptr);
    benchmark::DoNotOptimize(args[2].value.value.long_value);
    tsrt_variant_clear(&result);
    for (tsrt_argument& a : args) tsrt_variant_clear(&a.value);
  }
  tsrt_object_release(s);
}

void WrittenBack_Cxx(benchmark::State& state) {
  Ref<Object> s = CreateObject(u"TSRuntimeLib.clsZKString");
  for (auto _ : state) {
    std::vector<Argument> args = {{String(), Variant(u"a-b-c-d")},
                                  {String(), Variant(u"-")},
                                  {u"SelStart", Variant(int32_t{6})}};
    benchmark::DoNotOptimize(Invoke(*s, u"Filter", InvokeKind::kCall, args));
    benchmark::DoNotOptimize(args[2].value.asLong());
  }
}

void Call(benchmark::State& state, void (*body)(benchmark::State&)) { body(state); }

BENCHMARK_CAPTURE(Call, PropertyRead/tsruntime, PropertyRead_C);
BENCHMARK_CAPTURE(Call, PropertyRead/peer, PropertyRead_Cxx);
BENCHMARK_CAPTURE(Call, Texts/tsruntime, Texts_C);
BENCHMARK_CAPTURE(Call, Texts/peer, Texts_Cxx);
BENCHMARK_CAPTURE(Call, WrittenBack/tsruntime, WrittenBack_C);
BENCHMARK_CAPTURE(Call, WrittenBack/peer, WrittenBack_Cxx);

}  // namespace

int main(int argc, char** argv) { return tsruntime_bench::RunWithPeerRatios(argc, argv); }
