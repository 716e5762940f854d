// Tests the internal form of a time that no export uses: fields padded with blanks.

#include "time/date_time_text.h"

#include <gtest/gtest.h>

#include "tests/support/text.h"

TEST(FormatTime, PadsWithBlanksInItsSecondForm) {
  EXPECT_EQ(ContentOf(Owned(FormatTime({0, 0, 0, 0, -1, 100, -128, -12345, 0, 9}, false))),
            W(" -1: 100 : -128. -12345"));
}
