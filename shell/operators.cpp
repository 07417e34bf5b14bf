// The operators of the expression language, with the language's argument
// errors (general code 1, the operator's subcode) for operands they do not take.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "session.h"

namespace {

struct Operator {
  const char* text;
  const char* name;  // as the error reports it
  int32_t subCode;
};

const Operator OPERATORS[] = {
    {"+", "+", 1081},       {"-", "-", 1082},   {"*", "*", 1083}, {"/", "/", 1084},
    {"%", "%", 1085},       {"==", "==", 1070}, {"=", "=", 1071}, {"!=", "<>", 1072},
    {"<>", "<>", 1072},     {"#", "<>", 1072},  {"<", "<", 1073}, {"<=", "<=", 1074},
    {">", ">", 1075},       {">=", ">=", 1076}, {"$", "$", 1109}, {".AND.", ".AND.", 1078},
    {".OR.", ".OR.", 1079},
};

const Operator& operatorOf(const std::string& text) {
  for (const Operator& op : OPERATORS) {
    if (text == op.text) return op;
  }
  return OPERATORS[0];
}

void raise(VMEngine* vm, int32_t genCode, int32_t subCode, const char* name, Item* left,
           Item* right, Item* out) {
  Item* substitute = right ? err_RT_BASE_Subst(vm, genCode, subCode, nullptr, name, 2, left, right)
                           : err_RT_BASE_Subst(vm, genCode, subCode, nullptr, name, 1, left);
  if (substitute) {
    itemCopy(vm, out, substitute);
    xItemRelease(vm, substitute);
  } else {
    itemClear(vm, out);
  }
}

bool isNumber(const Item* item) {
  return (item->type & HB_IT_NUMERIC) != 0;
}
bool isInteger(const Item* item) {
  return item->type == HB_IT_INTEGER || item->type == HB_IT_LONG;
}
bool isString(const Item* item) {
  return (item->type & HB_IT_STRING) != 0;
}

int decimalsOf(const Item* item) {
  int decimals = 0;
  itemGetNLen(item, nullptr, &decimals);
  return decimals;
}

bool arithmetic(VMEngine* vm, char op, Item* left, Item* right, Item* out) {
  if (isInteger(left) && isInteger(right) && op != '/') {
    int64_t a = itemGetNL(left);
    int64_t b = itemGetNL(right);
    if (op == '%') {
      if (b == 0) return false;
      itemPutNInt(vm, out, a % b);
    } else {
      itemPutNInt(vm, out, op == '+' ? a + b : op == '-' ? a - b : a * b);
    }
    return true;
  }
  double a = itemGetND(left);
  double b = itemGetND(right);
  int decimals = std::max(decimalsOf(left), decimalsOf(right));
  switch (op) {
    case '+':
      itemPutNDLen(vm, out, a + b, 0, decimals);
      return true;
    case '-':
      itemPutNDLen(vm, out, a - b, 0, decimals);
      return true;
    case '*':
      itemPutNDLen(vm, out, a * b, 0, decimalsOf(left) + decimalsOf(right));
      return true;
    case '/':
      if (b == 0.0) return false;
      itemPutND(vm, out, a / b);
      return true;
    default:
      if (b == 0.0) return false;
      itemPutNDLen(vm, out, std::fmod(a, b), 0, decimals);
      return true;
  }
}

void concat(VMEngine* vm, const Item* left, const Item* right, bool moveBlanks, Item* out) {
  uint32_t leftLength = itemStrLen(left);
  uint32_t rightLength = itemStrLen(right);
  uint32_t kept = moveBlanks ? strRTrimLen(itemStrPtr(left), leftLength, false) : leftLength;
  size_t total = size_t{leftLength} + rightLength;
  if (total >= UINT32_MAX) {
    itemClear(vm, out);
    return;
  }
  auto* buffer = static_cast<char*>(vmAlloc(vm, total + 1));
  std::memcpy(buffer, itemStrPtr(left), kept);
  std::memcpy(buffer + kept, itemStrPtr(right), rightLength);
  std::memset(buffer + kept + rightLength, ' ', leftLength - kept);
  itemPutCPtr(vm, out, buffer, static_cast<uint32_t>(total));
}

// Compares two operands of the same kind: <0, 0 or >0; false when they cannot
// be compared. Strings compare as the language does without SET EXACT: the
// left one only as far as the right one reaches.
bool compare(VMEngine* vm, const Item* left, const Item* right, bool exactString, int* result) {
  if (isString(left) && isString(right)) {
    uint32_t leftLength = itemStrLen(left);
    uint32_t rightLength = itemStrLen(right);
    if (!exactString && vm->set.value[HB_SET_EXACT]) {
      leftLength = strRTrimLen(itemStrPtr(left), leftLength, false);
      rightLength = strRTrimLen(itemStrPtr(right), rightLength, false);
    } else if (!exactString && leftLength > rightLength) {
      leftLength = rightLength;
    }
    int order = std::memcmp(itemStrPtr(left), itemStrPtr(right), std::min(leftLength, rightLength));
    *result = order != 0 ? order : (leftLength > rightLength) - (leftLength < rightLength);
    return true;
  }
  if (isNumber(left) && isNumber(right)) {
    double a = itemGetND(left);
    double b = itemGetND(right);
    *result = (a > b) - (a < b);
    return true;
  }
  if (left->type != right->type) return false;
  switch (left->type) {
    case HB_IT_DATE:
      *result = (left->item.asDate.value > right->item.asDate.value) -
                (left->item.asDate.value < right->item.asDate.value);
      return true;
    case HB_IT_LOGICAL:
      *result = (left->item.asLogical.value != 0) - (right->item.asLogical.value != 0);
      return true;
    case HB_IT_NIL:
      *result = 0;
      return true;
    default:
      return false;
  }
}

// What an array, hash or block item shares with its copies.
const void* sharedValue(const Item* item) {
  if (item->type & HB_IT_ARRAY) return item->item.asArray.value;
  if (item->type & HB_IT_HASH) return item->item.asHash.value;
  return item->item.asBlock.value;
}

// Equality of the == and = operators, which also take values of different types.
bool equality(VMEngine* vm, const std::string& op, const Item* left, const Item* right,
              bool* equal) {
  int order = 0;
  if (compare(vm, left, right, op == "==", &order)) {
    *equal = order == 0;
    return true;
  }
  // Arrays, hashes and blocks are equal under == when they are the same one.
  if (op == "==" && left->type == right->type &&
      (left->type & (HB_IT_ARRAY | HB_IT_HASH | HB_IT_BLOCK))) {
    *equal = sharedValue(left) == sharedValue(right);
    return true;
  }
  if (left->type == HB_IT_NIL || right->type == HB_IT_NIL) {
    *equal = false;
    return true;
  }
  return false;
}

bool relational(VMEngine* vm, const std::string& op, const Item* left, const Item* right,
                bool* truth) {
  if (op == "==" || op == "=" || op == "!=" || op == "<>" || op == "#") {
    bool equal = false;
    if (!equality(vm, op, left, right, &equal)) return false;
    *truth = (op == "==" || op == "=") ? equal : !equal;
    return true;
  }
  int order = 0;
  if (!compare(vm, left, right, false, &order)) return false;
  *truth = op == "<" ? order < 0 : op == "<=" ? order <= 0 : op == ">" ? order > 0 : order >= 0;
  return true;
}

bool contains(const Item* left, const Item* right) {
  uint32_t needle = itemStrLen(left);
  if (needle == 0) return false;
  return hb_strAt(itemStrPtr(left), needle, itemStrPtr(right), itemStrLen(right)) != 0;
}

}  // namespace

void applyBinary(VMEngine* vm, const std::string& text, Item* left, Item* right, Item* out) {
  left = itemUnRef(vm, left);
  right = itemUnRef(vm, right);
  const Operator& op = operatorOf(text);
  char symbol = text.size() == 1 ? text[0] : '\0';
  if (symbol && std::strchr("+-*/%", symbol)) {
    if (isNumber(left) && isNumber(right)) {
      if (!arithmetic(vm, symbol, left, right, out)) {
        raise(vm, EG_ZERODIV, symbol == '/' ? 1340 : 1341, op.name, left, right, out);
      }
      return;
    }
    if ((symbol == '+' || symbol == '-') && isString(left) && isString(right)) {
      concat(vm, left, right, symbol == '-', out);
      return;
    }
    if (symbol == '+' && left->type == HB_IT_DATE && isNumber(right)) {
      itemPutDL(vm, out, left->item.asDate.value + itemGetNL(right));
      return;
    }
    if (symbol == '+' && isNumber(left) && right->type == HB_IT_DATE) {
      itemPutDL(vm, out, right->item.asDate.value + itemGetNL(left));
      return;
    }
    if (symbol == '-' && left->type == HB_IT_DATE && isNumber(right)) {
      itemPutDL(vm, out, left->item.asDate.value - itemGetNL(right));
      return;
    }
    if (symbol == '-' && left->type == HB_IT_DATE && right->type == HB_IT_DATE) {
      itemPutNI(vm, out, left->item.asDate.value - right->item.asDate.value);
      return;
    }
  } else if (text == "$") {
    if (isString(left) && isString(right)) {
      itemPutL(vm, out, contains(left, right));
      return;
    }
  } else if (text == ".AND." || text == ".OR.") {
    if (left->type == HB_IT_LOGICAL && right->type == HB_IT_LOGICAL) {
      bool a = left->item.asLogical.value != 0;
      bool b = right->item.asLogical.value != 0;
      itemPutL(vm, out, text == ".AND." ? a && b : a || b);
      return;
    }
  } else {
    bool truth = false;
    if (relational(vm, text, left, right, &truth)) {
      itemPutL(vm, out, truth);
      return;
    }
  }
  raise(vm, EG_ARG, op.subCode, op.name, left, right, out);
}

void applyUnary(VMEngine* vm, const std::string& text, Item* operand, Item* out) {
  operand = itemUnRef(vm, operand);
  if (text == "-" && isInteger(operand)) {
    itemPutNInt(vm, out, -static_cast<int64_t>(itemGetNL(operand)));
  } else if (text == "-" && operand->type == HB_IT_DOUBLE) {
    // The sign takes a place of its own in the display width, as in "-12.5".
    double value = operand->item.asDouble.value;
    int width = operand->item.asDouble.length + (value >= 0 ? 1 : 0);
    itemPutNDLen(vm, out, -value, width, operand->item.asDouble.decimal);
  } else if (text == ".NOT." && operand->type == HB_IT_LOGICAL) {
    itemPutL(vm, out, operand->item.asLogical.value == 0);
  } else {
    raise(vm, EG_ARG, text == "-" ? 1080 : 1077, text.c_str(), operand, nullptr, out);
  }
}
