// A context for unit tests: build items, call VM functions through a real
// frame, see the errors and exceptions that were raised, and find leaks.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "kovo/host_embed.h"

class VmTest : public ::testing::Test {
 public:
  void SetUp() override;
  void TearDown() override;

  // Calls the function with copies of the items through a full frame, in the
  // extended layout when `extended` is set. Returns the return item.
  Item* call(VMFunction function, std::initializer_list<Item*> args);

  // Items that live until the end of the test.
  Item* nil();
  Item* num(int32_t value);
  Item* longNum(int32_t value);
  Item* dbl(double value);
  Item* str(const std::string& bytes);
  Item* logical(bool value);
  Item* date(const char* yyyymmdd);
  Item* array(std::initializer_list<Item*> elements);
  // A reference to a new variable holding a copy of `value`.
  Item* ref(Item* value);
  // The variable that a reference made by ref() refers to.
  Item* target(Item* reference) const { return &reference->item.asRefer.value->value; }

  static std::string text(const Item* item);

  VMEngine* vm = nullptr;
  bool extended = false;
  // "GEN/SUBSYSTEM/SUB OPERATION" of every error launched while no error block is installed.
  std::vector<std::string> errors;
  std::vector<std::string> exceptions;

 private:
  Item* keep(Item* item);
  std::vector<Item*> kept_;
};
