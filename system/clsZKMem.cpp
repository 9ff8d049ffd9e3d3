#include "tsruntime/clsZKMem.h"

#include <array>
#include <climits>
#include <cstring>
#include <optional>
#include <span>

#include "reserved_buffer.h"
#include "tszlib_module.h"
#include "tsruntime/automation/convert.h"
#include "tsruntime/clsZKFileSystem.h"

namespace tsruntime {
namespace {

using mem_detail::ReservedBuffer;
using mem_detail::Tszlib;
using mem_detail::TszlibModule;

constexpr int kTrailer = 4;

// Powers of two as Longs: entry 31 is the sign bit alone.
constexpr std::array<int32_t, 32> kPowers = [] {
  std::array<int32_t, 32> p{};
  for (int i = 0; i < 31; ++i) p[i] = int32_t{1} << i;
  p[31] = INT32_MIN;
  return p;
}();

// Round(size * factor + size + 12) as a Long, halves to even; none when it overflows.
std::optional<int32_t> Capacity(int32_t size, double factor) {
  const double c = RoundHalfEven(size * factor + size + 12);
  if (!(c >= INT32_MIN && c <= INT32_MAX)) return std::nullopt;
  return static_cast<int32_t>(c);
}

// The bytes of a one-dimensional byte array counted from index 0 up to its upper bound,
// or none when the array holds no index 0 (an empty array from 0 is fine).
std::optional<std::span<const uint8_t>> BytesFromZero(const SafeArray& a) {
  if (a.dimensions() != 1) return std::nullopt;
  const int64_t lower = a.lbound(), upper = a.ubound();
  if (lower > 0 || (upper < 0 && lower < 0)) return std::nullopt;
  const size_t skip = static_cast<size_t>(-lower);
  return std::span<const uint8_t>(a.bytes()).subspan(skip, static_cast<size_t>(upper + 1));
}

uint32_t ReadLittleEndian(const uint8_t* p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

void WriteLittleEndian(uint8_t* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}

}  // namespace

clsZKMem::clsZKMem() : file_system_(New<clsZKFileSystem>()) {}
clsZKMem::~clsZKMem() = default;

int16_t clsZKMem::HiWord(int32_t lngDW) const {
  return static_cast<int16_t>((lngDW & static_cast<int32_t>(0xFFFF0000)) / 65536);
}

int16_t clsZKMem::LoWord(int32_t lngDW) const {
  if (lngDW & 0x8000) return static_cast<int16_t>(lngDW | static_cast<int32_t>(0xFFFF0000));
  return static_cast<int16_t>(lngDW & 0xFFFF);
}

int32_t clsZKMem::DWord(int16_t LoWord, int16_t HiWord) const {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint16_t>(HiWord)) << 16 |
                              static_cast<uint16_t>(LoWord));
}

int32_t clsZKMem::RShift(int32_t Expression, int32_t lngBits) const {
  if (lngBits <= 0) return Expression;
  if (lngBits >= 32) return 0;
  // Keep the bits that stay below the sign, scale them up without overflow, and move
  // the one bit that lands on the sign separately.
  const int32_t kept = Expression & (kPowers[31 - lngBits] - 1);
  int32_t result = kept * kPowers[lngBits];
  if (Expression & kPowers[31 - lngBits]) result |= INT32_MIN;
  return result;
}

int32_t clsZKMem::LShift(int32_t Expression, int32_t lngBits) const {
  if (lngBits <= 0) return Expression;
  if (lngBits >= 32) return 0;
  if (Expression >= 0) return Expression / kPowers[lngBits];
  return ((Expression & INT32_MAX) / kPowers[lngBits]) | kPowers[31 - lngBits];
}

bool clsZKMem::CompressData(SafeArray& DataArray) {
  DataArray.RequireElementType(VarType::kByte);
  // Stored before anything can fail. An array never dimensioned holds nothing, and an
  // upper bound of 2147483647 has no Long above it.
  const bool sized = DataArray.isDimensioned() && DataArray.ubound() < INT32_MAX;
  original_size_ = sized ? DataArray.ubound() + 1 : 0;
  compressed_size_ = 0;
  const auto source = BytesFromZero(DataArray);
  const auto capacity = Capacity(original_size_, 0.01);
  const TszlibModule* zlib = Tszlib();
  if (!source || !capacity || *capacity < 0 || !zlib) return false;
  // Room for the trailer after the longest stream the capacity allows.
  ReservedBuffer work(static_cast<size_t>(*capacity) + 1 + kTrailer);
  uint32_t written = static_cast<uint32_t>(*capacity);
  if (!work.data() || zlib->compress(work.data(), &written, source->data(),
                                     static_cast<uint32_t>(source->size())) != 0) {
    return false;
  }
  WriteLittleEndian(work.data() + written, static_cast<uint32_t>(original_size_));
  DataArray = SafeArray::FromBytes({work.data(), written + kTrailer});
  compressed_size_ = static_cast<int32_t>(written + kTrailer);
  return true;
}

bool clsZKMem::DecompressData(SafeArray& DataArray) {
  DataArray.RequireElementType(VarType::kByte);
  const auto block = BytesFromZero(DataArray);
  if (!block || block->size() <= kTrailer) return false;
  // One byte before the trailer: the last stream byte and the trailer's three low bytes.
  const int32_t claimed =
      static_cast<int32_t>(ReadLittleEndian(block->data() + block->size() - kTrailer - 1));
  const auto capacity = Capacity(claimed, 0.02);
  const TszlibModule* zlib = Tszlib();
  if (!capacity || *capacity < 0 || !zlib) return false;
  ReservedBuffer work(static_cast<size_t>(*capacity) + 1);
  uint32_t written = static_cast<uint32_t>(*capacity);
  if (!work.data() ||
      zlib->uncompress(work.data(), &written, block->data(),
                       static_cast<uint32_t>(block->size() - kTrailer)) != 0) {
    return false;
  }
  DataArray = SafeArray::FromBytes({work.data(), written});
  original_size_ = 0;
  compressed_size_ = 0;
  return true;
}

TSRUNTIME_DEFINE_CLASS(clsZKMem) {
  static const ClassInfo info =
      ClassBuilder<clsZKMem>("clsZKMem")
          .Help(u"16- and 32-bit words, logical bit shifts of Longs and compressed byte blocks; "
                u"raises nothing.")
          .Method("HiWord", &clsZKMem::HiWord, {"lngDW"})
          .Help(u"The high 16 bits of lngDW, sign-extended.")
          .Method("LoWord", &clsZKMem::LoWord, {"lngDW"})
          .Help(u"The low 16 bits of lngDW, sign-extended from bit 15.")
          .Method("DWord", &clsZKMem::DWord, {"LoWord", "HiWord"})
          .Help(u"A Long with HiWord in the high half and LoWord, unsigned, in the low half; note "
                u"the order, low word first.")
          .Method("RShift", &clsZKMem::RShift, {"Expression", "lngBits"})
          .Help(u"Expression shifted LEFT by lngBits, logically, the bit reaching bit 31 becoming "
                u"the sign; 32 or more gives 0.")
          .Method("LShift", &clsZKMem::LShift, {"Expression", "lngBits"})
          .Help(u"Expression shifted RIGHT by lngBits, zero-filling from the top also for "
                u"negative values; 32 or more gives 0.")
          .Method("CompressData", &clsZKMem::CompressData,
                  {Typed("DataArray", ArrayOf(VarType::kByte))})
          .Help(u"Replaces the byte array DataArray by its compressed block (zlib stream and "
                u"4-byte length); False, unchanged, when it cannot.")
          .Method("DecompressData", &clsZKMem::DecompressData,
                  {Typed("DataArray", ArrayOf(VarType::kByte))})
          .Help(u"Replaces the compressed block in DataArray by the bytes it holds; False, "
                u"unchanged, when it cannot.")
          .Get("OriginalSize", &clsZKMem::OriginalSize)
          .Help(u"The length of the last compressed block's original; 0 at creation and after "
                u"DecompressData.")
          .Get("CompressedSize", &clsZKMem::CompressedSize)
          .Help(u"The length of the last compressed block, trailer included; 0 after a failure "
                u"and after DecompressData.")
          .Build();
  return info;
}

}  // namespace tsruntime
