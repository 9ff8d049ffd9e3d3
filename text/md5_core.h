// The digest state behind clsZKmd5. Internal to the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tsruntime/automation/error.h"
#include "tsruntime/automation/string.h"

namespace tsruntime::md5_detail {

// The MD5 compression function over `count` consecutive 64-byte blocks.
void Transform(uint32_t* state, const uint8_t* blocks, size_t count);

struct Md5State {
  uint32_t registers[4] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u};
  int32_t count = 0;       // message bytes taken in
  uint8_t buffer[64] = {};  // the block being filled; position = count mod 64

  void Init();
  // Takes in the first `input_len` bytes of a byte array whose elements `lower` ..
  // `upper` start at `input`. Fails before taking anything in: overflow (6) for a
  // count leaving the 32-bit range or a position beyond 32,767, subscript out of
  // range (9) for a position outside the array or the block buffer.
  void Update(int32_t input_len, const uint8_t* input, int64_t lower, int64_t upper);
  void Final();
  // Init, then the file's records as the class reads them, then Final.
  void HashFile(const std::string& path);
  // Registers A, B, C, D, each least significant byte first, as upper-case hex.
  String Hex() const;
};

}  // namespace tsruntime::md5_detail
