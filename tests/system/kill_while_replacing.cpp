// A process that replaces one file over and over is killed at random moments; every
// time, the file holds the old content or the new, never anything else.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <random>
#include <thread>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

class KillWhileReplacing : public FsTest {};

// The writer says through a pipe each time it starts a write, and is killed at a random
// moment after its first one began; how fast the machine is does not matter.
TEST_F(KillWhileReplacing, TheFileIsAlwaysWholeOldOrWholeNew) {
  const std::string first(300000, 'A'), second(100000, 'B');
  Put("data.bin", first);
  std::mt19937 random(20261123);
  std::uniform_int_distribution<int> delay_us(0, 3000);
  int interrupted = 0;  // kills after which a copy was left: they came mid-replacement
  constexpr int kKills = 200;
  for (int kill = 0; kill < kKills; ++kill) {
    int writing[2];
    ASSERT_EQ(::pipe(writing), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(writing[0]);
      ::fcntl(writing[1], F_SETFL, O_NONBLOCK);  // a full pipe never stops the writer
      // Bytes and text in turn, so that both ways of replacing are cut short.
      const SafeArray bytes = SafeArray::FromBytes(ToBytes(first));
      const String text = FromUtf8(second);
      for (;;) {
        [[maybe_unused]] ssize_t said = ::write(writing[1], "b", 1);
        fs_->BinaryWrite(Path("data.bin"), bytes);
        said = ::write(writing[1], "t", 1);
        fs_->StringWrite(text, Path("data.bin"));
      }
    }
    ::close(writing[1]);
    char started;
    ASSERT_EQ(::read(writing[0], &started, 1), 1) << "the writer never started";
    std::this_thread::sleep_for(std::chrono::microseconds(delay_us(random)));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::close(writing[0]);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer ran until killed";
    const std::string now = Get("data.bin");
    ASSERT_TRUE(now == first || now == second)
        << "kill " << kill << " left " << now.size() << " bytes";
    // Copies left by one writer are the next one's to remove.
    const std::vector<std::string> names = Listing();
    interrupted += names.size() > 1;
    ASSERT_LE(names.size(), 2u) << "copies left by earlier kills are removed";
  }
  EXPECT_GT(interrupted, 0) << "no kill came while a replacement was being written";
  ASSERT_TRUE(fs_->StringWrite(u"last", Path("data.bin")));
  EXPECT_EQ(Listing(), std::vector<std::string>{"data.bin"}) << "a write that lives cleans up";
}

}  // namespace
}  // namespace tsruntime::testing
