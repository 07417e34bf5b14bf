// The line that reports an error launched while no error block is installed.
#include <string>

#include "literal.h"
#include "session.h"

namespace {

const Item* field(const Item* error, const char* name) {
  return xobjIvarPtr(error, name);
}

std::string text(const Item* error, const char* name) {
  const Item* value = field(error, name);
  if (!value || !(value->type & HB_IT_STRING)) return "";
  return std::string(itemStrPtr(value), itemStrLen(value));
}

std::string number(const Item* error, const char* name) {
  return std::to_string(itemGetNL(field(error, name)));
}

std::string arguments(const Item* error) {
  const Item* args = field(error, "ARGS");
  std::string out = "(";
  if (args && (args->type & HB_IT_ARRAY)) {
    const BaseArray* array = args->item.asArray.value;
    for (uint32_t i = 0; i < array->length; i++) {
      if (i) out += ", ";
      out += formatLiteral(&array->items[i]);
    }
  }
  return out + ")";
}

std::string flags(const Item* error) {
  std::string out;
  if (itemGetL(field(error, "CANDEFAULT"))) out += 'D';
  if (itemGetL(field(error, "CANRETRY"))) out += 'R';
  if (itemGetL(field(error, "CANSUBSTITUTE"))) out += 'S';
  return out.empty() ? "-" : out;
}

std::string literal(const std::string& value) {
  return formatString(value.data(), value.size());
}

}  // namespace

std::string formatErrorLine(const Item* error) {
  std::string line = "ERROR sev=" + number(error, "SEVERITY") + " gen=" + number(error, "GENCODE") +
                     " sub=" + text(error, "SUBSYSTEM") + "/" + number(error, "SUBCODE") +
                     " op=" + literal(text(error, "OPERATION")) + " args=" + arguments(error) +
                     " flags=" + flags(error) + " os=" + number(error, "OSCODE");
  std::string fileName = text(error, "FILENAME");
  if (!fileName.empty()) line += " file=" + literal(fileName);
  return line + " desc=" + literal(text(error, "DESCRIPTION"));
}
