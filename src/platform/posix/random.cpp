// Random identifiers from the kernel's generator.

#include "platform/random.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// Reads the same generator through its device, for kernels and sandboxes without getrandom. A signal may interrupt a
// read, and a read may return fewer bytes than requested, so it is repeated until all bytes are there.
static bool ReadRandomDevice(unsigned char* bytes, std::size_t size) noexcept {
  const int device = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (device < 0) return false;
  std::size_t filled = 0;
  while (filled < size) {
    const ssize_t got = read(device, bytes + filled, size - filled);
    if (got > 0) {
      filled += static_cast<std::size_t>(got);
    } else if (got == 0 || errno != EINTR) {
      break;
    }
  }
  close(device);
  return filled == size;
}

bool PlatformRandomUuid(ZRUUID& uuid) noexcept {
  unsigned char bytes[sizeof(ZRUUID)];
  ssize_t got;
  do {
    got = getrandom(bytes, sizeof bytes, 0);  // up to 256 bytes, it returns all of them or an error
  } while (got < 0 && errno == EINTR);
  if (got != static_cast<ssize_t>(sizeof bytes) && !ReadRandomDevice(bytes, sizeof bytes)) return false;

  std::memcpy(&uuid, bytes, sizeof uuid);
  // 122 bits are random; the others are the version, 4, and the variant.
  uuid.data3 = static_cast<uint16_t>((uuid.data3 & 0x0FFF) | 0x4000);
  uuid.data4[0] = static_cast<uint8_t>((uuid.data4[0] & 0x3F) | 0x80);
  return true;
}
