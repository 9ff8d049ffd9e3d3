// DecompressData on any bytes returns True with the block's bytes and both sizes at 0,
// or False with the array and the sizes exactly as they were; a block it reads
// compresses back to one that reads the same.
#include <cstdlib>
#include <span>

#include "tsruntime/clsZKMem.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto mem = New<clsZKMem>();
  SafeArray sized = SafeArray::FromBytes(std::vector<uint8_t>{1, 2, 3});
  if (!mem->CompressData(sized)) std::abort();
  const int32_t compressed = mem->CompressedSize();

  const SafeArray input = SafeArray::FromBytes(std::span(data, size));
  SafeArray block = input;
  if (!mem->DecompressData(block)) {
    if (!(block == input) || mem->OriginalSize() != 3 || mem->CompressedSize() != compressed) {
      std::abort();
    }
    return 0;
  }
  if (mem->OriginalSize() != 0 || mem->CompressedSize() != 0 || block.lbound() != 0) std::abort();
  const SafeArray output = block;
  if (!mem->CompressData(block)) std::abort();
  // Outputs of 8 MiB and more cannot be read back by design; fuzz inputs stay far below.
  if (!mem->DecompressData(block) || !(block == output)) std::abort();
  return 0;
}
