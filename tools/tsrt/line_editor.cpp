#include "line_editor.h"

#include <editline/readline.h>
#include <langinfo.h>

#include <clocale>
#include <cstdlib>
#include <cstring>

namespace tsrt {
namespace {

LineEditor::Completer* active_completer = nullptr;

// Every character that cannot be part of a name ends the word being completed.
char kWordBreaks[] = " \t\n\"\\'`@$><=;|&{}()[],.:?!#%^*+-/~";

// The first `count` characters of UTF-8 `text`: editline gives the cursor in characters.
std::string FirstCharacters(const char* text, int count) {
  const char* p = text;
  for (int i = 0; i < count && *p; ++i) {
    do ++p;
    while ((static_cast<unsigned char>(*p) & 0xC0) == 0x80);
  }
  return std::string(text, p);
}

bool SameNoCase(char a, char b) {
  return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

char* Copy(const std::string& s) {
  char* p = static_cast<char*>(std::malloc(s.size() + 1));
  if (p) std::memcpy(p, s.c_str(), s.size() + 1);
  return p;
}

// editline's list: what replaces the word (the candidates' common beginning), then the
// candidates; a lone candidate stands twice so that it counts as the exact match.
char** Matches(const char*, int, int) {
  rl_attempted_completion_over = 1;  // no file names instead
  if (!active_completer || !rl_line_buffer) return nullptr;
  const Completion c = (*active_completer)(FirstCharacters(rl_line_buffer, rl_point));
  if (c.candidates.empty()) return nullptr;
  std::string common = c.candidates.front();
  for (const std::string& s : c.candidates) {
    size_t n = 0;
    while (n < common.size() && n < s.size() && SameNoCase(common[n], s[n])) ++n;
    common.resize(n);
  }
  const bool single = c.candidates.size() == 1;
  const size_t count = single ? 2 : c.candidates.size() + 1;
  char** list = static_cast<char**>(std::calloc(count + 1, sizeof(char*)));
  if (!list) return nullptr;
  list[0] = Copy(common);
  for (size_t i = 1; i < count; ++i) list[i] = Copy(c.candidates[single ? 0 : i - 1]);
  return list;
}

}  // namespace

LineEditor::LineEditor(Completer completer, const std::vector<std::string>& history) {
  // Typed text is UTF-8, as everything tsrt reads and writes.
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) std::setlocale(LC_CTYPE, "C.UTF-8");
  active_completer = new Completer(std::move(completer));
  rl_readline_name = "tsrt";
  rl_basic_word_break_characters = kWordBreaks;
  rl_completer_word_break_characters = kWordBreaks;
  rl_attempted_completion_function = Matches;
  rl_completion_append_character = '\0';
  using_history();
  stifle_history(static_cast<int>(HistoryFile::kKept));
  for (const std::string& line : history) add_history(line.c_str());
}

LineEditor::~LineEditor() {
  rl_attempted_completion_function = nullptr;
  delete active_completer;
  active_completer = nullptr;
  clear_history();
}

std::optional<std::string> LineEditor::ReadLine(const char* prompt) {
  char* line = readline(prompt);
  if (!line) return std::nullopt;
  std::string text(line);
  std::free(line);
  return text;
}

void LineEditor::Remember(const std::string& line) { add_history(line.c_str()); }

}  // namespace tsrt
