#include "session.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "literal.h"
#include "parser.h"

// Local variables of the blocks being evaluated; a block keeps the scope it
// was made in, so inner blocks see the parameters of outer ones.
struct Scope {
  std::shared_ptr<Scope> parent;
  std::vector<std::pair<std::string, ValueCell*>> locals;
  ~Scope() {
    for (auto& local : locals)
      cellRelease(local.second);
  }
};

namespace {

// Nested block evaluations allowed before the program is stopped.
constexpr uint32_t MAX_BLOCK_DEPTH = 1000;

struct BlockCode {
  const Node* node;
  std::shared_ptr<Scope> scope;
};

Session* sessionOf(VMEngine* vm) {
  return static_cast<Session*>(vm->eventCargo);
}

// ---- What the host reports -------------------------------------------------------------

void onUnhandledError(VMEngine*, void* cargo, const Item* error) {
  auto* session = static_cast<Session*>(cargo);
  if (session->quiet) {
    if (session->quietGenCode == 0)
      session->quietGenCode = itemGetNI(xobjIvarPtr(error, "GENCODE"));
    return;
  }
  session->output.write(formatErrorLine(error) + "\n");
}

void onException(VMEngine*, void* cargo, const char* text) {
  static_cast<Session*>(cargo)->output.write("EXCEPTION " + formatText(text) + "\n");
}

void onMessageBox(VMEngine*, void* cargo, const char* text, const char* caption) {
  const char* shown = caption ? caption : "";
  static_cast<Session*>(cargo)->output.write("MSGBOX caption=" + formatText(shown) +
                                             " text=" + formatText(text) + "\n");
}

void onReport(VMEngine*, void* cargo, const char* text) {
  static_cast<Session*>(cargo)->output.write("REPORT " + formatText(text) + "\n");
}

void onInternalError(VMEngine*, void* cargo, int32_t code, const char* text1, const char* text2) {
  static_cast<Session*>(cargo)->output.write("INTERNAL code=" + std::to_string(code) + " text=" +
                                             formatText(text1) + " " + formatText(text2) + "\n");
  throw FatalStop{code};
}

const char* onMacroType(VMEngine*, void* cargo, const char* text, uint32_t length, uint8_t) {
  return static_cast<Session*>(cargo)->typeOfText(std::string(text, length));
}

VMFunction onResolveFunction(VMEngine*, void* cargo, const char* name) {
  auto* session = static_cast<Session*>(cargo);
  VMFunction function = session->library.find(name);
  return function ? function : findBuiltin(name);
}

bool onRunFile(VMEngine*, void* cargo, const char* path) {
  return static_cast<Session*>(cargo)->runFile(path);
}

const HostEvents SHELL_EVENTS = {onUnhandledError, onException, onMessageBox,      onReport,
                                 onInternalError,  onMacroType, onResolveFunction, onRunFile};

void blockEval(VMEngine* vm, Block* block, uint32_t argc, Item** argv, Item* result) {
  sessionOf(vm)->evalBlock(block, argc, argv, result);
}

void blockRelease(Block* block) {
  delete static_cast<BlockCode*>(block->code);
}

// Stack slots for intermediate values, released when the holder goes.
class Temporaries {
 public:
  Temporaries(VMEngine* vm, uint32_t count) : vm_(vm), count_(count) {
    for (uint32_t i = 0; i < count; i++)
      slots_[i] = vmPush(vm);
  }
  ~Temporaries() { vmPop(vm_, count_); }
  Item* operator[](uint32_t i) const { return slots_[i]; }

 private:
  VMEngine* vm_;
  uint32_t count_;
  Item* slots_[3];
};

bool isTrue(const Item* item) {
  return item->type == HB_IT_LOGICAL && item->item.asLogical.value;
}

}  // namespace

Session::Session(const Library& lib, Output& out, bool extendedFrames) : library(lib), output(out) {
  VMConfig config{&SHELL_EVENTS, this, extendedFrames};
  vm_ = vmCreate(&config);
}

Session::~Session() {
  finish();
}

size_t Session::finish() {
  if (!vm_) return 0;
  scope_.reset();
  size_t leaked = vmDestroy(vm_);
  vm_ = nullptr;
  return leaked;
}

void Session::run(std::unique_ptr<Program> program, bool printLast) {
  const Program* running = program.get();
  programs_.push_back(std::move(program));
  Temporaries value(vm_, 1);
  const Statement* last = nullptr;
  for (const Statement& statement : running->statements) {
    runStatement(statement, value[0]);
    last = &statement;
  }
  if (printLast && last && !last->print) output.write(formatLiteral(value[0]) + "\n");
}

void Session::runStatement(const Statement& statement, Item* value) {
  if (!statement.print) {
    eval(statement.expressions.front().get(), value);
    return;
  }
  std::string line;
  for (const NodePtr& expression : statement.expressions) {
    eval(expression.get(), value);
    if (!line.empty()) line += ' ';
    line += formatLiteral(value);
  }
  output.write(line + "\n");
  itemClear(vm_, value);
}

bool Session::runFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::string source((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::unique_ptr<Program> program;
  try {
    program = std::make_unique<Program>(parseProgram(source));
  } catch (const SyntaxError&) {
    return false;
  }
  run(std::move(program), false);
  return true;
}

// ---- Expressions ---------------------------------------------------------------------------

void Session::eval(const Node* node, Item* out) {
  switch (node->kind) {
    case NodeKind::Nil:
      itemClear(vm_, out);
      break;
    case NodeKind::Logical:
      itemPutL(vm_, out, node->integer != 0);
      break;
    case NodeKind::Integer:
      itemPutNI(vm_, out, static_cast<int32_t>(node->integer));
      break;
    case NodeKind::Double:
      itemPutNDLen(vm_, out, node->number, node->width, node->decimals);
      break;
    case NodeKind::String:
      itemPutCL(vm_, out, node->text.data(), static_cast<uint32_t>(node->text.size()));
      break;
    case NodeKind::Date:
      itemPutDL(vm_, out, static_cast<int32_t>(node->integer));
      break;
    case NodeKind::Variable:
      readVariable(node->text, out);
      break;
    case NodeKind::Reference:
      makeReference(node->text, out);
      break;
    case NodeKind::Assign:
      evalAssign(node, out);
      break;
    case NodeKind::Unary: {
      Temporaries operand(vm_, 1);
      eval(node->children[0].get(), operand[0]);
      applyUnary(vm_, node->text, operand[0], out);
      break;
    }
    case NodeKind::Binary:
      if (node->text == ".AND." || node->text == ".OR.") {
        evalLogical(node, out);
      } else {
        Temporaries operands(vm_, 2);
        eval(node->children[0].get(), operands[0]);
        eval(node->children[1].get(), operands[1]);
        applyBinary(vm_, node->text, operands[0], operands[1], out);
      }
      break;
    case NodeKind::Call:
      evalCall(node, out);
      break;
    case NodeKind::IIf:
      evalIIf(node, out);
      break;
    case NodeKind::Array:
      evalArray(node, out);
      break;
    case NodeKind::Hash:
      evalHash(node, out);
      break;
    case NodeKind::Block:
      makeBlock(node, out);
      break;
    case NodeKind::Index:
      evalIndex(node, out);
      break;
    case NodeKind::Send:
      evalSend(node, out);
      break;
  }
}

void Session::evalArgument(const Node* node, Item* out) {
  if (node) eval(node, out);
}

void Session::evalCall(const Node* node, Item* out) {
  if (!node->symbol) node->symbol = xdynsymGet(vm_, node->text.c_str());
  vmPushSymbol(vm_, node->symbol);
  vmPushNil(vm_);
  for (const NodePtr& arg : node->children)
    evalArgument(arg.get(), vmPush(vm_));
  xvmDo(vm_, static_cast<uint16_t>(node->children.size()));
  itemCopy(vm_, out, &vm_->stack.Return);
}

void Session::evalSend(const Node* node, Item* out) {
  Temporaries object(vm_, 1);
  eval(node->children[0].get(), object[0]);
  vmPushSymbol(vm_, xdynsymGet(vm_, node->text.c_str()));
  itemCopy(vm_, vmPush(vm_), object[0]);
  for (size_t i = 1; i < node->children.size(); i++)
    evalArgument(node->children[i].get(), vmPush(vm_));
  xvmSend(vm_, static_cast<uint16_t>(node->children.size() - 1));
  itemCopy(vm_, out, &vm_->stack.Return);
}

void Session::evalIndex(const Node* node, Item* out) {
  Temporaries parts(vm_, 2);
  eval(node->children[0].get(), parts[0]);
  eval(node->children[1].get(), parts[1]);
  Item* container = parts[0];
  Item* index = parts[1];
  const Item* element = nullptr;
  bool indexable = false;
  if (container->type & HB_IT_HASH) {
    indexable = true;
    element = hashGetItemPtr(container, index);
  } else if ((container->type & HB_IT_ARRAY) && (index->type & HB_IT_NUMERIC)) {
    indexable = true;
    element = arrayGetItemPtr(container, static_cast<uint32_t>(itemGetNL(index)));
  }
  if (element) {
    itemCopy(vm_, out, element);
    return;
  }
  Item* substitute = err_RT_BASE_Subst(vm_, indexable ? EG_BOUND : EG_ARG, indexable ? 1132 : 1068,
                                       nullptr, "array access", 2, container, index);
  if (substitute) {
    itemCopy(vm_, out, substitute);
    xItemRelease(vm_, substitute);
  } else {
    itemClear(vm_, out);
  }
}

void Session::evalLogical(const Node* node, Item* out) {
  bool isAnd = node->text == ".AND.";
  Temporaries operands(vm_, 2);
  eval(node->children[0].get(), operands[0]);
  // The right operand is evaluated only when the left one does not decide.
  if (operands[0]->type == HB_IT_LOGICAL && (operands[0]->item.asLogical.value != 0) != isAnd) {
    itemPutL(vm_, out, !isAnd);
    return;
  }
  eval(node->children[1].get(), operands[1]);
  applyBinary(vm_, node->text, operands[0], operands[1], out);
}

void Session::evalIIf(const Node* node, Item* out) {
  Temporaries condition(vm_, 1);
  eval(node->children[0].get(), condition[0]);
  eval(node->children[isTrue(condition[0]) ? 1 : 2].get(), out);
}

void Session::evalArray(const Node* node, Item* out) {
  Temporaries built(vm_, 2);
  arrayNew(vm_, built[0], static_cast<uint32_t>(node->children.size()));
  for (size_t i = 0; i < node->children.size(); i++) {
    eval(node->children[i].get(), built[1]);
    arraySetForward(vm_, built[0], static_cast<uint32_t>(i + 1), built[1]);
  }
  itemForwardValue(vm_, out, built[0]);
}

void Session::evalHash(const Node* node, Item* out) {
  Temporaries built(vm_, 3);
  hashNew(vm_, built[0]);
  for (size_t i = 0; i + 1 < node->children.size(); i += 2) {
    eval(node->children[i].get(), built[1]);
    eval(node->children[i + 1].get(), built[2]);
    hashAddForward(vm_, built[0], UINT32_MAX, built[1], built[2]);
  }
  itemForwardValue(vm_, out, built[0]);
}

void Session::makeBlock(const Node* node, Item* out) {
  auto* code = new BlockCode{node, scope_};
  itemPutBlock(vm_, out, blockNew(vm_, blockEval, blockRelease, code));
}

void Session::evalBlock(Block* block, uint32_t argc, Item** argv, Item* result) {
  // Blocks that call themselves without end would exhaust the machine's stack.
  if (blockDepth_ >= MAX_BLOCK_DEPTH) err_Internal(vm_, 1001, "Stack overflow", "");
  auto* code = static_cast<BlockCode*>(block->code);
  auto scope = std::make_shared<Scope>();
  scope->parent = code->scope;
  for (size_t i = 0; i < code->node->params.size(); i++) {
    // An argument passed by reference stays a reference inside the block.
    scope->locals.emplace_back(code->node->params[i], cellNew(vm_, i < argc ? argv[i] : nullptr));
  }
  std::shared_ptr<Scope> outer = std::exchange(scope_, scope);
  blockDepth_++;
  struct Restore {
    Session* session;
    std::shared_ptr<Scope> outer;
    ~Restore() {
      session->scope_ = std::move(outer);
      session->blockDepth_--;
    }
  } restore{this, std::move(outer)};
  for (const NodePtr& expression : code->node->children)
    eval(expression.get(), result);
}

// ---- Variables ----------------------------------------------------------------------------

ValueCell* Session::localCell(const std::string& name) const {
  for (const Scope* scope = scope_.get(); scope; scope = scope->parent.get()) {
    for (const auto& local : scope->locals) {
      if (local.first == name) return local.second;
    }
  }
  return nullptr;
}

void Session::readVariable(const std::string& name, Item* out) {
  if (ValueCell* cell = localCell(name)) {
    itemCopy(vm_, out, itemUnRef(vm_, &cell->value));
    return;
  }
  while (true) {
    DynSymbol* symbol = memvarFindSymbol(vm_, name.c_str());
    if (symbol) {
      memvarGetValue(vm_, out, symbol);
      itemCopy(vm_, out, itemUnRef(vm_, out));
      return;
    }
    Item* error = err_RT_New(vm_, ES_ERROR, ERR_SS_BASE, EG_NOVAR, 1003, nullptr, name.c_str(), 0,
                             EF_CANRETRY);
    uint16_t action = err_Launch(vm_, error);
    xItemRelease(vm_, error);
    if (action != E_RETRY) {
      itemClear(vm_, out);
      return;
    }
  }
}

void Session::storeVariable(const std::string& name, const Item* value) {
  if (ValueCell* cell = localCell(name)) {
    itemCopy(vm_, itemUnRef(vm_, &cell->value), value);
    return;
  }
  DynSymbol* symbol = xdynsymGet(vm_, name.c_str());
  if (!memvarSetValue(vm_, symbol, value)) {
    memvarCreateFromDynSymbol(vm_, symbol, MV_PRIVATE, value);
  }
}

void Session::makeReference(const std::string& name, Item* out) {
  ValueCell* cell = localCell(name);
  if (!cell) {
    DynSymbol* symbol = xdynsymGet(vm_, name.c_str());
    if (!memvarGetCell(vm_, symbol)) memvarCreateFromDynSymbol(vm_, symbol, MV_PRIVATE, nullptr);
    cell = memvarGetCell(vm_, symbol);
  }
  itemPutRef(vm_, out, cell);
}

void Session::storeTarget(const Node* target, Item* value) {
  if (target->kind == NodeKind::Variable) {
    storeVariable(target->text, value);
    return;
  }
  Temporaries parts(vm_, 2);
  eval(target->children[0].get(), parts[0]);
  if (target->kind == NodeKind::Send) {
    xobjSendMsg(vm_, parts[0], ("_" + target->text).c_str(), 1, value);
    return;
  }
  eval(target->children[1].get(), parts[1]);
  Item* container = parts[0];
  if (container->type & HB_IT_HASH) {
    Temporaries pair(vm_, 2);
    itemCopy(vm_, pair[0], parts[1]);
    itemCopy(vm_, pair[1], value);
    hashAddForward(vm_, container, UINT32_MAX, pair[0], pair[1]);
    return;
  }
  bool isArray = (container->type & HB_IT_ARRAY) && (parts[1]->type & HB_IT_NUMERIC);
  if (!isArray || !arraySet(vm_, container, static_cast<uint32_t>(itemGetNL(parts[1])), value)) {
    Item* substitute = err_RT_BASE_Subst(vm_, isArray ? EG_BOUND : EG_ARG, isArray ? 1133 : 1069,
                                         nullptr, "array assign", 3, container, parts[1], value);
    xItemRelease(vm_, substitute);
  }
}

void Session::evalAssign(const Node* node, Item* out) {
  const Node* target = node->children[0].get();
  if (node->text == ":=") {
    eval(node->children[1].get(), out);
  } else {
    Temporaries operands(vm_, 2);
    eval(target, operands[0]);
    eval(node->children[1].get(), operands[1]);
    applyBinary(vm_, node->text.substr(0, 1), operands[0], operands[1], out);
  }
  storeTarget(target, out);
}

// ---- TYPE() ------------------------------------------------------------------------------

const char* Session::typeOfText(const std::string& text) {
  std::unique_ptr<Program> program;
  try {
    program = std::make_unique<Program>(parseProgram(text));
  } catch (const SyntaxError&) {
    return "UE";
  }
  if (program->statements.size() != 1 || program->statements[0].print) return "UE";
  const Program* parsed = program.get();
  programs_.push_back(std::move(program));
  // Evaluated with errors counted, not reported, and without the program's error block.
  Temporaries value(vm_, 2);
  itemForwardValue(vm_, value[1], &vm_->error.errorBlock);
  bool wasQuiet = std::exchange(quiet, true);
  int32_t outerGenCode = std::exchange(quietGenCode, 0);
  eval(parsed->statements[0].expressions[0].get(), value[0]);
  int32_t genCode = std::exchange(quietGenCode, outerGenCode);
  quiet = wasQuiet;
  itemForwardValue(vm_, &vm_->error.errorBlock, value[1]);
  if (genCode == EG_NOVAR) return "U";
  if (genCode == EG_NOFUNC) return "UI";
  if (genCode != 0) return "UE";
  return itemTypeStr(value[0]);
}
