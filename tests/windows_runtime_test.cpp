// The reader and the writer of numbers against what a Windows system has of its own. For Windows only, since nobody
// else has it. Where its two C runtimes go other ways, the rows below say which is ours.

#include <gtest/gtest.h>
#include <windows.h>

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <random>
#include <sstream>

#include "tests/support/integer_texts.h"
#include "tests/support/text.h"
#include "text/number_text.h"
#include "text/real_text.h"

class Runtime {
 public:
  explicit Runtime(const char* file) : name(file), module_(LoadLibraryA(file)) {
    Find(readInteger, "_wcstoi64");
    Find(readUnsigned, "_wcstoui64");
    Find(readReal, "wcstod");
    Find(print_, "_snwprintf");
    Find(printCommon_, "__stdio_common_vswprintf");
  }
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;
  ~Runtime() { FreeLibrary(module_); }

  Units Printed(double real) const {
    WCHAR text[400];
    const int length = print_ != nullptr ? print_(text, 400, L"%f", real) : PrintCommon(text, L"%f", real);
    return Units(text, static_cast<std::size_t>(length));
  }

  const char* const name;
  int64_t (*readInteger)(const WCHAR*, WCHAR**, int) = nullptr;
  uint64_t (*readUnsigned)(const WCHAR*, WCHAR**, int) = nullptr;
  double (*readReal)(const WCHAR*, WCHAR**) = nullptr;

 private:
  template <class Function>
  void Find(Function& function, const char* export_) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, export_)));
  }
  int PrintCommon(WCHAR* text, const WCHAR* format, ...) const {
    va_list arguments;
    va_start(arguments, format);
    const int length = printCommon_(0, text, 400, format, nullptr, arguments);
    va_end(arguments);
    return length;
  }

  HMODULE module_;
  int (*print_)(WCHAR*, std::size_t, const WCHAR*, ...) = nullptr;
  int (*printCommon_)(uint64_t, WCHAR*, std::size_t, const WCHAR*, _locale_t, va_list) = nullptr;
};

static constexpr const char* kRuntimes[] = {"msvcrt.dll", "ucrtbase.dll"};

static std::size_t Length(const Units& text, const WCHAR* end) { return static_cast<std::size_t>(end - text.c_str()); }

TEST(WindowsRuntime, ReadsIntegersAlike) {
  for (const char* name : kRuntimes) {
    const Runtime runtime(name);
    ForEachIntegerText([&](const std::string& bytes) {
      SCOPED_TRACE(testing::Message() << name << " " << bytes);
      const Units text = Widened(bytes), undisputed = Widened(WithoutEmptyPrefix(bytes));
      for (unsigned base : {10u, 16u}) {
        WCHAR* end = nullptr;
        const auto got = ReadInteger<int64_t>(text, base);
        EXPECT_EQ(got.value, runtime.readInteger(undisputed.c_str(), &end, static_cast<int>(base)));
        EXPECT_EQ(got.end, Length(undisputed, end));
        const auto gotUnsigned = ReadInteger<uint64_t>(text, base);
        const uint64_t expected = runtime.readUnsigned(undisputed.c_str(), &end, static_cast<int>(base));
        // (Both may turn the sign of what was too large. Nothing in the library asks for a negative unsigned number.)
        EXPECT_TRUE(gotUnsigned.value == expected || (gotUnsigned.value == UINT64_MAX && expected == 1));
        EXPECT_EQ(gotUnsigned.end, Length(undisputed, end));
      }
    });
  }
}

static void CheckReal(const Runtime& runtime, const Units& text) {
  SCOPED_TRACE(testing::Message() << runtime.name << " " << std::string(text.begin(), text.end()));
  WCHAR* end = nullptr;
  const double expected = runtime.readReal(text.c_str(), &end);
  const CReadReal got = ReadReal(text);
  EXPECT_EQ(got.end, Length(text, end));
  // (Without a number there is no sign, of which one runtime makes a difference.)
  EXPECT_TRUE(std::memcmp(&got.value, &expected, sizeof expected) == 0 || (got.end == 0 && expected == 0));
}

TEST(WindowsRuntime, ReadsRealsAlike) {
  std::mt19937 random(4);
  for (const char* name : kRuntimes) {
    const Runtime runtime(name);
    std::istringstream texts(
        "| |-|.|-.|+.5|5.|-.5e1|1e|1e+|1e-|1e5f| "
        "\t\n\v\f\r1|--1|1e400|-1e400|1e-400|-1e-400|4.9e-324|2.5e-324|2.4e-324|"
        "2.2250738585072011e-308|2.2250738585072014e-308|1.7976931348623157e308|1.7976931348623159e308|"
        "9007199254740993|"
        "1.00000000000000011102230246251565404236316680908203125|1."
        "00000000000000011102230246251565404236316680908203126|"
        "0.000000000000000000000000000000000000000001e42|123456789012345678901234567890|1e0000000000000000000001");
    for (std::string text; std::getline(texts, text, '|');) CheckReal(runtime, Widened(text));
    for (int round = 0; round < 20000; ++round) {
      static constexpr char kUnits[] = "0012345678999e.E+-f \t";
      std::string text(random() % 30, ' ');
      for (char& unit : text) unit = kUnits[random() % sizeof kUnits];  // zero units too
      CheckReal(runtime, Widened(text));
    }
  }
}

// Where they differ from each other or from us: no 'd' begins an exponent, and words and hexadecimal numbers are read.
TEST(WindowsRuntime, ReadsSomeRealsItsOwnWay) {
  const struct {
    const WCHAR* text;
    double value;
    std::size_t end;
  } kRows[] = {
      {W("1d5"), 1, 1},      {W("1D+5"), 1, 1},      {W("inf"), HUGE_VAL, 3},        {W("0x10"), 16, 4},
      {W("0x1p-1"), 0.5, 6}, {W("-0x1.8p1"), -3, 8}, {W("-INFINITY"), -HUGE_VAL, 9},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    const CReadReal got = ReadReal(row.text);
    EXPECT_EQ(got.value, row.value);
    EXPECT_EQ(got.end, row.end);
  }
  EXPECT_TRUE(std::isnan(ReadReal(W("nan")).value));
}

// Whether a number lies in the middle of two that have six digits behind the point.
static bool IsTie(double real) {
  char exact[1500];
  std::snprintf(exact, sizeof exact, "%.1080f", real);
  const char* seventh = std::strchr(exact, '.') + 7;
  return *seventh == '5' && std::strspn(seventh + 1, "0") == std::strlen(seventh + 1);
}

TEST(WindowsRuntime, WritesRealsAlike) {
  for (const char* name : kRuntimes) {
    const Runtime runtime(name);
    std::mt19937_64 random(5);
    int ties = 0;
    const auto check = [&](double real) {
      const Owned text(NewFixedText(real));
      const Units got = ContentOf(text), expected = runtime.Printed(real);
      if (got == expected) return;
      // They take a tie away from zero, and we to the even digit, as is exact.
      ASSERT_TRUE(IsTie(real)) << real << " " << std::string(expected.begin(), expected.end());
      EXPECT_EQ(got.back() % 2, 0);
      ++ties;
    };
    for (double real : {0.0, -0.0, 1e-7, 5e-324, 1e22, 1e300, -1e300, 1.7976931348623157e308, 0x1p53, 0x1p63})
      check(real);
    for (int round = 0; round < 20000; ++round) {
      const uint64_t bits = random();
      double any;
      std::memcpy(&any, &bits, sizeof any);
      if (std::isfinite(any)) check(any);
      check(std::ldexp(static_cast<double>(static_cast<int64_t>(bits)), -static_cast<int>(bits % 90)));
    }
    EXPECT_LT(ties, 1000);
  }
}
