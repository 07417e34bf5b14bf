// Several threads at once, each with its own context, each running a fixed
// mix of every family's calls; every thread's output must be what the same
// sequence prints when it runs alone. Built under ThreadSanitizer, which
// reports any access to shared state that is not guarded.
//
// A family joins with one row of FAMILIES: statements of the shell's
// language. Each thread has its own folder `cDir` (with a trailing slash) and
// number `nThread`; statements that create files or registry keys put them
// there, and print nothing that names them.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "shell/parser.h"
#include "shell/session.h"

namespace {

struct Family {
  const char* name;
  const char* statements;
};

const Family FAMILIES[] = {
    {"strings",
     R"(? ALLTRIM("  ab  "), PADC("x", 7, "*"), PADL(5, 4), STRTRAN("a-b-c", "-", "+")
        ? UPPER("abc"), LOWER("ÀÁ"), SUBSTR("hello", 2, 3), RAT("an", "banana")
        ? REPLICATE("ab", 3), SPACE(2), LEN({1, 2}), STUFF("abcd", 2, 1, "XY")
        ? LEFT(5, 1), TRIM(5), SOUNDEX("Robert"), WILDMATCH("a*c", "abc"))"},
    {"text tools",
     R"(? CSETARGERR(), CSETARGERR(-1), CSETARGERR(nThread % 4), CSETARGERR(-1)
        ? SETATLIKE(1, "?"), ATNUM("a?", "xabyab", 2), SETATLIKE(0), CSETATMUPA(.T.)
        ? NUMAT("aa", "aaaa"), CSETATMUPA(.F.), NUMAT("aa", "aaaa"), CSETREF(.F.)
        ? ATREPL("b", "abcb", "XY"), AFTERATNUM("-", "a-b-c"), TOKEN("a,b;c", ",;", 2)
        ? NUMTOKEN("a b  c"), TOKENINIT("one two three"), TOKENNEXT("one two three")
        e := SAVETOKEN()
        ? TOKENNEXT("one two three"), LEN(RESTTOKEN(e)), TOKENNEXT("one two three"), TOKENEXIT())"},
    {"bits and numbers",
     R"(? HB_BITAND(12, 10), HB_BITSHIFT(1, 20), NUMROL(1, 3), NUMTOKEN("x"), CTOF(FTOC(2.5))
        ? HB_NUMTOHEX(255), HB_HEXTONUM("FF"), CELSIUS(212), SETBIT(0, 3), EXPONENT(8))"},
    {"serialization",
     R"(a := {1, "x", 2.5, .T., {0d20240131, NIL}}
        ? BIN2VAR(VAR2BIN(a)), HB_DESERIALIZESIMPLE(HB_SERIALIZESIMPLE(a))
        ? KOVO5_STR_TO_ARRAY(KOVO5_ARRAY_TO_STR(a)), HB_GETLEN8(HB_CREATELEN8(300)))"},
    {"checksums and compression",
     R"(? HB_CRC32("abc"), HB_CHECKSUM("abc"), HB_UNCOMPRESS(9, HB_COMPRESS("aaaaaaaa"))
        ? HB_STRTOHEX("xyz"), HB_HEXTOSTR("78797A"), LEN(HB_COMPRESS(REPLICATE("ab", 500))))"},
    {"errors and types",
     R"(? LEN(5), VALTYPE({=>}), HB_ISNUMERIC(1), TYPE("1 + 1"), DOSERROR(nThread), DOSERROR()
        ? __ERRRT_SBASE(1, 1111, "x", "LEN", 1, 5))"},
};

constexpr int ROUNDS = 25;

std::string script(int thread, const std::filesystem::path& folder) {
  std::string text =
      "nThread := " + std::to_string(thread) + "\ncDir := \"" + folder.string() + "/\"\n";
  for (int round = 0; round < ROUNDS; round++) {
    for (const Family& family : FAMILIES)
      text += std::string(family.statements) + "\n";
  }
  return text;
}

struct Outcome {
  std::string output;
  size_t leaked = 0;
  bool fatal = false;
};

Outcome runScript(const Library& library, const std::string& text) {
  Outcome outcome;
  StringOutput output;
  Session session(library, output, false);
  try {
    session.run(std::make_unique<Program>(parseProgram(text)), false);
  } catch (const FatalStop&) {
    outcome.fatal = true;
  }
  outcome.leaked = session.finish();
  outcome.output = output.text();
  return outcome;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s THREADS\n", argv[0]);
    return 2;
  }
  int threads = std::atoi(argv[1]);
  Library library(KOVO_THREADS_LIBRARY);
  if (!library.loaded()) {
    std::fprintf(stderr, "cannot load the library: %s\n", library.error().c_str());
    return 2;
  }
  std::filesystem::path base =
      std::filesystem::temp_directory_path() / ("kovo-threads-" + std::to_string(getpid()));
  std::vector<std::string> scripts;
  for (int i = 0; i < threads; i++) {
    std::filesystem::path folder = base / std::to_string(i);
    std::filesystem::create_directories(folder);
    scripts.push_back(script(i, folder));
  }
  std::vector<Outcome> alone(threads);
  for (int i = 0; i < threads; i++)
    alone[i] = runScript(library, scripts[i]);
  std::vector<Outcome> together(threads);
  std::vector<std::thread> running;
  for (int i = 0; i < threads; i++)
    running.emplace_back([&, i] { together[i] = runScript(library, scripts[i]); });
  for (std::thread& thread : running)
    thread.join();
  std::filesystem::remove_all(base);

  int failed = 0;
  for (int i = 0; i < threads; i++) {
    if (alone[i].fatal || together[i].fatal || together[i].leaked != 0 ||
        together[i].output != alone[i].output) {
      std::fprintf(stderr, "thread %d differs from its run alone (leaked %zu)\n", i,
                   together[i].leaked);
      failed++;
    }
  }
  std::printf("%d threads, %zu bytes of output each, %d differing\n", threads,
              alone.empty() ? size_t{0} : alone[0].output.size(), failed);
  return failed == 0 ? 0 : 1;
}
