// Lines typed at the interactive prompt: with line editing and a history kept
// between runs where the platform's console library offers them.
#pragma once

#include <string>

// Whether standard input is a terminal (the prompt is shown) rather than a file or pipe.
bool inputIsTerminal();

class LineInput {
 public:
  LineInput();
  ~LineInput();
  LineInput(const LineInput&) = delete;
  LineInput& operator=(const LineInput&) = delete;

  // Shows the prompt and reads one line; false at the end of input.
  bool read(const char* prompt, std::string* line);
  // Adds a line to the history.
  void remember(const std::string& line);

 private:
  std::string history_;
};
