#include "tsruntime/automation/codepage.h"

#include <unicode/ucnv.h>

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "tsruntime/automation/error.h"

namespace tsruntime {
namespace {

std::atomic<int> ansi_code_page{1251};
std::atomic<int> oem_code_page{866};

struct Table {
  std::array<char16_t, 256> decode{};
  std::array<int16_t, 65536> encode{};  // -1: the code page lacks the character
};

std::unique_ptr<Table> BuildTable(int code_page) {
  // ICU reads "cp-866" as "cp866"; only positive numbers name code pages.
  if (code_page <= 0 || code_page > 65535) return nullptr;
  UConverter* conv = nullptr;
  for (const std::string& name :
       {"windows-" + std::to_string(code_page), "cp" + std::to_string(code_page),
        "ibm-" + std::to_string(code_page)}) {
    UErrorCode status = U_ZERO_ERROR;
    conv = ucnv_open(name.c_str(), &status);
    if (U_SUCCESS(status) && conv) break;
    conv = nullptr;
  }
  if (!conv) return nullptr;
  if (ucnv_getMaxCharSize(conv) != 1) {
    ucnv_close(conv);
    return nullptr;
  }
  // Unassigned bytes must fail rather than come back as a substitute character.
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setToUCallBack(conv, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  auto t = std::make_unique<Table>();
  t->encode.fill(-1);
  for (int b = 0; b < 256; ++b) {
    // Control bytes are themselves, as on the platform the byte strings come from; ICU's
    // IBM tables would swap 0x1A, 0x1C and 0x7F.
    char16_t c = static_cast<char16_t>(b);
    if (b >= 0x20 && b != 0x7F) {
      status = U_ZERO_ERROR;
      const char byte = static_cast<char>(b);
      UChar out[4];
      ucnv_reset(conv);
      const int32_t n = ucnv_toUChars(conv, out, 4, &byte, 1, &status);
      // An unassigned byte still has to round-trip: it is carried as the code point b.
      if (U_SUCCESS(status) && n == 1 && out[0] != 0xFFFD) c = out[0];
    }
    t->decode[b] = c;
  }
  ucnv_close(conv);
  for (int b = 255; b >= 0; --b) t->encode[t->decode[b]] = static_cast<int16_t>(b);
  return t;
}

// Tables are built once per thread, so that reading them needs no lock.
const Table* TableFor(int code_page) {
  thread_local std::map<int, std::unique_ptr<Table>> tables;
  auto it = tables.find(code_page);
  if (it == tables.end()) it = tables.emplace(code_page, BuildTable(code_page)).first;
  return it->second.get();
}

const Table& CheckedTable(int code_page) {
  const Table* t = TableFor(code_page);
  if (!t) RaiseRuntime(RuntimeError::kInvalidCall);
  return *t;
}

}  // namespace

int AnsiCodePage() { return ansi_code_page.load(std::memory_order_relaxed); }
int OemCodePage() { return oem_code_page.load(std::memory_order_relaxed); }

void SetAnsiCodePage(int code_page) {
  CheckedTable(code_page);
  ansi_code_page.store(code_page, std::memory_order_relaxed);
}

void SetOemCodePage(int code_page) {
  CheckedTable(code_page);
  oem_code_page.store(code_page, std::memory_order_relaxed);
}

String DecodeBytes(int code_page, std::span<const uint8_t> bytes) {
  const Table& t = CheckedTable(code_page);
  String out(bytes.size(), u'\0');
  for (size_t i = 0; i < bytes.size(); ++i) out[i] = t.decode[bytes[i]];
  return out;
}

std::vector<uint8_t> EncodeBytes(int code_page, StringView text) {
  const Table& t = CheckedTable(code_page);
  std::vector<uint8_t> out(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const int16_t b = t.encode[text[i]];
    out[i] = b < 0 ? static_cast<uint8_t>('?') : static_cast<uint8_t>(b);
  }
  return out;
}

String AnsiRoundTrip(StringView text) { return AnsiToString(StringToAnsi(text)); }

}  // namespace tsruntime
