// Tests the module: greeter_test PATH-OF-MODULE. Exit status 0 if all is well.

#include <cstdio>
#include <exception>

#include "greeter.h"

static int g_failures = 0;

static void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "not true: %s\n", what);
  ++g_failures;
}

static void TestGreeter(const char* modulePath) {
  const auto path = zr::String::FromUtf8(modulePath).Value();
  const auto name = zr::String::FromUtf8("Greeter").Value();
  const zr::Library library;
  const zr::Registration registration(
      zr::MakeObject<zr::TableDiscovery>(zr::TableDiscovery::Rows{{kGreeterClass, name, path}}));
  zr::Ptr<IGreeter> greeter = zr::CreateByName<IGreeter>(name).Value();

  zr::String greeting;
  Expect(greeter->Greet(name.Get(), greeting.Put()) == ZR_R_OK, "a name is greeted");
  Expect(greeting.ToUtf8() == "Hello, Greeter", "the greeting contains the name");
  Expect(greeter->Greet(nullptr, greeting.Put()) == ZR_R_INVALID_ARGUMENTS, "an empty name is refused");
  Expect(greeter.Reset() == 0, "nobody else has a reference to the object");
}

int main(int count, char** values) {
  if (count != 2) {
    std::fprintf(stderr, "usage: greeter_test PATH-OF-MODULE\n");
    return 2;
  }
  try {
    TestGreeter(values[1]);
  } catch (const std::exception& error) {
    Expect(false, error.what());
  }
  return g_failures == 0 ? 0 : 1;
}
