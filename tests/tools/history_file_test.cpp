// The interactive session's history file: where it lives, the newest lines kept in
// private folders, whole-file replacement, and links, pipes and folders left alone. The
// terminal test keeps it as an ordinary user.
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

using tsruntime::testing::RunProgram;

std::string Scratch(const std::string& name) {
  const std::string dir = ::testing::TempDir() + name + "-" + std::to_string(getpid());
  RunProgram({"rm", "-rf", dir});
  mkdir(dir.c_str(), 0777);
  return dir;
}

unsigned Mode(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0 ? st.st_mode & 0777 : 01000;
}

TEST(HistoryFile, LivesInTheUsersDataFolder) {
  const char* const names[] = {"XDG_DATA_HOME", "HOME"};
  std::optional<std::string> saved[2];
  for (int i = 0; i < 2; ++i) {
    if (const char* value = std::getenv(names[i])) saved[i] = value;
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
  for (int i = 0; i < 2; ++i) saved[i] ? setenv(names[i], saved[i]->c_str(), 1) : unsetenv(names[i]);
}

// With a lax umask every folder made is private all the same.
TEST(HistoryFile, KeepsTheNewestLinesInPrivateFolders) {
  const std::string scratch = Scratch("history");
  const mode_t umask_before = umask(022);
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
  EXPECT_EQ(lines.front() + "," + lines[lines.size() - 2] + "," + lines.back(), "? 3,? 1001,? last");
  std::vector<std::string> beside;  // no file left beside it
  if (DIR* d = opendir(folder.c_str())) {
    while (const dirent* e = readdir(d)) beside.emplace_back(e->d_name);
    closedir(d);
  }
  EXPECT_EQ(beside.size(), 3u);
  for (const std::string& f : {scratch + "/a", scratch + "/a/b", folder}) EXPECT_EQ(Mode(f), 0700u) << f;
  EXPECT_EQ(Mode(path), 0600u);
  umask(umask_before);
  RunProgram({"rm", "-rf", scratch});
}

TEST(HistoryFile, LeavesAnythingButARegularFileAlone) {
  const std::string scratch = Scratch("history-odd");
  std::ofstream(scratch + "/target") << "kept\n";
  const std::vector<std::string> makers[] = {
      {"mkfifo"}, {"ln", "-s", scratch + "/target"}, {"mkdir"}};  // each given the path
  for (const auto& maker : makers) {
    const std::string path = scratch + "/history-" + maker[0];
    std::vector<std::string> make = maker;
    make.push_back(path);
    ASSERT_EQ(RunProgram(make).exit_code, 0) << maker[0];
    struct stat before, after;
    ASSERT_EQ(lstat(path.c_str(), &before), 0);
    const HistoryFile history(path);
    EXPECT_TRUE(history.Load().empty()) << maker[0];
    EXPECT_FALSE(history.Append("? 1")) << maker[0];
    ASSERT_EQ(lstat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_mode, before.st_mode) << maker[0];
    EXPECT_EQ(after.st_ino, before.st_ino) << maker[0];
  }
  std::ifstream target(scratch + "/target");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(target), {}), "kept\n");
  RunProgram({"rm", "-rf", scratch});
}

}  // namespace
}  // namespace tsrt
