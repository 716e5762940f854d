// Tests that the operations of an array's accessor check their arguments. The accessor is called directly, because
// arrays never pass invalid arguments to it.

#include "arrays/accessor.h"

#include <gtest/gtest.h>

#include "tests/support/text.h"

TEST(Accessor, RejectsNullArgumentsAndZeroDimensions) {
  for (const uint16_t tag : std::initializer_list<uint16_t>{ZR_VT_I4, ZR_VT_STR, ZR_VT_VARIANT}) {
    SCOPED_TRACE(testing::Message() << "tag " << tag);
    const CAccessorHolder of(tag);
    ZrSafeArrayBound bound = {1, 0};
    ZrSafeArrayDescriptor array = {1, 1, tag, nullptr, nullptr, &bound};
    const uint32_t first = 0;
    uint64_t value[2] = {};
    uint8_t equal = 9;
    void* storage = &bound;
    ExpectEach(ZR_R_INVALID_POINTER, {of->AllocateData(1, nullptr, &storage),
                                      of->AllocateData(1, &bound, nullptr),
                                      of->CopyData(1, nullptr, nullptr, &storage),
                                      of->CopyData(1, &bound, nullptr, nullptr),
                                      of->DestroyData(nullptr, 1, &bound),
                                      of->GetElementValue(nullptr, &bound, &first, value),
                                      of->GetElementValue(&array, nullptr, &first, value),
                                      of->GetElementValue(&array, &bound, nullptr, value),
                                      of->GetElementValue(&array, &bound, &first, nullptr),
                                      of->PutElementValue(nullptr, &bound, &first, value),
                                      of->PutElementValue(&array, nullptr, &first, value),
                                      of->PutElementValue(&array, &bound, nullptr, value),
                                      of->PutElementValue(&array, &bound, &first, nullptr),
                                      of->ConvertFrom(nullptr, &bound, of.Get()),
                                      of->ConvertFrom(&array, nullptr, of.Get()),
                                      of->ConvertFrom(&array, &bound, nullptr),
                                      of->RedimData(nullptr, 1, &bound, &bound),
                                      of->RedimData(&array, 1, nullptr, &bound),
                                      of->RedimData(&array, 1, &bound, nullptr),
                                      of->CompareData(nullptr, &array, &bound, &equal),
                                      of->CompareData(&array, nullptr, &bound, &equal),
                                      of->CompareData(&array, &array, nullptr, &equal),
                                      of->CompareData(&array, &array, &bound, nullptr)});
    ExpectRejected({of->AllocateData(0, &bound, &storage), of->CopyData(0, &bound, nullptr, &storage)});
    EXPECT_EQ(of->LinearIndex(1, nullptr, &first), -1);
    EXPECT_EQ(of->LinearIndex(1, &bound, nullptr), -1);
    EXPECT_EQ(of->LinearIndex(0, &bound, &first), -1);
    EXPECT_EQ(storage, &bound) << "a rejected call must not change the variable";
    EXPECT_EQ(equal, 9) << "a rejected call must not change the variable";
  }
}
