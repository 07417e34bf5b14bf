// The interactive prompt, with line editing and a history kept between runs.
#include <editline/readline.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "parser.h"
#include "repl.h"
#include "session.h"

namespace {

std::string historyFile() {
  const char* home = std::getenv("HOME");
  return home ? std::string(home) + "/.kovo_history" : "";
}

}  // namespace

int runInteractive(const Library& library, bool extendedFrames) {
  std::printf("kovo %s: xBase expressions on the function library. Ctrl-D ends.\n",
              KOVO_VERSION_TEXT);
  std::string history = historyFile();
  if (!history.empty()) read_history(history.c_str());
  StdoutOutput output;
  Session session(library, output, extendedFrames);
  int status = 0;
  while (char* line = readline("kovo> ")) {
    std::string source(line);
    std::free(line);
    if (source.find_first_not_of(" \t") == std::string::npos) continue;
    add_history(source.c_str());
    try {
      session.run(std::make_unique<Program>(parseProgram(source)), true);
    } catch (const SyntaxError& error) {
      std::fprintf(stderr, "syntax error at column %d: %s\n", error.column, error.message.c_str());
    } catch (const FatalStop&) {
      status = 3;
      break;
    }
    std::fflush(stdout);
  }
  if (!history.empty()) write_history(history.c_str());
  return status;
}
