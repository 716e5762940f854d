// Tests memory blocks, which store their size in a word before the payload. Every old size is resized to every new
// size.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "zrcore/memory.h"

// The sum of the size and its word may wrap. The block then has no payload, and no bytes are copied.
static std::size_t SizeOfPayload(uint32_t size) { return size > 0xFFFFFFFB ? 0 : size; }

static std::string PayloadOf(const char* block, uint32_t size) {
  EXPECT_EQ(std::memcmp(block - 4, &size, sizeof size), 0) << "the word before the payload must be the size";
  return std::string(block, SizeOfPayload(size));
}

TEST(Memory, RecreateKeepsWhatFitsAndZeroesTheRest) {
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
  EXPECT_EQ(ZrRecreateMemory(ZrCreateMemory(1), 0), nullptr) << "recreating with size 0 must free the block";
  ZrDestroyMemory(nullptr);
}
