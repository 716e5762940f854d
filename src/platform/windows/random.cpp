// Random identifiers from the system, which already makes version 4 of RFC 9562.

#include "platform/random.h"

#include <objbase.h>

#include <cstring>

bool PlatformRandomUuid(ZRUUID& uuid) noexcept {
  static_assert(sizeof(ZRUUID) == sizeof(GUID), "the same fields in the same places");
  GUID made;
  if (FAILED(CoCreateGuid(&made))) return false;
  std::memcpy(&uuid, &made, sizeof uuid);
  return true;
}
