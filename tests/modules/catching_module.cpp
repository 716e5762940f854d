// A module that catches an exception of the library. It is built separately and loaded without sharing its symbols, so
// the exception must be caught by type across module boundaries.

#include "zrcore/zrcore.h"

// Returns the code that ZrDateTimeToTimeT returns or throws, or 1 if it throws another type than CZrException.
extern "C" ZR_EXPORT ZRRESULT CatchTimeT(ZRDATETIME value) {
  int64_t timeT = 0;
  try {
    return ZrDateTimeToTimeT(value, &timeT);
  } catch (const CZrException& raised) {
    return raised.code;
  } catch (...) {
    return 1;
  }
}
