// The registry store under several processes at once, and under a writer killed at
// random moments: nothing written is lost, nothing half-written is seen.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>
#include <thread>

#include "system/registry_support.h"

namespace tsruntime {
namespace {

constexpr int32_t HKCU = HKEY_CURRENT_USER;

String Name(const char* prefix, int a, int b = -1) {
  return FromAscii(prefix + std::to_string(a) + (b < 0 ? "" : "-" + std::to_string(b)));
}

// A value long enough to span several database pages, so that a torn write would show.
String Payload(int n) {
  const String unit = FromAscii(std::to_string(n) + ":");
  String text;
  while (text.size() < 3000) text += unit;
  return text;
}

// Forks a child that runs `body` and leaves with its result as exit status.
template <class F>
pid_t Spawn(F body) {
  const pid_t pid = fork();
  if (pid == 0) _exit(body());
  return pid;
}

int ExitStatus(pid_t pid) {
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
}

using RegistryProcesses = testing::RegistryTest;

TEST_F(RegistryProcesses, FourProcessesWritingAndReadingTheSameKeysAtOnceLoseNothing) {
  constexpr int kProcesses = 4;
  constexpr int kWrites = 5000;  // and as many reads: 10,000 operations each
  constexpr int kKeys = 8;       // every process writes into all of them
  int gate[2];
  ASSERT_EQ(pipe(gate), 0);
  std::vector<pid_t> children;
  for (int p = 0; p < kProcesses; ++p) {
    children.push_back(Spawn([&] {
      close(gate[1]);
      char go;
      if (read(gate[0], &go, 1) < 0) return 10;  // starts when the gate closes
      auto r = New<clsZKRegistry>();
      int wrong = 0;
      for (int i = 0; i < kWrites; ++i) {
        const String key = Name("Race\\K", i % kKeys);
        if (!r->SetLong(HKCU, key, Name("P", p, i), i * 10 + p)) ++wrong;
        bool error = true;
        if (r->GetLong(HKCU, key, Name("P", p, i), -1, &error) != i * 10 + p || error) ++wrong;
      }
      return wrong == 0 ? 0 : 1;
    }));
  }
  close(gate[0]);
  close(gate[1]);
  for (pid_t c : children) EXPECT_EQ(ExitStatus(c), 0) << "a process saw a failed write or read";

  int missing = 0;
  for (int p = 0; p < kProcesses; ++p) {
    for (int i = 0; i < kWrites; ++i) {
      if (reg->GetLong(HKCU, Name("Race\\K", i % kKeys), Name("P", p, i), -1) != i * 10 + p) {
        ++missing;
      }
    }
  }
  EXPECT_EQ(missing, 0) << "writes lost between processes";
}

TEST_F(RegistryProcesses, AWriterKilledAtRandomMomentsLeavesEveryCommittedWrite) {
  constexpr int kKills = 200;
  std::mt19937 random(20261123);
  std::uniform_int_distribution<int> delay_us(0, 30000);
  int reported = -1;  // the last write a writer reported committed
  for (int round = 0; round < kKills; ++round) {
    int news[2];
    ASSERT_EQ(pipe(news), 0);
    const int first = reported + 1;
    const pid_t writer = Spawn([&] {
      close(news[0]);
      auto r = New<clsZKRegistry>();
      for (int n = first;; ++n) {
        if (!r->SetString(HKCU, u"Kill", Name("V", n), Payload(n)) ||
            !r->SetLong(HKCU, u"Kill", u"Last", n)) {
          return 1;
        }
        // Reported only once both writes returned, that is, committed.
        if (write(news[1], &n, sizeof n) != sizeof n) return 2;
      }
    });
    close(news[1]);
    // The random moment is counted from the writer's first commit, so that a slow start
    // on a busy machine does not swallow every round.
    int n;
    if (read(news[0], &n, sizeof n) == sizeof n) reported = n;
    std::this_thread::sleep_for(std::chrono::microseconds(delay_us(random)));
    kill(writer, SIGKILL);
    const int status = ExitStatus(writer);
    ASSERT_EQ(status, 100 + SIGKILL) << "the writer stopped by itself in round " << round;
    while (read(news[0], &n, sizeof n) == sizeof n) reported = n;
    close(news[0]);
  }

  // Every reported write is there; whatever else is there is whole.
  int lost = 0, torn = 0;
  for (int n = 0; n <= reported + 1; ++n) {
    bool error = true;
    const String v = reg->GetString(HKCU, u"Kill", Name("V", n), u"", &error);
    if (error && n <= reported) ++lost;
    if (!error && v != Payload(n)) ++torn;
  }
  EXPECT_EQ(lost, 0);
  EXPECT_EQ(torn, 0);
  EXPECT_GE(reg->GetLong(HKCU, u"Kill", u"Last", -1), reported);
  EXPECT_TRUE(reg->SetLong(HKCU, u"Kill", u"After", 1)) << "the store takes writes again";
}

}  // namespace
}  // namespace tsruntime
