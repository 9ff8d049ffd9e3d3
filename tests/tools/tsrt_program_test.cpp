// The built `tsrt` program, run as a user runs it: output, errors and exit status.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/test_support.h"

extern char** environ;

namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using tsrt_test::Joined;

struct Outcome {
  int code = -1;
  std::string out;
  std::string err;
};

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Runs tsrt with `args`, standard output and error each going to its own file.
Outcome RunTsrt(const std::vector<std::string>& args) {
  char dir_template[] = "/tmp/tsrt-test-XXXXXX";
  const char* dir = mkdtemp(dir_template);
  if (!dir) return {};
  const std::string out_path = std::string(dir) + "/out", err_path = std::string(dir) + "/err";

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, 2, err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  std::vector<char*> argv{const_cast<char*>(TSRT_PATH)};
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  Outcome r;
  pid_t pid = 0;
  if (posix_spawn(&pid, TSRT_PATH, &actions, nullptr, argv.data(), environ) == 0) {
    int status = 0;
    waitpid(pid, &status, 0);
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  posix_spawn_file_actions_destroy(&actions);
  r.out = Slurp(out_path);
  r.err = Slurp(err_path);
  unlink(out_path.c_str());
  unlink(err_path.c_str());
  rmdir(dir);
  return r;
}

struct Case {
  std::vector<std::string> args;
  int code;
  const char* out;
  const char* err;
};

TEST(TsrtProgram, CallsTheRootObjectAndReportsErrorsExactly) {
  const Case cases[] = {
      {{"call", "clsZKRunTimeLib", "Init"}, 0, "True\n", ""},
      {{"call", "clsZKRunTimeLib", "Language"}, 0, "0\n", ""},
      {{"call", "TSRuntimeLib.clsZKRunTimeLib", "Language", "=", "1", ":", "Language"}, 0, "1\n",
       ""},
      {{"call", "clszkruntimelib", "language", "=", "40000.5", ":", "LANGUAGE"}, 0, "40000\n", ""},
      {{"let", "clsZKRunTimeLib", "Language", "1"}, 0, "", ""},
      {{"call", "clsZKRunTimeLib", "Nope"}, 1, "",
       "Error 438 (ZKRuntimeLib): Object doesn't support this property or method\n"},
      {{"call", "clsZKRunTimeLib", "Language", "=", "2147483648"}, 1, "",
       "Error 6 (ZKRuntimeLib): Overflow\n"},
      {{"call", "NoSuchClass", "Init"}, 1, "",
       "Error 429 (ZKRuntimeLib): ActiveX component can't create object\n"},
      {{"enums", "xeZK_INTERFACE_LANGUAGE"}, 0,
       "Enum xeZK_INTERFACE_LANGUAGE\n  xcZKLANG_RUS = 0\n  xcZKLANG_ENG = 1\nEnd Enum\n", ""},
  };
  for (const Case& c : cases) {
    const Outcome r = RunTsrt(c.args);
    EXPECT_EQ(r.code, c.code) << Joined(c.args) << ": " << r.err;
    EXPECT_EQ(r.out, c.out) << Joined(c.args);
    EXPECT_EQ(r.err, c.err) << Joined(c.args);
  }
}

TEST(TsrtProgram, MisuseExitsWithTwoAndTheUsageInUtf8) {
  const Outcome bad = RunTsrt({"call", "clsZKRunTimeLib", "Init", "привет"});
  EXPECT_EQ(bad.code, 2);
  EXPECT_EQ(bad.out, "");
  EXPECT_THAT(bad.err, ::testing::StartsWith(
                           "tsrt: cannot read the argument привет: unexpected character 'п' at "
                           "column 1\nusage: tsrt classes\n"));

  const Outcome none = RunTsrt({});
  EXPECT_EQ(none.code, 2);
  EXPECT_THAT(none.err, HasSubstr("tsrt call CLASS MEMBER [ARG ...]"));

  const Outcome help = RunTsrt({"--help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_THAT(help.out, HasSubstr("Name:=literal"));
  EXPECT_EQ(help.err, "");
}

TEST(TsrtProgram, ListsClassesMembersAndEnumerations) {
  const Outcome classes = RunTsrt({"classes"});
  EXPECT_EQ(classes.code, 0);
  EXPECT_THAT(classes.out,
              ContainsRegex("(^|\n)clsZKRunTimeLib +TSRuntimeLib\\.clsZKRunTimeLib\n"));
  EXPECT_THAT(classes.out,
              ContainsRegex("(^|\n)Enumerator +TSRuntimeLib\\.Enumerator  \\(not creatable\\)\n"));

  const Outcome members = RunTsrt({"members", "clsZKRunTimeLib"});
  EXPECT_EQ(members.code, 0);
  EXPECT_THAT(members.out,
              ::testing::StartsWith("Class clsZKRunTimeLib  ' TSRuntimeLib.clsZKRunTimeLib\n"));
  EXPECT_THAT(members.out, HasSubstr("\n  Function Init() As Boolean\n"));
  EXPECT_THAT(members.out, HasSubstr("\n  Property Get Language() As Long\n"));
  EXPECT_THAT(members.out, HasSubstr("\n  Property Let Language(ByVal RHS As Long)\n"));
  EXPECT_THAT(members.out, ::testing::EndsWith("\nEnd Class\n"));

  const Outcome enums = RunTsrt({"enums"});
  EXPECT_EQ(enums.code, 0);
  EXPECT_THAT(enums.out, HasSubstr("\n  xcZKERR_STRING_INSTRRIGHT = -2147220803\n"));
  EXPECT_THAT(enums.out, HasSubstr("End Enum\n\nEnum xeZK_INTERFACE_LANGUAGE\n"));
}

}  // namespace
