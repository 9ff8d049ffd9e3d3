// The two ways a file is written: replaced through a renamed copy (whole old or whole new
// whenever its writer is killed), or written in place where a rename would change what
// the user sees (devices and pipes, files shared with other users, folders the user may
// not write, a disk with room for one copy only). Cases that depend
// on who writes run as root and again as an ordinary user.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/sysmacros.h>

#include <cstdlib>
#include <random>
#include <thread>

#include "system/fs_fixture.h"
#include "tsruntime/clsZKIniFile.h"
#include "tsruntime/clsZKStorage.h"

namespace tsruntime::testing {
namespace {

class FileRoutes : public FsTest {
 protected:
  struct Writer {
    std::string name;
    std::string content;  // what the file holds after it wrote
    std::function<bool()> write;
  };
  // The writers a host has, each with its own content for the INI text "k=0".
  std::vector<Writer> Writers(const String& path) {
    std::string empty_tree;
    for (char c : std::string("000000009000000009000000009")) empty_tree += {c, '\0'};
    return {
        {"Save", empty_tree, [=] { return New<clsZKStorage>()->Save(path); }},
        {"StringWrite", "k=1", [=, this] { return fs_->StringWrite(u"k=1", path); }},
        {"PutData", "k=2",
         [=] {
           const auto ini = New<clsZKIniFile>();
           ini->LetFullName(path);
           return ini->PutData(u"k", u"2");
         }},
        {"BinaryWrite", "k=3", [=, this] { return fs_->BinaryWrite(path, ByteArray("k=3")); }},
    };
  }
};

// A pipe without a reader fails every writer at once (PutData with its save error) and
// nothing waits for one; with a reader, a pipe, like a device, takes every write,
// though neither has anything to flush, and both stay what they were.
TEST_F(FileRoutes, DevicesAndPipesAreWrittenIntoNeverReplacedNorWaitedOn) {
  ::alarm(30);  // a write that waits for a reader ends the program here
  ASSERT_EQ(::mkfifo(Native("fifo").c_str(), 0666), 0);
  for (const Writer& w : Writers(Path("fifo"))) {
    EXPECT_EQ(Run(w.write).substr(0, 5), w.name == "PutData" ? "-2147" : "False") << w.name;
  }
  EXPECT_FALSE(fs_->StringWrite(u"x", Path("fifo"), xcZK_FILEWRITE_APPEND)) << "append, no reader";
  const int reader = ::open(Native("fifo").c_str(), O_RDONLY | O_NONBLOCK);
  const bool devices = ::mknod(Native("null").c_str(), S_IFCHR | 0666, makedev(1, 3)) == 0;
  for (const std::string& name : devices ? Names{"fifo", "null"} : Names{"fifo"}) {
    EXPECT_TRUE(fs_->StringWrite(u"ab", Path(name), xcZK_FILEWRITE_APPEND)) << name;
    EXPECT_TRUE(fs_->StringWrite(u"c", Path(name))) << name;
    EXPECT_TRUE(fs_->BinaryWrite(Path(name), ByteArray("d"))) << name;
  }
  char got[16];
  EXPECT_EQ(std::string(got, std::max<ssize_t>(::read(reader, got, sizeof got), 0)), "abcd")
      << "the reader gets every write";
  EXPECT_TRUE(!devices || New<clsZKStorage>()->Save(Path("null")));
  ::close(reader);
  EXPECT_TRUE(S_ISFIFO(Info("fifo").st_mode));
  EXPECT_TRUE(!devices || S_ISCHR(Info("null").st_mode));
  EXPECT_EQ(Listing(), devices ? (Names{"fifo", "null"}) : Names{"fifo"});
  ::alarm(0);
}

// Root sets up each case in its own folder ("locked" 0755, "sticky" 01777, "group" 0777),
// the file and its group the user's or else root's; root, then the ordinary user, writes
// every file with every writer.
constexpr struct { const char* what; const char* file; bool users_file, users_group; mode_t mode;
                   bool user_may_write; } kShared[] = {
    {"the user's file in a folder only root may write", "locked/app.ini", true, true, 0644, true},
    {"root's world-writable file in a sticky folder", "sticky/shared.ini", false, false, 0666, true},
    {"root's file the user may write through its group", "group/team.ini", false, true, 0664, true},
    {"root's file the user may only read", "sticky/theirs.ini", false, false, 0644, false},
};

class SharedFiles : public FileRoutes {
 protected:
  // Writes every case's file in `folder` with every writer; as the user, only what the
  // user may write changes.
  void WriteEveryFile(const std::string& folder, bool as_user) {
    for (const auto& c : kShared) {
      const bool may = !as_user || c.user_may_write;
      std::string expected = "k=0";
      for (const Writer& w : Writers(FromUtf8(folder + "/" + c.file))) {
        const std::string outcome = Run(w.write);
        EXPECT_EQ(outcome.substr(0, 5), may ? "True" : w.name == "PutData" ? "-2147" : "False")
            << c.what << ", " << w.name << ": " << outcome;
        if (may) expected = w.content;
        std::ifstream in(folder + "/" + c.file, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), expected) << c.what << ", " << w.name;
      }
    }
  }
};

TEST_F(SharedFiles, ReplacingKeepsOwnerGroupAndModeAndWorksWhereTheInterfaceDoes) {
  if (InTestChild()) return WriteEveryFile(std::getenv("TSRT_SHARED_FOLDER"), true);
  if (::geteuid() != 0) GTEST_SKIP() << "the cases are set up by root";
  ::chmod(Native().c_str(), 0755);
  for (const std::string run : {"as-root", "as-user"}) {
    for (const auto& [name, mode] : {std::pair{"locked", 0755}, {"sticky", 01777}, {"group", 0777}}) {
      MakeFolder(run + "/" + name);
      ::chmod(Native(run + "/" + name).c_str(), mode);
    }
    std::vector<struct stat> before;
    for (const auto& c : kShared) {
      Put(run + "/" + c.file, "k=0", c.mode);
      ASSERT_EQ(::chown(Native(run + "/" + c.file).c_str(), c.users_file ? ThrowawayUid() : 0,
                        c.users_group ? ThrowawayUid() : 0), 0);
      before.push_back(Info(run + "/" + c.file));
    }
    if (run == "as-root") {
      WriteEveryFile(Native(run), false);
    } else {
      if (!CanRunAsOrdinaryUser()) GTEST_SKIP() << "no ordinary user to run as";
      PassAsOrdinaryUser({{"TSRT_SHARED_FOLDER", Native(run)}});
    }
    for (size_t i = 0; i < std::size(kShared); ++i) {
      const struct stat after = Info(run + "/" + kShared[i].file);
      EXPECT_EQ(std::tie(after.st_uid, after.st_gid, after.st_mode, after.st_nlink),
                std::tie(before[i].st_uid, before[i].st_gid, before[i].st_mode, before[i].st_nlink))
          << run << ": " << kShared[i].what;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Native(run))) {
      EXPECT_EQ(entry.path().string().find(".tsrt-"), std::string::npos) << "left over: " << entry.path();
    }
  }
}

// On a disk with room for one copy of a file, a replacement goes in place; content that
// does not fit at all, and an append that does not, leave the file as it was.
TEST_F(FileRoutes, AFullDiskTakesWhatFitsAndKeepsTheOldContentOtherwise) {
  if (!MountSmallDisk("disk", "1m")) GTEST_SKIP() << "no file system can be mounted here";
  const std::string old(600000, 'o');
  // (what, bytes written, StringWrite's mode or 0 for BinaryWrite, result, content then)
  const std::tuple<const char*, size_t, int32_t, bool, std::string> rows[] = {
      {"a replacement with no room for a copy", 610000, 0, true, std::string(610000, 'n')},
      {"the same as text", 600001, xcZK_FILEWRITE_REPLACE, true, std::string(600001, 'n')},
      {"a replacement larger than the disk", 1200000, 0, false, old},
      {"an append that does not fit is cut back", 600000, xcZK_FILEWRITE_APPEND, false, old},
      {"a new file that does not fit is not made", 2000000, 0, false, ""},
  };
  for (const auto& [what, bytes, mode, ok, after] : rows) {
    std::filesystem::remove(Native("disk/f"));
    if (!after.empty()) Put("disk/f", old);
    const bool wrote = mode == 0 ? fs_->BinaryWrite(Path("disk/f"), SafeArray::FromBytes(Bytes(bytes, 'n')))
                                 : fs_->StringWrite(String(bytes, u'n'), Path("disk/f"), xeZK_FILEWRITEMODES(mode));
    EXPECT_EQ(wrote, ok) << what;
    EXPECT_TRUE(Get("disk/f") == after) << what << ": " << Get("disk/f").size() << " bytes";
    EXPECT_EQ(Listing("disk"), after.empty() ? Names{} : Names{"f"}) << what;
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
  EXPECT_EQ(Listing(), (Names{".f.txt.tsrt-1", ".g.txt.tsrt-0", "f.txt"}));
  EXPECT_EQ(Get(".f.txt.tsrt-1"), "left over");
  ::close(live);
  ASSERT_TRUE(fs_->BinaryWrite(Path("f.txt"), ByteArray("x")));
  EXPECT_EQ(Listing(), (Names{".g.txt.tsrt-0", "f.txt"}));
}

using KillWhileReplacing = FsTest;

// A process replaces one file over and over, bytes and text in turn, and is killed 200
// times at random moments; every other time it is first stopped, again and again, until
// it is caught with its copy made and not yet renamed, so that kills inside a
// replacement are certain however fast the machine is. What a kill leaves is cleared.
TEST_F(KillWhileReplacing, TheFileIsAlwaysWholeOldOrWholeNew) {
  const std::string first(300000, 'A'), second(100000, 'B');
  Put("data.bin", first);
  std::mt19937 random(20261123);
  for (int kill = 0; kill < 200; ++kill) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    for (const SafeArray bytes = ByteArray(first); child == 0;) {
      if (!fs_->BinaryWrite(Path("data.bin"), bytes) || !fs_->StringWrite(FromUtf8(second), Path("data.bin"))) ::_exit(1);
    }
    int status = 0;
    bool hit = false;
    for (int tries = 0; tries < 5000 && !hit; ++tries) {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
      ::kill(child, SIGSTOP);
      ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
      ASSERT_TRUE(WIFSTOPPED(status)) << "the writer ran until stopped";
      hit = kill % 2 == 0 || Listing().size() == 2;
      if (!hit) ::kill(child, SIGCONT);
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(hit) << "kill " << kill << " never caught the writer inside a replacement";
    const std::string now = Get("data.bin");
    ASSERT_TRUE(now == first || now == second) << "kill " << kill << " left " << now.size() << " bytes";
    ASSERT_LE(Listing().size(), 2u) << "one copy at most";
    for (const std::string& name : Listing()) {
      if (name != "data.bin") std::filesystem::remove(Native(name));
    }
  }
}

}  // namespace
}  // namespace tsruntime::testing
