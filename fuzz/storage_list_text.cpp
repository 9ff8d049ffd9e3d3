// clsZKStorageNodes.ToObject on any text returns True or False; the children it kept
// write a text that reads back True.
#include "fuzz_input.h"
#include "storage_levels.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::ReadWriteRead<clsZKStorageNodes>(fuzz::Utf16(data, size));
  return 0;
}
