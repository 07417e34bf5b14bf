// The host's settings block: the SET table, addressed by number, and the four
// text-tools settings. The host gives every value its starting value when it
// creates a context; the function library reads and changes them.
#pragma once

#include <cstdint>

#include "kovo/export.h"
#include "kovo/item.h"

// Setting numbers of the SET table.
enum SetNumber : int {
  HB_SET_EXACT = 1,
  HB_SET_FIXED = 2,
  HB_SET_DECIMALS = 3,
  HB_SET_DATEFORMAT = 4,
  HB_SET_EPOCH = 5,
  HB_SET_PATH = 6,
  HB_SET_DEFAULT = 7,
  HB_SET_EXCLUSIVE = 8,
  HB_SET_SOFTSEEK = 9,
  HB_SET_UNIQUE = 10,
  HB_SET_DELETED = 11,
  HB_SET_CANCEL = 12,
  HB_SET_DEBUG = 13,
  HB_SET_TYPEAHEAD = 14,
  HB_SET_COLOR = 15,
  HB_SET_CURSOR = 16,
  HB_SET_CONSOLE = 17,
  HB_SET_ALTERNATE = 18,
  HB_SET_ALTFILE = 19,
  HB_SET_DEVICE = 20,
  HB_SET_EXTRA = 21,
  HB_SET_EXTRAFILE = 22,
  HB_SET_PRINTER = 23,
  HB_SET_PRINTFILE = 24,
  HB_SET_MARGIN = 25,
  HB_SET_BELL = 26,
  HB_SET_CONFIRM = 27,
  HB_SET_ESCAPE = 28,
  HB_SET_INSERT = 29,
  HB_SET_EXIT = 30,
  HB_SET_INTENSITY = 31,
  HB_SET_SCOREBOARD = 32,
  HB_SET_DELIMITERS = 33,
  HB_SET_DELIMCHARS = 34,
  HB_SET_WRAP = 35,
  HB_SET_MESSAGE = 36,
  HB_SET_MCENTER = 37,
  HB_SET_SCROLLBREAK = 38,
  HB_SET_EVENTMASK = 39,
  HB_SET_VIDEOMODE = 40,
  HB_SET_MBLOCKSIZE = 41,
  HB_SET_MFILEEXT = 42,
  HB_SET_STRICTREAD = 43,
  HB_SET_OPTIMIZE = 44,
  HB_SET_AUTOPEN = 45,
  HB_SET_AUTORDER = 46,
  HB_SET_AUTOSHARE = 47,
  HB_SET_BASE_LAST = 47,
  HB_SET_LANGUAGE = 100,
  HB_SET_EXT_FIRST = 100,
  HB_SET_TRACEFILE = 103,
  HB_SET_TRACESTACK = 104,
  HB_SET_FILECASE = 105,
  HB_SET_DIRCASE = 106,
  HB_SET_DIRSEPARATOR = 107,
  HB_SET_ERRORLOOP = 108,
  HB_SET_OUTPUTSAFETY = 109,
  HB_SET_DBFLOCKSCHEME = 110,
  HB_SET_GTMODE = 113,
  HB_SET_BACKGROUNDTICK = 114,
  HB_SET_PRINTERJOB = 115,
  HB_SET_EOL = 118,
  HB_SET_EXT119 = 119,  // a number from 1 to 1000, read by other libraries
  HB_SET_EXT_LAST = 120,
};

inline constexpr int HB_SET_COUNT = HB_SET_EXT_LAST + 1;

// Phases of a set-change listener call.
inline constexpr int32_t SET_LISTENER_BEFORE = 0;
inline constexpr int32_t SET_LISTENER_AFTER = 1;

using SetListenerCallback = void (*)(int32_t setting, int32_t phase);

struct SetListener {
  SetListenerCallback callback;
  SetListener* next;
};

struct SetBlock {
  // Logical and numeric settings, by number (a truth value or a 32-bit number).
  int32_t value[HB_SET_COUNT];
  // String settings, by number: NUL-terminated heap copies owned by the block;
  // null reads back as an empty string.
  char* text[HB_SET_COUNT];
  char fixedText103[256];
  uint8_t mode104;
  char char107;
  char char107Text[2];
  Item eol118;
  int32_t eol118Exists;  // made "\r\n" when first asked for, unless a value came first
  int32_t altHandle;
  int32_t extraHandle;
  int32_t printHandle;
  int32_t century;
  int32_t printerFileFlag;
  char lastOutputName[256];
  SetListener* listeners;
};

struct VMEngine;

// Native code's way onto the list of set-change listeners: a listener added
// is called last; removing takes the first node of that callback and tells
// whether there was one.
KOVO_HOST_API void setListenerAdd(VMEngine* vm, SetListenerCallback callback);
KOVO_HOST_API bool setListenerRemove(VMEngine* vm, SetListenerCallback callback);

// The text-tools settings shared by every search and string function of the
// text-tools family.
struct TextToolsSettings {
  int32_t refMode;
  int32_t multiPass;
  int32_t atLikeMode;
  char atLikeChar;
  // Stands for an argument that the caller did not pass in text-tools error reports.
  Item nilItem;
};
