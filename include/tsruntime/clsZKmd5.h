// clsZKmd5: MD5 digests of strings and files, as 32 upper-case hexadecimal digits.
//
//   auto md5 = tsruntime::New<tsruntime::clsZKmd5>();
//   md5->DigestStrToHexStr(u"abc");         // "900150983CD24FB0D6963F7D28E17F72"
//   md5->DigestFileToHexStr(u"/etc/hosts");  // the digest of the file's bytes
//
// The compression, registers and digest order are those of RFC 1321. The padding and
// the file reader keep rules of their own, and for some lengths the digest is not the
// RFC 1321 one. Hosts have stored such digests, so the rules are kept exactly:
//
//   - A message whose length is 56 mod 64 gets no 0x80 byte: its last 56 bytes and the
//     length make the final block.
//   - A message of 64 bytes or more whose length is 57 to 63 mod 64 gets a negative
//     padding length: nothing is padded, the count drops to 120, and the length
//     overwrites the last 1 to 7 bytes of the final block. Shorter ones are padded as
//     RFC 1321 says.
//   - A file whose length is a non-zero multiple of 64 never has its last 64 bytes
//     hashed: its digest is that of the file without them (a 64-byte file gives the
//     digest of the empty message).
//   - The byte count is a signed 32-bit number and so is the bit length: once 2^28
//     bytes (256 MiB) are counted, the digest fails with overflow (6). Every file longer
//     than 268,435,456 bytes fails, without being read; the longest that gets a digest
//     is 268,435,456 bytes (a multiple of 64, so its last 64 bytes are not counted), and
//     the longest one of other lengths 268,435,455 bytes.
//   - One `MD5Update` takes at most 32,767 bytes from a block boundary; positions beyond
//     32,767 fail with overflow (6), and so does `DigestStrToHexStr` for strings of
//     32,768 characters or more.
//
// For all other lengths the digest is the RFC 1321 digest. Nothing is trapped: errors
// are the host runtime's own. A failing `MD5Update` has taken nothing in; after any
// other failure the state is undefined until the next `MD5Init`.
#pragma once

#include <cstdint>
#include <memory>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

namespace md5_detail {
struct Md5State;
}

class clsZKmd5 : public Object {
 public:
  clsZKmd5();
  ~clsZKmd5() override;
  TSRUNTIME_CLASS_INFO;

  // The four registers as signed decimal text: after MD5Init RegisterA is
  // "1732584193" and RegisterB "-271733879".
  String RegisterA() const;
  String RegisterB() const;
  String RegisterC() const;
  String RegisterD() const;

  // Registers to their initial values, byte count 0.
  void MD5Init();

  // Takes in the first `InputLen` bytes of the byte array `InputBuffer` (lower bound 0).
  // The bytes fill a 64-byte block buffer, transformed each time it is full. Whole
  // blocks are taken while their start i <= InputLen - partLen - (InputLen Mod 64),
  // where partLen is what the buffer lacked: exact from a block boundary; from inside a
  // block a call may stop a block early (more than the buffer can hold is left: subscript
  // out of range, 9) or hash a block past `InputLen` (read from the array when it is long
  // enough, else 9). A negative `InputLen` takes in nothing and lowers the byte count.
  // Errors: overflow (6) for positions beyond 32,767 or a count beyond 32 bits, type
  // mismatch (13) when `InputBuffer` is not a byte array.
  void MD5Update(int32_t InputLen, const SafeArray& InputBuffer);

  // Appends the padding (see above) and the bit length, and transforms the last block.
  // Overflow (6) when the bit length does not fit in 32 signed bits.
  void MD5Final();

  // The digest: A, B, C, D, each least significant byte first, as 32 upper-case hex
  // digits. "D41D8CD98F00B204E9800998ECF8427E" for the empty message.
  String GetValues() const;

  // The digest of a string, one byte per character in the ANSI code page (characters it
  // lacks become '?').
  String DigestStrToHexStr(const String& SourceString);

  // The digest of a file's bytes. File not found (53), path not found (76), permission
  // denied (70), path/file access error (75, a folder) or bad file name (52, a name
  // holding a NUL) when it cannot be read. Only regular files (or links to them) are
  // read: a FIFO, socket or device raises bad file name (52) at once, without waiting
  // for a writer. A file that grows past 268,435,456 bytes while it is read stops
  // there with overflow (6).
  String DigestFileToHexStr(const String& FileName);

  // Reduces `bits` to `bits` Mod 32 (the sign of `bits` kept) and writes it back; when
  // that is positive, rotates `value` left by it, writes the result back into `value` and
  // returns it, else returns `value` unchanged.
  //   value 1, bits 33  ->  returns 2, value 2, bits 1
  //   value 5, bits -1  ->  returns 5, value 5, bits -1
  int32_t LongLeftRotate(int32_t& value, int32_t& bits) const;

 private:
  String Register(int i) const;
  std::unique_ptr<md5_detail::Md5State> state_;
};

}  // namespace tsruntime
