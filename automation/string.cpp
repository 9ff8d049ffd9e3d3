#include "tsruntime/automation/string.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace tsruntime {

std::string ToUtf8(StringView text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

String FromUtf8(std::string_view text) {
  String out;
  out.reserve(text.size());
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  for (size_t i = 0; i < n;) {
    unsigned char b = s[i];
    char32_t c;
    int extra;
    if (b < 0x80) {
      c = b, extra = 0;
    } else if ((b & 0xE0) == 0xC0) {
      c = b & 0x1F, extra = 1;
    } else if ((b & 0xF0) == 0xE0) {
      c = b & 0x0F, extra = 2;
    } else if ((b & 0xF8) == 0xF0) {
      c = b & 0x07, extra = 3;
    } else {
      out += u'\uFFFD';
      ++i;
      continue;
    }
    bool ok = true;
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= n || (s[i + k] & 0xC0) != 0x80) {
        ok = false;
        break;
      }
      c = (c << 6) | (s[i + k] & 0x3F);
    }
    static constexpr char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
    if (!ok || c < kMin[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out += u'\uFFFD';
      ++i;
      continue;
    }
    i += extra + 1;
    if (c >= 0x10000) {
      c -= 0x10000;
      out += static_cast<char16_t>(0xD800 + (c >> 10));
      out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      out += static_cast<char16_t>(c);
    }
  }
  return out;
}

String FromAscii(std::string_view text) { return String(text.begin(), text.end()); }

void AppendDecimal(String& out, int64_t value) {
  char digits[24];
  const char* end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
  const size_t length = static_cast<size_t>(end - digits);
  char16_t wide[24];
  std::copy_n(digits, length, wide);
  out.append(wide, length);
}

bool EqualsAsciiNoCase(StringView a, StringView b) {
  if (a.size() != b.size()) return false;
  // Branch-free folding: member names are compared on every late-bound call.
  auto lower = [](char16_t c) {
    return static_cast<char16_t>(c + (static_cast<char16_t>(c - u'A') < 26 ? 32 : 0));
  };
  for (size_t i = 0; i < a.size(); ++i) {
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

}  // namespace tsruntime
