// Atomic counters. Peers inline the single instruction; ZrCore calls an exported function.

#include "zrcore/atomic.h"

#include <atomic>
#include <memory>
#include <string>

#include "boundary.h"
#include "row.h"

#if BENCH_QT
#include <QAtomicInteger>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif

// A value that shares its cache line with nothing else.
template <class Value>
struct alignas(64) CacheLine {
  Value value{};
};

template <class Value, class Increment>
static void IncrementRows(const std::string& library, const Increment& increment) {
  RowOnOneAndTwoThreads("atomic increment", library,
                        [increment, line = std::make_shared<CacheLine<Value>>()] { Consume(increment(line->value)); });
}

void AtomicRows() {
  IncrementRows<int32_t>("ZrCore", [](int32_t& value) { return ZrInterlockedIncrement32(&value); });
  IncrementRows<std::atomic<int32_t>>("std::atomic",
                                      [](std::atomic<int32_t>& value) { return value.fetch_add(1) + 1; });
#if BENCH_QT
  IncrementRows<QAtomicInteger<int32_t>>(
      "QAtomicInteger", [](QAtomicInteger<int32_t>& value) { return value.fetchAndAddOrdered(1) + 1; });
#endif
#if BENCH_GLIB
  IncrementRows<int32_t>("g_atomic_int_add", [](int32_t& value) { return g_atomic_int_add(&value, 1) + 1; });
#endif
  IncrementRows<std::atomic<int32_t>>("lower bound",
                                      [](std::atomic<int32_t>& value) { return BoundaryIncrement(&value); });
}
