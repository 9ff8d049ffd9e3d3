// Expected digests for the MD5 tests, from sources other than the library: the system's
// md5sum, and a plain MD5 compression written from RFC 1321 that lets a test lay out
// the final block itself.
#pragma once

#include <unistd.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace tsruntime::testing {

using Bytes = std::vector<uint8_t>;

// A folder of its own under the system's temporary folder, removed afterwards.
class TempFolder {
 public:
  TempFolder() {
    static int serial = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("tsruntime-md5-" + std::to_string(::getpid()) + "-" + std::to_string(++serial));
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() { std::filesystem::remove_all(path_); }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::string Write(const std::string& name, const Bytes& bytes) const {
    const std::string file = (path_ / name).string();
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return file;
  }
  std::string Path(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline std::string Upper(std::string hex) {
  for (char& c : hex) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return hex;
}

// md5sum's digest of a file, in upper case.
inline std::string Md5sumOfFile(const std::string& file) {
  FILE* p = ::popen(("md5sum '" + file + "'").c_str(), "r");
  if (!p) throw std::runtime_error("cannot run md5sum");
  char hex[33] = {};
  const size_t got = std::fread(hex, 1, 32, p);
  ::pclose(p);
  if (got != 32) throw std::runtime_error("md5sum gave no digest for " + file);
  return Upper(hex);
}

// md5sum's digests of several files, in one run.
inline std::vector<std::string> Md5sumOfFiles(const std::vector<std::string>& files) {
  std::string command = "md5sum";
  for (const std::string& f : files) command += " '" + f + "'";
  FILE* p = ::popen(command.c_str(), "r");
  if (!p) throw std::runtime_error("cannot run md5sum");
  std::vector<std::string> digests;
  char line[4096];
  while (std::fgets(line, sizeof line, p)) digests.push_back(Upper(std::string(line, 32)));
  ::pclose(p);
  if (digests.size() != files.size()) throw std::runtime_error("md5sum missed a file");
  return digests;
}

inline std::string Md5sum(const TempFolder& folder, const Bytes& bytes) {
  return Md5sumOfFile(folder.Write("md5sum-input", bytes));
}

// The digest after compressing `blocks` (a multiple of 64 bytes) from the initial
// registers.
inline std::string DigestOfBlocks(const Bytes& blocks) {
  static const std::array<uint32_t, 64> kSines = [] {
    std::array<uint32_t, 64> k{};
    for (int i = 0; i < 64; ++i) {
      k[i] = static_cast<uint32_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 4294967296.0));
    }
    return k;
  }();
  static const int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23},
                                    {6, 10, 15, 21}};
  uint32_t h[4] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u};
  for (size_t at = 0; at + 64 <= blocks.size(); at += 64) {
    uint32_t m[16];
    for (int i = 0; i < 16; ++i) {
      m[i] = 0;
      for (int b = 3; b >= 0; --b) m[i] = m[i] << 8 | blocks[at + 4 * i + b];
    }
    uint32_t a = h[0], b = h[1], c = h[2], d = h[3];
    for (int i = 0; i < 64; ++i) {
      uint32_t f;
      int g;
      switch (i / 16) {
        case 0: f = (b & c) | (~b & d); g = i; break;
        case 1: f = (d & b) | (~d & c); g = (5 * i + 1) % 16; break;
        case 2: f = b ^ c ^ d; g = (3 * i + 5) % 16; break;
        default: f = c ^ (b | ~d); g = (7 * i) % 16; break;
      }
      const uint32_t next = b + std::rotl(a + f + kSines[i] + m[g], kShifts[i / 16][i % 4]);
      a = d;
      d = c;
      c = b;
      b = next;
    }
    h[0] += a;
    h[1] += b;
    h[2] += c;
    h[3] += d;
  }
  std::string hex;
  char pair[3];
  for (uint32_t word : h) {
    for (int byte = 0; byte < 4; ++byte) {
      std::snprintf(pair, sizeof pair, "%02X", (word >> (8 * byte)) & 0xFF);
      hex += pair;
    }
  }
  return hex;
}

// The length in bits, least significant byte first, as the final block's last 8 bytes.
inline void AppendBitLength(Bytes& block, uint64_t length) {
  for (int i = 0; i < 8; ++i) block.push_back(static_cast<uint8_t>((length * 8) >> (8 * i)));
}

// `message` laid out in blocks as RFC 1321 pads it.
inline Bytes RfcBlocks(const Bytes& message) {
  Bytes out = message;
  out.push_back(0x80);
  while (out.size() % 64 != 56) out.push_back(0);
  AppendBitLength(out, message.size());
  return out;
}

// The whole blocks of `message`, then a final block of `last56` and the length.
inline Bytes BlocksEndingWith(const Bytes& message, const Bytes& last56) {
  Bytes out(message.begin(), message.begin() + static_cast<long>(message.size() / 64 * 64));
  out.insert(out.end(), last56.begin(), last56.end());
  AppendBitLength(out, message.size());
  return out;
}

// Deterministic bytes covering all 256 values.
inline Bytes Pattern(size_t n, uint32_t seed = 1) {
  Bytes out(n);
  uint32_t x = seed * 2654435761u + 1;
  for (uint8_t& b : out) {
    x = x * 1103515245u + 12345u;
    b = static_cast<uint8_t>(x >> 16);
  }
  return out;
}

}  // namespace tsruntime::testing
