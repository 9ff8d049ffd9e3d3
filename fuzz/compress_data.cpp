// CompressData on byte arrays of any bounds, any number of dimensions, and arrays of other
// types: a block it makes reads back to the bytes from index 0 to the upper bound, with
// the sizes describing it; a failure leaves the array as it was with OriginalSize at
// UBound + 1 (0 where there is none) and CompressedSize at 0; another element type is a
// type mismatch that changes nothing.
#include <cstdlib>

#include "fuzz_input.h"
#include "tsruntime/clsZKMem.h"

using namespace tsruntime;

namespace {

SafeArray AnyArray(fuzz::Input& in) {
  const int32_t lower = in.Bound();
  try {
    switch (in.Below(4)) {
      case 0: {
        std::vector<Bounds> dims(in.Below(3));  // 0: never dimensioned
        for (Bounds& b : dims) {
          const int64_t upper = std::min<int64_t>(int64_t{lower} + in.Below(4) - 1, INT32_MAX);
          b = {lower, static_cast<int32_t>(std::max<int64_t>(upper, INT32_MIN))};
        }
        return dims.empty() ? SafeArray(VarType::kByte) : SafeArray(VarType::kByte, dims);
      }
      case 1: {
        const Variant v = fuzz::AnyVariant(in);
        return v.isArray() ? v.asArray() : SafeArray(VarType::kVariant);
      }
      default: return SafeArray::FromBytes(in.Bytes(4096), lower);
    }
  } catch (const Error&) {
    return SafeArray(VarType::kByte);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  auto mem = New<clsZKMem>();
  SafeArray sized = SafeArray::FromBytes(std::vector<uint8_t>{1, 2, 3});
  if (!mem->CompressData(sized)) std::abort();
  const int32_t compressed = mem->CompressedSize();

  const SafeArray input = AnyArray(in);
  // A NaN element makes an array unequal to itself; such an input is not compared.
  const auto unchanged = [&input](const SafeArray& a) { return !(input == input) || a == input; };
  SafeArray block = input;
  bool done = false;
  try {
    done = mem->CompressData(block);
  } catch (const Error& e) {
    if (e.number() != 13 || input.elementType() == VarType::kByte || !unchanged(block) ||
        mem->OriginalSize() != 3 || mem->CompressedSize() != compressed) {
      std::abort();
    }
    return 0;
  }
  const bool bounded = input.isDimensioned() && input.ubound() < INT32_MAX;
  if (mem->OriginalSize() != (bounded ? input.ubound() + 1 : 0)) std::abort();
  if (!done) {
    if (!unchanged(block) || mem->CompressedSize() != 0) std::abort();
    return 0;
  }
  if (block.lbound() != 0 || mem->CompressedSize() != block.size()) std::abort();
  const std::vector<uint8_t>& all = input.bytes();
  const std::vector<uint8_t> from_zero(all.end() - (input.ubound() + 1), all.end());
  if (!mem->DecompressData(block) || block.bytes() != from_zero) std::abort();
  return 0;
}
