// Recursive descent over the tokens, lowest precedence first:
//   assignment (:= += -= *= /=, right to left) < .OR. < .AND. < .NOT.
//   < comparison (== = != <> # < <= > >= $) < + - < * / % < unary - +
//   < postfix (call, [index], :message) < primary.
#include "parser.h"

#include <utility>

namespace {

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  Program run() {
    Program program;
    while (true) {
      while (at(TokenKind::Separator))
        next();
      if (at(TokenKind::End)) break;
      program.statements.push_back(statement());
      if (!at(TokenKind::Separator) && !at(TokenKind::End))
        fail("expected the end of the statement");
    }
    return program;
  }

 private:
  std::vector<Token> tokens_;
  size_t pos_ = 0;

  const Token& peek(size_t ahead = 0) const {
    size_t index = pos_ + ahead;
    return tokens_[index < tokens_.size() ? index : tokens_.size() - 1];
  }
  bool at(TokenKind kind) const { return peek().kind == kind; }
  bool atText(TokenKind kind, const char* text) const {
    return peek().kind == kind && peek().text == text;
  }
  bool atPunct(const char* text) const { return atText(TokenKind::Punct, text); }
  bool atOperator(const char* text) const { return atText(TokenKind::Operator, text); }
  const Token& next() { return tokens_[pos_++]; }

  [[noreturn]] void fail(const std::string& message) const {
    const Token& token = peek();
    std::string found = token.kind == TokenKind::End         ? "end of input"
                        : token.kind == TokenKind::Separator ? "end of statement"
                                                             : "'" + token.text + "'";
    throw SyntaxError{token.line, token.column, message + ", found " + found};
  }

  void expectPunct(const char* text) {
    if (!atPunct(text)) fail(std::string("expected '") + text + "'");
    next();
  }

  NodePtr node(NodeKind kind, const Token& at) const {
    auto created = std::make_unique<Node>();
    created->kind = kind;
    created->line = at.line;
    created->column = at.column;
    return created;
  }

  Statement statement() {
    Statement result;
    result.line = peek().line;
    if (atPunct("?")) {
      next();
      result.print = true;
      if (!at(TokenKind::Separator) && !at(TokenKind::End)) {
        result.expressions.push_back(expression());
        while (atPunct(",")) {
          next();
          result.expressions.push_back(expression());
        }
      }
      return result;
    }
    // "name = value" as a whole statement assigns, as it does in the language.
    if (at(TokenKind::Identifier) && peek(1).kind == TokenKind::Operator && peek(1).text == "=") {
      const Token& name = next();
      next();
      NodePtr assign = node(NodeKind::Assign, name);
      assign->text = ":=";
      NodePtr target = node(NodeKind::Variable, name);
      target->text = name.text;
      assign->children.push_back(std::move(target));
      assign->children.push_back(expression());
      result.expressions.push_back(std::move(assign));
      return result;
    }
    result.expressions.push_back(expression());
    return result;
  }

  NodePtr expression() { return assignment(); }

  NodePtr assignment() {
    NodePtr left = orExpression();
    if (at(TokenKind::Operator) &&
        (peek().text == ":=" || peek().text == "+=" || peek().text == "-=" || peek().text == "*=" ||
         peek().text == "/=")) {
      if (left->kind != NodeKind::Variable && left->kind != NodeKind::Index &&
          !(left->kind == NodeKind::Send && !left->isCall)) {
        fail("cannot assign to this expression");
      }
      const Token& op = next();
      NodePtr assign = node(NodeKind::Assign, op);
      assign->text = op.text;
      assign->children.push_back(std::move(left));
      assign->children.push_back(assignment());
      return assign;
    }
    return left;
  }

  NodePtr binary(const Token& op, NodePtr left, NodePtr right) {
    NodePtr result = node(NodeKind::Binary, op);
    result->text = op.text;
    result->children.push_back(std::move(left));
    result->children.push_back(std::move(right));
    return result;
  }

  NodePtr orExpression() {
    NodePtr left = andExpression();
    while (atOperator(".OR.")) {
      const Token& op = next();
      left = binary(op, std::move(left), andExpression());
    }
    return left;
  }

  NodePtr andExpression() {
    NodePtr left = notExpression();
    while (atOperator(".AND.")) {
      const Token& op = next();
      left = binary(op, std::move(left), notExpression());
    }
    return left;
  }

  NodePtr notExpression() {
    if (atOperator(".NOT.") || atOperator("!")) {
      const Token& op = next();
      NodePtr result = node(NodeKind::Unary, op);
      result->text = ".NOT.";
      result->children.push_back(notExpression());
      return result;
    }
    return comparison();
  }

  NodePtr comparison() {
    NodePtr left = additive();
    while (at(TokenKind::Operator)) {
      const std::string& t = peek().text;
      if (t != "==" && t != "=" && t != "!=" && t != "<>" && t != "#" && t != "<" && t != "<=" &&
          t != ">" && t != ">=" && t != "$") {
        break;
      }
      const Token& op = next();
      left = binary(op, std::move(left), additive());
    }
    return left;
  }

  NodePtr additive() {
    NodePtr left = multiplicative();
    while (atOperator("+") || atOperator("-")) {
      const Token& op = next();
      left = binary(op, std::move(left), multiplicative());
    }
    return left;
  }

  NodePtr multiplicative() {
    NodePtr left = unary();
    while (atOperator("*") || atOperator("/") || atOperator("%")) {
      const Token& op = next();
      left = binary(op, std::move(left), unary());
    }
    return left;
  }

  NodePtr unary() {
    if (atOperator("-") || atOperator("+")) {
      const Token& op = next();
      NodePtr operand = unary();
      if (op.text == "+") return operand;
      NodePtr result = node(NodeKind::Unary, op);
      result->text = "-";
      result->children.push_back(std::move(operand));
      return result;
    }
    return postfix(primary());
  }

  // Arguments of a call: an omitted one is a null child and still counts.
  std::vector<NodePtr> arguments() {
    std::vector<NodePtr> args;
    expectPunct("(");
    if (atPunct(")")) {
      next();
      return args;
    }
    while (true) {
      if (atPunct(",") || atPunct(")")) {
        args.push_back(nullptr);
      } else {
        args.push_back(argument());
      }
      if (atPunct(")")) break;
      expectPunct(",");
    }
    next();
    return args;
  }

  NodePtr argument() {
    if (atPunct("@")) {
      const Token& at = next();
      if (!this->at(TokenKind::Identifier)) fail("expected a variable name after '@'");
      NodePtr ref = node(NodeKind::Reference, at);
      ref->text = next().text;
      return ref;
    }
    return expression();
  }

  NodePtr postfix(NodePtr target) {
    while (true) {
      if (atPunct("[")) {
        const Token& open = next();
        NodePtr index = node(NodeKind::Index, open);
        index->children.push_back(std::move(target));
        index->children.push_back(expression());
        expectPunct("]");
        target = std::move(index);
      } else if (atPunct(":")) {
        const Token& colon = next();
        if (!at(TokenKind::Identifier)) fail("expected a message name after ':'");
        NodePtr send = node(NodeKind::Send, colon);
        send->text = next().text;
        send->children.push_back(std::move(target));
        if (atPunct("(")) {
          send->isCall = true;
          for (NodePtr& arg : arguments())
            send->children.push_back(std::move(arg));
        }
        target = std::move(send);
      } else {
        return target;
      }
    }
  }

  NodePtr primary() {
    const Token& token = peek();
    switch (token.kind) {
      case TokenKind::Number:
        return number(next());
      case TokenKind::String: {
        NodePtr literal = node(NodeKind::String, token);
        literal->text = next().text;
        return literal;
      }
      case TokenKind::Date: {
        NodePtr literal = node(NodeKind::Date, token);
        literal->integer = next().julian;
        return literal;
      }
      case TokenKind::True:
      case TokenKind::False: {
        NodePtr literal = node(NodeKind::Logical, token);
        literal->integer = next().kind == TokenKind::True;
        return literal;
      }
      case TokenKind::Nil:
        next();
        return node(NodeKind::Nil, token);
      case TokenKind::Identifier:
        return identifier();
      default:
        break;
    }
    if (atPunct("(")) {
      next();
      NodePtr inner = expression();
      expectPunct(")");
      return inner;
    }
    if (atPunct("{")) return braces();
    fail("expected an expression");
  }

  NodePtr number(const Token& token) {
    NodePtr literal = node(token.isInteger ? NodeKind::Integer : NodeKind::Double, token);
    literal->integer = token.integer;
    literal->number = token.number;
    literal->width = token.width;
    literal->decimals = token.decimals;
    return literal;
  }

  NodePtr identifier() {
    const Token& name = next();
    if (!atPunct("(")) {
      NodePtr variable = node(NodeKind::Variable, name);
      variable->text = name.text;
      return variable;
    }
    std::vector<NodePtr> args = arguments();
    if (name.text == "IIF" || name.text == "IF") {
      if (args.size() != 3 || !args[0] || !args[1] || !args[2]) {
        throw SyntaxError{name.line, name.column, "IIF takes three arguments"};
      }
      NodePtr choice = node(NodeKind::IIf, name);
      choice->children = std::move(args);
      return choice;
    }
    NodePtr call = node(NodeKind::Call, name);
    call->text = name.text;
    call->children = std::move(args);
    return call;
  }

  NodePtr braces() {
    const Token& open = next();
    if (atPunct("|")) return block(open);
    if (atPunct("=>")) {
      next();
      expectPunct("}");
      return node(NodeKind::Hash, open);
    }
    NodePtr array = node(NodeKind::Array, open);
    if (atPunct("}")) {
      next();
      return array;
    }
    NodePtr first = expression();
    if (atPunct("=>")) return hashRest(open, std::move(first));
    array->children.push_back(std::move(first));
    while (atPunct(",")) {
      next();
      array->children.push_back(expression());
    }
    expectPunct("}");
    return array;
  }

  NodePtr hashRest(const Token& open, NodePtr firstKey) {
    NodePtr hash = node(NodeKind::Hash, open);
    hash->children.push_back(std::move(firstKey));
    expectPunct("=>");
    hash->children.push_back(expression());
    while (atPunct(",")) {
      next();
      hash->children.push_back(expression());
      expectPunct("=>");
      hash->children.push_back(expression());
    }
    expectPunct("}");
    return hash;
  }

  NodePtr block(const Token& open) {
    NodePtr result = node(NodeKind::Block, open);
    expectPunct("|");
    if (!atPunct("|")) {
      while (true) {
        if (!at(TokenKind::Identifier)) fail("expected a parameter name");
        result->params.push_back(next().text);
        if (!atPunct(",")) break;
        next();
      }
    }
    expectPunct("|");
    result->children.push_back(expression());
    while (atPunct(",")) {
      next();
      result->children.push_back(expression());
    }
    expectPunct("}");
    return result;
  }
};

}  // namespace

Program parseProgram(std::string_view source) {
  return Parser(tokenize(source)).run();
}
