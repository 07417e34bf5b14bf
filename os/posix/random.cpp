#include "os/random.h"

#include <sys/random.h>

#include <cerrno>

bool osRandomBytes(void* buffer, size_t size) {
  auto* out = static_cast<unsigned char*>(buffer);
  while (size > 0) {
    ssize_t got = getrandom(out, size, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    out += got;
    size -= static_cast<size_t>(got);
  }
  return true;
}
