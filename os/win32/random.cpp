// The system's preferred generator, as CoCreateGuid itself draws on it.
#include <windows.h>

#include <bcrypt.h>

#include "os/random.h"

bool osRandomBytes(void* buffer, size_t size) {
  return BCryptGenRandom(nullptr, static_cast<PUCHAR>(buffer), static_cast<ULONG>(size),
                         BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0;
}
