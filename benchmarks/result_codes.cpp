// Looking up the text of a result code. The peers return 8-bit text.

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "boundary.h"
#include "row.h"
#include "zrcore/error_info.h"

#if BENCH_GLIB
#include <glib.h>
#endif

template <class Map>
struct LockedTexts {
  std::mutex mutex;
  Map texts;
};

// The registry that a user would write: a map of strings, protected by a mutex.
template <class Map>
static void MapRow(const std::string& operation, const std::string& library) {
  auto registry = std::make_shared<LockedTexts<Map>>();
  for (uint32_t code = 0x80000000; code < 0x80000021; ++code) {
    registry->texts[code] = std::make_shared<const std::string>("ZR_R_INVALID_ARGUMENTS");
  }
  Row(operation, library, [registry] {
    std::shared_ptr<const std::string> text;
    {
      const std::lock_guard hold(registry->mutex);
      text = registry->texts.find(0x80000004)->second;
    }
    Consume(text);
  });
}

void ResultCodeRows() {
  const std::string operation = "error code to text+destroy";
  using Text = std::shared_ptr<const std::string>;

  Row(operation, "ZrCore", [] {
    ZRSTR text = nullptr;
    Consume(ZrErrorInfoGetText(0x80000004, &text));
    Consume(text);
    ZrDestroyString(text);
  });
  MapRow<std::unordered_map<uint32_t, Text>>(operation, "std::unordered_map under std::mutex");
  MapRow<std::map<uint32_t, Text>>(operation, "std::map under std::mutex");
#if BENCH_GLIB
  Row(operation, "g_strerror (char)", [] { Consume(g_strerror(22)); });
#endif
  struct SortedTexts {
    std::mutex mutex;
    std::array<uint32_t, 33> codes{};
    std::array<std::atomic<uint32_t>, 33> counts{};
  };
  auto texts = std::make_shared<SortedTexts>();
  for (std::size_t at = 0; at < texts->codes.size(); ++at) {
    texts->codes[at] = 0x80000000 + static_cast<uint32_t>(at);
    texts->counts[at] = 1;
  }
  Row(operation, "lower bound", [texts] {
    std::atomic<uint32_t>& count = texts->counts[4];
    count.fetch_add(1, std::memory_order_relaxed);
    Consume(&count);
    Consume(count.fetch_sub(1, std::memory_order_acq_rel) == 1);
  });
  Row(operation, "lower bound by contract", [texts] {  // lock, lookup, and the string's reference count by calls
    std::atomic<uint32_t>* count = nullptr;
    {
      const std::lock_guard hold(texts->mutex);
      const auto found = std::lower_bound(texts->codes.begin(), texts->codes.end(), 0x80000004);
      count = &texts->counts[static_cast<std::size_t>(found - texts->codes.begin())];
      BoundaryRetain(count);
    }
    Consume(count);
    BoundaryRelease(count);
  });
}
