// Blobs with what the boundary hides of them: the bytes behind the content, who shares what, and handles with missing
// insides.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <random>

#include "blobs/blob_manager.h"
#include "tests/support/blob_model.h"
#include "tests/support/variant_text.h"

TEST(BlobModel, RandomSequencesAgreeWithThePlainModel) {
  std::mt19937 random(static_cast<uint32_t>(testing::UnitTest::GetInstance()->random_seed()));
  for (int round = 0; round < 3000; ++round) {
    Bytes bytes(400);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    ASSERT_EQ(CBlobSequence::Run(bytes.data(), bytes.size()), "") << "round " << round;
  }
}

// The content, the position and the byte behind the content: 0xFE where some has been removed, unless it was detached.
static std::string Show(ZRBLOB blob) {
  const std::string bytes = BytesOf(blob);
  return bytes + Format(" %u %02X", blob->block->position, unsigned{blob->block->bytes[bytes.size()]});
}

// Each with a copy of "abcd" whose position is behind the end, and with handles that have no element, no block, and a
// block that others hold too although it seemed exclusive.
TEST(Blob, DetachesBeforeTheFinerArgumentsAndBehindTheOthers) {
  constexpr ZRRESULT kOk = ZR_R_OK, kBad = ZR_R_INVALID_ARGUMENTS, kNone = ZR_R_NOT_EXISTING, kFailed = ZR_R_FAILED,
                     kState = ZR_R_INVALID_OBJECT_STATE;
  const CBlobHolder four = CBlobHolder::Adopt(ZrCreateBlob(4, "abcd")), any = CBlobHolder::Share(four.Get());
  char buffer[10] = "?????????";
  uint8_t byte = 9;
  uint32_t number = 9;
  const auto copyOver = [](uint32_t size, ZRBLOB source) {
    if (source == nullptr) return kBad;
    CBlobHolder copy;
    ZRBLOB* destination = copy.Receive();
    *destination = ZrCreateBlob(size, nullptr);
    const ZRRESULT result = g_blobManager.CopyBlob(source, destination);
    EXPECT_EQ(*destination == nullptr, source->element == nullptr);
    return result;
  };
  const struct {
    std::function<ZRRESULT(ZRBLOB)> run;
    ZRRESULT result;
    const char* shown;
    ZRRESULT withoutElement = kFailed, withoutBlock = kState;
  } kRows[] = {
      {[](ZRBLOB b) { return ZrReadBlob(b, nullptr, 1); }, kBad, "abcd 8 FE", kBad, kBad},
      {[&](ZRBLOB b) { return ZrReadBlob(b, buffer, 1); }, kNone, "abcd 8 00"},
      {[&](ZRBLOB b) { return ZrReadBlobPos(b, buffer, 4, 1); }, kNone, "abcd 8 FE"},
      {[&](ZRBLOB b) { return ZrReadBlobPos(b, buffer, 1, 9); }, kOk, "abcd 8 FE"},  // a short read is a success
      {[](ZRBLOB b) { return ZrWriteBlob(b, "x", 1); }, kBad, "abcd 8 00"},
      {[](ZRBLOB b) { return ZrSeekBlob(b, 0, 3, 1); }, kBad, "abcd 8 00"},
      {[](ZRBLOB b) { return ZrSeekBlob(b, 1, ZR_BLOB_SEEK_POSITION, 7); }, kOk, "abcd 7 00"},  // backward: no repair
      {[](ZRBLOB b) { return ZrSeekBlob(b, 0, ZR_BLOB_SEEK_POSITION, ZR_BLOB_FORWARD); }, kOk, "abcd 4 00"},
      {[](ZRBLOB b) { return ZrSeekBlob(b, 0xFFFFFFFA, ZR_BLOB_SEEK_POSITION, 1); }, kOk, "abcd 2 00"},
      {[](ZRBLOB b) { return ZrSeekBlob(b, 1, ZR_BLOB_SEEK_END, 0); }, kOk, "abcd 4 00"},
      {[](ZRBLOB b) { return ZrInsertBlob(b, 4, "x", 1); }, kOk, "abcdx 8 00"},
      {[](ZRBLOB b) { return ZrInsertBlob(b, 5, "x", 1); }, kBad, "abcd 8 00"},
      {[](ZRBLOB b) { return ZrAppendBlobData(b, "x", 1); }, kOk, "abcdx 8 00"},
      {[&](ZRBLOB b) { return ZrAppendBlob(b, four.Get()); }, kOk, "abcdabcd 8 00"},
      {[&](ZRBLOB b) { return ZrAppendBlob(any.Get(), b); }, kOk, "abcd 8 FE", kFailed, kBad},
      {[](ZRBLOB b) { return ZrRemoveBlob(b, 4, 1); }, kOk, "abcd 8 00"},
      {[](ZRBLOB b) { return ZrRemoveBlob(b, 5, 1); }, kBad, "abcd 8 00"},
      {[&](ZRBLOB b) { return ZrCompareBlob(b, four.Get(), &byte); }, kOk, "abcd 8 FE", kFailed, kOk},
      {[&](ZRBLOB b) { return ZrCompareBlob(four.Get(), b, &byte); }, kOk, "abcd 8 FE", kFailed, kOk},
      {[&](ZRBLOB b) { return ZrBlobPosition(b, &number); }, kOk, "abcd 8 FE"},
      {[](ZRBLOB b) { return ZrBlobPosition(b, nullptr); }, kBad, "abcd 8 FE", kBad, kBad},
      {[&](ZRBLOB b) { return ZrBlobByteLen(b, &number); }, kOk, "abcd 8 FE", kBad, kOk},
      {[](ZRBLOB b) { return ZrBlobByteLen(b, nullptr); }, kBad, "abcd 8 FE", kBad, kBad},
      {[&](ZRBLOB b) { return ZrBlobGetAt(b, 0, &byte); }, kOk, "abcd 8 FE", kBad, kOk},
      {[](ZRBLOB b) { return ZrBlobGetAt(b, 0, nullptr); }, kBad, "abcd 8 FE", kBad, kBad},
      {[&](ZRBLOB b) { return copyOver(0, b); }, kOk, "abcd 8 FE", kFailed, kOk},
      {[&](ZRBLOB b) { return copyOver(1, b); }, kOk, "abcd 8 FE", kOk, kOk},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    EXPECT_EQ(row.run(nullptr), kBad) << "a null handle";
    const CBlobHolder source = CBlobHolder::Adopt(ZrCreateBlob(8, "abcdefgh"));
    EXPECT_EQ(ZrRemoveBlob(source.Get(), 4, 99), kOk);
    const CBlobHolder copy = CBlobHolder::Share(source.Get());
    EXPECT_EQ(row.run(copy.Get()), row.result);
    EXPECT_EQ(Show(copy.Get()), row.shown);
    EXPECT_EQ(Show(source.Get()), "abcd 8 FE");

    const bool detaches = copy.Get()->block != source.Get()->block;
    const CBlobHolder other = CBlobHolder::Share(source.Get());
    const ZRRESULT results[] = {row.withoutElement, row.withoutBlock, detaches ? kState : row.result};
    CZrBlobElement* const elements[] = {nullptr, new CZrBlobElement(), new CZrBlobElement(*source.Get()->element)};
    for (const int insides : {0, 1, 2}) {
      ZRBLOB odd = HeapNew<tagZRBLOB>();  // without a block of its own nothing detaches
      odd->element = elements[insides];
      EXPECT_EQ(row.run(odd), results[insides]) << insides;
      EXPECT_EQ(ZrDestroyBlob(odd), kOk);
    }
    EXPECT_EQ(Show(source.Get()), "abcd 8 FE");
    EXPECT_EQ(source.Get()->block->refCount, detaches ? 2 : 3);
  }
  EXPECT_EQ(std::string(buffer), "bcd??????");
  EXPECT_EQ(byte, 'a');
  EXPECT_EQ(number, 4u);

  const CBlobHolder blockless = CBlobHolder::Adopt(HeapNew<tagZRBLOB>(new CZrBlobElement()));
  EXPECT_TRUE(ZrBlobByteLen(blockless.Get(), &number) == kOk && number == 0);
  EXPECT_TRUE(ZrBlobGetAt(blockless.Get(), 0, &byte) == kOk && byte == 0);
  EXPECT_TRUE(ZrCompareBlob(four.Get(), blockless.Get(), &byte) == kOk && byte == 1) << "it equals any other";
  EXPECT_EQ(g_blobManager.CopyBlob(four.Get(), nullptr), kFailed);
  EXPECT_EQ(g_blobManager.CreateBlob(1, nullptr, nullptr), kBad);
  ZRBLOB untouched = four.Get();
  EXPECT_EQ(g_blobManager.CreateBlob(0, "x", &untouched), kBad);
  EXPECT_EQ(g_blobManager.CopyBlob(nullptr, &untouched), kFailed);
  EXPECT_EQ(untouched, four.Get()) << "nothing was destroyed";
}

TEST(BlobModel, ContentNeverOutgrows32Bits) {
  const CBlobHolder holder = CBlobHolder::Adopt(ZrCreateBlob(16, nullptr));
  ZRBLOB blob = holder.Get();
  blob->block->length = blob->block->capacity = blob->block->position = UINT32_MAX - 3;  // a buffer that nobody touches
  const Bytes bytes(4);
  EXPECT_THROW((void)ZrAppendBlobData(blob, bytes.data(), 4), std::bad_alloc);
  EXPECT_THROW((void)ZrInsertBlob(blob, 0, bytes.data(), 4), std::bad_alloc);
  EXPECT_THROW((void)ZrWriteBlob(blob, bytes.data(), 4), std::bad_alloc);
  EXPECT_THROW((void)ZrAppendBlob(blob, blob), std::bad_alloc);
  EXPECT_EQ(blob->block->length, UINT32_MAX - 3);
}
