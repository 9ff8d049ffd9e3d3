// clsZKMem: 16/32-bit words, logical bit shifts of Longs, and compressed byte blocks.
//
//   auto mem = tsruntime::New<tsruntime::clsZKMem>();
//   mem->HiWord(0x12345678);          // 0x1234
//   mem->RShift(1, 31);               // 0x80000000: RShift moves bits UP (see below)
//   SafeArray data = SafeArray::FromBytes(bytes);
//   mem->CompressData(data);          // True; data now holds the compressed block
//   mem->DecompressData(data);        // True; data holds the original bytes again
//
// A compressed block is zlib's stream format (what zlib's `compress` writes) followed by
// the original length as 4 bytes, unsigned, little-endian:
//
//   offset 0, n bytes   the zlib stream
//   offset n, 4 bytes   original length
//
// Compression runs in the separate module libtszlib.so, loaded by name with dlopen the
// first time a block is compressed or decompressed: from the folder libtsruntime.so was
// loaded from, else through the loader's search path. When it cannot be loaded both
// operations return False.
//
// Nothing here raises: words and shifts cannot fail, and the block operations report
// failure by returning False.
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/safearray.h"

namespace tsruntime {

class clsZKFileSystem;

class clsZKMem : public Object {
 public:
  // Holds a clsZKFileSystem for its lifetime, as the class always has; no member uses it.
  clsZKMem();
  ~clsZKMem() override;
  TSRUNTIME_CLASS_INFO;

  // The high 16 bits, sign-extended: HiWord(-1) is -1, HiWord(0x12345678) is 0x1234.
  int16_t HiWord(int32_t lngDW) const;
  // The low 16 bits, sign-extended from bit 15: LoWord(0x0000FFFF) is -1.
  int16_t LoWord(int32_t lngDW) const;
  // `HiWord` in the high half, `LoWord` as an unsigned 16-bit value in the low half:
  // DWord(-1, 0) is 65535, DWord(0, -1) is 0xFFFF0000. Note the order: low word first.
  int32_t DWord(int16_t LoWord, int16_t HiWord) const;

  // The names are swapped against the direction, and hosts rely on that:
  //
  // `RShift` shifts LEFT (toward bit 31), logically: bits leaving the top are lost and
  // the bit landing in bit 31 becomes the sign. RShift(1, 31) is 0x80000000.
  int32_t RShift(int32_t Expression, int32_t lngBits) const;
  // `LShift` shifts RIGHT (toward bit 0), zero-filling from the top, also for negative
  // values: LShift(-1, 1) is 0x7FFFFFFF, LShift(0x80000000, 31) is 1.
  //
  // For both: a count of 0 or less returns `Expression` unchanged, 32 or more gives 0.
  int32_t LShift(int32_t Expression, int32_t lngBits) const;

  // Replaces the byte array `DataArray` (lower bound 0, one dimension) by its compressed
  // block and returns True.
  //
  // `OriginalSize` is set to UBound + 1 at once, whatever follows (0 for an array never
  // dimensioned or one whose upper bound is 2147483647), and `CompressedSize` to 0. The
  // stream is written into a buffer of Round(n * 0.01 + n + 12) + 1 bytes (halves to
  // even). On success `CompressedSize` is the block's length, trailer included; on
  // failure the array is unchanged. Fails for a missing module, an array of more than
  // one dimension, one never dimensioned, one that does not hold index 0 (an empty one,
  // 0 to -1, is fine; one from -2 gives indexes 0 and up), and a capacity beyond a Long.
  // An array of another element type (a Variant array, say) is a type mismatch (13),
  // raised before anything changes.
  bool CompressData(SafeArray& DataArray);

  // Replaces a compressed block in `DataArray` by the bytes it holds and returns True,
  // with both size properties reset to 0; the result has bounds 0 to length - 1.
  //
  // The output capacity comes from the 4 bytes that start one byte BEFORE the trailer
  // (the last stream byte, then the trailer's three low bytes), so it is about 256 times
  // the true length: Round(v * 0.02 + v + 12) + 1 bytes for that value v. Blocks written
  // by older hosts are sized this way and hosts rely on the result. The capacity is
  // reserved, never touched beyond what the stream fills. A block whose value is
  // negative (bit 23 of the original length set: 8 MiB to 16 MiB - 1, 100,000,000
  // bytes...) or whose capacity passes a Long (about 7.84 MiB to 8 MiB) fails, as does
  // one whose capacity is too small (16 MiB and just past it) or cannot be reserved.
  //
  // On failure (also: fewer than 5 bytes, not a one-dimensional array from 0, a corrupt
  // or truncated stream, a missing module) returns False and leaves the array and both
  // size properties exactly as they were. An array of another element type is a type
  // mismatch (13), as for `CompressData`.
  bool DecompressData(SafeArray& DataArray);

  // Length of the last block's original; 0 at creation and after `DecompressData`.
  int32_t OriginalSize() const { return original_size_; }
  // Length of the last compressed block, trailer included; 0 at creation, after a
  // failed `CompressData` and after `DecompressData`.
  int32_t CompressedSize() const { return compressed_size_; }

 private:
  int32_t original_size_ = 0;
  int32_t compressed_size_ = 0;
  Ref<clsZKFileSystem> file_system_;
};

}  // namespace tsruntime
