#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "zrcore/zrcore.h"

struct CDestroyBlob {
  void operator()(ZRBLOB blob) const { EXPECT_EQ(ZrDestroyBlob(blob), ZR_R_OK); }
};
using Blob = std::unique_ptr<tagZRBLOB, CDestroyBlob>;

static Blob Made(const std::string& bytes) {
  return Blob(ZrCreateBlob(static_cast<uint32_t>(bytes.size()), bytes.data()));
}

static uint32_t PositionOf(const Blob& blob) {
  uint32_t position = 0;
  EXPECT_EQ(ZrBlobPosition(blob.get(), &position), ZR_R_OK);
  return position;
}

// The content and, behind a bar, the position.
static std::string Show(const Blob& blob) {
  uint32_t length = 0;
  EXPECT_EQ(ZrBlobByteLen(blob.get(), &length), ZR_R_OK);
  std::string bytes(length, '?');
  if (length != 0) {
    EXPECT_EQ(ZrReadBlobPos(blob.get(), bytes.data(), 0, length), ZR_R_OK);
  }
  return bytes + "|" + std::to_string(PositionOf(blob));
}

// A removal leaves 0xFE behind the content. Copies that share the block show it too, a detached copy shows 0 there: so
// the byte tells whether an operation that was refused had detached the handle before.
TEST(Blob, DetachesBeforeTheFinerArgumentsAndBehindTheOthers) {
  Blob intact = Made("abc");
  uint8_t buffer[8] = {}, byte = 9;
  uint32_t number = 9;
  constexpr ZRRESULT kOk = ZR_R_OK, kBad = ZR_R_INVALID_ARGUMENTS, kNone = ZR_R_NOT_EXISTING;
  const struct {
    const char* name;
    std::function<ZRRESULT(ZRBLOB)> run;
    ZRRESULT result;
    bool detaches;
  } kRows[] = {
      {"read into null", [](ZRBLOB b) { return ZrReadBlob(b, nullptr, 1); }, kBad, false},
      {"read nothing", [&](ZRBLOB b) { return ZrReadBlob(b, buffer, 0); }, kBad, false},
      {"read at the end", [&](ZRBLOB b) { return ZrReadBlob(b, buffer, 1); }, kNone, true},
      {"read at, into null", [](ZRBLOB b) { return ZrReadBlobPos(b, nullptr, 0, 1); }, kBad, false},
      {"read nothing at", [&](ZRBLOB b) { return ZrReadBlobPos(b, buffer, 0, 0); }, kBad, false},
      {"read at the length", [&](ZRBLOB b) { return ZrReadBlobPos(b, buffer, 4, 1); }, kNone, false},
      {"read far behind", [&](ZRBLOB b) { return ZrReadBlobPos(b, buffer, 0xFFFFFFFF, 1); }, kNone, false},
      {"read at", [&](ZRBLOB b) { return ZrReadBlobPos(b, buffer, 0, 4); }, kOk, false},
      {"write null", [](ZRBLOB b) { return ZrWriteBlob(b, nullptr, 1); }, kBad, false},
      {"write nothing", [](ZRBLOB b) { return ZrWriteBlob(b, "x", 0); }, kBad, false},
      {"write behind the end", [](ZRBLOB b) { return ZrWriteBlob(b, "x", 1); }, kBad, true},
      {"seek from nowhere", [](ZRBLOB b) { return ZrSeekBlob(b, 0, 3, 1); }, kBad, true},
      {"seek by 0", [](ZRBLOB b) { return ZrSeekBlob(b, 0, 1, 0); }, kOk, true},
      {"insert null", [](ZRBLOB b) { return ZrInsertBlob(b, 0, nullptr, 1); }, kBad, false},
      {"insert nothing", [](ZRBLOB b) { return ZrInsertBlob(b, 0, "x", 0); }, kBad, false},
      {"insert behind the end", [](ZRBLOB b) { return ZrInsertBlob(b, 5, "x", 1); }, kBad, true},
      {"append null", [](ZRBLOB b) { return ZrAppendBlobData(b, nullptr, 1); }, kBad, false},
      {"append nothing", [](ZRBLOB b) { return ZrAppendBlobData(b, "x", 0); }, kBad, false},
      {"append no blob", [](ZRBLOB b) { return ZrAppendBlob(b, nullptr); }, kBad, false},
      {"be appended", [&](ZRBLOB b) { return ZrAppendBlob(intact.get(), b); }, kOk, false},
      {"remove nothing", [](ZRBLOB b) { return ZrRemoveBlob(b, 0, 0); }, kBad, false},
      {"remove behind the end", [](ZRBLOB b) { return ZrRemoveBlob(b, 5, 1); }, kBad, true},
      {"remove at the end", [](ZRBLOB b) { return ZrRemoveBlob(b, 4, 1); }, kOk, true},
      {"compare", [&](ZRBLOB b) { return ZrCompareBlob(b, intact.get(), &byte); }, kOk, false},
      {"compare without answer", [&](ZRBLOB b) { return ZrCompareBlob(b, intact.get(), nullptr); }, kBad, false},
      {"position to null", [](ZRBLOB b) { return ZrBlobPosition(b, nullptr); }, kBad, false},
      {"length to null", [](ZRBLOB b) { return ZrBlobByteLen(b, nullptr); }, kBad, false},
      {"byte to null", [](ZRBLOB b) { return ZrBlobGetAt(b, 0, nullptr); }, kBad, false},
      {"byte beyond", [&](ZRBLOB b) { return ZrBlobGetAt(b, 0xFFFFFFFF, &byte); }, kOk, false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.run(nullptr), ZR_R_INVALID_ARGUMENTS) << "a null handle";
    Blob source = Made("abcdefgh");
    EXPECT_EQ(ZrRemoveBlob(source.get(), 4, 2), ZR_R_OK);
    EXPECT_EQ(ZrRemoveBlob(source.get(), 4, 99), ZR_R_OK);
    Blob copy(ZrCopyBlob(source.get()));
    EXPECT_EQ(row.run(copy.get()), row.result);
    uint8_t behind = 9;
    EXPECT_EQ(ZrBlobGetAt(copy.get(), 4, &behind), ZR_R_OK);
    EXPECT_EQ(behind, row.detaches ? 0 : 0xFE);
    EXPECT_EQ(ZrBlobGetAt(source.get(), 4, &behind), ZR_R_OK);
    EXPECT_EQ(behind, 0xFE) << "of the source, which nobody touched";
    EXPECT_EQ(Show(source), "abcd|8");
  }
  EXPECT_EQ(ZrDestroyBlob(nullptr), ZR_R_INVALID_POINTER);
  EXPECT_EQ(ZrCopyBlob(nullptr), nullptr);
  EXPECT_EQ(ZrCreateBlob(0, "x"), nullptr);
  EXPECT_EQ(number, 9u);
}

TEST(Blob, PositionsAreSharedUntilOneMoves) {
  Blob zeros(ZrCreateBlob(3, nullptr)), source = Made("abcdef");
  EXPECT_EQ(Show(zeros), std::string(3, '\0') + "|0");
  EXPECT_EQ(ZrSeekBlob(source.get(), 2, ZR_BLOB_SEEK_START, 0), ZR_R_OK);
  Blob copy(ZrCopyBlob(source.get()));
  EXPECT_EQ(ZrWriteBlob(source.get(), "XY", 2), ZR_R_OK);
  EXPECT_EQ(Show(source) + " " + Show(copy), "abXYef|4 abcdef|2");

  char buffer[10] = "?????????";
  EXPECT_EQ(ZrReadBlob(copy.get(), buffer, 9), ZR_R_OK) << "a short read is a success";
  EXPECT_EQ(std::string(buffer), "cdef?????");
  EXPECT_EQ(ZrReadBlob(copy.get(), buffer, 9), ZR_R_NOT_EXISTING);
  EXPECT_EQ(Show(copy), "abcdef|6");

  EXPECT_EQ(ZrRemoveBlob(copy.get(), 1, 4), ZR_R_OK);
  EXPECT_EQ(Show(copy), "af|6");
  EXPECT_EQ(ZrWriteBlob(copy.get(), "x", 1), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(ZrSeekBlob(copy.get(), 1, ZR_BLOB_SEEK_POSITION, 7), ZR_R_OK) << "backward, which does not yet repair it";
  EXPECT_EQ(Show(copy), "af|5");
  EXPECT_EQ(ZrSeekBlob(copy.get(), 9, ZR_BLOB_SEEK_POSITION, ZR_BLOB_FORWARD), ZR_R_OK);
  EXPECT_EQ(ZrAppendBlob(copy.get(), copy.get()), ZR_R_OK);
  EXPECT_EQ(Show(copy), "afaf|2");
  uint8_t equal = 9;
  Blob same = Made("afaf");
  EXPECT_EQ(ZrCompareBlob(copy.get(), same.get(), &equal), ZR_R_OK);
  EXPECT_EQ(equal, 1) << "positions don't matter";
}
