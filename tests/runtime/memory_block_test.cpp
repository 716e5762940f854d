#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "zrcore/memory.h"

// The sum of size and size word may wrap: nothing lies behind the word then, and nothing is copied from or to there.
static std::size_t SizeOfPayload(uint32_t size) { return size > 0xFFFFFFFB ? 0 : size; }

static std::string PayloadOf(const char* block, uint32_t size) {
  EXPECT_EQ(std::memcmp(block - 4, &size, sizeof size), 0) << "the size word";
  return std::string(block, SizeOfPayload(size));
}

TEST(Memory, RecreatingKeepsWhatFitsAndZeroesTheRest) {
  for (uint32_t after : {1u, 4u, 10u, 2000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
    for (uint32_t before : {0u, 1u, 4u, 10u, 1000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
      SCOPED_TRACE(testing::Message() << before << " to " << after);
      void* block = before != 0 ? ZrCreateMemory(before) : ZrRecreateMemory(nullptr, 0);
      EXPECT_EQ(PayloadOf(static_cast<char*>(block), before), std::string(SizeOfPayload(before), '\0'));
      std::string content(SizeOfPayload(before), 'x');
      std::memcpy(block, content.data(), content.size());
      content.resize(SizeOfPayload(after));
      block = ZrRecreateMemory(block, after);
      EXPECT_EQ(PayloadOf(static_cast<char*>(block), after), content);
      ZrDestroyMemory(block);
    }
  }
  EXPECT_EQ(ZrRecreateMemory(ZrCreateMemory(1), 0), nullptr) << "the block is freed";
  ZrDestroyMemory(nullptr);
}
