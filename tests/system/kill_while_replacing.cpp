// A process that replaces one file over and over is killed at random moments; every
// time, the file holds the old content or the new, never anything else.
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <random>
#include <thread>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

class KillWhileReplacing : public FsTest {};

TEST_F(KillWhileReplacing, TheFileIsAlwaysWholeOldOrWholeNew) {
  const std::string first(300000, 'A'), second(100000, 'B');
  Put("data.bin", first);
  std::mt19937 random(20261123);
  std::uniform_int_distribution<int> delay_us(0, 8000);
  int interrupted = 0;  // kills that left a temporary file: they came mid-write
  constexpr int kKills = 200;
  for (int kill = 0; kill < kKills; ++kill) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      // Bytes and text in turn, so that both ways of replacing are cut short.
      const SafeArray bytes = SafeArray::FromBytes(ToBytes(first));
      const String text = FromUtf8(second);
      for (;;) {
        fs_->BinaryWrite(Path("data.bin"), bytes);
        fs_->StringWrite(text, Path("data.bin"));
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(delay_us(random)));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer ran until killed";
    const std::string now = Get("data.bin");
    ASSERT_TRUE(now == first || now == second)
        << "kill " << kill << " left " << now.size() << " bytes";
    for (const std::string& name : Listing()) {
      if (name == "data.bin") continue;
      ++interrupted;
      std::filesystem::remove(Native(name));
    }
  }
  EXPECT_GT(interrupted, 0) << "no kill came while a replacement was being written";
}

}  // namespace
}  // namespace tsruntime::testing
