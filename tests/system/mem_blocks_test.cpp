// clsZKMem's compressed blocks: the layout against zlib itself, round trips, the early
// size read with its capacity, failures that leave everything as it was, a huge claimed
// size that reserves address space without using memory, and where the runtime finds
// the compression module.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <zlib.h>

#include <cfenv>
#include <cmath>
#include <filesystem>

#include "support/child_process.h"
#include "support/mixed_bytes.h"
#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKMem.h"

namespace tsruntime {
namespace {

using testing::MixedBytes;
using testing::Outcome;

SafeArray Bytes(const std::vector<uint8_t>& bytes) { return SafeArray::FromBytes(bytes); }

// A zlib stream followed by the original length, little-endian; decompressed, the sizes
// are cleared. 100 MiB leaves bit 23 of the length clear, so the early read can hold it.
TEST(CompressedBlock, IsAZlibStreamFollowedByTheOriginalLengthAndRoundTrips) {
  auto mem = New<clsZKMem>();
  for (size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{5}, size_t{255}, size_t{256}, size_t{1000},
                      size_t{65536}, size_t{1} << 20, size_t{7} << 20, size_t{100} << 20}) {
    const std::vector<uint8_t> data = MixedBytes(size, static_cast<uint32_t>(size));
    SafeArray block = Bytes(data);
    ASSERT_TRUE(mem->CompressData(block)) << size;
    const std::vector<uint8_t>& b = block.bytes();
    EXPECT_EQ(block.lbound(), 0);
    EXPECT_EQ(mem->OriginalSize(), static_cast<int32_t>(size));
    EXPECT_EQ(mem->CompressedSize(), static_cast<int32_t>(b.size()));
    const auto n = static_cast<uint32_t>(size);
    EXPECT_EQ(std::vector<uint8_t>(b.end() - 4, b.end()),
              (std::vector<uint8_t>{uint8_t(n), uint8_t(n >> 8), uint8_t(n >> 16), uint8_t(n >> 24)})) << size;
    std::vector<uint8_t> out(size + 1);
    uLongf length = out.size();
    EXPECT_EQ(uncompress(out.data(), &length, b.data(), b.size() - 4), Z_OK) << "zlib reads the stream before the trailer";
    EXPECT_TRUE(length == size && std::equal(data.begin(), data.end(), out.begin())) << size;
    if (size >= 1000) {
      EXPECT_LT(b.size(), size);
    }
    ASSERT_TRUE(mem->DecompressData(block)) << size;
    EXPECT_EQ(block.ubound(), static_cast<int32_t>(size) - 1) << size;
    EXPECT_EQ(block.lbound(), 0);
    EXPECT_TRUE(block.bytes() == data) << size;
    EXPECT_EQ(std::to_string(mem->OriginalSize()) + "/" + std::to_string(mem->CompressedSize()), "0/0");
  }
}

// 8 MiB sets bit 23 of the stored size: the value read is negative. 16 MiB leaves the
// three low bytes 0: the capacity comes from the last stream byte alone.
TEST(CompressedBlock, FailsForOriginalsWhoseEarlyReadIsNegativeOrTooSmall) {
  auto mem = New<clsZKMem>();
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
  for (int v = 0; v < 65536 && (adler32(1, data.data(), static_cast<uInt>(size)) & 0xFF) != last; ++v) {
    data[0] = static_cast<uint8_t>(v);
    data[size / 2] = static_cast<uint8_t>(v >> 8);
  }
  std::vector<uint8_t> stream(compressBound(size));
  uLongf length = stream.size();
  EXPECT_EQ(compress(stream.data(), &length, data.data(), size), Z_OK);
  stream.resize(length);
  EXPECT_EQ(stream.back(), last);
  return stream;
}

// With a zero trailer the value read is the last stream byte L, and the output may be as
// long as Round(L * 1.02 + 12), halves to even: 75 gives 88.5, which rounds to 88.
TEST(CompressedBlock, DecompressionCapacityIsTheEarlyValueTimes102PercentPlus12HalvesToEven) {
  const struct {
    uint8_t last;
    size_t size;
  } rows[] = {{75, 88}, {75, 89}, {25, 38}, {25, 39}, {0, 12}, {0, 13}, {200, 216}, {200, 217}};
  ASSERT_EQ(std::fegetround(), FE_TONEAREST);
  for (const auto& r : rows) {
    std::vector<uint8_t> block = StreamEndingIn(r.size, r.last);
    block.insert(block.end(), 4, 0);
    const bool fits = r.size <= static_cast<size_t>(std::nearbyint(r.last * 1.02 + 12));
    SafeArray array = Bytes(block);
    EXPECT_EQ(New<clsZKMem>()->DecompressData(array), fits) << int{r.last} << " " << r.size;
    EXPECT_EQ(array.bytes().size(), fits ? r.size : block.size());
  }
}

TEST(CompressedBlock, AFailedDecompressionLeavesTheArrayAndTheSizesAsTheyWere) {
  SafeArray good = Bytes(MixedBytes(3000));
  ASSERT_TRUE(New<clsZKMem>()->CompressData(good));
  const std::vector<uint8_t> block = good.bytes();
  const size_t n = block.size();
  auto with = [&](size_t at, uint8_t value) {
    std::vector<uint8_t> b = block;
    b[at] = value;
    return Bytes(b);
  };
  struct {
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
      {"an array without index 0", SafeArray(VarType::kByte, {{1, static_cast<int32_t>(n)}})},
  };
  for (auto& r : rows) {
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

// A failed compression stores UBound + 1 as the original size at once, and no compressed
// size; index 0 to the upper bound is what is compressed.
TEST(CompressedBlock, AFailedCompressionStoresTheOriginalSizeAndNoCompressedSize) {
  struct {
    const char* what;
    SafeArray array;
    int32_t original;
  } rows[] = {
      {"index 0 is where the data starts", SafeArray(VarType::kByte, {{1, 10}}), 11},
      {"an array never dimensioned holds nothing", SafeArray(VarType::kByte), 0},
      {"two dimensions: the first one's bound", SafeArray(VarType::kByte, {{0, 4}, {0, 2}}), 5},
      {"no Long lies above 2147483647", SafeArray(VarType::kByte, {{INT32_MAX - 3, INT32_MAX}}), 0},
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
  ASSERT_TRUE(mem->CompressData(below_zero));
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
      EXPECT_EQ(Outcome([&] { Invoke(*mem, member, InvokeKind::kCall, args); }), "error 13") << compress << " late bound";
    }
  }
  EXPECT_EQ(mem->OriginalSize(), 100);
  EXPECT_EQ(mem->CompressedSize(), compressed);
}

TEST(CompressedBlock, AHugeClaimedSizeReservesAddressSpaceWithoutUsingMemory) {
  const std::vector<uint8_t> data = MixedBytes(100000);
  SafeArray block = Bytes(data);
  ASSERT_TRUE(New<clsZKMem>()->CompressData(block));
  // The early read now gives about 2.1e9: a capacity of nearly 2 GiB, still a Long.
  block.bytes()[block.bytes().size() - 2] = 0x7C;
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  ASSERT_TRUE(New<clsZKMem>()->DecompressData(block));
  getrusage(RUSAGE_SELF, &after);
  EXPECT_TRUE(block.bytes() == data);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 64 * 1024) << "KiB of peak memory added";
}

// tsrt runs against copies of the library laid out with and without the module beside it;
// the runtime itself never links zlib.
TEST(CompressionModule, IsFoundBesideTheLibraryThenOnTheLoadersPathAndZlibIsNotLinked) {
  namespace fs = std::filesystem;
  const fs::path root = fs::temp_directory_path() / ("tszlib-test-" + std::to_string(getpid()));
  const fs::path lib = root / "lib", other = root / "other", alone = root / "alone", decoy = root / "decoy";
  for (const fs::path& d : {lib, other, alone, decoy}) fs::create_directories(d);
  fs::copy_file(ZLIB_LIBRARY_PATH, decoy / "libtszlib.so");  // the name without the entry points
  for (const fs::path& d : {lib, alone}) fs::copy_file(TSRUNTIME_LIBRARY_PATH, d / TSRUNTIME_LIBRARY_SONAME);
  for (const fs::path& d : {lib, other}) fs::copy_file(TSZLIB_PATH, d / "libtszlib.so");
  const struct {
    const char* what;
    std::string path;
    std::string printed;
  } rows[] = {
      {"the module beside the library", lib.string(), "True\n"},
      {"no module anywhere: False, no error", alone.string(), "False\n"},
      {"the module elsewhere on the loader's path", alone.string() + ":" + other.string(), "True\n"},
      {"beside the library comes before the loader's path", decoy.string() + ":" + lib.string(), "True\n"},
      {"a module without the entry points does not load", alone.string() + ":" + decoy.string(), "False\n"},
  };
  for (const auto& r : rows) {
    const auto run = testing::RunProgram({TSRT_PATH, "call", "clsZKMem", "CompressData", "Array(1, 2, 3) As Byte"},
                                         {{"LD_LIBRARY_PATH", r.path}});
    EXPECT_EQ(run.output.substr(0, run.output.find('\n') + 1), r.printed) << r.what;
  }
  fs::remove_all(root);
  const std::string listing = testing::RunProgram({"ldd", TSRUNTIME_LIBRARY_PATH}).output;
  EXPECT_NE(listing.find("libc.so"), std::string::npos) << listing;
  EXPECT_EQ(listing.find("libz.so"), std::string::npos) << listing;
}

}  // namespace
}  // namespace tsruntime
