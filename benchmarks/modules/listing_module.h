// The function that a listing module exports, and the identifiers of its classes.

#pragma once

#include "zrcore/uuid.h"

using ReportClass = void (*)(void* context, const ZRUUID* classId, const char* name);
using ListClassesFunction = void (*)(uint32_t module, uint32_t count, ReportClass report, void* context);

// The first field is scattered, as in random identifiers.
constexpr ZRUUID ListedClass(uint32_t module, uint32_t index) {
  return {(module * 100'003u + index) * 0x9E3779B1u,
          static_cast<uint16_t>(module),
          static_cast<uint16_t>(index),
          {0x9D, 0x40, 0x07, 0x5A, 0x1E, 0xC3, 0x88, 0x2B}};
}
