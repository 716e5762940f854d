#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "zrcore/memory.h"

static uint32_t SizeWordOf(const void* block) {
  uint32_t size;
  std::memcpy(&size, static_cast<const char*>(block) - 4, sizeof size);
  return size;
}

TEST(Memory, RecreatingKeepsWhatFitsAndZeroesTheRest) {
  for (uint32_t before : {0u, 1u, 4u, 10u, 1000u}) {
    for (uint32_t after : {1u, 4u, 10u, 16u, 2000u}) {
      SCOPED_TRACE(testing::Message() << before << " to " << after);
      char* block = static_cast<char*>(ZrCreateMemory(before));
      ASSERT_NE(block, nullptr);
      EXPECT_EQ(SizeWordOf(block), before);
      EXPECT_EQ(std::string(block, before), std::string(before, '\0'));
      std::memset(block, 'x', before);
      char* moved = static_cast<char*>(ZrRecreateMemory(block, after));
      ASSERT_NE(moved, nullptr);
      EXPECT_EQ(SizeWordOf(moved), after);
      std::string expected(before, 'x');
      expected.resize(after, '\0');
      EXPECT_EQ(std::string(moved, after), expected);
      ZrDestroyMemory(moved);
    }
  }
}

TEST(Memory, NullAndSizeZero) {
  void* empty = ZrRecreateMemory(nullptr, 0);
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(SizeWordOf(empty), 0u);
  EXPECT_EQ(ZrRecreateMemory(empty, 0), nullptr) << "the block is freed";
  ZrDestroyMemory(nullptr);
}

// The sum of size and size word wraps: nothing lies behind the word then, and nothing is copied from or to there.
TEST(Memory, SizesWithoutRoomForTheSizeWord) {
  for (uint32_t size : {0xFFFFFFFCu, 0xFFFFFFFDu, 0xFFFFFFFFu}) {
    void* block = ZrCreateMemory(size);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(SizeWordOf(block), size);
    char* usual = static_cast<char*>(ZrRecreateMemory(block, 100));
    ASSERT_NE(usual, nullptr);
    EXPECT_EQ(std::string(usual, 100), std::string(100, '\0'));
    void* again = ZrRecreateMemory(usual, size);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(SizeWordOf(again), size);
    ZrDestroyMemory(again);
  }
}
