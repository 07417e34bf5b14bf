// The interactive prompt.
#include "repl.h"

#include <cstdio>
#include <memory>
#include <string>

#include "line_input.h"
#include "parser.h"
#include "session.h"

int runInteractive(const Library& library, bool extendedFrames) {
  std::printf("kovo %s: xBase expressions on the function library. Ctrl-D ends.\n",
              KOVO_VERSION_TEXT);
  LineInput input;
  StdoutOutput output;
  Session session(library, output, extendedFrames);
  int status = 0;
  std::string source;
  while (input.read("kovo> ", &source)) {
    if (source.find_first_not_of(" \t") == std::string::npos) continue;
    input.remember(source);
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
  return status;
}
