// clsZKStorageItems: values kept as text with their type, read back, and refused.
#include <gtest/gtest.h>

#include <cmath>

#include "tsruntime/automation/codepage.h"
#include "tsruntime/automation/locale.h"
#include "containers/support.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime {
namespace {

using container_tests::I;

Date At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Date::FromParts({y, mo, d, h, mi, s});
}

SafeArray Bytes(std::vector<uint8_t> b, int32_t lower = 0) {
  return SafeArray::FromBytes(b, lower);
}

// Restores the thread's interface language when a test ends.
struct LanguageGuard {
  int32_t saved = InterfaceLanguage();
  ~LanguageGuard() { SetInterfaceLanguage(saved); }
};

TEST(StorageItems, EveryAcceptedTypeComesBackAsItWent) {
  const std::vector<std::pair<const char*, Variant>> cases = {
      {"Null", Variant::Null()},
      {"an Integer", Variant(int16_t{-32768})},
      {"the largest Integer", Variant(int16_t{32767})},
      {"a Long", Variant(int32_t{-2147483647 - 1})},
      {"the largest Long", I(2147483647)},
      {"a Single with a fraction", Variant(1.5f)},
      {"a small Single", Variant(-0.000125f)},
      {"a Double with 15 digits", Variant(123456.789012345)},
      {"a large Double", Variant(-1.5e300)},
      {"a tiny Double", Variant(2.5e-300)},
      {"a Currency with four decimals", Variant(Currency{-123456789})},
      {"the largest Currency", Variant(Currency{INT64_MAX})},
      {"a Decimal", Variant(*Decimal::ParsePlain("-79228162514264.337593543950335"))},
      {"a Byte", Variant(uint8_t{255})},
      {"a zero Byte", Variant(uint8_t{0})},
      {"a date and time", Variant(At(2024, 3, 5, 14, 7, 9))},
      {"a date at midnight", Variant(At(1999, 12, 31))},
      {"a time alone", Variant(At(1899, 12, 30, 23, 59, 59))},
      {"the first date", Variant(At(100, 1, 1))},
      {"a date before 1899", Variant(At(1812, 9, 7, 6, 0, 1))},
      {"the last date", Variant(At(9999, 12, 31, 23, 59, 59))},
      {"a string", Variant(u"Привет, world")},
      {"an empty string", Variant(u"")},
      {"a string with line breaks and NUL", Variant(String(u"a\r\nb\0c", 6))},
      {"True", Variant(true)},
      {"False", Variant(false)},
      {"a byte array", Variant(Bytes({0, 1, 0x7F, 0x80, 0xC0, 0xFF}))},
      {"an empty byte array", Variant(Bytes({}))},
  };
  for (const char* locale : {"ru_RU", "en_US"}) {
    ScopedLocale scoped(locale);
    auto items = New<clsZKStorageItems>();
    for (const auto& [sentence, value] : cases) {
      EXPECT_TRUE(items->Add(value)) << sentence << " in " << locale;
    }
    ASSERT_EQ(items->Count(), static_cast<int32_t>(cases.size()));
    for (size_t i = 0; i < cases.size(); ++i) {
      try {
        EXPECT_EQ(items->Item(static_cast<int32_t>(i)), cases[i].second)
            << cases[i].first << " in " << locale;
      } catch (const Error& e) {
        ADD_FAILURE() << cases[i].first << " in " << locale << ": " << e.what();
      }
    }
  }
}

TEST(StorageItems, ByteArraysKeepAllByteValues) {
  std::vector<uint8_t> all(256);
  for (int i = 0; i < 256; ++i) all[i] = static_cast<uint8_t>(i);
  std::vector<uint8_t> reversed(all.rbegin(), all.rend());
  auto items = New<clsZKStorageItems>();
  ASSERT_TRUE(items->Add(Variant(Bytes(all))));
  ASSERT_TRUE(items->Add(Variant(Bytes(reversed, 5))));
  EXPECT_EQ(items->Item(0).asArray().bytes(), all);
  const Variant second = items->Item(1);
  EXPECT_EQ(second.asArray().bytes(), reversed);
  EXPECT_EQ(second.asArray().lbound(), 0) << "read back from zero, whatever it had";
  EXPECT_EQ(second.type(), ArrayOf(VarType::kByte));
}

TEST(StorageItems, EmptyByteArrayComesBackDimensionedButEmpty) {
  auto items = New<clsZKStorageItems>();
  ASSERT_TRUE(items->Add(Variant(Bytes({}))));
  const SafeArray back = items->Item(0).asArray();
  ASSERT_TRUE(back.isDimensioned());
  EXPECT_EQ(back.lbound(), 0);
  EXPECT_EQ(back.ubound(), -1);
}

TEST(StorageItems, TextFormsRoundValuesAsTheRuntimeWritesThem) {
  struct Case {
    const char* sentence;
    Variant added;
    Variant read;
  };
  const Case cases[] = {
      {"a date keeps whole seconds only",
       Variant(Date{At(2024, 3, 5, 14, 7, 9).value + 0.4 / 86400}),
       Variant(At(2024, 3, 5, 14, 7, 9))},
      {"a Double keeps 15 significant digits", Variant(0.1 + 0.2), Variant(0.3)},
      {"a Single keeps 7 significant digits", Variant(1.0f / 3.0f), Variant(0.3333333f)},
  };
  for (const Case& c : cases) {
    auto items = New<clsZKStorageItems>();
    ASSERT_TRUE(items->Add(c.added)) << c.sentence;
    EXPECT_EQ(items->Item(0), c.read) << c.sentence;
  }
}

TEST(StorageItems, NumbersWrittenUnderOneLocaleDoNotReadUnderAnother) {
  struct Case {
    const char* sentence;
    const char* written;
    const char* read;
    Variant value;
  };
  const Case cases[] = {
      {"a Russian decimal comma in English", "ru_RU", "en_US", Variant(1.5)},
      {"an English decimal point in Russian", "en_US", "ru_RU", Variant(2.25)},
      {"a Currency written in Russian", "ru_RU", "en_US", Variant(Currency{15000})},
      {"a Single written in English", "en_US", "ru_RU", Variant(0.5f)},
  };
  for (const Case& c : cases) {
    auto items = New<clsZKStorageItems>();
    {
      ScopedLocale w(c.written);
      ASSERT_TRUE(items->Add(c.value)) << c.sentence;
    }
    ScopedLocale r(c.read);
    try {
      items->Item(0);
      ADD_FAILURE() << c.sentence << ": read without an error";
    } catch (const Error& e) {
      EXPECT_EQ(e.number(), 13) << c.sentence;
    }
  }
  // Whole numbers have no separator and read anywhere.
  auto items = New<clsZKStorageItems>();
  {
    ScopedLocale w("ru_RU");
    items->Add(I(-42));
    items->Add(Variant(3.0));
  }
  ScopedLocale r("en_US");
  EXPECT_EQ(items->Item(0), I(-42));
  EXPECT_EQ(items->Item(1), Variant(3.0));
}

TEST(StorageItems, RefusedTypesReturnFalseAndChangeNothing) {
  SafeArray undimensioned_bytes(VarType::kByte);
  const std::vector<std::pair<const char*, Variant>> cases = {
      {"Empty", Variant()},
      {"Nothing", Variant::Nothing()},
      {"an object", Variant(New<clsZKStorage>())},
      {"the missing-argument marker", Variant::Missing()},
      {"an Error value", Variant(ErrorValue{5})},
      {"a byte array never dimensioned", Variant(undimensioned_bytes)},
      {"a date past the year 9999", Variant(Date{3e6})},
      {"a date that is not a number", Variant(Date{std::nan("")})},
  };
  auto items = New<clsZKStorageItems>();
  items->Add(Variant(u"kept"));
  for (const auto& [sentence, value] : cases) {
    EXPECT_FALSE(items->Add(value)) << sentence;
    EXPECT_EQ(items->Count(), 1) << sentence;
  }
  EXPECT_EQ(items->Item(0), Variant(u"kept"));
}

// The five fields of an error raised by `Item`.
struct Raised {
  int32_t number = 0;
  String source, description, help_file;
  int32_t help_context = -1;
};

Raised RaisedBy(const clsZKStorageItems& items, int32_t index) {
  try {
    items.Item(index);
  } catch (const Error& e) {
    return {e.number(), e.source(), e.description(), e.helpFile(), e.helpContext()};
  }
  return {};
}

TEST(StorageItems, ItemRaisesItsErrorsInOrderInTheInterfaceLanguage) {
  LanguageGuard guard;
  auto empty = New<clsZKStorageItems>();
  auto filled = New<clsZKStorageItems>();
  filled->Add(I(1));
  filled->Add(Variant(SafeArray::FromVariants({I(1)})));  // kept, not readable
  filled->Add(Variant(SafeArray(VarType::kLong, {Bounds{0, 2}})));
  filled->Add(Variant(SafeArray::FromStrings({u"x"})));

  struct Case {
    const char* sentence;
    const clsZKStorageItems* items;
    int32_t index;
    int32_t language;
    int32_t number;
    const char16_t* description;
  };
  const Case cases[] = {
      {"a negative index says the storage is empty", filled.get(), -1, 0,
       xcZKERR_STORAGE_NOITEMS, u"Нет данных в хранилище"},
      {"a negative index on an empty list, too", empty.get(), -5, 0, xcZKERR_STORAGE_NOITEMS,
       u"Нет данных в хранилище"},
      {"index 0 of an empty list is out of bounds", empty.get(), 0, 0, xcZKERR_STORAGE_INDEX,
       u"Недопустимый индекс элемента"},
      {"an index past the end is out of bounds", filled.get(), 4, 0, xcZKERR_STORAGE_INDEX,
       u"Недопустимый индекс элемента"},
      {"a Variant array is not readable", filled.get(), 1, 0, xcZKERR_STORAGE_DATATYPE,
       u"Тип данных #8204 не поддерживается"},
      {"a Long array is not readable", filled.get(), 2, 0, xcZKERR_STORAGE_DATATYPE,
       u"Тип данных #8195 не поддерживается"},
      {"English: empty", filled.get(), -1, 1, xcZKERR_STORAGE_NOITEMS, u"Storage is Empty"},
      {"English: out of bounds", empty.get(), 0, 1, xcZKERR_STORAGE_INDEX,
       u"Index out of bounds"},
      {"English: not readable", filled.get(), 3, 1, xcZKERR_STORAGE_DATATYPE,
       u"Data type #8200 is not supported"},
      {"language 7 is English: empty", filled.get(), -1, 7, xcZKERR_STORAGE_NOITEMS,
       u"Storage is Empty"},
      {"language 7 is English: out of bounds", filled.get(), 9, 7, xcZKERR_STORAGE_INDEX,
       u"Index out of bounds"},
      {"language 7 is English: not readable", filled.get(), 2, 7, xcZKERR_STORAGE_DATATYPE,
       u"Data type #8195 is not supported"},
  };
  for (const Case& c : cases) {
    SetInterfaceLanguage(c.language);
    const Raised r = RaisedBy(*c.items, c.index);
    EXPECT_EQ(r.number, c.number) << c.sentence;
    EXPECT_EQ(r.source, u"ZKRuntimeLib.clsZKStorageItems.Item") << c.sentence;
    EXPECT_EQ(r.description, c.description) << c.sentence;
    EXPECT_EQ(r.help_file, u"") << c.sentence;
    EXPECT_EQ(r.help_context, 0) << c.sentence;
  }
}

TEST(StorageItems, ClearEmptiesTheList) {
  auto items = New<clsZKStorageItems>();
  items->Add(I(1));
  items->Add(Variant(u"two"));
  items->Clear();
  EXPECT_EQ(items->Count(), 0);
  EXPECT_EQ(RaisedBy(*items, 0).number, xcZKERR_STORAGE_INDEX);
  items->Add(Variant(true));
  EXPECT_EQ(items->Item(0), Variant(true));
}

TEST(StorageItems, LateBoundItemConvertsItsIndexAndIsTheDefault) {
  Ref<Object> o = CreateObject(u"TSRuntimeLib.clsZKStorageItems");
  std::vector<Argument> add{{{}, Variant(u"first")}};
  EXPECT_EQ(Invoke(*o, u"Add", InvokeKind::kCall, add), Variant(true));
  std::vector<Argument> refused{{{}, Variant()}};
  EXPECT_EQ(Invoke(*o, u"Add", InvokeKind::kCall, refused), Variant(false));
  std::vector<Argument> by_text{{{}, Variant(u"0")}};
  EXPECT_EQ(InvokeDefault(*o, by_text), Variant(u"first"));
  std::vector<Argument> by_double{{{}, Variant(0.4)}};
  EXPECT_EQ(Invoke(*o, u"Item", InvokeKind::kCall, by_double), Variant(u"first"));
  std::vector<Argument> bad{{{}, Variant(u"x")}};
  try {
    Invoke(*o, u"Item", InvokeKind::kCall, bad);
    ADD_FAILURE() << "an index that is no number must raise";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 13);
  }
  std::vector<Argument> none;
  EXPECT_EQ(Invoke(*o, u"Count", InvokeKind::kCall, none), I(1));
}

}  // namespace
}  // namespace tsruntime
