// Memory variables as the save file (".mem") holds them: the name filter,
// the reading of records and their restoring, clearing the table. The file
// is a run of records, each a 32-byte header and the value's bytes, closed by
// one 0x1A byte; the host writes the records (memvarSave).
#pragma once

#include <regex.h>

#include <cstdint>

#include "kovo/host.h"
#include "kovo/memvar_record.h"

// A wildcard mask compiled as the host converts it. A mask that does not
// compile ends the program with internal error 9100.
class MemvarMask {
 public:
  MemvarMask(VMEngine* vm, const char* mask);
  ~MemvarMask() { regfree(&expression_); }
  MemvarMask(const MemvarMask&) = delete;
  MemvarMask& operator=(const MemvarMask&) = delete;

  const regex_t* expression() const { return &expression_; }
  // Whether a restored variable of that name is taken: a mask that begins
  // with "*" takes every name, whatever follows the star; the include flag
  // false turns the decision round.
  bool takes(const char* name, bool include) const;

 private:
  bool takesAll_;
  regex_t expression_;
};

// Where the reader takes its bytes: the count read, fewer only at the end.
struct MemvarSource {
  uint32_t (*read)(void* cargo, void* buffer, uint32_t count);
  void* cargo;
};

// Reads the records that remain and restores those the mask takes: an
// existing variable is assigned, a missing one created private. The return
// item holds the last value taken (nil when none was).
void memvarRestoreRecords(VMEngine* vm, const MemvarSource& source, const MemvarMask& mask,
                          bool include);

// Removes every memory variable, public and private.
void memvarClearAll(VMEngine* vm);
