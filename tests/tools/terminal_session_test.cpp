// The interactive session in a real terminal: tmux runs `tsrt` in a pseudo-terminal (as an
// ordinary user where the tests can start one), keys go in through send-keys and the
// screen comes back through capture-pane. Completion, history across sessions and the
// private data folder are checked as a user meets them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/child_process.h"

namespace {

using tsruntime::testing::CanRunAsOrdinaryUser;
using tsruntime::testing::RunProgram;
using tsruntime::testing::ThrowawayUid;

class Terminal {
 public:
  // Starts `command` (argv words) in a new 160x50 terminal.
  Terminal(const std::string& socket, const std::vector<std::string>& command) : socket_(socket) {
    std::vector<std::string> argv = {"tmux", "-S", socket_, "new-session", "-d", "-x", "160",
                                     "-y", "50"};
    argv.insert(argv.end(), command.begin(), command.end());
    started_ = RunProgram(argv).exit_code == 0;
    // The pane stays readable after tsrt ends.
    if (started_) Tmux({"set-option", "-g", "remain-on-exit", "on"});
  }
  ~Terminal() { Tmux({"kill-server"}); }

  bool started() const { return started_; }

  // Types `text` as it stands (no key names).
  void Type(const std::string& text) { Tmux({"send-keys", "-l", text}); }
  // Presses keys by name: "Tab", "Enter", "Up", "C-u", "C-d".
  void Press(const std::string& key) { Tmux({"send-keys", key}); }

  std::string Screen() { return RunProgram({"tmux", "-S", socket_, "capture-pane", "-p"}).output; }

  // The screen once it shows `text` `times` times, or as it is after 30 seconds. Lines
  // come without their trailing spaces, tabs as spaces.
  std::string WaitFor(const std::string& text, int times = 1) {
    std::string screen;
    Poll([&] {
      screen = Screen();
      int found = 0;
      for (size_t at = screen.find(text); at != std::string::npos; at = screen.find(text, at + 1)) {
        ++found;
      }
      return found >= times;
    });
    return screen;
  }

  // Whether the program in the terminal has ended, waiting up to 30 seconds.
  bool Ended() {
    return Poll([&] {
      return RunProgram({"tmux", "-S", socket_, "list-panes", "-F", "#{pane_dead}"}).output == "1\n";
    });
  }

 private:
  template <class F>
  static bool Poll(F&& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
      if (done()) return true;
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }

  void Tmux(std::vector<std::string> args) {
    args.insert(args.begin(), {"tmux", "-S", socket_});
    RunProgram(args);
  }

  std::string socket_;
  bool started_ = false;
};

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(TerminalSession, CompletesNamesRecallsHistoryAndKeepsItPrivately) {
  const std::string scratch = testing::TempDir() + "tsrt-terminal-" + std::to_string(getpid());
  ASSERT_EQ(RunProgram({"rm", "-rf", scratch}).exit_code, 0);
  ASSERT_EQ(mkdir(scratch.c_str(), 0755), 0);
  std::vector<std::string> as_user;
  if (CanRunAsOrdinaryUser()) {
    const std::string id = std::to_string(ThrowawayUid());
    ASSERT_EQ(chown(scratch.c_str(), ThrowawayUid(), ThrowawayUid()), 0);
    as_user = {"setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups", "--inh-caps=-all",
               "--"};
  }
  const std::string data = scratch + "/data/deeper";  // missing folders are made
  std::vector<std::string> tsrt = as_user;
  tsrt.insert(tsrt.end(), {"env", "-i", "HOME=" + scratch, "XDG_DATA_HOME=" + data,
                           "LANG=C.UTF-8", "TERM=xterm", TSRT_PATH});
  const std::string history = data + "/tsruntime/tsrt_history";
  {
    Terminal t(scratch + "/tmux", tsrt);
    ASSERT_TRUE(t.started()) << "tmux is needed (scripts/install-deps.sh installs it)";
    ASSERT_THAT(t.WaitFor("\n>"), testing::HasSubstr("Tab completes, Ctrl-D ends.\n>"));

    t.Type("Set s = CreateObject(\"TSRuntimeLib.clsZKStr");
    t.Press("Tab");
    EXPECT_THAT(t.WaitFor("clsZKString"), testing::HasSubstr("(\"TSRuntimeLib.clsZKString"));
    t.Type("\")");
    t.Press("Enter");
    t.WaitFor("\n>", 2);  // keys typed before the prompt would be echoed out of place
    // A letter of two bytes before the cursor: the word is still found.
    t.Type("? \"ёж\" & s.InstrR");
    t.Press("Tab");
    t.Type("(\"a.b.c\", \".\")");
    t.Press("Enter");
    EXPECT_THAT(t.WaitFor("\n\"ёж4\"\n"), testing::HasSubstr("> ? \"ёж\" & s.InstrRight(\"a.b.c\", \".\")\n"));
    t.WaitFor("\n>", 3);

    t.Type("? s.ConvCV");
    t.Press("Tab");
    t.Press("Tab");
    EXPECT_THAT(t.WaitFor("ConvCVS"), testing::HasSubstr("ConvCVD"))
        << "a second Tab lists the candidates";
    t.Press("C-u");
    t.Type("x = s.Filter(\"a-b-c\", \"-\", sel");
    t.Press("Tab");
    t.Type("4)");
    t.Press("Enter");
    EXPECT_THAT(t.WaitFor("SelStart = 2"), testing::HasSubstr("\"-\", SelStart:=4)\n"));
    t.WaitFor("\n>", 4);

    t.Type("? s.InWrds(5@)");
    t.Press("Enter");
    EXPECT_THAT(t.WaitFor("did you mean InWords?"),
                testing::HasSubstr("Error 438 (ZKRuntimeLib): Object doesn't support this"));
    t.WaitFor("\n>", 5);
    t.Type("? x; &H8000&");
    t.Press("Enter");
    t.WaitFor("\n>", 6);
    t.Press("Up");
    t.Press("Enter");
    EXPECT_THAT(t.WaitFor("\"abc\" 32768", 2), testing::HasSubstr("> ? x; &H8000&\n\"abc\" 32768\n"))
        << "Up recalls the line before";
    t.Press("C-d");
    EXPECT_TRUE(t.Ended()) << "Ctrl-D ends the session";
  }
  EXPECT_EQ(Slurp(history),
            "Set s = CreateObject(\"TSRuntimeLib.clsZKString\")\n"
            "? \"ёж\" & s.InstrRight(\"a.b.c\", \".\")\n"
            "x = s.Filter(\"a-b-c\", \"-\", SelStart:=4)\n"
            "? s.InWrds(5@)\n"
            "? x; &H8000&\n");
  struct stat st;
  for (const std::string& folder : {scratch + "/data", data, data + "/tsruntime"}) {
    ASSERT_EQ(stat(folder.c_str(), &st), 0) << folder;
    EXPECT_EQ(st.st_mode & 0777, 0700u) << folder;
    EXPECT_EQ(st.st_uid, as_user.empty() ? getuid() : ThrowawayUid()) << folder;
  }
  ASSERT_EQ(stat(history.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u);

  {
    Terminal t(scratch + "/tmux", tsrt);
    t.WaitFor("\n>");
    t.Press("Up");
    EXPECT_THAT(t.WaitFor("> ? x; &H8000&"), testing::HasSubstr("\n> ? x; &H8000&"))
        << "the next session recalls the last";
    t.Press("C-u");
    t.Type("Exit");
    t.Press("Enter");
    EXPECT_TRUE(t.Ended()) << "and so does Exit";
  }
  RunProgram({"rm", "-rf", scratch});
}

}  // namespace
