// Atomic counters. All peers inline the one instruction; ZrCore's stands behind a call.

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

// A value alone in its cache line.
template <class Value>
struct alignas(64) Alone {
  Value value{};
};

template <class Value, class Increment>
static void IncrementRows(const std::string& library, const Increment& increment) {
  RowOnOneAndTwoThreads("atomic increment", library,
                        [increment, alone = std::make_shared<Alone<Value>>()] { Consume(increment(alone->value)); });
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
  IncrementRows<std::atomic<int32_t>>("floor", [](std::atomic<int32_t>& value) { return BoundaryIncrement(&value); });
}
