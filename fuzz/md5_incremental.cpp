// clsZKmd5's incremental steps on any input. Random MD5Update calls (any length, any
// bounds) either take their bytes in or raise and take nothing: the registers do not
// move on a failed call. Bytes fed in pieces that start on block boundaries digest as
// the same bytes passed as a string, and, unless their length is a multiple of 64, as
// the same bytes in a file. Files that are not regular (a FIFO with no writer, an
// endless device) are refused at once.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <fstream>

#include "fuzz_input.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsZKmd5.h"

using namespace tsruntime;

namespace {

std::string Registers(clsZKmd5& md5) {
  return ToUtf8(md5.RegisterA() + u" " + md5.RegisterB() + u" " + md5.RegisterC() + u" " +
                md5.RegisterD());
}

void Check(bool same) {
  if (!same) std::abort();
}

// A folder shared by every run, with a FIFO that never gets a writer. libFuzzer may end
// a run without the exit handlers, so nothing is left to clean up but these two.
const std::filesystem::path& Scratch() {
  static const std::filesystem::path dir = [] {
    const auto made = std::filesystem::temp_directory_path() / "tsruntime-md5-fuzz";
    std::filesystem::create_directories(made);
    ::mkfifo((made / "fifo").c_str(), 0600);  // EEXIST from an earlier run is fine
    return made;
  }();
  return dir;
}

void RandomSteps(clsZKmd5& md5, fuzz::Input& in) {
  for (int step = in.Below(8); step > 0; --step) {
    switch (in.Below(4)) {
      case 0: md5.MD5Init(); break;
      case 1:
        try {
          md5.MD5Final();
        } catch (const Error&) {
        }
        break;
      default: {
        const int32_t length = in.Byte() % 2 ? in.I32() : static_cast<int32_t>(in.Below(200));
        const std::vector<uint8_t> bytes = in.Bytes(130);
        SafeArray buffer(VarType::kByte);
        try {
          buffer = SafeArray::FromBytes(bytes, in.Bound());
        } catch (const Error&) {
        }
        const std::string before = Registers(md5);
        try {
          md5.MD5Update(length, buffer);
        } catch (const Error&) {
          Check(Registers(md5) == before);
        }
      }
    }
  }
}

void PiecesMatchStringAndFile(clsZKmd5& md5, fuzz::Input& in) {
  const std::vector<uint8_t> bytes = in.Bytes(255);
  md5.MD5Init();
  size_t at = 0;
  while (at < bytes.size()) {
    const size_t piece = std::min<size_t>(64 * (1 + in.Below(3)), bytes.size() - at);
    md5.MD5Update(static_cast<int32_t>(piece),
                  SafeArray::FromBytes(std::span(bytes).subspan(at, piece)));
    at += piece;
  }
  md5.MD5Final();
  const String pieces = md5.GetValues();
  Check(md5.DigestStrToHexStr(AnsiToString(bytes)) == pieces);
  if (bytes.size() % 64 == 0) return;  // a file's last whole record is not hashed
  const std::filesystem::path file = Scratch() / ("bytes-" + std::to_string(::getpid()));
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  const String digest = md5.DigestFileToHexStr(FromUtf8(file.string()));
  std::filesystem::remove(file);
  Check(digest == pieces);
}

void SpecialFilesAreRefused(clsZKmd5& md5, fuzz::Input& in) {
  const std::string special[] = {(Scratch() / "fifo").string(), "/dev/zero", "/dev/null"};
  try {
    md5.DigestFileToHexStr(FromUtf8(special[in.Below(3)]));
    std::abort();
  } catch (const Error& e) {
    Check(e.number() == 52);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input in(data, size);
  auto md5 = New<clsZKmd5>();
  switch (in.Below(8)) {
    case 0: SpecialFilesAreRefused(*md5, in); break;
    case 1:
    case 2: PiecesMatchStringAndFile(*md5, in); break;
    default: RandomSteps(*md5, in); break;
  }
  return 0;
}
