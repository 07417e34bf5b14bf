// A session of the shell: one VM context, the statements it has run, and
// the evaluation of the expression language on the host.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "ast.h"
#include "kovo/host_embed.h"
#include "library.h"

// Where a session's text goes.
class Output {
 public:
  virtual ~Output() = default;
  virtual void write(const std::string& text) = 0;
};

class StdoutOutput : public Output {
 public:
  void write(const std::string& text) override { std::fwrite(text.data(), 1, text.size(), stdout); }
};

class StringOutput : public Output {
 public:
  void write(const std::string& text) override { text_ += text; }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// Raised when the program meets an unrecoverable internal error.
struct FatalStop {
  int32_t code;
};

struct Scope;

class Session {
 public:
  Session(const Library& library, Output& output, bool extendedFrames);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Runs the statements; with printLast, prints the value of the last one
  // unless it was a "?" statement. Throws FatalStop.
  void run(std::unique_ptr<Program> program, bool printLast);
  // Ends the context; the number of heap blocks still allocated (0 unless
  // something leaked).
  size_t finish();
  VMEngine* vm() const { return vm_; }

  // Evaluation, used by blocks and built-in functions too.
  void eval(const Node* node, Item* out);
  void evalBlock(Block* block, uint32_t argc, Item** argv, Item* result);
  // Runs a script file in this session; false when it cannot be read or parsed.
  bool runFile(const std::string& path);
  // Type letters of an expression text, as TYPE() reports them.
  const char* typeOfText(const std::string& text);

  const Library& library;
  Output& output;
  // While set, launched errors are not printed; the first one's general code is kept.
  bool quiet = false;
  int32_t quietGenCode = 0;

 private:
  VMEngine* vm_;
  std::shared_ptr<Scope> scope_;
  uint32_t blockDepth_ = 0;
  std::vector<std::unique_ptr<Program>> programs_;

  void runStatement(const Statement& statement, Item* value);
  void evalArgument(const Node* node, Item* out);
  void evalCall(const Node* node, Item* out);
  void evalSend(const Node* node, Item* out);
  void evalIndex(const Node* node, Item* out);
  void evalAssign(const Node* node, Item* out);
  void evalLogical(const Node* node, Item* out);
  void evalIIf(const Node* node, Item* out);
  void evalArray(const Node* node, Item* out);
  void evalHash(const Node* node, Item* out);
  void makeBlock(const Node* node, Item* out);
  void readVariable(const std::string& name, Item* out);
  void storeVariable(const std::string& name, const Item* value);
  void storeTarget(const Node* target, Item* value);
  void makeReference(const std::string& name, Item* out);
  ValueCell* localCell(const std::string& name) const;
};

// The shell's own functions, found after the library's: CHR, ASC, EVAL, ...
VMFunction findBuiltin(const std::string& name);
// Operators of the language on evaluated operands; errors go through the host.
void applyBinary(VMEngine* vm, const std::string& op, Item* left, Item* right, Item* out);
void applyUnary(VMEngine* vm, const std::string& op, Item* operand, Item* out);
// The line printed for an error launched while no error block is installed.
std::string formatErrorLine(const Item* error);
