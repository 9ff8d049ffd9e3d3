// clsZKMem: words and shifts against plain 32-bit arithmetic as the model; compressed
// blocks against zlib itself, the early size read with its capacity, failures that leave
// everything as it was, and where the runtime finds the compression module.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <zlib.h>

#include <filesystem>

#include "support/mixed_bytes.h"
#include "system/fs_fixture.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKMem.h"

namespace tsruntime {
namespace {

using testing::MixedBytes;
using testing::Outcome;
using testing::U8;

constexpr int32_t Bits(uint32_t pattern) { return static_cast<int32_t>(pattern); }
SafeArray Bytes(const std::vector<uint8_t>& bytes) { return SafeArray::FromBytes(bytes); }
// "OriginalSize/CompressedSize".
std::string Sizes(const clsZKMem& mem) {
  return std::to_string(mem.OriginalSize()) + "/" + std::to_string(mem.CompressedSize());
}
SafeArray Compressed(const std::vector<uint8_t>& bytes) {
  SafeArray block = Bytes(bytes);
  EXPECT_TRUE(New<clsZKMem>()->CompressData(block));
  return block;
}

// HiWord and LoWord sign-extend their half; DWord does not sign-extend the low half.
TEST(Words, DWordJoinsTheHalvesThatHiWordAndLoWordGiveBack) {
  auto mem = New<clsZKMem>();
  const int16_t samples[] = {0, 1, -1, 0x7FFF, -32768, 0x1234, -2, 0x00FF, -256};
  for (int32_t x = INT16_MIN; x <= INT16_MAX; ++x) {
    for (int16_t y : samples) {
      const int32_t joined = mem->DWord(static_cast<int16_t>(x), y);
      ASSERT_EQ(joined, Bits(uint32_t(uint16_t(y)) << 16 | uint16_t(x))) << x << ", " << y;
      ASSERT_TRUE(mem->LoWord(joined) == x && mem->HiWord(joined) == y) << x << ", " << y;
    }
  }
}

// RShift moves bits up (RShift(1, 31) is the sign bit) and LShift down, logically; counts
// of 0 and below give the value itself, 32 and above give 0.
TEST(Shifts, MatchLogicalShiftsForEveryCountAndPattern) {
  auto mem = New<clsZKMem>();
  for (uint32_t p : {0u, 1u, 3u, 256u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0x87654321u, 0x55555555u,
                     0xAAAAAAAAu, 0xC0000001u, 0x0000FFFFu, 0xFFFF0000u}) {
    for (int32_t n = -3; n <= 33; ++n) {
      const uint32_t up = n <= 0 ? p : n >= 32 ? 0 : p << n, down = n <= 0 ? p : n >= 32 ? 0 : p >> n;
      EXPECT_EQ(mem->RShift(Bits(p), n), Bits(up)) << std::hex << p << " RShift " << std::dec << n;
      EXPECT_EQ(mem->LShift(Bits(p), n), Bits(down)) << std::hex << p << " LShift " << std::dec << n;
    }
  }
}

// A zlib stream followed by the original length, little-endian; decompressed, the sizes
// are cleared. 100 MiB leaves bit 23 of the length clear, so the early read can hold it.
TEST(CompressedBlock, IsAZlibStreamFollowedByTheOriginalLengthAndRoundTrips) {
  auto mem = New<clsZKMem>();
  for (size_t size : {size_t{0}, size_t{1}, size_t{5}, size_t{256}, size_t{65536}, size_t{7} << 20, size_t{100} << 20}) {
    const std::vector<uint8_t> data = MixedBytes(size, static_cast<uint32_t>(size));
    SafeArray block = Bytes(data);
    ASSERT_TRUE(mem->CompressData(block)) << size;
    const std::vector<uint8_t>& b = block.bytes();
    EXPECT_EQ(Sizes(*mem), std::to_string(size) + "/" + std::to_string(b.size()));
    const auto n = static_cast<uint32_t>(size);
    EXPECT_EQ(std::vector<uint8_t>(b.end() - 4, b.end()),
              (std::vector<uint8_t>{uint8_t(n), uint8_t(n >> 8), uint8_t(n >> 16), uint8_t(n >> 24)})) << size;
    std::vector<uint8_t> out(size + 1);
    uLongf length = out.size();
    EXPECT_EQ(uncompress(out.data(), &length, b.data(), b.size() - 4), Z_OK) << "zlib reads the stream before the trailer";
    EXPECT_TRUE(length == size && std::equal(data.begin(), data.end(), out.begin())) << size;
    ASSERT_TRUE(mem->DecompressData(block)) << size;
    EXPECT_TRUE(block.lbound() == 0 && block.ubound() == static_cast<int32_t>(size) - 1 && block.bytes() == data) << size;
    EXPECT_EQ(Sizes(*mem), "0/0");
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

// The early read takes the last stream byte L and the trailer's three low bytes. With a
// zero trailer the output may be as long as Round(L * 1.02 + 12), halves to even: 75
// gives 88.5, which rounds to 88.
TEST(CompressedBlock, DecompressionCapacityIsTheEarlyValueTimes102PercentPlus12HalvesToEven) {
  const struct { uint8_t last; size_t size; bool fits; } rows[] = {
      {75, 88, true}, {75, 89, false}, {25, 38, true}, {25, 39, false}, {0, 12, true}, {0, 13, false},
      {200, 216, true}, {200, 217, false}, {125, 140, true}, {125, 141, false}};
  for (const auto& r : rows) {
    std::vector<uint8_t> block = StreamEndingIn(r.size, r.last);
    block.insert(block.end(), 4, 0);
    SafeArray array = Bytes(block);
    EXPECT_EQ(New<clsZKMem>()->DecompressData(array), r.fits) << int{r.last} << " " << r.size;
    EXPECT_EQ(array.bytes().size(), r.fits ? r.size : block.size());
  }
}

// A failed call returns False, or raises a type mismatch for another element type, early
// or late bound, before anything changes. A failed decompression keeps the sizes; a failed
// compression stores UBound + 1 as the original size at once, and no compressed size.
TEST(CompressedBlock, FailuresLeaveTheArrayAsItWas) {
  const std::vector<uint8_t> block = Compressed(MixedBytes(3000)).bytes();
  const size_t n = block.size();
  auto with = [&](size_t at, uint8_t value) {
    std::vector<uint8_t> b = block;
    b[at] = value;
    return Bytes(b);
  };
  const char16_t *compress = u"CompressData", *decompress = u"DecompressData";
  // Without an `original` size, the sizes stay.
  const struct { const char* what; const char16_t* member; SafeArray array; const char* outcome;
                 std::optional<int32_t> original; } rows[] = {
      {"bytes that are no stream", decompress, Bytes(std::vector<uint8_t>(40, 'x')), "False", {}},
      {"a stream cut short", decompress, Bytes(std::vector<uint8_t>(block.begin() + 10, block.end())), "False", {}},
      {"a wrong checksum", decompress, with(n - 6, block[n - 6] ^ 1), "False", {}},
      {"a claim whose capacity passes a Long", decompress, with(n - 2, 0x7F), "False", {}},
      // 8 MiB sets bit 23 of the stored length: the early read is negative. 16 MiB leaves
      // its three low bytes 0: the capacity comes from the last stream byte alone.
      {"an original of 8 MiB", decompress, Compressed(std::vector<uint8_t>(size_t{8} << 20, 'x')), "False", {}},
      {"an original of 16 MiB", decompress, Compressed(std::vector<uint8_t>(size_t{16} << 20, 'x')), "False", {}},
      {"four bytes", decompress, Bytes({1, 2, 3, 4}), "False", {}},
      {"a never-dimensioned array", decompress, SafeArray(VarType::kByte), "False", {}},
      {"an array without index 0", decompress, SafeArray(VarType::kByte, {{1, static_cast<int32_t>(n)}}), "False", {}},
      {"a Long array", decompress, SafeArray(VarType::kLong, {{0, 9}}), "error 13", {}},
      {"index 0 is where the data starts", compress, SafeArray(VarType::kByte, {{1, 10}}), "False", 11},
      {"an array never dimensioned holds nothing", compress, SafeArray(VarType::kByte), "False", 0},
      {"two dimensions: the first one's bound", compress, SafeArray(VarType::kByte, {{0, 4}, {0, 2}}), "False", 5},
      {"no Long lies above 2147483647", compress, SafeArray(VarType::kByte, {{INT32_MAX - 3, INT32_MAX}}), "False", 0},
      {"a String array", compress, SafeArray(VarType::kString, {{0, 9}}), "error 13", {}},
  };
  for (const auto& r : rows) {
    for (bool late : {false, true}) {
      auto mem = New<clsZKMem>();
      SafeArray sized = Bytes(MixedBytes(77)), array = r.array;
      ASSERT_TRUE(mem->CompressData(sized));
      const std::string sizes = r.original ? std::to_string(*r.original) + "/0" : Sizes(*mem);
      std::vector<Argument> args{{{}, Variant(array)}};
      const std::string outcome = Outcome([&] {
        const bool done = late                ? Invoke(*mem, r.member, InvokeKind::kCall, args) == Variant(true)
                          : r.member == compress ? mem->CompressData(array)
                                                 : mem->DecompressData(array);
        return done ? "True" : "False";
      });
      const std::string what = U8(r.member) + ", " + r.what + (late ? ", late bound" : "");
      EXPECT_EQ(outcome, r.outcome) << what;
      EXPECT_TRUE(late ? args[0].value == Variant(r.array) : array == r.array) << what;
      EXPECT_EQ(Sizes(*mem), sizes) << what;
    }
  }
  SafeArray below_zero(VarType::kByte, {{-2, 1}});
  below_zero.bytes() = {9, 9, 1, 2};
  auto mem = New<clsZKMem>();
  ASSERT_TRUE(mem->CompressData(below_zero) && mem->DecompressData(below_zero));
  EXPECT_EQ(below_zero.bytes(), (std::vector<uint8_t>{1, 2})) << "index 0 to the upper bound is what is compressed";
}

TEST(CompressedBlock, AHugeClaimedSizeReservesAddressSpaceWithoutUsingMemory) {
  const std::vector<uint8_t> data = MixedBytes(100000);
  SafeArray block = Compressed(data);
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
using CompressionModule = testing::FsTest;

TEST_F(CompressionModule, IsFoundBesideTheLibraryThenOnTheLoadersPathAndZlibIsNotLinked) {
  namespace fs = std::filesystem;
  const fs::path lib = Native("lib"), other = Native("other"), alone = Native("alone"), decoy = Native("decoy");
  for (const fs::path& d : {lib, other, alone, decoy}) fs::create_directories(d);
  fs::copy_file(ZLIB_LIBRARY_PATH, decoy / "libtszlib.so");  // the name without the entry points
  for (const fs::path& d : {lib, alone}) fs::copy_file(TSRUNTIME_LIBRARY_PATH, d / TSRUNTIME_LIBRARY_SONAME);
  for (const fs::path& d : {lib, other}) fs::copy_file(TSZLIB_PATH, d / "libtszlib.so");
  const struct { const char* what; std::string path; std::string printed; } rows[] = {
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
  const std::string listing = testing::RunProgram({"ldd", TSRUNTIME_LIBRARY_PATH}).output;
  EXPECT_TRUE(listing.find("libc.so") != std::string::npos && listing.find("libz.so") == std::string::npos) << listing;
}

}  // namespace
}  // namespace tsruntime
