// Tests blobs, including internals that the exports hide: the bytes after the content, which handles share a block, and
// handles without an element or a block. Random operations are compared with a model.

#include <gtest/gtest.h>

#include <new>

#include "blobs/blob_manager.h"
#include "tests/support/blob_model.h"
#include "tests/support/text.h"

TEST(Blob, RandomOperationsMatchTheModel) {
  const std::string difference = CBlobSequence::RunRandomly(3000, 400, RandomSeed(0));
  EXPECT_TRUE(difference.empty()) << difference;
}

TEST(Blob, ReportsAMissingElementOrBlock) {
  const CBlobHolder whole = CBlobHolder::Adopt(ZrCreateBlob(4, "abcd")), odd = CBlobHolder::Adopt(HeapNew<tagZRBLOB>());
  ZRBLOB blob = odd.Get();
  uint8_t byte = 9;
  uint32_t number = 9;
  ExpectEach(ZR_R_FAILED, {ZrWriteBlob(blob, "x", 1), ZrAppendBlob(blob, whole.Get()), ZrAppendBlob(whole.Get(), blob),
                           ZrReadBlobPos(blob, &byte, 0, 1), ZrBlobPosition(blob, &number),
                           ZrCompareBlob(whole.Get(), blob, &byte)});
  ExpectRejected({ZrBlobByteLen(blob, &number), ZrBlobGetAt(blob, 0, &byte), ZrBlobByteLen(nullptr, &number),
                  ZrBlobGetAt(nullptr, 0, &byte), ZrBlobPosition(nullptr, &number), ZrBlobByteLen(whole.Get(), nullptr),
                  ZrBlobGetAt(whole.Get(), 0, nullptr), ZrBlobPosition(whole.Get(), nullptr)});
  EXPECT_TRUE(byte == 9 && number == 9) << "a failure must not change the variables";
  blob->element = new CZrBlobElement();
  EXPECT_EQ(ZrWriteBlob(blob, "x", 1), ZR_R_INVALID_OBJECT_STATE);
  EXPECT_EQ(ZrAppendBlob(blob, whole.Get()), ZR_R_INVALID_OBJECT_STATE);
  EXPECT_EQ(ZrAppendBlob(whole.Get(), blob), ZR_R_INVALID_ARGUMENTS);
}

TEST(Blob, BlockMustBeInHandleAndElement) {
  for (const bool isInElement : {true, false}) {
    SCOPED_TRACE(isInElement ? "the element has no block" : "the handle has no block");
    const CBlobHolder whole = CBlobHolder::Adopt(ZrCreateBlob(4, "abcd")),
                      odd = CBlobHolder::Adopt(HeapNew<tagZRBLOB>());
    ZRBLOB blob = odd.Get();
    blob->element = isInElement ? new CZrBlobElement() : new CZrBlobElement(4, "wxyz");
    if (isInElement) blob->block = whole.Get()->block;
    uint8_t byte = 9, equal = 9;
    uint32_t number = 9;
    ExpectEach(ZR_R_INVALID_OBJECT_STATE,
               {ZrReadBlobPos(blob, &byte, 0, 1), ZrReadBlob(blob, &byte, 1), ZrWriteBlob(blob, "x", 1),
                ZrBlobPosition(blob, &number), ZrSeekBlob(blob, 0, 0, 0), ZrInsertBlob(blob, 0, "x", 1),
                ZrAppendBlob(blob, whole.Get()), ZrAppendBlobData(blob, "x", 1), ZrRemoveBlob(blob, 0, 1)});
    EXPECT_EQ(ZrAppendBlob(whole.Get(), blob), ZR_R_INVALID_ARGUMENTS);
    EXPECT_TRUE(byte == 9 && number == 9) << "a failure must not change the variables";
    ExpectEach(ZR_R_OK,
               {ZrCompareBlob(whole.Get(), blob, &equal), ZrBlobByteLen(blob, &number), ZrBlobGetAt(blob, 0, &byte)});
    EXPECT_TRUE(equal == 1 && number == 0 && byte == 0)
        << "a blob without a block must be empty and equal to any other";
  }
}

TEST(Blob, ThrowsBeforeTheLengthExceeds32Bits) {
  const CBlobHolder holder = CBlobHolder::Adopt(ZrCreateBlob(16, nullptr));
  ZRBLOB blob = holder.Get();
  blob->block->length = blob->block->capacity = blob->block->position = UINT32_MAX - 3;  // the buffer is never accessed
  const Bytes bytes(4);
  EXPECT_THROW((void)ZrAppendBlobData(blob, bytes.data(), 4), std::bad_alloc);
  EXPECT_THROW((void)ZrInsertBlob(blob, 0, bytes.data(), 4), std::bad_alloc);
  EXPECT_THROW((void)ZrWriteBlob(blob, bytes.data(), 4), std::bad_alloc);
  EXPECT_THROW((void)ZrAppendBlob(blob, blob), std::bad_alloc);
}

TEST(Blob, BlobWithoutABlockIsEmptyAndEqualsAny) {
  const CBlobHolder whole = CBlobHolder::Adopt(ZrCreateBlob(4, "abcd")),
                    bare = CBlobHolder::Adopt(HeapNew<tagZRBLOB>());
  ZRBLOB blob = bare.Get(), copy = ZrCopyBlob(whole.Get());
  uint8_t byte = 9, equal = 9;
  uint32_t number = 9;
  EXPECT_EQ(ZrCompareBlob(blob, whole.Get(), &equal), ZR_R_FAILED);
  EXPECT_EQ(g_blobManager.CopyBlob(blob, &copy), ZR_R_OK) << "the result is that of destroying the old blob";
  EXPECT_EQ(copy, nullptr);
  EXPECT_EQ(g_blobManager.CopyBlob(blob, &copy), ZR_R_FAILED);
  EXPECT_EQ(g_blobManager.CopyBlob(blob, nullptr), ZR_R_FAILED);
  ExpectRejected({g_blobManager.CreateBlob(0, "", &copy), g_blobManager.CreateBlob(1, "x", nullptr)});

  blob->element = new CZrBlobElement();
  ExpectEach(ZR_R_INVALID_OBJECT_STATE, {ZrReadBlobPos(blob, &byte, 0, 1), ZrBlobPosition(blob, &number)});
  EXPECT_TRUE(byte == 9 && number == 9 && equal == 9);
  EXPECT_TRUE(ZrBlobByteLen(blob, &number) == ZR_R_OK && number == 0);
  EXPECT_TRUE(ZrBlobGetAt(blob, 0, &byte) == ZR_R_OK && byte == 0);
  for (const auto& [left, right] : {std::pair(blob, whole.Get()), std::pair(whole.Get(), blob)}) {
    equal = 9;
    EXPECT_TRUE(ZrCompareBlob(left, right, &equal) == ZR_R_OK && equal == 1);
  }
  copy = ZrCopyBlob(blob);
  EXPECT_TRUE(copy != nullptr && copy->element->Block() == nullptr);
  (void)ZrDestroyBlob(copy);
}
