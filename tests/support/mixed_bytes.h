// Test data that compresses the way real host data does: runs of words, repeats and
// noise, the same for a given size and seed.
#pragma once

#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

namespace tsruntime::testing {

inline std::vector<uint8_t> MixedBytes(size_t size, uint32_t seed = 1) {
  static constexpr std::string_view kWords[] = {"Программа ", "error ", "0042;", "\r\n",
                                                "clsZKMem ", "данные ", "    "};
  std::mt19937 random(seed);
  std::vector<uint8_t> out;
  out.reserve(size);
  while (out.size() < size) {
    const uint32_t kind = random() % 3;
    const size_t run = 16 + random() % 240;
    for (size_t i = 0; i < run && out.size() < size; ++i) {
      if (kind == 0) {
        out.push_back(static_cast<uint8_t>(random()));
      } else if (kind == 1) {
        for (char c : kWords[random() % std::size(kWords)]) out.push_back(static_cast<uint8_t>(c));
      } else {
        out.push_back(static_cast<uint8_t>(out.size() % 7 + 'a'));
      }
    }
  }
  out.resize(size);
  return out;
}

}  // namespace tsruntime::testing
