// Tests local time in every zone of the system's database, around every change of an offset. The oracle is a model that
// reads the zone's file (RFC 8536) and does not use the C library.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/system.h"
#include "zrcore/datetime.h"

static constexpr char kDatabase[] = "/usr/share/zoneinfo";

// A period has one offset from UTC, in seconds, from its start to the start of the next period.
struct Period {
  int64_t start;
  int64_t offset;
  bool isDaylight;
};

// Reads big-endian integers one after the other.
struct Reader {
  const std::string& bytes;
  std::size_t at;

  int64_t Next(int size) {
    uint64_t number = static_cast<signed char>(bytes.at(at)) < 0 ? ~uint64_t{0} : 0;
    for (int byte = 0; byte < size; ++byte) number = number << 8 | static_cast<unsigned char>(bytes.at(at++));
    return static_cast<int64_t>(number);
  }
};

// Returns the periods of a zone file, or an empty list for another kind of file. The second block has 64-bit times.
static std::vector<Period> ReadZoneFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
  if (bytes.rfind("TZif", 0) != 0) return {};
  std::size_t at = 0;
  std::vector<std::size_t> counts;
  for (const std::size_t timeSize : {4u, 8u}) {
    Reader header{bytes, at + 20};
    counts.clear();  // of UTC flags, standard time flags, leap seconds, times, types, characters
    for (int count = 0; count < 6; ++count) counts.push_back(static_cast<std::size_t>(header.Next(4)));
    at = header.at;
    if (timeSize == 4) at += counts[3] * 5 + counts[4] * 6 + counts[5] + counts[2] * 8 + counts[1] + counts[0];
  }
  Reader times{bytes, at}, types{bytes, at + counts[3] * 8};
  std::vector<Period> periods;
  for (std::size_t time = 0; time < counts[3]; ++time) {
    Reader type{bytes, at + counts[3] * 9 + static_cast<std::size_t>(types.Next(1)) * 6};
    const int64_t start = times.Next(8), offset = type.Next(4);
    periods.push_back({start, offset, type.Next(1) != 0});
  }
  return periods;
}

// The model of the moment of a local time near the change `at`. Changes are further apart than any offset, so the
// neighbouring periods suffice.
static int64_t ModelMoment(const std::vector<Period>& periods, std::size_t at, int64_t local) {
  std::vector<std::pair<bool, int64_t>> readings;  // whether it is daylight time, and the moment
  readings.reserve(2);
  for (std::size_t period = at - 2; period <= at + 1 && period < periods.size(); ++period) {
    const int64_t moment = local - periods[period].offset;
    const int64_t end = period + 1 < periods.size() ? periods[period + 1].start : INT64_MAX;
    if (moment >= periods[period].start && moment < end) readings.emplace_back(periods[period].isDaylight, moment);
  }
  if (readings.empty()) return local - periods[at].offset;  // skipped: the offset after the gap
  if (readings.size() == 1) return readings[0].second;
  // Repeated: the first reading if only that one is standard time, else the second.
  return readings[!readings[0].first && readings[1].first ? 0 : 1].second;
}

static std::string DescribeMoment(int64_t seconds) {
  ZRDATETIMESTRUCT record;
  ZrDateTimeToStruct((seconds + 11644473600) * ZR_TICKS_PER_SECOND, &record);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", record.year, record.month, record.day, record.hour,
                record.minute, record.second);
  return text;
}

// Returns the moment of a local time, or the result code, which is negative, if the library rejects it.
static int64_t MomentOf(int64_t local) {
  try {
    int64_t moment = 0;
    const ZRRESULT result = ZrDateTimeToTimeT((local + 11644473600) * ZR_TICKS_PER_SECOND, &moment);
    return result == ZR_R_OK ? moment : result;
  } catch (const CZrException& raised) {
    return raised.code;
  }
}

TEST(TimeZoneDatabase, EveryLocalTimeHasOneMomentInAnyOrderOfCalls) {
  constexpr int64_t kDay = 86400, kYear2037 = 2114380800;
  int zones = 0, failures = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(kDatabase)) {
    const std::string name = std::filesystem::relative(file.path(), kDatabase).string();
    if (!file.is_regular_file() || name.rfind("right/", 0) == 0 || name.rfind("posix/", 0) == 0) continue;
    const std::vector<Period> periods = ReadZoneFile(file.path());
    if (periods.empty()) continue;
    ++zones;
    ASSERT_TRUE(SetTimeZone((":" + file.path().string()).c_str()));
    for (std::size_t at = 2; at < periods.size(); ++at) {
      const Period &last = periods[at - 1], &next = periods[at];
      if (next.start < 2 * kDay || next.start > kYear2037) continue;
      const int64_t edges[] = {next.start + last.offset, next.start + next.offset};
      std::vector<int64_t> locals = {(edges[0] + edges[1]) / 2};
      for (const int64_t edge : edges) {
        for (const int64_t away : {-kDay, int64_t{-1}, int64_t{0}, int64_t{1}, kDay}) locals.push_back(edge + away);
      }
      const auto check = [&](int64_t local) {
        const int64_t expected = ModelMoment(periods, at, local), got = MomentOf(local);
        if (got != expected && ++failures <= 20) {
          ADD_FAILURE() << name << ", local time " << DescribeMoment(local) << ": got "
                        << (got >= 0 ? DescribeMoment(got) : "code " + std::to_string(got)) << ", expected "
                        << DescribeMoment(expected) << " UTC; the offset changes from " << last.offset << " to "
                        << next.offset << " s";
        }
      };
      std::for_each(locals.begin(), locals.end(), check);
      std::for_each(locals.rbegin(), locals.rend(), check);  // in reverse order, after other calls
    }
  }
  (void)SetTimeZone(nullptr);
  EXPECT_GT(zones, 300) << "is tzdata installed below " << kDatabase << "?";
  EXPECT_EQ(failures, 0);
}
