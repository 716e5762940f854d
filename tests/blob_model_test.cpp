// What the boundary hides of blobs: the bytes behind the content, who shares what, and handles with missing insides.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <random>

#include "blobs/blob_manager.h"
#include "tests/support/blob_model.h"

TEST(BlobModel, RandomSequencesAgreeWithThePlainModel) {
  std::mt19937 random(static_cast<uint32_t>(testing::UnitTest::GetInstance()->random_seed()));
  for (int round = 0; round < 3000; ++round) {
    Bytes bytes(400);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    ASSERT_EQ(CBlobSequence::Run(bytes.data(), bytes.size()), "") << "round " << round;
  }
}

// In the order of the slots: what an operation answers to a handle without an element, to one without a block, and to
// one whose block others hold too although it seemed exclusive.
TEST(BlobModel, MissingInsides) {
  constexpr ZRRESULT kOk = ZR_R_OK, kBad = ZR_R_INVALID_ARGUMENTS, kFailed = ZR_R_FAILED,
                     kState = ZR_R_INVALID_OBJECT_STATE;
  CZrBlobMgr& manager = g_blobManager;
  const CBlobHolder whole = CBlobHolder::Adopt(ZrCreateBlob(3, "abc"));
  ZRBLOB intact = whole.Get();
  uint8_t bytes[4] = {}, byte = 9;
  uint32_t number = 9;
  const struct {
    const char* name;
    std::function<ZRRESULT(ZRBLOB)> run;
    ZRRESULT withoutElement, withoutBlock, shared;
  } kRows[] = {
      {"ReadBlobPos", [&](ZRBLOB b) { return manager.ReadBlobPos(b, bytes, 0, 1); }, kFailed, kState, kOk},
      {"ReadBlob", [&](ZRBLOB b) { return manager.ReadBlob(b, bytes, 1); }, kFailed, kState, kState},
      {"WriteBlob", [&](ZRBLOB b) { return manager.WriteBlob(b, bytes, 1); }, kFailed, kState, kState},
      {"BlobPosition", [&](ZRBLOB b) { return manager.BlobPosition(b, &number); }, kFailed, kState, kOk},
      {"SeekBlob", [&](ZRBLOB b) { return manager.SeekBlob(b, 0, 9, 0); }, kFailed, kState, kState},
      {"InsertBlob", [&](ZRBLOB b) { return manager.InsertBlob(b, 99, bytes, 1); }, kFailed, kState, kState},
      {"AppendBlob", [&](ZRBLOB b) { return manager.AppendBlob(b, intact); }, kFailed, kState, kState},
      {"AppendBlob, other", [&](ZRBLOB b) { return manager.AppendBlob(intact, b); }, kFailed, kBad, kOk},
      {"AppendBlobData", [&](ZRBLOB b) { return manager.AppendBlobData(b, bytes, 1); }, kFailed, kState, kState},
      {"RemoveBlob", [&](ZRBLOB b) { return manager.RemoveBlob(b, 99, 1); }, kFailed, kState, kState},
      {"CompareBlob", [&](ZRBLOB b) { return manager.CompareBlob(b, intact, &byte); }, kFailed, kOk, kOk},
      {"CompareBlob, other", [&](ZRBLOB b) { return manager.CompareBlob(intact, b, &byte); }, kFailed, kOk, kOk},
      {"BlobByteLen", [&](ZRBLOB b) { return manager.BlobByteLen(b, &number); }, kBad, kOk, kOk},
      {"BlobGetAt", [&](ZRBLOB b) { return manager.BlobGetAt(b, 0, &byte); }, kBad, kOk, kOk},
      {"CopyBlob",
       [&](ZRBLOB b) {
         CBlobHolder copy;
         return manager.CopyBlob(b, copy.Receive());
       },
       kFailed, kOk, kOk},
      {"CopyBlob, over another",
       [&](ZRBLOB b) {
         ZRBLOB copy = ZrCreateBlob(1, nullptr);
         const ZRRESULT result = manager.CopyBlob(b, &copy);
         EXPECT_EQ(copy == nullptr, b->element == nullptr);
         ReleaseBlob(copy);
         return result;
       },
       kOk, kOk, kOk},
      {"DestroyBlob", [&](ZRBLOB b) { return manager.DestroyBlob(new (AllocateOrThrow(sizeof *b)) tagZRBLOB(*b)); },
       kOk, kOk, kOk},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const bool isDestroy = row.name == std::string("DestroyBlob");
    tagZRBLOB bare;
    EXPECT_EQ(row.run(&bare), row.withoutElement);

    auto* empty = new CZrBlobElement();
    tagZRBLOB blockless(empty);
    EXPECT_EQ(row.run(&blockless), row.withoutBlock);
    if (!isDestroy) delete empty;

    const CBlobHolder holder = CBlobHolder::Adopt(ZrCreateBlob(2, "xy"));
    auto* raced = new CZrBlobElement(*holder.Get()->element);
    tagZRBLOB shared(raced);
    shared.block = nullptr;  // so that nothing detaches
    EXPECT_EQ(row.run(&shared), row.shared);
    if (!isDestroy) delete raced;
    EXPECT_EQ(holder.Get()->block->refCount, 1);
  }
  tagZRBLOB blockless(new CZrBlobElement());
  const std::unique_ptr<CZrBlobElement> owner(blockless.element);
  EXPECT_EQ(manager.BlobByteLen(&blockless, &number), kOk);
  EXPECT_EQ(number, 0u);
  EXPECT_EQ(manager.CompareBlob(intact, &blockless, &byte), kOk);
  EXPECT_EQ(byte, 1) << "a blob without a block equals any other";
  EXPECT_EQ(manager.BlobGetAt(&blockless, 0, &byte), kOk);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(manager.CopyBlob(intact, nullptr), ZR_R_FAILED);
  EXPECT_EQ(manager.CreateBlob(1, nullptr, nullptr), ZR_R_INVALID_ARGUMENTS);
  ZRBLOB untouched = intact;
  EXPECT_EQ(manager.CreateBlob(0, bytes, &untouched), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(manager.CopyBlob(nullptr, &untouched), ZR_R_FAILED);
  EXPECT_EQ(untouched, intact) << "nothing was destroyed";
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
  EXPECT_EQ(ZrSeekBlob(blob, 10, ZR_BLOB_SEEK_POSITION, ZR_BLOB_FORWARD), ZR_R_OK);
  EXPECT_EQ(blob->block->position, 6u) << "the sum wraps";
}
