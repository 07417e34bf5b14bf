#include "lexer.h"

#include <cctype>
#include <cmath>

#include "kovo/host_text.h"

namespace {

class Lexer {
 public:
  explicit Lexer(std::string_view source) : src_(source) {}

  std::vector<Token> run() {
    while (true) {
      skipBlanksAndComments();
      if (pos_ >= src_.size()) break;
      lexOne();
    }
    tokens_.push_back(make(TokenKind::End, ""));
    return std::move(tokens_);
  }

 private:
  std::string_view src_;
  size_t pos_ = 0;
  int line_ = 1;
  size_t lineStart_ = 0;
  int depth_ = 0;  // open brackets: newlines inside them do not end a statement
  std::vector<Token> tokens_;

  char peek(size_t ahead = 0) const {
    return pos_ + ahead < src_.size() ? src_[pos_ + ahead] : '\0';
  }
  int column() const { return static_cast<int>(pos_ - lineStart_) + 1; }

  [[noreturn]] void fail(const std::string& message) const {
    throw SyntaxError{line_, column(), message};
  }

  Token make(TokenKind kind, std::string text) const {
    Token token{};
    token.kind = kind;
    token.text = std::move(text);
    token.line = line_;
    token.column = column();
    return token;
  }

  void newline() {
    pos_++;
    line_++;
    lineStart_ = pos_;
  }

  bool atLineStart() const {
    for (size_t i = lineStart_; i < pos_; i++) {
      if (src_[i] != ' ' && src_[i] != '\t') return false;
    }
    return true;
  }

  void skipToLineEnd() {
    while (pos_ < src_.size() && src_[pos_] != '\n')
      pos_++;
  }

  void skipBlanksAndComments() {
    while (pos_ < src_.size()) {
      char c = peek();
      if (c == ' ' || c == '\t' || c == '\r') {
        pos_++;
      } else if (c == '\n') {
        if (depth_ == 0) tokens_.push_back(make(TokenKind::Separator, "\n"));
        newline();
      } else if ((c == '/' && peek(1) == '/') || (c == '&' && peek(1) == '&') ||
                 (c == '*' && atLineStart())) {
        skipToLineEnd();
      } else if (c == '/' && peek(1) == '*') {
        pos_ += 2;
        while (pos_ < src_.size() && !(peek() == '*' && peek(1) == '/')) {
          if (peek() == '\n') {
            newline();
          } else {
            pos_++;
          }
        }
        if (pos_ >= src_.size()) fail("unterminated comment");
        pos_ += 2;
      } else {
        return;
      }
    }
  }

  void lexOne() {
    char c = peek();
    if (c == 'e' && peek(1) == '"') return lexEscapedString();
    if (std::isdigit(static_cast<unsigned char>(c)) ||
        (c == '.' && std::isdigit(static_cast<unsigned char>(peek(1))))) {
      return lexNumber();
    }
    if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') return lexIdentifier();
    if (c == '"' || c == '\'') return lexPlainString(c);
    if (c == '.') return lexDotWord();
    lexSymbol();
  }

  void lexIdentifier() {
    Token token = make(TokenKind::Identifier, "");
    while (std::isalnum(static_cast<unsigned char>(peek())) || peek() == '_') {
      token.text += static_cast<char>(std::toupper(static_cast<unsigned char>(peek())));
      pos_++;
    }
    if (token.text == "NIL") token.kind = TokenKind::Nil;
    tokens_.push_back(std::move(token));
  }

  void lexDotWord() {
    static const char* const words[] = {".T.", ".F.", ".Y.", ".N.", ".AND.", ".OR.", ".NOT."};
    for (const char* word : words) {
      size_t length = std::char_traits<char>::length(word);
      if (pos_ + length > src_.size()) continue;
      bool same = true;
      for (size_t i = 0; i < length && same; i++) {
        same = std::toupper(static_cast<unsigned char>(src_[pos_ + i])) == word[i];
      }
      if (!same) continue;
      std::string text = word;
      Token token = make(TokenKind::Operator, text);
      if (text == ".T." || text == ".Y.") token.kind = TokenKind::True;
      if (text == ".F." || text == ".N.") token.kind = TokenKind::False;
      pos_ += length;
      tokens_.push_back(std::move(token));
      return;
    }
    fail("unexpected '.'");
  }

  void lexNumber() {
    Token token = make(TokenKind::Number, "");
    if (peek() == '0' && (peek(1) == 'd' || peek(1) == 'D') &&
        std::isdigit(static_cast<unsigned char>(peek(2)))) {
      return lexDate(token);
    }
    if (peek() == '0' && (peek(1) == 'x' || peek(1) == 'X')) return lexHex(token);
    size_t start = pos_;
    int intDigits = 0;
    while (std::isdigit(static_cast<unsigned char>(peek()))) {
      pos_++;
      intDigits++;
    }
    bool fraction = false;
    if (peek() == '.' && std::isdigit(static_cast<unsigned char>(peek(1)))) {
      fraction = true;
      pos_++;
      while (std::isdigit(static_cast<unsigned char>(peek()))) {
        pos_++;
        token.decimals++;
      }
    }
    if ((peek() == 'e' || peek() == 'E') && (std::isdigit(static_cast<unsigned char>(peek(1))) ||
                                             ((peek(1) == '-' || peek(1) == '+') &&
                                              std::isdigit(static_cast<unsigned char>(peek(2)))))) {
      fraction = true;
      pos_ += 2;
      while (std::isdigit(static_cast<unsigned char>(peek())))
        pos_++;
    }
    std::string digits(src_.substr(start, pos_ - start));
    token.number = std::strtod(digits.c_str(), nullptr);
    token.width = intDigits > 0 ? intDigits : 1;
    if (!fraction && digits.size() <= 10 && token.number <= 2147483647.0) {
      token.isInteger = true;
      token.integer = static_cast<int64_t>(token.number);
    }
    tokens_.push_back(std::move(token));
  }

  void lexHex(Token& token) {
    pos_ += 2;
    size_t start = pos_;
    double value = 0;
    while (std::isxdigit(static_cast<unsigned char>(peek()))) {
      char c = static_cast<char>(std::toupper(static_cast<unsigned char>(peek())));
      value = value * 16 + (c <= '9' ? c - '0' : c - 'A' + 10);
      pos_++;
    }
    if (pos_ == start) fail("hexadecimal digits expected");
    token.number = value;
    token.width = 10;
    if (value <= 2147483647.0) {
      token.isInteger = true;
      token.integer = static_cast<int64_t>(value);
    }
    tokens_.push_back(std::move(token));
  }

  void lexDate(Token& token) {
    pos_ += 2;
    std::string digits;
    while (std::isdigit(static_cast<unsigned char>(peek())) && digits.size() < 9) {
      digits += peek();
      pos_++;
    }
    if (digits.size() != 8) fail("a date literal has 8 digits: 0dYYYYMMDD");
    token.kind = TokenKind::Date;
    if (digits != "00000000") {
      token.julian = dateEncStr(digits.c_str());
      if (token.julian == 0) fail("no such date: " + digits);
    }
    tokens_.push_back(std::move(token));
  }

  void lexPlainString(char quote) {
    Token token = make(TokenKind::String, "");
    pos_++;
    while (pos_ < src_.size() && peek() != quote && peek() != '\n')
      token.text += src_[pos_++];
    if (peek() != quote) fail("unterminated string");
    pos_++;
    tokens_.push_back(std::move(token));
  }

  int hexDigit(char c) const {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    fail("\\x needs two hexadecimal digits");
  }

  void lexEscapedString() {
    Token token = make(TokenKind::String, "");
    pos_ += 2;
    while (pos_ < src_.size() && peek() != '"' && peek() != '\n') {
      char c = src_[pos_++];
      if (c != '\\') {
        token.text += c;
        continue;
      }
      char e = src_[pos_++];
      switch (e) {
        case '\\':
        case '"':
          token.text += e;
          break;
        case 'r':
          token.text += '\r';
          break;
        case 'n':
          token.text += '\n';
          break;
        case 't':
          token.text += '\t';
          break;
        case 'x': {
          int high = hexDigit(peek());
          int low = hexDigit(peek(1));
          pos_ += 2;
          token.text += static_cast<char>(high * 16 + low);
          break;
        }
        default:
          fail(std::string("unknown escape \\") + e);
      }
    }
    if (peek() != '"') fail("unterminated string");
    pos_++;
    tokens_.push_back(std::move(token));
  }

  void lexSymbol() {
    static const char* const operators[] = {":=", "+=", "-=", "*=", "/=", "==", "!=", "<>",
                                            "<=", ">=", "=>", "+",  "-",  "*",  "/",  "%",
                                            "=",  "#",  "<",  ">",  "$",  "!"};
    for (const char* op : operators) {
      size_t length = std::char_traits<char>::length(op);
      if (src_.substr(pos_, length) == op) {
        TokenKind kind = std::string_view(op) == "=>" ? TokenKind::Punct : TokenKind::Operator;
        tokens_.push_back(make(kind, op));
        pos_ += length;
        return;
      }
    }
    char c = peek();
    if (c == ';') {
      tokens_.push_back(make(TokenKind::Separator, ";"));
      pos_++;
      return;
    }
    if (std::string_view("(){}[],|@:?").find(c) == std::string_view::npos) {
      fail(std::string("unexpected character '") + c + "'");
    }
    if (c == '(' || c == '[' || c == '{') depth_++;
    if ((c == ')' || c == ']' || c == '}') && depth_ > 0) depth_--;
    tokens_.push_back(make(TokenKind::Punct, std::string(1, c)));
    pos_++;
  }
};

}  // namespace

std::vector<Token> tokenize(std::string_view source) {
  return Lexer(source).run();
}
