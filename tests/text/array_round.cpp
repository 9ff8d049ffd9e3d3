// clsZKArray.RoundArrayCurrency: whole kopecks that still add up.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tsruntime/clsZKArray.h"

namespace tsruntime {
namespace {

// "12.3456" -> Currency, exactly.
Currency Money(const char* text) {
  const std::string s(text);
  const bool negative = s[0] == '-';
  const size_t dot = s.find('.');
  std::string whole = s.substr(negative ? 1 : 0, dot - (negative ? 1 : 0));
  std::string fraction = dot == std::string::npos ? "" : s.substr(dot + 1);
  fraction.resize(4, '0');
  const int64_t raw = std::stoll(whole) * 10000 + std::stoll(fraction);
  return Currency::FromRaw(negative ? -raw : raw);
}

SafeArray Amounts(const std::vector<const char*>& texts, int32_t lower = 0) {
  SafeArray a(VarType::kCurrency,
              {Bounds{lower, lower + static_cast<int32_t>(texts.size()) - 1}});
  for (size_t i = 0; i < texts.size(); ++i) {
    a.set(lower + static_cast<int32_t>(i), Variant(Money(texts[i])));
  }
  return a;
}

std::string Show(const SafeArray& a) {
  std::string out;
  for (const Variant& v : a.elements()) {
    out += (out.empty() ? "" : " ") + std::to_string(v.asCurrency().raw / 10000.0);
  }
  return "{" + out + "}";
}

// The largest amount (rounded down by 0.0007) and ten amounts of 0.0006 (each rounded
// down by less): the total needs one more kopeck, and it can only go to the largest.
SafeArray TopAndCrumbs() {
  std::vector<Variant> v{Variant(Currency::FromRaw(INT64_MAX))};
  for (int i = 0; i < 10; ++i) v.push_back(Variant(Currency::FromRaw(6)));
  return SafeArray::FromVariants(v);
}

struct RoundCase {
  const char* what;
  std::vector<const char*> amounts;
  Variant keep;
  std::vector<const char*> rounded;
  int32_t lower = 0;
};

TEST(ArrayRoundCurrency, RoundsToKopecksThatAddUpToTheRoundedTotal) {
  const RoundCase cases[] = {
      {"whole kopecks stay as they are", {"1.00", "2.50", "-3.07"}, Variant(),
       {"1.00", "2.50", "-3.07"}},
      {"each amount rounds on its own when the totals agree", {"1.004", "2.006"}, Variant(),
       {"1.00", "2.01"}},
      {"half a kopeck rounds away from zero", {"0.005", "-0.015"}, Variant(), {"0.01", "-0.02"}},
      {"three halves: 30.015 rounds to 30.02, the first gives a kopeck back",
       {"10.005", "10.005", "10.005"}, Variant(), {"10.00", "10.01", "10.01"}},
      {"negative halves: the first takes a kopeck back", {"-0.005", "-0.005"}, Variant(),
       {"0.00", "-0.01"}},
      {"thirds of a ruble: the one rounded down most gets the kopeck",
       {"0.3333", "0.3333", "0.3334"}, Variant(), {"0.33", "0.33", "0.34"}},
      {"opposite halves cancel", {"1.005", "-1.005"}, Variant(), {"1.01", "-1.01"}},
      {"a kept amount is copied with its fraction", {"1.2345", "2.005", "3.005"},
       Variant(int32_t{0}), {"1.2345", "2.00", "3.01"}},
      {"kept indexes as an array",
       {"0.005", "0.005", "0.005", "0.005"},
       Variant(SafeArray::FromVariants({Variant(int32_t{0}), Variant(int16_t{2})})),
       {"0.005", "0.00", "0.005", "0.01"}},
      {"a kept index given as text", {"0.005", "0.005"}, Variant(u"1"), {"0.01", "0.005"}},
      {"every index kept", {"0.1234", "5.6789"},
       Variant(SafeArray::FromVariants({Variant(int32_t{1}), Variant(int32_t{0})})),
       {"0.1234", "5.6789"}},
      {"Missing keeps nothing", {"0.004"}, Variant::Missing(), {"0.00"}},
      {"Null keeps nothing", {"0.006"}, Variant::Null(), {"0.01"}},
      {"an empty index array keeps nothing", {"0.006"}, Variant(SafeArray(VarType::kLong)),
       {"0.01"}},
      {"bounds from 5, index 6 kept", {"1.111", "2.222", "3.333"}, Variant(int32_t{6}),
       {"1.11", "2.222", "3.33"}, 5},
      {"an empty array", {}, Variant(), {}},
  };
  for (const RoundCase& c : cases) {
    auto ar = New<clsZKArray>();
    SafeArray rounded(VarType::kCurrency);
    ASSERT_TRUE(ar->RoundArrayCurrency(Amounts(c.amounts, c.lower), rounded, c.keep)) << c.what;
    const SafeArray expected = Amounts(c.rounded, c.lower);
    EXPECT_EQ(rounded, expected) << c.what << ": got " << Show(rounded);
  }
}

TEST(ArrayRoundCurrency, KeepsTheSumOverRandomAmounts) {
  std::mt19937_64 rng(3);
  auto ar = New<clsZKArray>();
  for (int round = 0; round < 300; ++round) {
    const int n = 1 + static_cast<int>(rng() % 40);
    SafeArray amounts(VarType::kCurrency, {Bounds{0, n - 1}});
    std::vector<Variant> kept_list;
    std::vector<bool> kept(n);
    int64_t exact = 0;
    for (int i = 0; i < n; ++i) {
      const int64_t raw = static_cast<int64_t>(rng() % 20000001) - 10000000;
      amounts.set(i, Variant(Currency::FromRaw(raw)));
      if (rng() % 5 == 0) {
        kept[i] = true;
        kept_list.push_back(Variant(int32_t{i}));
      } else {
        exact += raw;
      }
    }
    SafeArray rounded;
    ASSERT_TRUE(
        ar->RoundArrayCurrency(amounts, rounded, Variant(SafeArray::FromVariants(kept_list))));
    int64_t total = 0;
    for (int i = 0; i < n; ++i) {
      const int64_t before = amounts.get(i).asCurrency().raw;
      const int64_t after = rounded.get(i).asCurrency().raw;
      if (kept[i]) {
        ASSERT_EQ(after, before) << "round " << round << ": kept index " << i << " changed";
        continue;
      }
      ASSERT_EQ(after % 100, 0) << "round " << round << ": not whole kopecks at " << i;
      ASSERT_LT(std::llabs(after - before), 100) << "round " << round << ": a kopeck off at " << i;
      total += after;
    }
    // The exact total rounded half a kopeck away from zero.
    const int64_t half = exact >= 0 ? 50 : -50;
    EXPECT_EQ(total, (exact + half) / 100 * 100) << "round " << round;
  }
}

TEST(ArrayRoundCurrency, ReturnsFalseAndLeavesTheResultAloneOnBadInput) {
  const struct {
    const char* what;
    SafeArray amounts;
    Variant keep;
  } cases[] = {
      {"a never-dimensioned array", SafeArray(VarType::kCurrency), Variant()},
      {"a table", SafeArray(VarType::kCurrency, {Bounds{0, 1}, Bounds{0, 1}}), Variant()},
      {"an amount that is not a number",
       SafeArray::FromVariants({Variant(u"1,5x")}), Variant()},
      {"a Null amount", SafeArray::FromVariants({Variant::Null()}), Variant()},
      {"an index past the end", Amounts({"1.00", "2.00"}), Variant(int32_t{2})},
      {"an index before the start", Amounts({"1.00", "2.00"}), Variant(int32_t{-1})},
      {"an index that is not a number", Amounts({"1.00"}), Variant(u"first")},
      {"an index array holding a bad index", Amounts({"1.00"}),
       Variant(SafeArray::FromVariants({Variant(int32_t{0}), Variant(int32_t{9})}))},
      {"an index that is an object", Amounts({"1.00"}), Variant::Nothing()},
      {"a correction beyond the Currency range", TopAndCrumbs(), Variant()},
  };
  auto ar = New<clsZKArray>();
  for (const auto& c : cases) {
    SafeArray rounded = Amounts({"7.77"});
    EXPECT_FALSE(ar->RoundArrayCurrency(c.amounts, rounded, c.keep)) << c.what;
    EXPECT_EQ(rounded, Amounts({"7.77"})) << c.what;
  }
}

TEST(ArrayRoundCurrency, WritesTheResultBackWhenCalledByName) {
  Ref<Object> ar = CreateObject(u"TSRuntimeLib.clsZKArray");
  std::vector<Argument> args{{u"", Variant(Amounts({"0.125", "0.125"}))},
                             {u"", Variant(SafeArray(VarType::kCurrency))},
                             {u"", Variant()}};
  EXPECT_EQ(Invoke(*ar, u"RoundArrayCurrency", InvokeKind::kCall, args), Variant(true));
  EXPECT_EQ(args[1].value.asArray(), Amounts({"0.12", "0.13"}));
}

}  // namespace
}  // namespace tsruntime
