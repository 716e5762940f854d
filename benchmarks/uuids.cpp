// UUIDs: generation, text and comparison. ZrCore returns records on the heap and 16-bit text; most peers return values
// and 8-bit text.

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "row.h"
#include "zrcore/uuid.h"

#if defined(__linux__)
#include <sys/random.h>
#endif
#if BENCH_BOOST
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#endif
#if BENCH_QT
#include <QString>
#include <QUuid>
#endif
#if BENCH_POCO
#include <Poco/UUID.h>
#include <Poco/UUIDGenerator.h>
#endif
#if BENCH_LIBUUID
#include <uuid/uuid.h>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif

// A form that all parsers accept. The second text differs in the last digit, so a comparison must look at all of it.
static constexpr char kText[] = "01234567-89ab-cdef-0123-456789abcdef";
static constexpr char kLaterText[] = "01234567-89ab-cdef-0123-456789abcdf0";

static ZRUUID Parse(const char* text) {
  ZRUUID uuid{};
  Require(ZR_SUCCEEDED(ZrUUIDFromString(text, &uuid)), "a UUID's text is read");
  return uuid;
}

// ---- Lower bounds: conversion by tables -----------------------------------------------------------------------------

struct DigitTables {
  std::array<std::array<WCHAR, 2>, 256> pairs{};
  std::array<uint8_t, 256> values{};
  constexpr DigitTables() {
    constexpr char digits[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < 256; ++i) {
      pairs[i] = {static_cast<WCHAR>(digits[i / 16]), static_cast<WCHAR>(digits[i % 16])};
      values[i] = 0xFF;
    }
    for (std::size_t i = 0; i < 16; ++i) values[static_cast<unsigned char>(digits[i])] = static_cast<uint8_t>(i);
    for (std::size_t i = 10; i < 16; ++i) values[static_cast<unsigned char>('a' + i - 10)] = static_cast<uint8_t>(i);
  }
};
static constexpr DigitTables kDigits;

// For each pair of digits in the text: the index of its byte in the record (whose wider fields are little-endian), and
// the position of the pair in the text.
static constexpr std::array<uint8_t, 16> kRecordByte = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
static constexpr std::array<uint8_t, 16> kTextPlace = {0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};

static void LowerBoundFormat(const ZRUUID& uuid, WCHAR* text) {
  std::array<uint8_t, 16> bytes;
  std::memcpy(bytes.data(), &uuid, 16);
  text[0] = u'{';
  text[9] = text[14] = text[19] = text[24] = u'-';
  text[37] = u'}';
  text[38] = 0;
  for (std::size_t i = 0; i < 16; ++i)
    std::memcpy(text + 1 + kTextPlace[i], kDigits.pairs[bytes[kRecordByte[i]]].data(), 4);
}

static bool LowerBoundParse(const char* text, ZRUUID* uuid) {
  std::array<uint8_t, 16> bytes;
  uint8_t seen = 0;
  for (std::size_t i = 0; i < 16; ++i) {
    const uint8_t high = kDigits.values[static_cast<unsigned char>(text[kTextPlace[i]])];
    const uint8_t low = kDigits.values[static_cast<unsigned char>(text[kTextPlace[i] + 1])];
    seen |= static_cast<uint8_t>(high | low);
    bytes[kRecordByte[i]] = static_cast<uint8_t>(high << 4 | low);
  }
  std::memcpy(uuid, bytes.data(), 16);
  return seen < 16;
}

static void RequireCorrectLowerBounds() {
  const ZRUUID uuid = Parse(kText);
  ZRUUID parsed{};
  Require(LowerBoundParse(kText, &parsed) && std::memcmp(&uuid, &parsed, 16) == 0,
          "the lower bound reads the same UUID");
  std::array<WCHAR, 39> text;
  LowerBoundFormat(uuid, text.data());
  ZRSTR string = nullptr;
  int32_t order = 1;
  Require(ZR_SUCCEEDED(ZrStringFromUUID(&uuid, &string)), "a UUID's text is written");
  Require(ZR_SUCCEEDED(ZrCompareStringW(string, text.data(), &order)) && order == 0,
          "the lower bound writes the same text");
  ZrDestroyString(string);
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

static void GenerateRows() {
  const std::string operation = "UUID generate+destroy";

  Row(operation, "ZrCore", [] {
    ZRUUID* uuid = ZrGenerateUUID();
    Consume(uuid);
    ZrDestroyUUID(uuid);
  });
#if BENCH_BOOST
  auto generator = std::make_shared<boost::uuids::random_generator>();
  Row(operation, "boost::uuids", [generator] { Consume((*generator)()); });
  auto mersenne = std::make_shared<boost::uuids::random_generator_mt19937>();
  Row(operation, "boost::uuids mt19937 (not cryptographic)", [mersenne] { Consume((*mersenne)()); });
#endif
#if BENCH_QT
  Row(operation, "QUuid", [] { Consume(QUuid::createUuid()); });
#endif
#if BENCH_POCO
  Row(operation, "Poco::UUID", [] { Consume(Poco::UUIDGenerator::defaultGenerator().createRandom()); });
#endif
#if BENCH_LIBUUID
  Row(operation, "libuuid", [] {
    uuid_t uuid;
    uuid_generate_random(uuid);
    Consume(uuid);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_uuid_string_random", [] {
    char* text = g_uuid_string_random();
    Consume(text);
    g_free(text);
  });
#endif
#if defined(__linux__)
  Row(operation, "lower bound", [] {
    ZRUUID uuid;
    Consume(getrandom(&uuid, sizeof uuid, 0));
    Consume(uuid);
  });
#endif
}

static void FormatRows() {
  const std::string operation = "UUID to text+destroy";

  Row(operation, "ZrCore", [uuid = Parse(kText)] {
    ZRSTR text = nullptr;
    Consume(ZrStringFromUUID(&uuid, &text));
    Consume(text);
    ZrDestroyString(text);
  });
#if BENCH_BOOST
  Row(operation, "boost::uuids (char)",
      [uuid = boost::uuids::string_generator()(kText)] { Consume(boost::uuids::to_string(uuid)); });
#endif
#if BENCH_QT
  Row(operation, "QUuid", [uuid = QUuid::fromString(QLatin1String(kText))] { Consume(uuid.toString()); });
#endif
#if BENCH_POCO
  Row(operation, "Poco::UUID (char)", [uuid = Poco::UUID(kText)] { Consume(uuid.toString()); });
#endif
#if BENCH_LIBUUID
  Row(operation, "libuuid (char, no heap)", [uuid = Parse(kText)] {
    char text[UUID_STR_LEN];
    uuid_unparse_upper(reinterpret_cast<const unsigned char*>(&uuid), text);
    Consume(text);
  });
#endif
  Row(operation, "lower bound", [uuid = Parse(kText)] {
    std::array<WCHAR, 39> text;
    LowerBoundFormat(uuid, text.data());
    Consume(text);
  });
  Row(operation, "lower bound by contract", [uuid = Parse(kText)] {
    char* block = static_cast<char*>(std::malloc(8 + 39 * sizeof(WCHAR)));
    LowerBoundFormat(uuid, reinterpret_cast<WCHAR*>(block + 8));
    Consume(block);
    std::free(block);
  });
}

static void ParseRows() {
  const std::string operation = "UUID from text";
  const std::string text = kText;

  Row(operation, "ZrCore", [text] {
    ZRUUID uuid;
    Consume(ZrUUIDFromString(text.c_str(), &uuid));
    Consume(uuid);
  });
#if BENCH_BOOST
  Row(operation, "boost::uuids", [text] { Consume(boost::uuids::string_generator()(text.c_str())); });
#endif
#if BENCH_QT
  Row(operation, "QUuid", [text] { Consume(QUuid::fromString(QLatin1String(text.c_str()))); });
#endif
#if BENCH_POCO
  Row(operation, "Poco::UUID", [text] {
    Poco::UUID uuid;
    Consume(uuid.tryParse(text));
    Consume(uuid);
  });
#endif
#if BENCH_LIBUUID
  Row(operation, "libuuid", [text] {
    uuid_t uuid;
    Consume(uuid_parse(text.c_str(), uuid));
    Consume(uuid);
  });
#endif
#if BENCH_GLIB
  Row(operation, "g_uuid_string_is_valid (checks only)", [text] { Consume(g_uuid_string_is_valid(text.c_str())); });
#endif
  Row(operation, "lower bound", [text] {
    ZRUUID uuid;
    Consume(LowerBoundParse(text.c_str(), &uuid));
    Consume(uuid);
  });
}

// Registers both comparisons of a peer.
template <class Uuid>
static void ComparisonRows(const std::string& library, const Uuid& uuid, const Uuid& later) {
  Require(uuid == Uuid(uuid) && uuid < later, "a peer's UUIDs compare");
  Row("UUID equal", library, [left = uuid, right = uuid] { Consume(left == right); });
  Row("UUID less", library, [left = uuid, right = later] { Consume(left < right); });
}

static void CompareRows() {
  const ZRUUID uuid = Parse(kText), later = Parse(kLaterText);
  Require(ZRUUIDLess(&uuid, &later), "the later UUID is the greater");

  Row("UUID equal", "ZrCore", [left = uuid, right = uuid] {
    uint8_t equal = 0;
    Consume(ZrCompareUUID(&left, &right, &equal));
    Consume(equal);
  });
  Row("UUID less", "ZrCore", [left = uuid, right = later] { Consume(ZRUUIDLess(&left, &right)); });
#if BENCH_BOOST
  ComparisonRows("boost::uuids", boost::uuids::string_generator()(kText), boost::uuids::string_generator()(kLaterText));
#endif
#if BENCH_QT
  ComparisonRows("QUuid", QUuid::fromString(QLatin1String(kText)), QUuid::fromString(QLatin1String(kLaterText)));
#endif
#if BENCH_POCO
  ComparisonRows("Poco::UUID", Poco::UUID(kText), Poco::UUID(kLaterText));
#endif
#if BENCH_LIBUUID
  const auto compare = [](const ZRUUID& left, const ZRUUID& right) {
    return uuid_compare(reinterpret_cast<const unsigned char*>(&left), reinterpret_cast<const unsigned char*>(&right));
  };
  Row("UUID equal", "libuuid", [=, left = uuid, right = uuid] { Consume(compare(left, right) == 0); });
  Row("UUID less", "libuuid", [=, left = uuid, right = later] { Consume(compare(left, right) < 0); });
#endif
  Row("UUID equal", "lower bound", [left = uuid, right = uuid] {
    uint64_t a[2], b[2];
    std::memcpy(a, &left, 16);
    std::memcpy(b, &right, 16);
    Consume(((a[0] ^ b[0]) | (a[1] ^ b[1])) == 0);
  });
  Row("UUID less", "lower bound", [left = uuid, right = later] { Consume(std::memcmp(&left, &right, 16) < 0); });
}

void UuidRows() {
  RequireCorrectLowerBounds();
  GenerateRows();
  FormatRows();
  ParseRows();
  CompareRows();
}
