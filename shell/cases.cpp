#include "cases.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>

#include "case_directory.h"
#include "case_registry.h"
#include "parser.h"
#include "session.h"

namespace {

struct Case {
  int line;
  std::string statements;
  std::string expected;
  std::string platform;  // the one platform the case belongs to; empty for all
};

// "#platform NAME" before a case: the case runs on that platform only
// (posix or win32), for what differs by nature, such as the C library's
// reading of an overlong number.
constexpr char PLATFORM_MARKER[] = "#platform ";

bool isStatementLine(const std::string& line) {
  return line == ">" || line.rfind("> ", 0) == 0;
}

// "> " lines hold the statements; the lines after them, up to the next case
// or a "#" comment, the output. Blank lines at the end of an output are not
// part of it; lines outside any case are ignored.
std::vector<Case> readCases(std::istream& in) {
  enum class State { Idle, Statements, Output };
  std::vector<Case> cases;
  State state = State::Idle;
  std::string line;
  std::string platform;
  for (int number = 1; std::getline(in, line); number++) {
    if (isStatementLine(line)) {
      if (state != State::Statements) {
        cases.push_back({number, "", "", platform});
        platform.clear();
      }
      cases.back().statements += (line.size() > 2 ? line.substr(2) : "") + "\n";
      state = State::Statements;
    } else if (!line.empty() && line[0] == '#') {
      if (line.rfind(PLATFORM_MARKER, 0) == 0) platform = line.substr(sizeof PLATFORM_MARKER - 1);
      state = State::Idle;
    } else if (state != State::Idle) {
      cases.back().expected += line + "\n";
      state = State::Output;
    }
  }
  for (Case& c : cases) {
    while (c.expected.size() >= 2 && c.expected.compare(c.expected.size() - 2, 2, "\n\n") == 0) {
      c.expected.pop_back();
    }
    if (c.expected == "\n") c.expected.clear();
  }
  return cases;
}

std::string runCase(const Library& library, const Case& c, bool extendedFrames, size_t* leaked) {
  StringOutput output;
  std::unique_ptr<Program> program;
  try {
    program = std::make_unique<Program>(parseProgram(c.statements));
  } catch (const SyntaxError& error) {
    *leaked = 0;
    return "SYNTAX " + std::to_string(error.line) + ":" + std::to_string(error.column) + ": " +
           error.message + "\n";
  }
  CaseDirectory directory;
  CaseRegistry registry;
  Session session(library, output, extendedFrames);
  try {
    session.run(std::move(program), true);
  } catch (const FatalStop&) {
  }
  *leaked = session.finish();
  return output.text();
}

std::string indent(const std::string& text) {
  std::string out;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line))
    out += "    " + line + "\n";
  return out.empty() ? "    (nothing)\n" : out;
}

// Read whole and closed before any case runs: the cases see the handles of a
// process that holds no file of its own, as a program run alone does.
bool readCaseFile(const std::string& file, std::vector<Case>* cases) {
  std::ifstream in(file);
  if (!in) return false;
  *cases = readCases(in);
  return true;
}

}  // namespace

int runCaseFiles(const Library& library, const std::vector<std::string>& files,
                 bool extendedFrames) {
  int failed = 0;
  for (const std::string& file : files) {
    std::vector<Case> cases;
    if (!readCaseFile(file, &cases)) {
      std::printf("FAIL %s: cannot read the file\n", file.c_str());
      failed++;
      continue;
    }
    std::erase_if(cases, [](const Case& c) {
      return !c.platform.empty() && c.platform != KOVO_PLATFORM_NAME;
    });
    int failedHere = 0;
    for (const Case& c : cases) {
      size_t leaked = 0;
      std::string actual = runCase(library, c, extendedFrames, &leaked);
      if (actual == c.expected && leaked == 0) continue;
      failedHere++;
      std::printf("FAIL %s:%d\n  statements:\n%s  expected:\n%s  actual:\n%s", file.c_str(), c.line,
                  indent(c.statements).c_str(), indent(c.expected).c_str(), indent(actual).c_str());
      if (leaked) std::printf("  leaked: %zu heap blocks\n", leaked);
    }
    std::printf("%s: %zu cases, %d failed%s\n", file.c_str(), cases.size(), failedHere,
                extendedFrames ? " (extended frames)" : "");
    failed += failedHere;
  }
  return failed;
}
