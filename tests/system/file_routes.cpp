// The two ways a file is written: replaced through a renamed copy (whole old or whole new
// whenever its writer is killed), or written in place where a rename would change what
// the user sees (devices and pipes, files shared with
// other users or under other names, folders the user may not write, a disk with room
// for one copy only). Cases that depend on who writes run as root and again as an
// ordinary user.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/sysmacros.h>

#include <signal.h>

#include <cstdlib>
#include <random>
#include <thread>

#include "support/child_process.h"
#include "system/fs_fixture.h"
#include "tsruntime/clsZKIniFile.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime::testing {
namespace {

class FileRoutes : public FsTest {
 protected:
  struct stat Info(const std::string& relative) const {
    struct stat info {};
    ::lstat(Native(relative).c_str(), &info);
    return info;
  }
  // What can be read from `fd` without waiting.
  static std::string Drain(int fd) {
    std::string out;
    char buf[4096];
    for (pollfd p{fd, POLLIN, 0}; ::poll(&p, 1, 200) > 0;) {
      const ssize_t n = ::read(fd, buf, sizeof buf);
      if (n <= 0) break;
      out.append(buf, static_cast<size_t>(n));
    }
    return out;
  }
  struct Writer {
    std::string name;
    std::string content;  // what the file holds after it wrote
    std::function<std::string()> write;  // "True", "False" or the error raised
  };
  // The writers a host has, each with its own content for the INI text "k=0".
  std::vector<Writer> Writers(const String& path) {
    std::string empty_tree;
    for (char c : std::string("000000009000000009000000009")) empty_tree += {c, '\0'};
    const auto said = [](bool ok) { return std::string(ok ? "True" : "False"); };
    return {
        {"Save", empty_tree, [=] { return said(New<clsZKStorage>()->Save(path)); }},
        {"StringWrite", "k=1", [=, this] { return said(fs_->StringWrite(u"k=1", path)); }},
        {"PutData", "k=2",
         [=, this] {
           return Run([&] {
             auto ini = New<clsZKIniFile>();
             ini->LetFullName(path);
             return ini->PutData(u"k", u"2");
           });
         }},
        {"BinaryWrite", "k=3",
         [=, this] { return said(fs_->BinaryWrite(path, SafeArray::FromBytes(ToBytes("k=3")))); }},
    };
  }
};

// A writer that cannot open a file gets what the interface gives for a failed open:
// False, or for PutData its save error; a pipe without a reader is such a file, and
// nothing waits for one.
TEST_F(FileRoutes, DevicesAndPipesAreWrittenIntoNeverReplacedNorWaitedOn) {
  ::alarm(30);  // a write that waits for a reader ends the program here
  ASSERT_EQ(::mkfifo(Native("fifo").c_str(), 0666), 0);
  const bool devices = ::mknod(Native("null").c_str(), S_IFCHR | 0666, makedev(1, 3)) == 0;
  const String fifo = Path("fifo"), null = Path("null");
  const SafeArray abc = SafeArray::FromBytes(ToBytes("abc"));
  for (const Writer& w : Writers(fifo)) {
    EXPECT_EQ(w.write().substr(0, 5), w.name == "PutData" ? "-2147" : "False") << w.name;
  }
  EXPECT_FALSE(fs_->StringWrite(u"x", fifo, xcZK_FILEWRITE_APPEND)) << "append, no reader";
  const int reader = ::open(Native("fifo").c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_TRUE(fs_->BinaryWrite(fifo, abc));
  EXPECT_TRUE(fs_->StringWrite(u"de", fifo, xcZK_FILEWRITE_APPEND));
  EXPECT_TRUE(fs_->StringWrite(u"f", fifo));
  EXPECT_EQ(Drain(reader), "abcdef") << "a reader gets every write";
  ::close(reader);
  EXPECT_TRUE(S_ISFIFO(Info("fifo").st_mode)) << "the pipe stays a pipe";
  if (devices) {
    EXPECT_TRUE(fs_->BinaryWrite(null, abc));
    EXPECT_TRUE(fs_->StringWrite(u"x", null));
    EXPECT_TRUE(fs_->StringWrite(u"x", null, xcZK_FILEWRITE_APPEND));
    EXPECT_TRUE(New<clsZKStorage>()->Save(null));
    EXPECT_TRUE(S_ISCHR(Info("null").st_mode)) << "the device stays a device";
  }
  EXPECT_EQ(Listing(), (devices ? std::vector<std::string>{"fifo", "null"}
                                : std::vector<std::string>{"fifo"}));
  ::alarm(0);
}

// A pipe, a terminal and the null device have nothing to flush; the write still counts.
TEST_F(FileRoutes, WritesIntoWhatCannotBeFlushedSucceed) {
  int pipe_ends[2];
  ASSERT_EQ(::pipe(pipe_ends), 0);
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(::grantpt(terminal) | ::unlockpt(terminal), 0);
  const struct {
    const char* what;
    std::string path;
    int read_end;
  } rows[] = {
      {"a pipe", "/proc/self/fd/" + std::to_string(pipe_ends[1]), pipe_ends[0]},
      {"a terminal", ::ptsname(terminal), terminal},
  };
  for (const auto& r : rows) {
    EXPECT_TRUE(fs_->StringWrite(u"ab", FromUtf8(r.path), xcZK_FILEWRITE_APPEND)) << r.what;
    EXPECT_TRUE(fs_->StringWrite(u"c", FromUtf8(r.path))) << r.what;
    EXPECT_TRUE(fs_->BinaryWrite(FromUtf8(r.path), SafeArray::FromBytes(ToBytes("d")))) << r.what;
    EXPECT_EQ(Drain(r.read_end), "abcd") << r.what;
  }
  for (int fd : {pipe_ends[0], pipe_ends[1], terminal}) ::close(fd);
}

TEST_F(FileRoutes, AFileWithOtherNamesIsWrittenInPlaceAndKeepsThem) {
  Put("a.txt", "old");
  ASSERT_EQ(::link(Native("a.txt").c_str(), Native("b.txt").c_str()), 0);
  ASSERT_TRUE(fs_->StringWrite(u"text", Path("a.txt")));
  EXPECT_EQ(Get("b.txt"), "text");
  ASSERT_TRUE(fs_->BinaryWrite(Path("b.txt"), SafeArray::FromBytes(ToBytes("by"))));
  EXPECT_EQ(Get("a.txt"), "by") << "cut to the new length";
  EXPECT_EQ(Info("a.txt").st_nlink, 2u);
}

// Root sets up each case in its own folder; root, then an ordinary user, writes every
// file with every writer. The ordinary user belongs to the group of "group/team.ini".
struct SharedCase {
  const char* what;
  const char* file;
  bool user_may_write;
};
constexpr SharedCase kShared[] = {
    {"the user's file in a folder only root may write", "locked/app.ini", true},
    {"root's world-writable file in a sticky folder", "sticky/shared.ini", true},
    {"root's file the user may write through its group", "group/team.ini", true},
    {"the user's file that has a second name", "group/linked.ini", true},
    {"root's file the user may only read", "sticky/theirs.ini", false},
};

class SharedFiles : public FileRoutes {
 protected:
  void SetUpCases(const std::string& run, uid_t user) {
    MakeFolder(run + "/locked");
    MakeFolder(run + "/sticky");
    MakeFolder(run + "/group");
    ::chmod(Native(run + "/sticky").c_str(), 01777);
    ::chmod(Native(run + "/group").c_str(), 0777);
    const struct {
      const char* file;
      uid_t uid;
      gid_t gid;
      mode_t mode;
    } files[] = {{"locked/app.ini", user, user, 0644},
                 {"sticky/shared.ini", 0, 0, 0666},
                 {"group/team.ini", 0, user, 0664},
                 {"group/linked.ini", user, user, 0644},
                 {"sticky/theirs.ini", 0, 0, 0644}};
    for (const auto& f : files) {
      Put(run + "/" + f.file, "k=0", f.mode);
      ASSERT_EQ(::chown(Native(run + "/" + f.file).c_str(), f.uid, f.gid), 0);
    }
    ASSERT_EQ(::link(Native(run + "/group/linked.ini").c_str(),
                     Native(run + "/group/second-name.ini").c_str()), 0);
    owners_[run].clear();
    for (const auto& c : kShared) owners_[run].push_back(Info(run + "/" + c.file));
  }

  // Every writer on every file, as the process runs. The folder comes from the parent
  // when this is the child.
  void WriteEveryFile(const std::string& folder, bool as_root) {
    for (const auto& c : kShared) {
      const std::string path = folder + "/" + c.file;
      const bool may = as_root || c.user_may_write;
      std::string expected = "k=0";
      for (const Writer& w : Writers(FromUtf8(path))) {
        const std::string outcome = w.write();
        EXPECT_EQ(outcome.substr(0, 5), may ? "True" : w.name == "PutData" ? "-2147" : "False")
            << c.what << ", " << w.name << ": " << outcome;
        if (may) expected = w.content;
        std::ifstream in(path, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), expected)
            << c.what << ", " << w.name;
      }
    }
  }

  void CheckKept(const std::string& run) {
    for (size_t i = 0; i < std::size(kShared); ++i) {
      const struct stat before = owners_[run][i], after = Info(run + "/" + kShared[i].file);
      EXPECT_EQ(after.st_uid, before.st_uid) << kShared[i].what;
      EXPECT_EQ(after.st_gid, before.st_gid) << kShared[i].what;
      EXPECT_EQ(after.st_mode, before.st_mode) << kShared[i].what;
      EXPECT_EQ(after.st_nlink, before.st_nlink) << kShared[i].what;
    }
    EXPECT_EQ(Get(run + "/group/second-name.ini"), Get(run + "/group/linked.ini"));
    for (const char* folder : {"locked", "sticky", "group"}) {
      for (const std::string& name : Listing(run + "/" + folder)) {
        EXPECT_EQ(name.find(".tsrt-"), std::string::npos) << "left over: " << name;
      }
    }
  }

  std::map<std::string, std::vector<struct stat>> owners_;
};

TEST_F(SharedFiles, ReplacingKeepsOwnerGroupLinksAndWorksWhereTheInterfaceDoes) {
  if (InTestChild()) return WriteEveryFile(std::getenv("TSRT_SHARED_FOLDER"), false);
  if (::geteuid() != 0) GTEST_SKIP() << "the cases are set up by root";
  const uid_t user = ThrowawayUid();
  ::chmod(Native().c_str(), 0755);
  SetUpCases("as-root", user);
  WriteEveryFile(Native("as-root"), true);
  CheckKept("as-root");
  if (!CanRunAsOrdinaryUser()) GTEST_SKIP() << "no ordinary user to run as";
  SetUpCases("as-user", user);
  const ChildResult child = RunTestInChild(
      "SharedFiles.ReplacingKeepsOwnerGroupLinksAndWorksWhereTheInterfaceDoes",
      {{"TSRT_SHARED_FOLDER", Native("as-user")}}, user);
  EXPECT_EQ(child.exit_code, 0) << child.output;
  EXPECT_NE(child.output.find("[  PASSED  ] 1 test"), std::string::npos) << child.output;
  CheckKept("as-user");
}

// On a disk with room for one copy of a file, a replacement goes in place; content that
// does not fit at all, and an append that does not, leave the file as it was.
TEST_F(FileRoutes, AFullDiskTakesWhatFitsAndKeepsTheOldContentOtherwise) {
  const SmallDisk disk(Native("disk"), "1m");
  if (!disk.mounted()) GTEST_SKIP() << "no file system can be mounted here";
  const std::string old(600000, 'o');
  const struct {
    const char* what;
    size_t bytes;
    int32_t mode;  // 0: BinaryWrite
    bool ok;
    std::string after;
  } rows[] = {
      {"a replacement with no room for a copy", 610000, 0, true, std::string(610000, 'n')},
      {"the same as text", 600001, xcZK_FILEWRITE_REPLACE, true, std::string(600001, 'n')},
      {"a replacement larger than the disk", 1200000, 0, false, old},
      {"an append that does not fit is cut back", 600000, xcZK_FILEWRITE_APPEND, false, old},
      {"a new file that does not fit is not made", 2000000, 0, false, ""},
  };
  for (const auto& r : rows) {
    std::filesystem::remove(Native("disk/f"));
    if (!r.after.empty()) Put("disk/f", old);
    const bool ok = r.mode == 0
                        ? fs_->BinaryWrite(Path("disk/f"), SafeArray::FromBytes(Bytes(r.bytes, 'n')))
                        : fs_->StringWrite(String(r.bytes, u'n'), Path("disk/f"),
                                           static_cast<xeZK_FILEWRITEMODES>(r.mode));
    EXPECT_EQ(ok, r.ok) << r.what;
    EXPECT_TRUE(Get("disk/f") == r.after) << r.what << ": " << Get("disk/f").size() << " bytes";
    EXPECT_EQ(Listing("disk"), r.after.empty() ? std::vector<std::string>{}
                                               : std::vector<std::string>{"f"})
        << r.what;
  }
}

// A replacement removes the copies a dead writer left of the same file; a copy whose
// writer lives and copies of other files stay.
TEST_F(FileRoutes, ASuccessfulReplacementRemovesItsOwnLeftovers) {
  for (const char* name : {".f.txt.tsrt-0", ".f.txt.tsrt-1", ".f.txt.tsrt-5", ".g.txt.tsrt-0"}) {
    Put(name, "left over");
  }
  const int live = ::open(Native(".f.txt.tsrt-1").c_str(), O_RDONLY);
  ASSERT_EQ(::flock(live, LOCK_EX), 0);
  ASSERT_TRUE(fs_->StringWrite(u"new", Path("f.txt")));
  EXPECT_EQ(Listing(), (std::vector<std::string>{".f.txt.tsrt-1", ".g.txt.tsrt-0", "f.txt"}));
  EXPECT_EQ(Get(".f.txt.tsrt-1"), "left over");
  ::close(live);
  ASSERT_TRUE(fs_->BinaryWrite(Path("f.txt"), SafeArray::FromBytes(ToBytes("x"))));
  EXPECT_EQ(Listing(), (std::vector<std::string>{".g.txt.tsrt-0", "f.txt"}));
}

// Whether the stopped process `pid` has a copy of `name` open for writing that it has not
// put in place yet.
bool WritesCopy(pid_t pid, const std::string& name) {
  const std::string proc = "/proc/" + std::to_string(pid);
  for (const auto& fd : std::filesystem::directory_iterator(proc + "/fd")) {
    std::error_code error;
    const std::string target = std::filesystem::read_symlink(fd.path(), error).string();
    std::ifstream info(proc + "/fdinfo/" + fd.path().filename().string());
    std::string field, flags;
    while (info >> field >> flags && field != "flags:") {}
    if (target.find("/." + name + ".tsrt-") != std::string::npos && !target.ends_with(" (deleted)") &&
        (std::stoi(flags, nullptr, 8) & O_ACCMODE) == O_WRONLY) {
      return true;
    }
  }
  return false;
}

using KillWhileReplacing = FsTest;

// A process replaces one file over and over, bytes and text in turn, and is killed 200
// times at random moments; every other time it is first stopped, again and again, until
// it is caught writing its copy of the kind the round aims at, so that kills inside both
// kinds of replacement are certain however fast the machine is.
TEST_F(KillWhileReplacing, TheFileIsAlwaysWholeOldOrWholeNew) {
  const std::string first(300000, 'A'), second(100000, 'B');
  Put("data.bin", first);
  std::mt19937 random(20261123);
  for (int kill = 0; kill < 200; ++kill) {
    int writing[2];
    ASSERT_EQ(::pipe(writing), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(writing[0]);
      const SafeArray bytes = SafeArray::FromBytes(ToBytes(first));
      const String text = FromUtf8(second);
      for (;;) {  // each write announced before it starts
        if (::write(writing[1], "b", 1) != 1 || !fs_->BinaryWrite(Path("data.bin"), bytes)) ::_exit(1);
        if (::write(writing[1], "t", 1) != 1 || !fs_->StringWrite(text, Path("data.bin"))) ::_exit(1);
      }
    }
    ::close(writing[1]);
    char writes = 0;  // the kind of write announced last
    ASSERT_EQ(::read(writing[0], &writes, 1), 1) << "the writer never started";
    ::fcntl(writing[0], F_SETFL, O_NONBLOCK);
    const char aim = "-b-t"[kill % 4];
    int status = 0;
    for (int tries = 0; tries < 5000; ++tries) {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
      ::kill(child, SIGSTOP);
      ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
      ASSERT_TRUE(WIFSTOPPED(status)) << "the writer ran until stopped";
      for (char c; ::read(writing[0], &c, 1) == 1;) writes = c;
      if (aim == '-' || (writes == aim && WritesCopy(child, "data.bin"))) break;
      ::kill(child, SIGCONT);
    }
    const bool hit = aim == '-' || (writes == aim && WritesCopy(child, "data.bin"));
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    ::close(writing[0]);
    ASSERT_TRUE(hit) << "kill " << kill << " never caught the writer inside a replacement";
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer ran until killed";
    const std::string now = Get("data.bin");
    ASSERT_TRUE(now == first || now == second) << "kill " << kill << " left " << now.size() << " bytes";
    ASSERT_LE(Listing().size(), 2u) << "copies left by earlier kills are removed by the next writer";
  }
  ASSERT_TRUE(fs_->StringWrite(u"last", Path("data.bin")));
  EXPECT_EQ(Listing(), std::vector<std::string>{"data.bin"}) << "a write that lives cleans up";
}

}  // namespace
}  // namespace tsruntime
