// The interactive session's history file: where it lives, the newest lines kept, private
// folders made for an ordinary user, whole-file replacement, and links, pipes and folders
// left alone.
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>

#include "history_file.h"
#include "support/child_process.h"

namespace tsrt {
namespace {

using tsruntime::testing::CanRunAsOrdinaryUser;
using tsruntime::testing::InTestChild;
using tsruntime::testing::RunProgram;
using tsruntime::testing::RunTestInChild;
using tsruntime::testing::ThrowawayUid;

std::string Scratch(const std::string& name) {
  const std::string dir = ::testing::TempDir() + name + "-" + std::to_string(getpid());
  RunProgram({"rm", "-rf", dir});
  mkdir(dir.c_str(), 0777);
  return dir;
}

std::vector<std::string> Entries(const std::string& folder) {
  std::vector<std::string> names;
  if (DIR* d = opendir(folder.c_str())) {
    while (const dirent* e = readdir(d)) {
      if (e->d_name[0] != '.') names.emplace_back(e->d_name);
    }
    closedir(d);
  }
  return names;
}

TEST(HistoryFile, LivesInTheUsersDataFolder) {
  const struct {
    const char* xdg;  // null: unset
    const char* home;
    const char* path;
  } rows[] = {
      {"/data/", "/home/u", "/data/tsruntime/tsrt_history"},
      {"relative", "/home/u", "/home/u/.local/share/tsruntime/tsrt_history"},
      {nullptr, "/home/u", "/home/u/.local/share/tsruntime/tsrt_history"},
  };
  const char* const names[] = {"XDG_DATA_HOME", "HOME"};
  std::vector<std::optional<std::string>> saved;
  for (const char* name : names) {
    const char* value = std::getenv(name);
    saved.push_back(value ? std::optional<std::string>(value) : std::nullopt);
  }
  for (const auto& r : rows) {
    if (r.xdg) setenv("XDG_DATA_HOME", r.xdg, 1);
    else unsetenv("XDG_DATA_HOME");
    setenv("HOME", r.home, 1);
    EXPECT_EQ(HistoryFile::DefaultPath().value_or("none"), r.path) << (r.xdg ? r.xdg : "unset");
  }
  for (size_t i = 0; i < saved.size(); ++i) {
    if (saved[i]) setenv(names[i], saved[i]->c_str(), 1);
    else unsetenv(names[i]);
  }
}

// Run as an ordinary user with a lax umask: every folder made is private all the same.
TEST(HistoryFile, KeepsTheNewestLinesInPrivateFolders) {
  const std::string scratch = InTestChild() ? std::getenv("SCRATCH") : Scratch("history");
  if (!InTestChild() && CanRunAsOrdinaryUser()) {
    ASSERT_EQ(chown(scratch.c_str(), ThrowawayUid(), ThrowawayUid()), 0);
    const auto child = RunTestInChild("HistoryFile.KeepsTheNewestLinesInPrivateFolders",
                                      {{"SCRATCH", scratch}}, ThrowawayUid());
    EXPECT_EQ(child.exit_code, 0) << child.output;
    RunProgram({"rm", "-rf", scratch});
    return;
  }
  umask(022);
  const std::string folder = scratch + "/a/b/tsruntime", path = folder + "/tsrt_history";
  const HistoryFile history(path);
  EXPECT_TRUE(history.Load().empty());
  ASSERT_TRUE(history.Append("? 1"));
  {
    std::ofstream more(path, std::ios::app);  // as if another session had added lines
    for (size_t i = 2; i <= HistoryFile::kKept + 1; ++i) more << "? " << i << "\r\n\n";
  }
  ASSERT_TRUE(history.Append("? last"));
  const std::vector<std::string> lines = history.Load();
  ASSERT_EQ(lines.size(), HistoryFile::kKept);
  EXPECT_EQ(lines.front(), "? 3");
  EXPECT_EQ(lines[lines.size() - 2], "? 1001");
  EXPECT_EQ(lines.back(), "? last");
  EXPECT_EQ(Entries(folder), std::vector<std::string>{"tsrt_history"}) << "no file left beside it";
  struct stat st;
  for (const std::string& f : {scratch + "/a", scratch + "/a/b", folder}) {
    ASSERT_EQ(stat(f.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u) << f;
  }
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u);
  if (!InTestChild()) RunProgram({"rm", "-rf", scratch});
}

TEST(HistoryFile, LeavesAnythingButARegularFileAlone) {
  const std::string scratch = Scratch("history-odd");
  std::ofstream(scratch + "/target") << "kept\n";
  const struct {
    const char* what;
    std::vector<std::string> make;  // a command that puts it at `path`
  } rows[] = {
      {"a pipe", {"mkfifo", "PATH"}}, {"a link", {"ln", "-s", scratch + "/target", "PATH"}},
      {"a folder", {"mkdir", "PATH"}},
  };
  for (const auto& r : rows) {
    const std::string path = scratch + "/history-" + std::to_string(&r - rows);
    std::vector<std::string> make = r.make;
    make.back() = path;
    ASSERT_EQ(RunProgram(make).exit_code, 0) << r.what;
    struct stat before, after;
    ASSERT_EQ(lstat(path.c_str(), &before), 0);
    const HistoryFile history(path);
    EXPECT_TRUE(history.Load().empty()) << r.what;
    EXPECT_FALSE(history.Append("? 1")) << r.what;
    ASSERT_EQ(lstat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode, before.st_mode) << r.what;
    EXPECT_EQ(after.st_ino, before.st_ino) << r.what;
  }
  std::ifstream target(scratch + "/target");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(target), {}), "kept\n");
  RunProgram({"rm", "-rf", scratch});
}

}  // namespace
}  // namespace tsrt
