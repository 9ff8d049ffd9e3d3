#include "commands.h"

#include <algorithm>
#include <cctype>
#include <span>
#include <stdexcept>
#include <string_view>

#include "help.h"
#include "immediate.h"
#include "literal_parser.h"
#include "literal_printer.h"
#include "python_path.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/registry_file.h"
#include "tsruntime/automation/err_object.h"
#include "type_listing.h"
#include "written_back.h"

namespace tsrt {
namespace {

using tsruntime::Argument;
using tsruntime::ClassInfo;
using tsruntime::InvokeKind;
using tsruntime::MemberInfo;
using tsruntime::MemberKind;
using tsruntime::String;
using tsruntime::StringView;
using tsruntime::ToUtf8;
using tsruntime::Variant;

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using Words = std::span<const std::string>;

// One invocation on the object: a call, or an assignment when written "... = VALUE".
// "On Error Resume Next" is a statement too: later failures are kept in `Err` instead
// of ending the run.
struct Statement {
  String member;
  InvokeKind kind = InvokeKind::kCall;
  std::vector<Argument> args;  // for an assignment the value comes last
  std::vector<size_t> err_args;  // arguments written `Err`: the last error, when run
  bool resume_next = false;
};

bool SameWordNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  });
}

Argument ReadArgument(const std::string& word) {
  try {
    return ParseArgument(word);
  } catch (const LiteralError& e) {
    throw UsageError("cannot read the argument " + word + ": " + e.what());
  }
}

std::vector<Argument> ReadArguments(Words words) {
  std::vector<Argument> args;
  for (const std::string& w : words) args.push_back(ReadArgument(w));
  return args;
}

Argument ReadAssignedValue(const std::string& word) {
  Argument value = ReadArgument(word);
  if (!value.name.empty()) throw UsageError("the assigned value cannot be a named argument");
  return value;
}

// "MEMBER [ARG ...]" or "MEMBER [ARG ...] = VALUE".
Statement ReadStatement(Words words) {
  if (words.empty() || words[0] == "=") throw UsageError("a member name is missing");
  Statement s;
  static constexpr std::string_view kResumeNext[] = {"On", "Error", "Resume", "Next"};
  if (std::equal(words.begin(), words.end(), std::begin(kResumeNext), std::end(kResumeNext),
                 SameWordNoCase)) {
    s.resume_next = true;
    return s;
  }
  s.member = tsruntime::FromUtf8(words[0]);
  const auto eq = std::find(words.begin() + 1, words.end(), "=");
  for (auto w = words.begin() + 1; w != eq; ++w) {
    if (SameWordNoCase(*w, "Err")) {
      s.err_args.push_back(s.args.size());
      s.args.push_back({});
    } else {
      s.args.push_back(ReadArgument(*w));
    }
  }
  if (eq != words.end()) {
    if (words.end() - eq != 2) throw UsageError("'=' takes exactly one value");
    s.kind = InvokeKind::kLet;
    s.args.push_back(ReadAssignedValue(*(eq + 1)));
  }
  return s;
}

// Statements separated by ":" words, as on one line of the host language.
std::vector<Statement> ReadStatements(Words words) {
  std::vector<Statement> statements;
  auto begin = words.begin();
  for (;;) {
    const auto end = std::find(begin, words.end(), ":");
    statements.push_back(ReadStatement({begin, end}));
    if (end == words.end()) return statements;
    begin = end + 1;
  }
}

// Prints the result (nothing for a Sub or an assignment), then "Name = literal" for
// every argument the member wrote back.
void Execute(tsruntime::Object& object, Statement& s, std::ostream& out) {
  const tsruntime::Invocation done = tsruntime::InvokeMember(object, s.member, s.kind, s.args);
  const MemberInfo& m = *done.member;
  if (s.kind == InvokeKind::kCall && m.returnType != tsruntime::VarType::kEmpty) {
    out << PrintLiteral(done.result, m.returnType) << '\n';
  }
  out << WrittenBackLines(done);
}

// Arguments are all read before the object exists, so a misspelt literal never
// leaves half the statements run.
void RunStatements(const std::string& class_name, std::vector<Statement> statements,
                   std::ostream& out) {
  const tsruntime::Ref<tsruntime::Object> object =
      tsruntime::CreateObject(tsruntime::FromUtf8(class_name));
  bool resume_next = false;
  tsruntime::Error last(0, {}, {});  // Err before anything failed: number 0, no text
  for (Statement& s : statements) {
    if (s.resume_next) {
      resume_next = true;
      continue;
    }
    for (size_t i : s.err_args) {
      s.args[i].value = Variant(tsruntime::New<tsruntime::ErrObject>(last));
    }
    try {
      Execute(*object, s, out);
    } catch (const tsruntime::Error& e) {
      if (!resume_next) throw;
      last = e;
    }
  }
}

void ExpectCount(Words args, size_t least, size_t most, const char* command) {
  if (args.size() < least || args.size() > most) {
    throw UsageError(std::string("wrong number of words after ") + command);
  }
}

const ClassInfo& ClassNamed(const std::string& name) {
  const ClassInfo* c = tsruntime::FindClass(tsruntime::FromUtf8(name));
  if (!c) throw UsageError("no class named " + name + " (tsrt classes lists them)");
  return *c;
}

void ListEnums(Words args, std::ostream& out) {
  const auto enums = tsruntime::RegisteredEnums();
  if (args.empty()) {
    for (size_t i = 0; i < enums.size(); ++i) out << (i ? "\n" : "") << DescribeEnum(*enums[i]);
    return;
  }
  const String name = tsruntime::FromUtf8(args[0]);
  for (const tsruntime::EnumInfo* e : enums) {
    if (tsruntime::EqualsAsciiNoCase(e->name, name)) {
      out << DescribeEnum(*e);
      return;
    }
  }
  throw UsageError("no enumeration named " + args[0] + " (tsrt enums lists them)");
}

// "reg export ROOT\KEY FILE" and "reg import FILE": the registry store to and from its
// text export format.
void RegistryCommand(Words args) {
  if (!args.empty() && args[0] == "export") {
    ExpectCount(args, 3, 3, "reg export");
    tsruntime::ExportRegistryKey(tsruntime::FromUtf8(args[1]), args[2]);
  } else if (!args.empty() && args[0] == "import") {
    ExpectCount(args, 2, 2, "reg import");
    tsruntime::ImportRegistryFile(args[1]);
  } else {
    throw UsageError("reg takes export or import");
  }
}

int Dispatch(const std::vector<std::string>& words, std::ostream& out) {
  const std::string& command = words[0];
  const Words args = Words(words).subspan(1);
  if (command == "--help" || command == "-h" || command == "help") {
    out << kHelp;
  } else if (command == "--version") {
    ExpectCount(args, 0, 0, "--version");
    out << "tsrt (TSRuntimeLib) " TSRUNTIME_VERSION "\n";
  } else if (command == "--python-path") {
    ExpectCount(args, 0, 0, "--python-path");
    const auto folder = PythonPackageFolder();
    if (!folder) throw UsageError("the Python package tsruntime is not installed beside tsrt");
    out << *folder << "\n";
  } else if (command == "classes") {
    ExpectCount(args, 0, 0, "classes");
    out << ListClasses(tsruntime::RegisteredClasses());
  } else if (command == "members") {
    ExpectCount(args, 1, 1, "members");
    out << DescribeClass(ClassNamed(args[0]));
  } else if (command == "enums") {
    ExpectCount(args, 0, 1, "enums");
    ListEnums(args, out);
  } else if (command == "call") {
    ExpectCount(args, 2, SIZE_MAX, "call");
    RunStatements(args[0], ReadStatements(args.subspan(1)), out);
  } else if (command == "let") {
    ExpectCount(args, 3, SIZE_MAX, "let");
    Statement s;
    s.member = tsruntime::FromUtf8(args[1]);
    s.kind = InvokeKind::kLet;
    s.args = ReadArguments(args.subspan(2, args.size() - 3));
    s.args.push_back(ReadAssignedValue(args.back()));
    RunStatements(args[0], {std::move(s)}, out);
  } else if (command == "reg") {
    RegistryCommand(args);
  } else {
    throw UsageError("unknown command " + command);
  }
  return kSucceeded;
}

}  // namespace

int Run(const std::vector<std::string>& words, std::ostream& out, std::ostream& err) {
  try {
    if (words.empty() || words[0] == "repl") {
      if (words.size() > 1) throw UsageError("wrong number of words after repl");
      return RunImmediate(out, err);
    }
    return Dispatch(words, out);
  } catch (const UsageError& e) {
    out.flush();
    err << "tsrt: " << e.what() << '\n' << kUsage;
    return kMisused;
  } catch (const tsruntime::Error& e) {
    out.flush();
    err << e.what() << '\n';
    return kFailed;
  } catch (const std::exception& e) {
    out.flush();
    err << "tsrt: " << e.what() << '\n';
    return kFailed;
  }
}

}  // namespace tsrt
