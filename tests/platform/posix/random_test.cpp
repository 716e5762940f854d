// Tests random bytes on POSIX systems when getrandom fails, as it does on old kernels. The tests make the call fail.

#include "platform/random.h"

#include <gtest/gtest.h>

#include <sys/random.h>
#include <sys/types.h>

#include <cerrno>

#include "tests/support/text.h"

// The linker redirects the library's calls of getrandom to this wrapper, which fails g_randomFailures times.
static int g_randomFailures = 0, g_randomError = 0;

extern "C" {
ssize_t __real_getrandom(void* bytes, std::size_t size, unsigned flags);
ssize_t __wrap_getrandom(void* bytes, std::size_t size, unsigned flags) {
  if (g_randomFailures == 0) return __real_getrandom(bytes, size, flags);
  --g_randomFailures;
  errno = g_randomError;
  return -1;
}
}

TEST(PosixRandom, GeneratesRandomUuidsWhenGetrandomFails) {
  for (const int error : {EINTR, ENOSYS}) {
    g_randomFailures = 1;
    g_randomError = error;
    ZRUUID *first = ZrGenerateUUID(), *second = ZrGenerateUUID(), nil = {};
    EXPECT_EQ(g_randomFailures, 0);
    EXPECT_FALSE(*first == nil || *first == *second) << *first;
    EXPECT_TRUE(first->data3 >> 12 == 4 && first->data4[0] >> 6 == 2) << *first;
    ZrDestroyUUID(first);
    ZrDestroyUUID(second);
  }
}
