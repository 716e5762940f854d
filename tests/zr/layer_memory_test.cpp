// Tests that owners of the C++ layer keep or release everything when memory runs out in the middle of an operation. The
// address sanitizer finds leaks and double releases.

#include <gtest/gtest.h>

#include <new>

#include "tests/support/failing_heap.h"
#include "tests/support/text.h"
#include "zr/zr.hpp"

// Runs an operation while its last allocation fails.
template <class Operation>
static void FailLastAllocation(Operation operation) {
  for (int n = 20; n > 0; --n) {
    FailAllocation(n);
    try {
      operation();
    } catch (const std::bad_alloc&) {
    }
    if (AllocationFailed()) return;
  }
  ADD_FAILURE() << "the operation does not allocate";
}

TEST(LayerMemory, AVariantKeepsAValueThatCannotBeCopied) {
  const zr::Blob bytes = {1, 2, 3};
  const zr::Sref name = zr::Sref::Parse(W("name"));
  const zr::Variant blob = bytes, sref = name;
  FailLastAllocation([&] { (void)blob.To<zr::Blob>(); });
  FailLastAllocation([&] { (void)sref.To<zr::Sref>(); });
  FailLastAllocation([&] { (void)zr::Variant(zr::Uuid()); });
  FailLastAllocation([&] { (void)zr::Variant(sref); });
  EXPECT_TRUE(blob.To<zr::Blob>().Value() == bytes && sref.To<zr::Sref>().Value() == name);
}

TEST(LayerMemory, AnArrayReleasesTheElementsThatItHas) {
  const zr::Blob blobs[] = {{1}, {2}, {3}};
  FailLastAllocation([&] { (void)zr::Array<zr::Blob>(blobs, 3); });
  zr::Array<zr::Blob> array(blobs, 3);
  FailLastAllocation([&] { (void)array.Set(blobs[0], 1); });
  EXPECT_TRUE(array.At(1).Value() == zr::Blob());  // the old element was released first
  FailLastAllocation([&] { (void)array.At(2); });
  EXPECT_TRUE(array.At(2).Value() == blobs[2] && array.Lend());
}

TEST(LayerMemory, ATextThatCannotBeMadeThrows) {
  const zr::String text = W("text");
  FailLastAllocation([] { EXPECT_EQ(zr::Uuid().ToString().Length(), 38u); });  // either complete or thrown
  FailLastAllocation([&] { EXPECT_EQ((text + text).Length(), 8u); });
  FailLastAllocation([] { EXPECT_FALSE(zr::String::FromUtf8("text")->IsEmpty()); });
  FailLastAllocation([&] { EXPECT_EQ(text.ToUtf32()->size(), 4u); });
  FailLastAllocation([&] { EXPECT_FALSE(text.Upper().IsEmpty()); });
  EXPECT_EQ(text.ReferenceCount(), 1u);
}
