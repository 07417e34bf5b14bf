// Several threads at once, each with its own context, each running a fixed
// mix of every family's calls; every thread's output must be what the same
// sequence prints when it runs alone. Built under ThreadSanitizer, which
// reports any access to shared state that is not guarded.
//
// A family joins with one row of FAMILIES: statements of the shell's
// language. Each thread has its own folder `cDir` (with a trailing slash) and
// number `nThread`; statements that create files or registry keys put them
// there, and print nothing that names them. The registry store is a file in
// the test's own temporary folder.
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
  int rounds = 25;  // fewer for the families that wait on the disk
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
    {"SET",
     R"(? SET(1, .T.), SET(1), SET(1, .F.), SET(4, "yyyy.mm.dd"), SET(4, "mm/dd/yy")
        ? SET(5, 1950 + nThread), SET(5), SET(18, 3), SET(3, .T.), SET(3, .F.), SET(7, "D"), SET(7, ""))"},
    {"memory variables",
     R"(__MVPUBLIC({"mA", "mB"}); __MVPUT("mA", nThread * 2); __MVPUT("mB", "t" + HB_VALTOSTR(nThread))
        __MVSAVE(cDir + "v", "M*", .T.); __MVPUT("mA", 0); __MVPUT("mB", "")
        ? __MVRESTORE(cDir + "v", .T.), __MVGET("mA"), __MVGET("mB"), FILESIZE(cDir + "v.mem"))",
     5},
    {"files",
     R"(h := FCREATE(cDir + "f.txt"); ? FWRITE(h, REPLICATE("xy", 100 + nThread)), FSEEK(h, 10), FSEEK(h, 0, 2)
        s := SPACE(6); FSEEK(h, 1); ? FREAD(h, @s, 6), s, FCLOSE(h), FILESIZE(cDir + "f.txt")
        ? MEMOWRIT(cDir + "m.txt", "line" + HB_VALTOSTR(nThread)), MEMOREAD(cDir + "m.txt"), FERASE(cDir + "m.txt")
        DIRMAKE(cDir + "sub"); ? MEMOWRIT(cDir + "sub/x", "abc"), FILESIZE(cDir + "sub/x"), FERASE(cDir + "sub/x"), FERASE(cDir + "f.txt"))",
     5},
    {"registry",
     R"(k := "Software\KovoThreads\T" + HB_VALTOSTR(nThread)
        ? REGCREATEKEY(0x80000001, k + "\Child", @c), REGCREATEKEY(0x80000001, k, @h), REGSETVALUEEX(h, "n", , 1, "v" + HB_VALTOSTR(nThread), 4)
        ? REGQUERYVALUEEX(h, "n", , @t, @d, @z), t, d, z, REGENUMKEYEX(h, 0, @n, @l), n, REGCLOSEKEY(c), REGCLOSEKEY(h))",
     3},
    {"ODBC",
     R"sql(SQLALLOCEN(@e); SQLALLOCCO(e, @c); ? SQLDRIVERC(c, "Driver=SQLite3;Database=" + cDir + "t.db", @o), SQLALLOCST(c, @s)
        ? SQLEXECDIR(s, "create table if not exists t(a integer, b text)"), SQLEXECDIR(s, "delete from t")
        ? SQLEXECDIR(s, "insert into t values(" + HB_VALTOSTR(nThread) + ", 'x')"), SQLEXECDIR(s, "select a * 2, b from t")
        ? SQLFETCH(s), SQLGETDATA(s, 1, 1, 10, @v), v, SQLGETDATA(s, 2, 1, 10, @w), w, SQLFETCH(s)
        ? SQLFREESTM(s, 1), SQLDISCONN(c), SQLFREECON(c), SQLFREEENV(e))sql",
     3},
};

constexpr int ROUNDS = 25;

std::string script(int thread, const std::filesystem::path& folder) {
  std::string text =
      "nThread := " + std::to_string(thread) + "\ncDir := \"" + folder.string() + "/\"\n";
  for (int round = 0; round < ROUNDS; round++) {
    for (const Family& family : FAMILIES) {
      if (round < family.rounds) text += std::string(family.statements) + "\n";
    }
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

// The line where the two runs part, so that a failure names its statement
void reportFirstDifference(const std::string& alone, const std::string& together) {
  size_t at = 0;
  while (at < alone.size() && at < together.size() && alone[at] == together[at])
    at++;
  size_t lineStart = alone.rfind('\n', at == 0 ? 0 : at - 1);
  lineStart = lineStart == std::string::npos ? 0 : lineStart + 1;
  auto lineOf = [lineStart](const std::string& text) {
    return text.substr(lineStart, text.find('\n', lineStart) - lineStart);
  };
  std::fprintf(stderr, "  alone:    %s\n  together: %s\n", lineOf(alone).c_str(),
               lineOf(together).c_str());
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
  // The registry store of every thread's keys, made before any thread starts
  std::filesystem::create_directories(base);
  setenv("KOVO_REGISTRY", (base / "registry.db").c_str(), 1);
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
      reportFirstDifference(alone[i].output, together[i].output);
      failed++;
    }
  }
  std::printf("%d threads, %zu bytes of output each, %d differing\n", threads,
              alone.empty() ? size_t{0} : alone[0].output.size(), failed);
  return failed == 0 ? 0 : 1;
}
