#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "zrcore/memory.h"

// The sum of size and size word may wrap: nothing lies behind the word then, and nothing is copied from or to there.
static std::size_t PayloadOf(uint32_t size) { return size > 0xFFFFFFFB ? 0 : size; }

static void Check(const void* block, uint32_t size, const std::string& content) {
  ASSERT_NE(block, nullptr);
  const char* bytes = static_cast<const char*>(block);
  EXPECT_EQ(std::memcmp(bytes - 4, &size, sizeof size), 0) << "the size word";
  EXPECT_EQ(std::string(bytes, PayloadOf(size)), content);
}

TEST(Memory, RecreatingKeepsWhatFitsAndZeroesTheRest) {
  for (uint32_t after : {0u, 1u, 4u, 10u, 16u, 2000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
    for (uint32_t before : {0u, 1u, 4u, 10u, 1000u, 0xFFFFFFFCu, 0xFFFFFFFDu, 0xFFFFFFFFu}) {
      SCOPED_TRACE(testing::Message() << before << " to " << after);
      void* block = before != 0 ? ZrCreateMemory(before) : ZrRecreateMemory(nullptr, 0);
      Check(block, before, std::string(PayloadOf(before), '\0'));
      std::memset(block, 'x', PayloadOf(before));
      block = ZrRecreateMemory(block, after);
      std::string expected(PayloadOf(before), 'x');
      expected.resize(PayloadOf(after), '\0');
      if (after != 0) Check(block, after, expected);
      EXPECT_EQ(block == nullptr, after == 0) << "the block is freed";
      ZrDestroyMemory(block);
    }
  }
}
