// No array can be made yet, so none comes here but one that a caller invented.

#include "variants/array_payload.h"

ZRRESULT DestroyArray(ZRSAFEARRAY /*array*/) { return ZR_R_NOT_SUPPORTED; }

ZRRESULT CopyArray(ZRSAFEARRAY /*source*/, ZRSAFEARRAY* /*copy*/) { return ZR_R_NOT_SUPPORTED; }

uint32_t ArrayElementCount(ZRSAFEARRAY /*array*/) noexcept { return 0; }

ZRRESULT ChangeArrayType(ZRSAFEARRAY /*array*/, uint32_t /*flags*/, uint16_t /*target*/) { return ZR_R_NOT_SUPPORTED; }

ZRRESULT CompareArrays(ZRSAFEARRAY /*left*/, ZRSAFEARRAY /*right*/, uint8_t* /*equal*/) { return ZR_R_NOT_SUPPORTED; }
