// clsZKMem's compressed blocks: the layout against zlib itself, round trips, the early
// size read with its capacity, failures that leave everything as it was, and a huge
// claimed size that reserves address space without using memory.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <zlib.h>

#include <cfenv>
#include <cmath>

#include "support/mixed_bytes.h"
#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKMem.h"

namespace tsruntime {
namespace {

using testing::MixedBytes;
using testing::Outcome;
using testing::U8;

SafeArray Bytes(const std::vector<uint8_t>& bytes) { return SafeArray::FromBytes(bytes); }

std::vector<uint8_t> ZlibUncompress(std::span<const uint8_t> stream, size_t size) {
  std::vector<uint8_t> out(size + 1);
  uLongf length = out.size();
  EXPECT_EQ(uncompress(out.data(), &length, stream.data(), stream.size()), Z_OK);
  out.resize(length);
  return out;
}

TEST(CompressedBlock, IsAZlibStreamFollowedByTheOriginalLength) {
  auto mem = New<clsZKMem>();
  const std::vector<uint8_t> data = MixedBytes(1000);
  SafeArray block = Bytes(data);
  ASSERT_TRUE(mem->CompressData(block));
  const std::vector<uint8_t>& b = block.bytes();
  EXPECT_EQ(block.lbound(), 0);
  EXPECT_EQ(mem->OriginalSize(), 1000);
  EXPECT_EQ(mem->CompressedSize(), static_cast<int32_t>(b.size()));
  EXPECT_EQ(std::vector<uint8_t>(b.end() - 4, b.end()), (std::vector<uint8_t>{0xE8, 0x03, 0, 0}));
  EXPECT_EQ(ZlibUncompress(std::span(b).first(b.size() - 4), data.size()), data)
      << "zlib reads the stream before the trailer";

  ASSERT_TRUE(mem->DecompressData(block));
  EXPECT_EQ(block.bytes(), data);
  EXPECT_EQ(block.lbound(), 0);
  EXPECT_EQ(mem->OriginalSize(), 0);
  EXPECT_EQ(mem->CompressedSize(), 0);
}

TEST(CompressedBlock, RoundTripsTheSizesTheEarlyReadCanHold) {
  auto mem = New<clsZKMem>();
  for (size_t size : {0, 1, 2, 5, 255, 256, 1000, 65536, 1 << 20, 7 << 20}) {
    const std::vector<uint8_t> data = MixedBytes(size, static_cast<uint32_t>(size));
    SafeArray block = Bytes(data);
    ASSERT_TRUE(mem->CompressData(block)) << size;
    ASSERT_TRUE(mem->DecompressData(block)) << size;
    EXPECT_EQ(block.ubound(), static_cast<int32_t>(size) - 1) << size;
    EXPECT_TRUE(block.bytes() == data) << size;
  }
}

TEST(CompressedBlock, RoundTripsOneHundredMebibytes) {
  // 100 MiB leaves bit 23 of the length clear, so the early read can hold it.
  const std::vector<uint8_t> data = MixedBytes(size_t{100} << 20);
  auto mem = New<clsZKMem>();
  SafeArray block = Bytes(data);
  ASSERT_TRUE(mem->CompressData(block));
  EXPECT_EQ(mem->OriginalSize(), 100 << 20);
  EXPECT_LT(block.bytes().size(), data.size());
  ASSERT_TRUE(mem->DecompressData(block));
  EXPECT_TRUE(block.bytes() == data);
}

TEST(CompressedBlock, FailsForOriginalsWhoseEarlyReadIsNegativeOrTooSmall) {
  auto mem = New<clsZKMem>();
  // 8 MiB sets bit 23 of the stored size: the value read is negative. 16 MiB leaves the
  // three low bytes 0: the capacity comes from the last stream byte alone.
  for (size_t size : {size_t{8} << 20, size_t{16} << 20}) {
    SafeArray block = Bytes(std::vector<uint8_t>(size, 'x'));
    ASSERT_TRUE(mem->CompressData(block)) << size;
    const SafeArray before = block;
    EXPECT_FALSE(mem->DecompressData(block)) << size;
    EXPECT_TRUE(block == before) << size;
    EXPECT_EQ(mem->OriginalSize(), static_cast<int32_t>(size));
  }
}

// A stream of `size` bytes whose last byte (the low byte of its Adler-32) is `last`.
std::vector<uint8_t> StreamEndingIn(size_t size, uint8_t last) {
  std::vector<uint8_t> data(size, 'a');
  for (int v = 0; v < 65536; ++v) {
    data[0] = static_cast<uint8_t>(v);
    data[size / 2] = static_cast<uint8_t>(v >> 8);
    if ((adler32(1, data.data(), static_cast<uInt>(size)) & 0xFF) == last) break;
  }
  std::vector<uint8_t> stream(compressBound(size));
  uLongf length = stream.size();
  EXPECT_EQ(compress(stream.data(), &length, data.data(), size), Z_OK);
  stream.resize(length);
  EXPECT_EQ(stream.back(), last);
  return stream;
}

TEST(CompressedBlock, DecompressionCapacityIsTheEarlyValueTimes102PercentPlus12HalvesToEven) {
  // With a zero trailer the value read is the last stream byte L, and the output may be
  // as long as Round(L * 1.02 + 12): 75 gives 88.5, which rounds to 88.
  struct Row {
    uint8_t last;
    size_t size;
  } rows[] = {{75, 88}, {75, 89}, {25, 38}, {25, 39}, {0, 12}, {0, 13}, {200, 216}, {200, 217}};
  ASSERT_EQ(std::fegetround(), FE_TONEAREST);
  for (const Row& r : rows) {
    std::vector<uint8_t> block = StreamEndingIn(r.size, r.last);
    block.insert(block.end(), 4, 0);
    const bool fits = r.size <= static_cast<size_t>(std::nearbyint(r.last * 1.02 + 12));
    auto mem = New<clsZKMem>();
    SafeArray array = Bytes(block);
    EXPECT_EQ(mem->DecompressData(array), fits) << int{r.last} << " " << r.size;
    EXPECT_EQ(array.bytes().size(), fits ? r.size : block.size());
  }
}

TEST(CompressedBlock, AFailedDecompressionLeavesTheArrayAndTheSizesAsTheyWere) {
  SafeArray good = Bytes(MixedBytes(3000));
  ASSERT_TRUE(New<clsZKMem>()->CompressData(good));
  const std::vector<uint8_t> block = good.bytes();
  auto with = [&](size_t at, uint8_t value) {
    std::vector<uint8_t> b = block;
    b[at] = value;
    return Bytes(b);
  };
  const size_t n = block.size();
  SafeArray from_one = Bytes(block);
  from_one = SafeArray(VarType::kByte, {{1, static_cast<int32_t>(n)}});
  struct Row {
    const char* what;
    SafeArray array;
  } rows[] = {
      {"bytes that are no stream", Bytes(std::vector<uint8_t>(40, 'x'))},
      {"a stream cut short", Bytes(std::vector<uint8_t>(block.begin() + 10, block.end()))},
      {"a wrong checksum", with(n - 6, block[n - 6] ^ 1)},
      {"a claim whose capacity passes a Long", with(n - 2, 0x7F)},
      {"a claim read as negative", with(n - 2, 0x80)},
      {"four bytes", Bytes({1, 2, 3, 4})},
      {"no bytes", Bytes({})},
      {"a never-dimensioned array", SafeArray(VarType::kByte)},
      {"an array without index 0", from_one},
  };
  for (Row& r : rows) {
    auto mem = New<clsZKMem>();
    SafeArray sized = Bytes(MixedBytes(77));
    ASSERT_TRUE(mem->CompressData(sized));
    const int32_t compressed = mem->CompressedSize();
    const SafeArray before = r.array;
    EXPECT_FALSE(mem->DecompressData(r.array)) << r.what;
    EXPECT_TRUE(r.array == before) << r.what;
    EXPECT_EQ(mem->OriginalSize(), 77) << r.what;
    EXPECT_EQ(mem->CompressedSize(), compressed) << r.what;
  }
}

TEST(CompressedBlock, AFailedCompressionStoresTheOriginalSizeAndNoCompressedSize) {
  struct {
    const char* what;
    SafeArray array;
    int32_t original;  // UBound + 1, stored at once
  } rows[] = {
      {"index 0 is where the data starts", SafeArray(VarType::kByte, {{1, 10}}), 11},
      {"an array never dimensioned holds nothing", SafeArray(VarType::kByte), 0},
      {"two dimensions: the first one's bound", SafeArray(VarType::kByte, {{0, 4}, {0, 2}}), 5},
      {"no Long lies above 2147483647", SafeArray(VarType::kByte, {{INT32_MAX - 3, INT32_MAX}}),
       0},
  };
  auto mem = New<clsZKMem>();
  for (auto& r : rows) {
    SafeArray block = Bytes(MixedBytes(100));
    ASSERT_TRUE(mem->CompressData(block));
    const SafeArray before = r.array;
    EXPECT_FALSE(mem->CompressData(r.array)) << r.what;
    EXPECT_TRUE(r.array == before) << r.what;
    EXPECT_EQ(mem->OriginalSize(), r.original) << r.what;
    EXPECT_EQ(mem->CompressedSize(), 0) << r.what;
  }

  SafeArray below_zero(VarType::kByte, {{-2, 1}});
  below_zero.bytes() = {9, 9, 1, 2};
  ASSERT_TRUE(mem->CompressData(below_zero)) << "index 0 to the upper bound is compressed";
  ASSERT_TRUE(mem->DecompressData(below_zero));
  EXPECT_EQ(below_zero.bytes(), (std::vector<uint8_t>{1, 2}));
}

// An array of another element type is refused as the runtime refuses it at a call with a
// declared Byte() parameter, early or late bound, before anything changes.
TEST(CompressedBlock, AnArrayOfAnotherTypeIsATypeMismatch) {
  auto mem = New<clsZKMem>();
  SafeArray block = Bytes(MixedBytes(100));
  ASSERT_TRUE(mem->CompressData(block));
  const int32_t compressed = mem->CompressedSize();
  for (const char16_t* member : {u"CompressData", u"DecompressData"}) {
    for (VarType element : {VarType::kVariant, VarType::kLong, VarType::kString}) {
      SafeArray other(element, {{0, 9}});
      const bool compress = member[0] == u'C';
      EXPECT_EQ(Outcome([&] { return (compress ? mem->CompressData(other) : mem->DecompressData(other)) ? "T" : "F"; }),
                "error 13");
      std::vector<Argument> args{{{}, Variant(other)}};
      EXPECT_EQ(Outcome([&] { return ToUtf8(ToString(Invoke(*mem, member, InvokeKind::kCall, args))); }),
                "error 13") << U8(member) << " late bound";
    }
  }
  EXPECT_EQ(mem->OriginalSize(), 100);
  EXPECT_EQ(mem->CompressedSize(), compressed);
}

long PeakResidentKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST(CompressedBlock, AHugeClaimedSizeReservesAddressSpaceWithoutUsingMemory) {
  const std::vector<uint8_t> data = MixedBytes(100000);
  SafeArray block = Bytes(data);
  ASSERT_TRUE(New<clsZKMem>()->CompressData(block));
  // The early read now gives about 2.1e9: a capacity of nearly 2 GiB, still a Long.
  block.bytes()[block.bytes().size() - 2] = 0x7C;
  const long before = PeakResidentKiB();
  auto mem = New<clsZKMem>();
  ASSERT_TRUE(mem->DecompressData(block));
  EXPECT_TRUE(block.bytes() == data);
  EXPECT_LT(PeakResidentKiB() - before, 64 * 1024) << "KiB of peak memory added";
}

}  // namespace
}  // namespace tsruntime
