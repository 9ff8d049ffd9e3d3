// The interactive session's history file, and the session in a real terminal: tmux runs
// `tsrt` in a pseudo-terminal (as an ordinary user where the tests can start one), keys go
// in through send-keys and the screen comes back through capture-pane. Completion,
// history across sessions and the private data folder are checked as a user meets them;
// the file itself keeps the newest lines, replaces itself whole, and leaves links, pipes
// and folders alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <thread>

#include "history_file.h"
#include "support/child_process.h"
#include "system/fs_fixture.h"

namespace tsrt {
namespace {

using tsruntime::testing::CanRunAsOrdinaryUser;
using tsruntime::testing::RunProgram;
using tsruntime::testing::ThrowawayUid;

// Each test has a scratch folder of its own.
using HistoryFiles = tsruntime::testing::FsTest;

// The permission bits of `path` and whether `uid` owns it, as "0700 mine".
std::string ModeAndOwner(const std::string& path, uid_t uid = getuid()) {
  struct stat st;
  if (lstat(path.c_str(), &st) != 0) return "missing";
  char mode[8];
  std::snprintf(mode, sizeof mode, "%04o", st.st_mode & 0777);
  return std::string(mode) + (st.st_uid == uid ? " mine" : " another's");
}

TEST(HistoryFile, LivesInTheUsersDataFolder) {
  const char* const names[] = {"XDG_DATA_HOME", "HOME"};
  std::optional<std::string> old[2];
  for (int i = 0; i < 2; ++i) {
    if (const char* value = std::getenv(names[i])) old[i] = value;
  }
  const std::pair<const char*, const char*> rows[] = {  // XDG_DATA_HOME (null: unset), path
      {"/data/", "/data/tsruntime/tsrt_history"},
      {"relative", "/home/u/.local/share/tsruntime/tsrt_history"},
      {nullptr, "/home/u/.local/share/tsruntime/tsrt_history"},
  };
  setenv("HOME", "/home/u", 1);
  for (const auto& [xdg, path] : rows) {
    xdg ? setenv("XDG_DATA_HOME", xdg, 1) : unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(HistoryFile::DefaultPath().value_or("none"), path) << (xdg ? xdg : "unset");
  }
  for (int i = 0; i < 2; ++i) old[i] ? setenv(names[i], old[i]->data(), 1) : unsetenv(names[i]);
}

// The folders made are private whatever the umask: TerminalSession checks their modes.
TEST_F(HistoryFiles, KeepTheNewestLinesAndReplaceThemselvesWhole) {
  const std::string folder = Native("a/b/tsruntime"), path = folder + "/tsrt_history";
  const HistoryFile history(path);
  ASSERT_TRUE(history.Append("? 1"));
  {
    std::ofstream more(path, std::ios::app);  // as if another session had added lines
    for (size_t i = 2; i <= HistoryFile::kKept + 1; ++i) more << "? " << i << "\r\n\n";
  }
  ASSERT_TRUE(history.Append("? last"));
  const std::vector<std::string> lines = history.Load();
  ASSERT_EQ(lines.size(), HistoryFile::kKept);
  EXPECT_EQ(lines.front() + "," + lines.end()[-2] + "," + lines.back(), "? 3,? 1001,? last");
  EXPECT_EQ(Listing("a/b/tsruntime"), tsruntime::testing::Names{"tsrt_history"}) << "no file left beside it";
}

TEST_F(HistoryFiles, LeaveAnythingButARegularFileAlone) {
  Put("target", "kept\n");
  ASSERT_EQ(mkfifo(Native("fifo").c_str(), 0644), 0);
  Link("link", Native("target"));
  MakeFolder("folder");
  for (const char* name : {"fifo", "link", "folder"}) {
    const auto kind_mode_inode = [&] { return std::to_string(Info(name).st_mode) + " " + std::to_string(Info(name).st_ino); };
    const std::string before = kind_mode_inode();
    const HistoryFile history(Native(name));
    EXPECT_TRUE(history.Load().empty()) << name;
    EXPECT_FALSE(history.Append("? 1")) << name;
    EXPECT_EQ(kind_mode_inode(), before) << name;
  }
  EXPECT_EQ(Get("target"), "kept\n");
}

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
using TerminalSession = tsruntime::testing::FsTest;

TEST_F(TerminalSession, CompletesNamesRecallsHistoryAndKeepsItPrivately) {
  const std::string scratch = Native();
  umask(022);  // a lax one: the folders made are private all the same
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
    ASSERT_THAT(t.WaitFor("\n>"), ::testing::HasSubstr("Tab completes, Ctrl-D ends.\n>"));
    t.Send("Set s = CreateObject(\"TSRuntimeLib.clsZKStr", {"Tab"});
    EXPECT_THAT(t.WaitFor("clsZKString"), ::testing::HasSubstr("(\"TSRuntimeLib.clsZKString"));
    t.Send("\")");
    t.WaitFor("\n>", 2);
    t.Send("? \"ёж\" & s.InstrR", {"Tab"});  // a letter of two bytes before the word
    t.Send("(\"a.b.c\", \".\")");
    EXPECT_THAT(t.WaitFor("\n\"ёж4\"\n"),
                ::testing::HasSubstr("> ? \"ёж\" & s.InstrRight(\"a.b.c\", \".\")\n"));
    t.WaitFor("\n>", 3);
    t.Send("? s.ConvCV", {"Tab", "Tab"});
    EXPECT_THAT(t.WaitFor("ConvCVS"), ::testing::HasSubstr("ConvCVD"))
        << "a second Tab lists the candidates";
    t.Send("", {"C-u"});
    t.Send("? 1; &H8000&");
    t.WaitFor("\n>", 4);
    t.Send("", {"Up", "Enter"});
    EXPECT_THAT(t.WaitFor("1 32768", 2), ::testing::HasSubstr("> ? 1; &H8000&\n1 32768\n"))
        << "Up recalls the line before";
    t.Send("", {"C-d"});
    EXPECT_TRUE(t.Ended()) << "Ctrl-D ends the session";
  }
  std::ifstream in(history, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}),
            "Set s = CreateObject(\"TSRuntimeLib.clsZKString\")\n"
            "? \"ёж\" & s.InstrRight(\"a.b.c\", \".\")\n"
            "? 1; &H8000&\n");
  const uid_t user = CanRunAsOrdinaryUser() ? ThrowawayUid() : getuid();
  for (const std::string& file : {scratch + "/data", data, data + "/tsruntime", history}) {
    EXPECT_EQ(ModeAndOwner(file, user), file == history ? "0600 mine" : "0700 mine") << file;
  }
  {
    Terminal t(scratch + "/tmux", tsrt);
    t.WaitFor("\n>");
    t.Send("", {"Up"});
    EXPECT_THAT(t.WaitFor("> ? 1; &H8000&"), ::testing::HasSubstr("\n> ? 1; &H8000&"))
        << "the next session recalls the last";
  }
}

}  // namespace
}  // namespace tsrt
