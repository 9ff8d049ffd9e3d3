// clsZKString::InWords: a money amount in Russian words, as on payment documents.
//
// The amount is worked on as twelve rouble digits and two kopeck digits. Groups of three
// rouble digits are read from the units upward: group 1 roubles, 2 thousands, 3 millions,
// 4 billions; "group 0" is the kopecks, which only choose the kopeck word's form.
#include <array>
#include <cstdint>

#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

using Forms = std::array<StringView, 4>;  // none, singular, paucal, genitive plural

constexpr std::array<Forms, 5> kUnitNames = {{
    {u"", u"копейка", u"копейки", u"копеек"},
    {u"", u"рубль", u"рубля", u"рублей"},
    {u"", u"тысяча", u"тысячи", u"тысяч"},
    {u"", u"миллион", u"миллиона", u"миллионов"},
    {u"", u"миллиард", u"миллиарда", u"миллиардов"},
}};

using Digits = std::array<StringView, 10>;

constexpr std::array<Digits, 3> kPlaceWords = {{
    {u"", u"один", u"два", u"три", u"четыре", u"пять", u"шесть", u"семь", u"восемь",
     u"девять"},
    {u"", u"десять", u"двадцать", u"тридцать", u"сорок", u"пятьдесят", u"шестьдесят",
     u"семьдесят", u"восемьдесят", u"девяносто"},
    {u"", u"сто", u"двести", u"триста", u"четыреста", u"пятьсот", u"шестьсот", u"семьсот",
     u"восемьсот", u"девятьсот"},
}};

constexpr Digits kTeens = {u"", u"одиннадцать", u"двенадцать", u"тринадцать",
                           u"четырнадцать", u"пятнадцать", u"шестнадцать", u"семнадцать",
                           u"восемнадцать", u"девятнадцать"};

constexpr uint64_t kRoubleLimit = 1'000'000'000'000;  // twelve digits

// 1 singular ("один рубль"), 2 paucal ("два рубля"), 3 genitive plural ("пять рублей",
// "одиннадцать рублей").
int FormOf(int units, int tens) {
  if (tens == 1) return 3;
  if (units == 1) return 1;
  if (units >= 2 && units <= 4) return 2;
  return 3;
}

}  // namespace

String clsZKString::InWords(const Currency& Expression, bool IncludeUnitNames) const {
  // Whole kopecks of the absolute value, halves upward; unsigned, so that the currency
  // minimum has an absolute value too.
  const uint64_t magnitude = Expression.raw < 0 ? uint64_t{0} - static_cast<uint64_t>(Expression.raw)
                                                : static_cast<uint64_t>(Expression.raw);
  const uint64_t all_kopecks = (magnitude + 50) / 100;
  uint64_t roubles = all_kopecks / 100;
  if (roubles >= kRoubleLimit) return {};
  // Without unit names the kopecks are dropped, never rounded into the roubles.
  const int kopecks = IncludeUnitNames ? static_cast<int>(all_kopecks % 100) : 0;
  const int kopeck_tens = kopecks / 10, kopeck_units = kopecks % 10;

  String text;
  if (roubles == 0) {
    text = IncludeUnitNames ? u"ноль рублей " : u"ноль";
  } else {
    // digit[j]: rouble digit j from the units upward, 1-based.
    std::array<int, 13> digit{};
    for (int j = 1; j <= 12; ++j, roubles /= 10) digit[j] = static_cast<int>(roubles % 10);

    std::array<String, 13> word;
    for (int j = 1; j <= 12; ++j) word[j] = kPlaceWords[(j - 1) % 3][digit[j]];
    for (int j = 2; j <= 11; j += 3) {
      if (digit[j] == 1 && digit[j - 1] > 0) {  // 11 to 19 are one word; 10 stays "десять"
        word[j] = kTeens[digit[j - 1]];
        word[j - 1].clear();
      }
    }
    for (int j = 1; j <= 12; ++j) {
      if (!word[j].empty()) word[j] += u' ';
    }
    if (digit[5] != 1) {  // thousands are feminine: "одна тысяча", "две тысячи"
      if (digit[4] == 1) word[4] = u"одна ";
      if (digit[4] == 2) word[4] = u"две ";
    }

    for (int g = 1; g <= 4; ++g) {
      const int top = 3 * g;
      int form = FormOf(digit[top - 2], digit[top - 1]);
      // The rouble word follows even when the last three digits are zero ("пять тысяч
      // рублей"); empty thousands, millions and billions get no word.
      if (g == 1 && !IncludeUnitNames) form = 0;
      if (g >= 2 && digit[top] + digit[top - 1] + digit[top - 2] == 0) form = 0;
      String group = word[top] + word[top - 1] + word[top - 2];
      group += kUnitNames[g][form];
      if (form != 0) group += u' ';
      text.insert(0, group);
    }
  }

  if (IncludeUnitNames) {
    text += static_cast<char16_t>(u'0' + kopeck_tens);
    text += static_cast<char16_t>(u'0' + kopeck_units);
    text += u' ';
    text += kUnitNames[0][FormOf(kopeck_units, kopeck_tens)];
  }
  return text;
}

}  // namespace tsruntime
