// MD5 with the rules of clsZKmd5's update, padding and file reader.
#include "md5_core.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "tsruntime/automation/checked.h"

namespace tsruntime::md5_detail {
namespace {

inline uint32_t F(uint32_t x, uint32_t y, uint32_t z) { return z ^ (x & (y ^ z)); }
inline uint32_t G(uint32_t x, uint32_t y, uint32_t z) { return y ^ (z & (x ^ y)); }
inline uint32_t H(uint32_t x, uint32_t y, uint32_t z) { return x ^ y ^ z; }
inline uint32_t I(uint32_t x, uint32_t y, uint32_t z) { return y ^ (x | ~z); }

template <uint32_t (*Fn)(uint32_t, uint32_t, uint32_t)>
inline void Step(uint32_t& a, uint32_t b, uint32_t c, uint32_t d, uint32_t x, uint32_t t,
                 int s) {
  a = std::rotl(a + Fn(b, c, d) + x + t, s) + b;
}

inline uint32_t LoadLittle(const uint8_t* p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

void TransformOne(uint32_t* state, const uint8_t* block) {
  uint32_t x[16];
  for (int i = 0; i < 16; ++i) x[i] = LoadLittle(block + 4 * i);
  uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
  Step<F>(a, b, c, d, x[0], 0xd76aa478u, 7);
  Step<F>(d, a, b, c, x[1], 0xe8c7b756u, 12);
  Step<F>(c, d, a, b, x[2], 0x242070dbu, 17);
  Step<F>(b, c, d, a, x[3], 0xc1bdceeeu, 22);
  Step<F>(a, b, c, d, x[4], 0xf57c0fafu, 7);
  Step<F>(d, a, b, c, x[5], 0x4787c62au, 12);
  Step<F>(c, d, a, b, x[6], 0xa8304613u, 17);
  Step<F>(b, c, d, a, x[7], 0xfd469501u, 22);
  Step<F>(a, b, c, d, x[8], 0x698098d8u, 7);
  Step<F>(d, a, b, c, x[9], 0x8b44f7afu, 12);
  Step<F>(c, d, a, b, x[10], 0xffff5bb1u, 17);
  Step<F>(b, c, d, a, x[11], 0x895cd7beu, 22);
  Step<F>(a, b, c, d, x[12], 0x6b901122u, 7);
  Step<F>(d, a, b, c, x[13], 0xfd987193u, 12);
  Step<F>(c, d, a, b, x[14], 0xa679438eu, 17);
  Step<F>(b, c, d, a, x[15], 0x49b40821u, 22);
  Step<G>(a, b, c, d, x[1], 0xf61e2562u, 5);
  Step<G>(d, a, b, c, x[6], 0xc040b340u, 9);
  Step<G>(c, d, a, b, x[11], 0x265e5a51u, 14);
  Step<G>(b, c, d, a, x[0], 0xe9b6c7aau, 20);
  Step<G>(a, b, c, d, x[5], 0xd62f105du, 5);
  Step<G>(d, a, b, c, x[10], 0x02441453u, 9);
  Step<G>(c, d, a, b, x[15], 0xd8a1e681u, 14);
  Step<G>(b, c, d, a, x[4], 0xe7d3fbc8u, 20);
  Step<G>(a, b, c, d, x[9], 0x21e1cde6u, 5);
  Step<G>(d, a, b, c, x[14], 0xc33707d6u, 9);
  Step<G>(c, d, a, b, x[3], 0xf4d50d87u, 14);
  Step<G>(b, c, d, a, x[8], 0x455a14edu, 20);
  Step<G>(a, b, c, d, x[13], 0xa9e3e905u, 5);
  Step<G>(d, a, b, c, x[2], 0xfcefa3f8u, 9);
  Step<G>(c, d, a, b, x[7], 0x676f02d9u, 14);
  Step<G>(b, c, d, a, x[12], 0x8d2a4c8au, 20);
  Step<H>(a, b, c, d, x[5], 0xfffa3942u, 4);
  Step<H>(d, a, b, c, x[8], 0x8771f681u, 11);
  Step<H>(c, d, a, b, x[11], 0x6d9d6122u, 16);
  Step<H>(b, c, d, a, x[14], 0xfde5380cu, 23);
  Step<H>(a, b, c, d, x[1], 0xa4beea44u, 4);
  Step<H>(d, a, b, c, x[4], 0x4bdecfa9u, 11);
  Step<H>(c, d, a, b, x[7], 0xf6bb4b60u, 16);
  Step<H>(b, c, d, a, x[10], 0xbebfbc70u, 23);
  Step<H>(a, b, c, d, x[13], 0x289b7ec6u, 4);
  Step<H>(d, a, b, c, x[0], 0xeaa127fau, 11);
  Step<H>(c, d, a, b, x[3], 0xd4ef3085u, 16);
  Step<H>(b, c, d, a, x[6], 0x04881d05u, 23);
  Step<H>(a, b, c, d, x[9], 0xd9d4d039u, 4);
  Step<H>(d, a, b, c, x[12], 0xe6db99e5u, 11);
  Step<H>(c, d, a, b, x[15], 0x1fa27cf8u, 16);
  Step<H>(b, c, d, a, x[2], 0xc4ac5665u, 23);
  Step<I>(a, b, c, d, x[0], 0xf4292244u, 6);
  Step<I>(d, a, b, c, x[7], 0x432aff97u, 10);
  Step<I>(c, d, a, b, x[14], 0xab9423a7u, 15);
  Step<I>(b, c, d, a, x[5], 0xfc93a039u, 21);
  Step<I>(a, b, c, d, x[12], 0x655b59c3u, 6);
  Step<I>(d, a, b, c, x[3], 0x8f0ccc92u, 10);
  Step<I>(c, d, a, b, x[10], 0xffeff47du, 15);
  Step<I>(b, c, d, a, x[1], 0x85845dd1u, 21);
  Step<I>(a, b, c, d, x[8], 0x6fa87e4fu, 6);
  Step<I>(d, a, b, c, x[15], 0xfe2ce6e0u, 10);
  Step<I>(c, d, a, b, x[6], 0xa3014314u, 15);
  Step<I>(b, c, d, a, x[13], 0x4e0811a1u, 21);
  Step<I>(a, b, c, d, x[4], 0xf7537e82u, 6);
  Step<I>(d, a, b, c, x[11], 0xbd3af235u, 10);
  Step<I>(c, d, a, b, x[2], 0x2ad7d2bbu, 15);
  Step<I>(b, c, d, a, x[9], 0xeb86d391u, 21);
  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
}

constexpr int64_t kPositionLimit = 32767;  // positions within one update are 16-bit
constexpr int32_t kRecord = 64;
// Past this many bytes the count of any file overflows.
constexpr int64_t kLongestFile = int64_t{1} << 28;

[[noreturn]] void RaiseOpenError(int error, const std::string& path) {
  switch (error) {
    case ENOENT: {
      const size_t slash = path.rfind('/');
      const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
      struct stat info;
      if (::stat(folder.c_str(), &info) != 0) RaiseRuntime(RuntimeError::kPathNotFound);
      RaiseRuntime(RuntimeError::kFileNotFound);
    }
    case ENOTDIR:
      RaiseRuntime(RuntimeError::kPathNotFound);
    case EACCES:
    case EPERM:
      RaiseRuntime(RuntimeError::kPermissionDenied);
    default:
      RaiseRuntime(RuntimeError::kPathFileAccessError);
  }
}

struct FileCloser {
  int fd;
  ~FileCloser() { ::close(fd); }
};

}  // namespace

void Transform(uint32_t* state, const uint8_t* blocks, size_t count) {
  for (size_t i = 0; i < count; ++i) TransformOne(state, blocks + i * kRecord);
}

void Md5State::Init() {
  registers[0] = 0x67452301u;
  registers[1] = 0xEFCDAB89u;
  registers[2] = 0x98BADCFEu;
  registers[3] = 0x10325476u;
  count = 0;
}

void Md5State::Update(int32_t input_len, const uint8_t* input, int64_t lower, int64_t upper) {
  const int32_t new_count = CheckedAdd(count, input_len);
  const int32_t index = count % kRecord;  // negative for a negative count, as Mod gives
  const int32_t part_len = kRecord - index;
  const bool fills_block = input_len >= part_len;

  // The whole call is planned first, so that a call that fails takes in nothing.
  int64_t rest_from = 0;   // first input position left over for the buffer
  int64_t blocks_end = 0;  // whole blocks start at part_len, part_len + 64, ... < blocks_end
  if (fills_block) {
    // The loop bound: blocks start while i <= InputLen - partLen - (InputLen Mod 64).
    // From a block boundary it stops exactly at the last whole block; from inside a
    // block it may stop one block early or run one block past the input.
    const int64_t limit = int64_t{input_len} - part_len - input_len % kRecord;
    rest_from = part_len;
    if (limit >= part_len) rest_from += ((limit - part_len) / kRecord + 1) * kRecord;
    blocks_end = rest_from;
  }
  const int64_t rest = input_len - rest_from;
  const int64_t rest_at = fills_block ? 0 : index;
  const bool writes = fills_block || rest > 0;
  if (writes && index < 0) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  if (rest_from > kPositionLimit || (rest > 0 && input_len > kPositionLimit)) {
    RaiseRuntime(RuntimeError::kOverflow);
  }
  if (writes) {
    const int64_t last_read = std::max<int64_t>(input_len, blocks_end) - 1;
    if (lower > 0 || upper < last_read) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  }
  if (rest_at + rest > kRecord) RaiseRuntime(RuntimeError::kSubscriptOutOfRange);

  count = new_count;
  auto at = [&](int64_t position) { return input + (position - lower); };
  if (fills_block) {
    std::memcpy(buffer + index, at(0), static_cast<size_t>(part_len));
    Transform(registers, buffer, 1);
    if (blocks_end > part_len) {
      const size_t blocks = static_cast<size_t>((blocks_end - part_len) / kRecord);
      Transform(registers, at(part_len), blocks);
      std::memcpy(buffer, at(blocks_end - kRecord), kRecord);
    }
  }
  if (rest > 0) std::memcpy(buffer + rest_at, at(rest_from), static_cast<size_t>(rest));
}

void Md5State::Final() {
  const int32_t bits = CheckedMul(count, 8);
  const int32_t index = count % kRecord;
  // Past position 56 the padding length is taken from the whole count, not the index:
  // from 64 bytes on it comes out negative, nothing is padded and the count drops to 120.
  const int32_t pad_len = index <= 56 ? 56 - index : 120 - count;
  static constexpr uint8_t kPadding[kRecord] = {0x80};
  Update(pad_len, kPadding, 0, kRecord - 1);
  // The length goes into Byte-sized parts; a negative one does not fit.
  if (bits < 0) RaiseRuntime(RuntimeError::kOverflow);
  const uint8_t length[8] = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                             static_cast<uint8_t>(bits >> 16),
                             static_cast<uint8_t>(bits >> 24), 0, 0, 0, 0};
  Update(8, length, 0, 7);
}

void Md5State::HashFile(const std::string& path) {
  // A name with a NUL in it would silently name a shorter path.
  if (path.find('\0') != std::string::npos) RaiseRuntime(RuntimeError::kBadFileNameOrNumber);
  // Opened without waiting: a FIFO with no writer would block here for good, and it is
  // refused below like every file that is not a regular one.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) RaiseOpenError(errno, path);
  const FileCloser closer{fd};
  struct stat info;
  if (::fstat(fd, &info) != 0) RaiseRuntime(RuntimeError::kDeviceIoError);
  if (S_ISDIR(info.st_mode)) RaiseRuntime(RuntimeError::kPathFileAccessError);
  if (!S_ISREG(info.st_mode)) RaiseRuntime(RuntimeError::kBadFileNameOrNumber);
  Init();
  // The count of a file that is read whole; its bit length overflows from 2^28 bytes on,
  // so such a file fails before it is read.
  const int64_t size = info.st_size;
  const int64_t counted = size % kRecord != 0 ? size : std::max<int64_t>(size - kRecord, 0);
  if (counted * 8 > INT32_MAX) RaiseRuntime(RuntimeError::kOverflow);

  // Records of 64 bytes, read a megabyte at a time. A record is hashed at once only when
  // more of the file follows it; the record that reaches the end of the file (a whole
  // one too, when the length is a multiple of 64) stays in the buffer for `Final`,
  // which overwrites it.
  constexpr size_t kChunk = size_t{1} << 20;
  std::unique_ptr<uint8_t[]> chunk(new uint8_t[kChunk + kRecord]);
  size_t held = 0;  // bytes read but not hashed, at the front of the chunk
  int64_t total = 0;
  for (;;) {
    const ssize_t n = ::read(fd, chunk.get() + held, kChunk);
    if (n < 0) {
      if (errno == EINTR) continue;
      RaiseRuntime(RuntimeError::kDeviceIoError);
    }
    if (n == 0) break;
    // A file that grows while it is read (or one the system sizes as 0, such as those
    // under /proc) stops at the longest length that gets a digest.
    total += n;
    if (total > kLongestFile) RaiseRuntime(RuntimeError::kOverflow);
    const size_t available = held + static_cast<size_t>(n);
    const size_t blocks = (available - 1) / kRecord;
    if (blocks > 0) {
      int64_t grown = count + static_cast<int64_t>(blocks) * kRecord;
      if (grown > INT32_MAX) RaiseRuntime(RuntimeError::kOverflow);
      count = static_cast<int32_t>(grown);
      Transform(registers, chunk.get(), blocks);
      std::memcpy(buffer, chunk.get() + (blocks - 1) * kRecord, kRecord);
    }
    held = available - blocks * kRecord;
    std::memmove(chunk.get(), chunk.get() + blocks * kRecord, held);
  }
  std::memcpy(buffer, chunk.get(), held);
  const int32_t tail = static_cast<int32_t>(held % kRecord);
  count = CheckedAdd(count, tail);
  Final();
}

String Md5State::Hex() const {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  String out;
  out.reserve(32);
  for (uint32_t r : registers) {
    for (int byte = 0; byte < 4; ++byte) {
      const uint32_t v = (r >> (8 * byte)) & 0xFF;
      out += static_cast<char16_t>(kDigits[v >> 4]);
      out += static_cast<char16_t>(kDigits[v & 15]);
    }
  }
  return out;
}

}  // namespace tsruntime::md5_detail
