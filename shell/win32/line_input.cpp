// The console's own line editing serves the prompt; its history lasts as long
// as the console window.
#include "line_input.h"

#include <io.h>

#include <cstdio>
#include <iostream>

bool inputIsTerminal() {
  return _isatty(_fileno(stdin)) != 0;
}

LineInput::LineInput() = default;

LineInput::~LineInput() = default;

bool LineInput::read(const char* prompt, std::string* line) {
  std::fputs(prompt, stdout);
  std::fflush(stdout);
  return static_cast<bool>(std::getline(std::cin, *line));
}

void LineInput::remember(const std::string&) {}
