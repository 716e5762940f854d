#include <gtest/gtest.h>

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
  for (uint32_t after : {1u, 4u, 10u, 2000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
    for (uint32_t before : {0u, 1u, 4u, 10u, 1000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
      SCOPED_TRACE(testing::Message() << before << " to " << after);
      void* block = before != 0 ? ZrCreateMemory(before) : ZrRecreateMemory(nullptr, 0);
      std::string content(PayloadOf(before), '\0');
      Check(block, before, content);
      std::memset(block, 'x', content.size());
      content.assign(content.size(), 'x');
      content.resize(PayloadOf(after));
      block = ZrRecreateMemory(block, after);
      Check(block, after, content);
      ZrDestroyMemory(block);
    }
  }
  EXPECT_EQ(ZrRecreateMemory(ZrCreateMemory(1), 0), nullptr) << "the block is freed";
  ZrDestroyMemory(nullptr);
}
