// The syntax tree of the shell's expression language.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct DynSymbol;

enum class NodeKind {
  Nil,
  Logical,
  Integer,
  Double,
  String,
  Date,
  Variable,   // name
  Reference,  // @name
  Assign,     // target := value (op "=" for plain, "+=" ... for compound)
  Unary,      // op operand
  Binary,     // left op right
  Call,       // name(args), an omitted argument is a null child
  IIf,        // IIF(cond, a, b)
  Array,      // {a, b}
  Hash,       // {k => v}
  Block,      // {|params| exprs}
  Index,      // target[index]
  Send,       // object:name or object:name(args)
};

struct Node {
  NodeKind kind;
  int line = 0;
  int column = 0;
  std::string text;  // name, operator, or the bytes of a string literal
  int64_t integer = 0;
  double number = 0.0;
  int width = 0;
  int decimals = 0;
  bool isCall = false;  // Send with an argument list
  std::vector<std::unique_ptr<Node>> children;
  std::vector<std::string> params;      // block parameters
  mutable DynSymbol* symbol = nullptr;  // resolved once per context by the evaluator
};

using NodePtr = std::unique_ptr<Node>;

struct Statement {
  bool print = false;  // a "?" statement
  int line = 0;
  std::vector<NodePtr> expressions;
};

struct Program {
  std::vector<Statement> statements;
};
