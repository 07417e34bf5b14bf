// A context that also hears the message boxes of the encodings.
#pragma once

#include <string>
#include <vector>

#include "frame/frame.h"
#include "vm_fixture.h"

class EncodingTest : public VmTest {
 public:
  void SetUp() override {
    VmTest::SetUp();
    vm->events = &EVENTS;
  }

  Item* callWith(VMFunction function, const std::string& bytes) {
    return call(function, {str(bytes)});
  }

  // "caption|text" of every message box shown.
  std::vector<std::string> boxes;

 private:
  static void onMessageBox(VMEngine* vm, void*, const char* text, const char* caption) {
    auto* test = static_cast<EncodingTest*>(vm->eventCargo);
    test->boxes.push_back(std::string(caption ? caption : "") + "|" + text);
  }
  static void onError(VMEngine* vm, void*, const Item*) {
    static_cast<EncodingTest*>(vm->eventCargo)->errors.push_back("error");
  }
  static constexpr HostEvents EVENTS = {onError, nullptr, onMessageBox, nullptr,
                                        nullptr, nullptr, nullptr,      nullptr};
};
