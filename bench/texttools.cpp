// The hot loops of the text tools, each beside the bytes builtin of Debian's
// Python that does the same work on the same bytes: ATNUM of an absent
// pattern, ATREPL of a frequent one, NUMTOKEN, TOKENINIT and TOKENNEXT walks.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "kovo/host.h"
#include "reference.h"

extern "C" {
void ATNUM(VMEngine* vm);
void ATREPL(VMEngine* vm);
void NUMTOKEN(VMEngine* vm);
void TOKENINIT(VMEngine* vm);
void TOKENNEXT(VMEngine* vm);
}

namespace {

constexpr size_t TEXT_SIZE = size_t{16} << 20;
constexpr int64_t WORD_COUNT = 2000000;
const char ABSENT[] = "qzxjv";

// Random lower-case text in which the pattern does not occur.
const std::string& absentText() {
  static const std::string text = [] {
    std::string bytes = randomLowercase(TEXT_SIZE, 1);
    for (size_t at = bytes.find(ABSENT); at != std::string::npos; at = bytes.find(ABSENT, at))
      bytes[at] = 'a';
    return bytes;
  }();
  return text;
}

// Random lower-case text with "#@" every 30 to 70 bytes.
const std::string& markedText() {
  static const std::string text = [] {
    std::string bytes = randomLowercase(TEXT_SIZE, 2);
    uint32_t state = 5;
    for (size_t at = 0; at + 2 <= bytes.size();) {
      bytes[at] = '#';
      bytes[at + 1] = '@';
      state = state * 1664525u + 1013904223u;
      at += 30 + (state >> 24) % 41;
    }
    return bytes;
  }();
  return text;
}

// Words of 1 to 10 lower-case letters, one blank after each.
std::string words(int64_t count) {
  std::string letters = randomLowercase(static_cast<size_t>(count) * 10, 3);
  std::string text;
  uint32_t state = 9;
  size_t used = 0;
  for (int64_t i = 0; i < count; i++) {
    state = state * 1664525u + 1013904223u;
    size_t length = 1 + (state >> 24) % 10;
    text.append(letters, used, length);
    text += ' ';
    used += length;
  }
  return text;
}

const std::string& manyWords() {
  static const std::string text = words(WORD_COUNT);
  return text;
}

using Bench = BenchFrame;

void atnumAbsent(benchmark::State& state, bool forward) {
  Bench bench;
  DynSymbol* atnum = bench.function("ATNUM", ATNUM);
  Item* pattern = bench.text(ABSENT);
  Item* text = bench.text(absentText());
  Item* counter = forward ? bench.number(1) : bench.nil();
  for (auto _ : state)
    benchmark::DoNotOptimize(itemGetNL(bench.call(atnum, {pattern, text, counter})));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(TEXT_SIZE));
}

void BM_Atnum_Absent5_Forward(benchmark::State& state) {
  atnumAbsent(state, true);
}
void BM_Atnum_Absent5_Backward(benchmark::State& state) {
  atnumAbsent(state, false);
}

void BM_Reference_memmem_Absent5(benchmark::State& state) {
  const std::string& text = absentText();
  for (auto _ : state)
    benchmark::DoNotOptimize(memmem(text.data(), text.size(), ABSENT, sizeof ABSENT - 1));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(TEXT_SIZE));
}

void BM_Atrepl_Every50Bytes(benchmark::State& state) {
  Bench bench;
  DynSymbol* atrepl = bench.function("ATREPL", ATREPL);
  Item* pattern = bench.text("#@");
  Item* text = bench.text(markedText());
  Item* replacement = bench.text("<br/>");
  for (auto _ : state)
    benchmark::DoNotOptimize(itemStrLen(bench.call(atrepl, {pattern, text, replacement})));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(TEXT_SIZE));
}

void BM_Numtoken_2MWords(benchmark::State& state) {
  Bench bench;
  DynSymbol* numtoken = bench.function("NUMTOKEN", NUMTOKEN);
  Item* text = bench.text(manyWords());
  for (auto _ : state)
    benchmark::DoNotOptimize(itemGetNL(bench.call(numtoken, {text})));
  state.SetItemsProcessed(state.iterations() * WORD_COUNT);
}

void BM_Tokeninit_2MWords(benchmark::State& state) {
  Bench bench;
  DynSymbol* tokeninit = bench.function("TOKENINIT", TOKENINIT);
  Item* text = bench.text(manyWords());
  for (auto _ : state)
    benchmark::DoNotOptimize(bench.call(tokeninit, {text})->type);
  state.SetItemsProcessed(state.iterations() * WORD_COUNT);
}

// TOKENINIT and then TOKENNEXT for every token, with the current environment
// or with one passed by reference.
void tokennextWalk(benchmark::State& state, bool byReference) {
  int64_t count = state.range(0);
  Bench bench;
  DynSymbol* tokeninit = bench.function("TOKENINIT", TOKENINIT);
  DynSymbol* tokennext = bench.function("TOKENNEXT", TOKENNEXT);
  Item* text = bench.text(count == WORD_COUNT ? manyWords() : words(count));
  Item* nil = bench.nil();
  Item* env = byReference ? bench.reference() : nil;
  // As programs write it: TOKENNEXT(cText), or TOKENNEXT(cText, , @cEnv).
  for (auto _ : state) {
    bench.call(tokeninit, {text, nil, nil, env});
    for (int64_t i = 0; i < count; i++) {
      Item* token =
          byReference ? bench.call(tokennext, {text, nil, env}) : bench.call(tokennext, {text});
      benchmark::DoNotOptimize(token->type);
    }
  }
  state.SetItemsProcessed(state.iterations() * count);
}

// What the host alone costs per TOKENNEXT call: the same frame of three
// arguments around a function that only puts a five-byte string.
void putFiveBytes(VMEngine* vm) {
  itemPutCL(vm, &vm->stack.Return, "abcde", 5);
}

void BM_Tokennext_HostCallFloor(benchmark::State& state) {
  Bench bench;
  DynSymbol* floor = bench.function("FLOOR", putFiveBytes);
  Item* text = bench.text("abcde abcde");
  Item* nil = bench.nil();
  for (auto _ : state)
    benchmark::DoNotOptimize(bench.call(floor, {text, nil, nil})->type);
  state.SetItemsProcessed(state.iterations());
}

void BM_Tokennext_Walk(benchmark::State& state) {
  tokennextWalk(state, false);
}
void BM_Tokennext_WalkByReference(benchmark::State& state) {
  tokennextWalk(state, true);
}

BENCHMARK(BM_Atnum_Absent5_Forward);
BENCHMARK(BM_Atnum_Absent5_Backward);
BENCHMARK(BM_Reference_memmem_Absent5);
BENCHMARK(BM_Atrepl_Every50Bytes);
BENCHMARK(BM_Numtoken_2MWords);
BENCHMARK(BM_Tokeninit_2MWords);
BENCHMARK(BM_Tokennext_HostCallFloor);
BENCHMARK(BM_Tokennext_Walk)->Arg(200000)->Arg(WORD_COUNT);
BENCHMARK(BM_Tokennext_WalkByReference)->Arg(200000)->Arg(WORD_COUNT);

const bool pythonReferences = [] {
  registerPythonReference("BM_Python_BytesFind_Absent5", absentText(), "", "data.find(b'qzxjv')",
                          static_cast<int64_t>(TEXT_SIZE));
  registerPythonReference("BM_Python_BytesRfind_Absent5", absentText(), "", "data.rfind(b'qzxjv')",
                          static_cast<int64_t>(TEXT_SIZE));
  registerPythonReference("BM_Python_BytesReplace_Every50Bytes", markedText(), "",
                          "data.replace(b'#@', b'<br/>')", static_cast<int64_t>(TEXT_SIZE));
  registerPythonReference("BM_Python_LenBytesSplit_2MWords", manyWords(), "", "len(data.split())",
                          0);
  registerPythonReference("BM_Python_BytesSplit_2MWords", manyWords(), "", "data.split()", 0);
  return true;
}();

}  // namespace
