// Tests the module as a host uses it. The host kit finds the module in the folders of ZRCORE_MODULE_PATH or, if that is
// not set, where modules are installed. Exit status 0 if all is well.

#include <cstdio>
#include <exception>
#include <zr/host.hpp>

#include "greeter.h"

static int g_failures = 0;

static void Expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "not true: %s\n", what);
  ++g_failures;
}

static void TestGreeter() {
  const auto name = zr::String::FromUtf8("Greeter").Value();
  const zr::Library library;
  const zr::Registration registration(zr::MakeFolderDiscovery().Value());
  zr::Ptr<IGreeter> object = zr::CreateByName<IGreeter>(name).Value();

  zr::String greeting;
  Expect(object->Greet(name.Get(), greeting.Put()) == ZR_R_OK, "a name is greeted");
  Expect(greeting.ToUtf8() == "Hello, Greeter", "the greeting contains the name");
  Expect(object->Greet(nullptr, greeting.Put()) == ZR_R_INVALID_ARGUMENTS, "an empty name is refused");
  Expect(object.Reset() == 0, "nobody else has a reference to the object");
}

int main() {
  try {
    TestGreeter();
  } catch (const std::exception& error) {
    Expect(false, error.what());
  }
  return g_failures == 0 ? 0 : 1;
}
