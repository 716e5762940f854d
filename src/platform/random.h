// The system's generator of random identifiers.

#pragma once

#include "zrcore/uuid.h"

// Stores a random identifier (version 4 of RFC 9562). If the generator fails, returns false and leaves `uuid`
// unchanged.
[[nodiscard]] bool PlatformRandomUuid(ZRUUID& uuid) noexcept;
