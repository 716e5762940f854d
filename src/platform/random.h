// The system's generator of random identifiers.

#pragma once

#include "zrcore/uuid.h"

// Fills `uuid` with a random identifier, version 4 of RFC 9562. False, with `uuid` unchanged, if the generator fails.
[[nodiscard]] bool PlatformRandomUuid(ZRUUID& uuid) noexcept;
