// clsZKStorageItems.ToObject on any text returns True or False; the records it read
// write a text of as many records, and each one reads as a value or raises.
#include "fuzz_input.h"
#include "storage_levels.h"

using namespace tsruntime;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto items = fuzz::ReadWriteRead<clsZKStorageItems>(fuzz::Utf16(data, size));
  for (int32_t i = 0; i < items->Count(); ++i) {
    try {
      items->Item(i);
    } catch (const Error&) {  // a text that is not its type, or a type not kept
    }
  }
  return 0;
}
