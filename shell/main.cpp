// kovo: the command-line host of the function library.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "cases.h"
#include "line_input.h"
#include "parser.h"
#include "repl.h"
#include "session.h"

namespace {

constexpr int EXIT_SYNTAX = 1;
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_FATAL = 3;

const char USAGE[] =
    "usage: kovo [options] -e 'STATEMENTS'   evaluate, print the last value\n"
    "       kovo [options] FILE.prg          run a script\n"
    "       kovo [options] -                 run a script read from standard input\n"
    "       kovo [options]                   interactive prompt (on a terminal)\n"
    "       kovo --check [options] FILE...   run case files (statements and their output)\n"
    "       kovo --list                      the library's function names\n"
    "       kovo --reg-import FILE.reg       load a regedit file into the registry\n"
    "       kovo --reg-export KEY FILE.reg   write a key and its sub-keys as a regedit file\n"
    "       kovo --help | --version\n"
    "options:\n"
    "  --extended-frames   build every call frame in the extended layout\n"
    "  --library PATH      the function library to load (default " KOVO_DEFAULT_LIBRARY
    ")\n"
    "exit status: 0 done, 1 syntax error, 2 bad usage, 3 unrecoverable internal error\n";

struct Options {
  bool extendedFrames = false;
  bool list = false;
  bool check = false;
  std::string library = KOVO_DEFAULT_LIBRARY;
  std::string expression;
  bool haveExpression = false;
  std::vector<std::string> files;
  std::vector<std::string> registryFile;  // import: FILE; export: KEY, FILE
  bool registryImport = false;
};

int usageError(const std::string& message) {
  std::fprintf(stderr, "kovo: %s\n%s", message.c_str(), USAGE);
  return EXIT_USAGE;
}

int runSource(const Library& library, const std::string& source, const std::string& origin,
              bool printLast, bool extendedFrames) {
  std::unique_ptr<Program> program;
  try {
    program = std::make_unique<Program>(parseProgram(source));
  } catch (const SyntaxError& error) {
    std::fprintf(stderr, "%s:%d:%d: syntax error: %s\n", origin.c_str(), error.line, error.column,
                 error.message.c_str());
    return EXIT_SYNTAX;
  }
  StdoutOutput output;
  Session session(library, output, extendedFrames);
  try {
    session.run(std::move(program), printLast);
  } catch (const FatalStop&) {
    return EXIT_FATAL;
  }
  return 0;
}

bool readAll(std::istream& in, std::string* text) {
  if (!in) return false;
  text->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

// A regedit file in or out of the registry, through the library's own
// routines; what goes wrong is reported as the library reports it.
int runRegistryFile(const Library& library, const Options& options) {
  using Import = int (*)(VMEngine*, const char*);
  using Export = int (*)(VMEngine*, const char*, const char*);
  void* routine = library.native(options.registryImport ? "kovo_reg_import" : "kovo_reg_export");
  if (!routine) return usageError("the library has no registry transfer");
  StdoutOutput output;
  Session session(library, output, options.extendedFrames);
  const std::vector<std::string>& args = options.registryFile;
  int failed =
      options.registryImport
          ? reinterpret_cast<Import>(routine)(session.vm(), args[0].c_str())
          : reinterpret_cast<Export>(routine)(session.vm(), args[0].c_str(), args[1].c_str());
  return failed ? EXIT_SYNTAX : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; i++) {
    std::string arg = argv[i];
    if (arg == "--help" || arg == "-h") {
      std::fputs(USAGE, stdout);
      return 0;
    } else if (arg == "--version") {
      std::printf("kovo %s\n", KOVO_VERSION_TEXT);
      return 0;
    } else if (arg == "--extended-frames") {
      options.extendedFrames = true;
    } else if (arg == "--list") {
      options.list = true;
    } else if (arg == "--check") {
      options.check = true;
    } else if (arg == "--library" || arg == "-e") {
      if (i + 1 >= argc) return usageError(arg + " needs a value");
      if (arg == "-e") {
        options.expression = argv[++i];
        options.haveExpression = true;
      } else {
        options.library = argv[++i];
      }
    } else if (arg == "--reg-import" || arg == "--reg-export") {
      size_t needed = arg == "--reg-import" ? 1 : 2;
      if (i + static_cast<int>(needed) >= argc) return usageError(arg + " needs its arguments");
      options.registryImport = arg == "--reg-import";
      options.registryFile.assign(argv + i + 1, argv + i + 1 + needed);
      i += static_cast<int>(needed);
    } else if (arg.size() > 1 && arg[0] == '-' && arg != "-") {
      return usageError("unknown option " + arg);
    } else {
      options.files.push_back(arg);
    }
  }
  if (options.haveExpression && !options.files.empty()) {
    return usageError("give either -e or a script, not both");
  }
  if (!options.check && options.files.size() > 1) return usageError("one script at a time");

  Library library(options.library);
  if (!library.loaded()) {
    std::fprintf(stderr, "kovo: cannot load the function library: %s\n", library.error().c_str());
    return EXIT_USAGE;
  }
  int status = 0;
  if (options.list) {
    for (const std::string& name : library.functionNames())
      std::puts(name.c_str());
  } else if (!options.registryFile.empty()) {
    status = runRegistryFile(library, options);
  } else if (options.check) {
    if (options.files.empty()) return usageError("--check needs case files");
    status = runCaseFiles(library, options.files, options.extendedFrames) == 0 ? 0 : 1;
  } else if (options.haveExpression) {
    status = runSource(library, options.expression, "-e", true, options.extendedFrames);
  } else if (!options.files.empty() && options.files[0] != "-") {
    std::ifstream in(options.files[0], std::ios::binary);
    std::string source;
    if (!readAll(in, &source)) return usageError("cannot read " + options.files[0]);
    status = runSource(library, source, options.files[0], false, options.extendedFrames);
  } else if (options.files.empty() && inputIsTerminal()) {
    status = runInteractive(library, options.extendedFrames);
  } else {
    std::string source;
    readAll(std::cin, &source);
    status = runSource(library, source, "-", false, options.extendedFrames);
  }
  std::fflush(stdout);
  return status;
}
