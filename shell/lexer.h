// Tokens of the shell's expression language.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class TokenKind {
  End,
  Separator,  // ";" or a newline outside brackets
  Number,
  String,
  Date,
  True,
  False,
  Nil,
  Identifier,
  Operator,  // + - * / % == = != <> # < <= > >= $ := += -= *= /= .AND. .OR. .NOT. !
  Punct,     // ( ) { } [ ] , | => @ : ?
};

struct Token {
  TokenKind kind;
  std::string text;  // identifier (upper case), operator, punctuation, string bytes
  int line;
  int column;
  bool isInteger = false;
  int64_t integer = 0;
  double number = 0.0;
  int width = 0;
  int decimals = 0;
  int32_t julian = 0;
};

struct SyntaxError {
  int line;
  int column;
  std::string message;
};

// Splits source text into tokens; throws SyntaxError.
std::vector<Token> tokenize(std::string_view source);
