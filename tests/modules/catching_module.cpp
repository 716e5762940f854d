// Built apart from the library and from the tests, and loaded without sharing its symbols.

#include "zrcore/zrcore.h"

// The code that ZrDateTimeToTimeT answers or raises; 1 for something that isn't a CZrException.
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
