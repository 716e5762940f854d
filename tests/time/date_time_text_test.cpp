// The form of a time that the boundary doesn't show.

#include "time/date_time_text.h"

#include <gtest/gtest.h>

#include "tests/support/text.h"

TEST(FormatTime, HasASecondFormWithBlanks) {
  EXPECT_EQ(ContentOf(Owned(FormatTime({0, 0, 0, 0, -1, 100, -128, -12345, 0, 9}, false))),
            W(" -1: 100 : -128. -12345"));
}
