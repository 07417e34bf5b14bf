// The current drive and directory. None of these changes what FERROR
// reports: each puts the layer's error cell back as it found it.
#include <cctype>

#include "frame/frame.h"

namespace {

constexpr uint32_t DIRECTORY_BUFFER = 256;
constexpr int32_t CURDRIVE_SUBCODE = 9999;
constexpr int32_t EG_OS_ERROR = 21;
constexpr uint32_t RETRY_AND_DEFAULT = 5;
constexpr uint16_t ACTION_RETRY = 1;

// Keeps the error cell as it was on entry for the life of the scope.
class KeptError {
 public:
  explicit KeptError(VMEngine* vm) : vm_(vm), code_(fsError(vm)) {}
  ~KeptError() { fsSetError(vm_, code_); }
  KeptError(const KeptError&) = delete;
  KeptError& operator=(const KeptError&) = delete;

 private:
  VMEngine* vm_;
  uint16_t code_;
};

// The drive named by parameter 1 for the layer's directory calls (1 is A),
// 0 (the current drive) when there is none.
int namedDrive(VMEngine* vm) {
  const char* text = paramIsString(vm, 1) ? paramPChar(vm, 1) : nullptr;
  if (!text || !text[0]) return 0;
  return std::toupper(static_cast<unsigned char>(text[0])) - 'A' + 1;
}

void returnDirectory(VMEngine* vm, uint16_t (*current)(VMEngine*, int, char*, uint32_t)) {
  KeptError kept(vm);
  char buffer[DIRECTORY_BUFFER] = {};
  current(vm, namedDrive(vm), buffer, DIRECTORY_BUFFER - 1);
  itemPutC(vm, returnItem(vm), buffer);
}

}  // namespace

KOVO_FUNC(CURDIR) {
  returnDirectory(vm, fsCurDirBuff);
}

KOVO_FUNC(CURDIRX) {
  returnDirectory(vm, fsCurDirBuffEx);
}

KOVO_FUNC(DIRNAME) {
  KeptError kept(vm);
  char buffer[DIRECTORY_BUFFER] = {'\\'};
  fsCurDirBuff(vm, 0, buffer + 1, DIRECTORY_BUFFER - 1);
  itemPutC(vm, returnItem(vm), buffer);
}

// The drive before any change; a drive that cannot be made current raises a
// retryable operating-system error until the handler stops retrying.
KOVO_FUNC(CURDRIVE) {
  KeptError kept(vm);
  char letter = static_cast<char>('A' + fsCurDrv(vm));
  if (paramIsString(vm, 1)) {
    int drive = namedDrive(vm) - 1;
    while (fsChDrv(vm, drive) != 0) {
      uint16_t action =
          err_RT_BASE_Ext1(vm, EG_OS_ERROR, CURDRIVE_SUBCODE, "Operating system error", "CURDRIVE",
                           0, RETRY_AND_DEFAULT, 1, paramError(vm, 1));
      if (action != ACTION_RETRY) break;
    }
  }
  itemPutCL(vm, returnItem(vm), &letter, 1);
}
