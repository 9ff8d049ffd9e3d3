// Disk sizes, system folders and NormalizePath: answers that never raise.
#include <cstdlib>

#include "system/fs_fixture.h"

namespace tsruntime::testing {
namespace {

using Queries = FsTest;

TEST_F(Queries, GetSysFolderNameEndsInExactlyOneSeparator) {
  const char* old = std::getenv("TMPDIR");
  const std::string kept = old ? old : "";
  // (what, type, TMPDIR or nullptr for none, the folder)
  const std::tuple<const char*, int32_t, const char*, std::string> rows[] = {
      {"the Windows folder stands for system-wide settings", 0, nullptr, "/etc/"},
      {"the system folder for system libraries", 1, nullptr, "/usr/lib/"},
      {"the temporary folder without TMPDIR", 2, nullptr, "/tmp/"},
      {"TMPDIR's trailing separators become one", 2, "/var/tmp//", "/var/tmp/"},
      {"TMPDIR without one gets one", 2, "/scratch/Временная", "/scratch/Временная/"},
      {"TMPDIR passes through the ANSI code page", 2, "/tmp/漢", "/tmp/?/"},
      {"an unknown type", 3, nullptr, ""},
  };
  for (const auto& [what, type, tmpdir, folder] : rows) {
    tmpdir ? ::setenv("TMPDIR", tmpdir, 1) : ::unsetenv("TMPDIR");
    EXPECT_EQ(U8(fs_->GetSysFolderName(static_cast<xeZK_GETSYSFOLDER>(type))), folder) << what;
  }
  old ? ::setenv("TMPDIR", kept.c_str(), 1) : ::unsetenv("TMPDIR");
}

// The count of bytes in 32 bits: 2 GiB or more, or a path that cannot be examined, is -1.
TEST_F(Queries, DiskSpaceIsThe32BitCountOrMinusOne) {
  if (!MountSmallDisk("small", "1m") || !MountSmallDisk("large", "3g")) GTEST_SKIP() << "no mounts here";
  Put("small/half", std::string(1 << 19, 'x'));
  // (disk, all, free)
  const std::tuple<String, int32_t, int32_t> rows[] = {
      {Path("small"), 1 << 20, 1 << 19}, {Path("small/half"), 1 << 20, 1 << 19},
      {Path("large"), -1, -1},           {Path("none"), -1, -1},
      {u"", -1, -1}};
  for (const auto& [disk, all, free] : rows) {
    EXPECT_EQ(std::pair(fs_->GetDiskSpaceAll(disk), fs_->GetDiskSpaceFree(disk)), std::pair(all, free)) << U8(disk);
  }
}

// Every row leaves the base folder current, whether it was entered now or before.
TEST_F(Queries, NormalizePathResolvesAgainstABaseFolderItLeavesCurrent) {
  MakeFolder("base/sub");
  const std::string base = Native("base");
  // (what, expression, is a folder, base folder, result)
  const std::tuple<const char*, String, bool, String, std::string> rows[] = {
      {"a relative name against the base", u"x.txt", false, Path("base"), base + "/x.txt"},
      {"'..' and '.' are resolved", u"./sub/../../y", false, Path("base"), Native("y")},
      {"an empty base keeps the current folder", u"sub", false, u"", base + "/sub"},
      {"a folder gets one separator", u"sub//", true, Path("base/sub/.."), base + "/sub/"},
      {"an absolute name ignores the base but the base is entered", Path("a/./b/"), false,
       Path("base"), Native("a/b")},
      {"the root as a folder gets its separator all the same", u"/", true, u"", "//"},
      {"a base that cannot be entered is ignored", u"z", false, Path("none"), base + "/z"},
      {"nothing at all is the current folder", u"", false, u"", base},
      {"a name holding NUL gives nothing", String(u"a\0b", 3), false, u"", ""},
  };
  for (const auto& [what, expression, folder, base_folder, result] : rows) {
    EXPECT_EQ(U8(fs_->NormalizePath(expression, folder, base_folder)), result) << what;
    EXPECT_EQ(std::filesystem::current_path().string(), base) << what;
  }
}

}  // namespace
}  // namespace tsruntime::testing
