#include "line_input.h"

#include <editline/readline.h>
#include <unistd.h>

#include <cstdlib>

bool inputIsTerminal() {
  return isatty(STDIN_FILENO) != 0;
}

LineInput::LineInput() {
  const char* home = std::getenv("HOME");
  if (home) history_ = std::string(home) + "/.kovo_history";
  if (!history_.empty()) read_history(history_.c_str());
}

LineInput::~LineInput() {
  if (!history_.empty()) write_history(history_.c_str());
}

bool LineInput::read(const char* prompt, std::string* line) {
  char* text = readline(prompt);
  if (!text) return false;
  line->assign(text);
  std::free(text);
  return true;
}

void LineInput::remember(const std::string& line) {
  add_history(line.c_str());
}
