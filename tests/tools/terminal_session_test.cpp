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
  // Starts `command` (argv words) in a new 160x50 terminal whose pane stays readable after
  // the command ends.
  Terminal(const std::string& socket, std::vector<std::string> command) : socket_(socket) {
    command.insert(command.begin(), {"new-session", "-d", "-x", "160", "-y", "50"});
    started_ = Tmux(command) == 0 && Tmux({"set-option", "-g", "remain-on-exit", "on"}) == 0;
  }
  ~Terminal() { Tmux({"kill-server"}); }

  bool started() const { return started_; }

  // Types `text` as it stands, then presses keys by name ("Tab", "Enter", "Up", "C-u").
  void Send(const std::string& text, const std::vector<std::string>& keys = {"Enter"}) {
    if (!text.empty()) Tmux({"send-keys", "-l", text});
    for (const std::string& key : keys) Tmux({"send-keys", key});
  }

  // The screen once it shows `text` `times` times, or as it is after 30 seconds. Lines
  // come without their trailing spaces, tabs as spaces.
  std::string WaitFor(const std::string& text, int times = 1) {
    std::string screen;
    Poll([&] {
      screen = RunProgram({"tmux", "-S", socket_, "capture-pane", "-p"}).output;
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
    for (; !done(); std::this_thread::sleep_for(std::chrono::milliseconds(50))) {
      if (std::chrono::steady_clock::now() > deadline) return false;
    }
    return true;
  }

  int Tmux(std::vector<std::string> args) {
    args.insert(args.begin(), {"tmux", "-S", socket_});
    return RunProgram(args).exit_code;
  }

  std::string socket_;
  bool started_ = false;
};

// Each line is typed once its prompt is on the screen: keys typed before it would be
// echoed out of place.
TEST(TerminalSession, CompletesNamesRecallsHistoryAndKeepsItPrivately) {
  const std::string scratch = testing::TempDir() + "tsrt-terminal-" + std::to_string(getpid());
  ASSERT_EQ(RunProgram({"rm", "-rf", scratch}).exit_code, 0);
  ASSERT_EQ(mkdir(scratch.c_str(), 0755), 0);
  std::vector<std::string> tsrt;
  if (CanRunAsOrdinaryUser()) {
    const std::string id = std::to_string(ThrowawayUid());
    ASSERT_EQ(chown(scratch.c_str(), ThrowawayUid(), ThrowawayUid()), 0);
    tsrt = {"setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups", "--inh-caps=-all", "--"};
  }
  const std::string data = scratch + "/data/deeper";  // missing folders are made
  tsrt.insert(tsrt.end(), {"env", "-i", "HOME=" + scratch, "XDG_DATA_HOME=" + data,
                           "LANG=C.UTF-8", "TERM=xterm", TSRT_PATH});
  const std::string history = data + "/tsruntime/tsrt_history";
  {
    Terminal t(scratch + "/tmux", tsrt);
    ASSERT_TRUE(t.started()) << "tmux is needed (scripts/install-deps.sh installs it)";
    ASSERT_THAT(t.WaitFor("\n>"), testing::HasSubstr("Tab completes, Ctrl-D ends.\n>"));
    t.Send("Set s = CreateObject(\"TSRuntimeLib.clsZKStr", {"Tab"});
    EXPECT_THAT(t.WaitFor("clsZKString"), testing::HasSubstr("(\"TSRuntimeLib.clsZKString"));
    t.Send("\")");
    t.WaitFor("\n>", 2);
    t.Send("? \"ёж\" & s.InstrR", {"Tab"});  // a letter of two bytes before the word
    t.Send("(\"a.b.c\", \".\")");
    EXPECT_THAT(t.WaitFor("\n\"ёж4\"\n"),
                testing::HasSubstr("> ? \"ёж\" & s.InstrRight(\"a.b.c\", \".\")\n"));
    t.WaitFor("\n>", 3);
    t.Send("? s.ConvCV", {"Tab", "Tab"});
    EXPECT_THAT(t.WaitFor("ConvCVS"), testing::HasSubstr("ConvCVD"))
        << "a second Tab lists the candidates";
    t.Send("", {"C-u"});
    t.Send("x = s.Filter(\"a-b-c\", \"-\", sel", {"Tab"});
    t.Send("4)");
    EXPECT_THAT(t.WaitFor("SelStart = 2"), testing::HasSubstr("\"-\", SelStart:=4)\n"));
    t.WaitFor("\n>", 4);
    t.Send("? x; &H8000&");
    t.WaitFor("\n>", 5);
    t.Send("", {"Up", "Enter"});
    EXPECT_THAT(t.WaitFor("\"abc\" 32768", 2), testing::HasSubstr("> ? x; &H8000&\n\"abc\" 32768\n"))
        << "Up recalls the line before";
    t.Send("", {"C-d"});
    EXPECT_TRUE(t.Ended()) << "Ctrl-D ends the session";
  }
  std::ifstream in(history, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}),
            "Set s = CreateObject(\"TSRuntimeLib.clsZKString\")\n"
            "? \"ёж\" & s.InstrRight(\"a.b.c\", \".\")\n"
            "x = s.Filter(\"a-b-c\", \"-\", SelStart:=4)\n"
            "? x; &H8000&\n");
  struct stat st;
  for (const std::string& file : {scratch + "/data", data, data + "/tsruntime", history}) {
    ASSERT_EQ(stat(file.c_str(), &st), 0) << file;
    EXPECT_EQ(st.st_mode & 0777, file == history ? 0600u : 0700u) << file;
    EXPECT_EQ(st.st_uid, CanRunAsOrdinaryUser() ? ThrowawayUid() : getuid()) << file;
  }
  {
    Terminal t(scratch + "/tmux", tsrt);
    t.WaitFor("\n>");
    t.Send("", {"Up"});
    EXPECT_THAT(t.WaitFor("> ? x; &H8000&"), testing::HasSubstr("\n> ? x; &H8000&"))
        << "the next session recalls the last";
  }
  RunProgram({"rm", "-rf", scratch});
}

}  // namespace
