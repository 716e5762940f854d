// zrdemo: turns a class name into an object of a module, hands it a CSV file and shows the table that it makes.
//
// The host's part is here: it registers a discovery that knows which module file holds which class. The client's part
// (table_client.h) knows class names only. At the end all references must have come back.

#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "body_table.h"
#include "code_units.h"
#include "host/csv_file.h"
#include "host/discovery.h"
#include "host/environment.h"
#include "host/result_text.h"
#include "host/string_book.h"
#include "host/table_client.h"
#include "host/table_text.h"
#include "host/utf8.h"

static constexpr char kUsage[] = "usage: zrdemo [--module PATH] [CLASS-NAME [CSV-FILE]]";
static constexpr char kClassName[] = "Astronomy.BodyTable";

struct Arguments {
  std::string modulePath;
  std::string className;
  std::string csvPath;
  bool wantsHelp = false;
};

// What was wrong with the command line, as opposed to what it asked for.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

static Arguments ReadArguments(const std::vector<std::string>& values) {
  Arguments arguments{BesideProgram(ModuleFile("bodies")), kClassName, BesideProgram("bodies.csv"), false};
  int position = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string_view value = values[i];
    if (value == "--help") {
      arguments.wantsHelp = true;
    } else if (value == "--module") {
      if (++i == values.size()) throw UsageError(kUsage);
      arguments.modulePath = AbsolutePath(values[i]);
    } else if (value.substr(0, 2) == "--" || position == 2) {
      throw UsageError(kUsage);
    } else {
      (position++ == 0 ? arguments.className : arguments.csvPath) = value;
    }
  }
  return arguments;
}

static StringOwner DecodeArgument(const std::string& argument, const char* meaning) {
  if (FaultInUtf8(argument) == std::string::npos) return FromUtf8(argument);
  throw std::runtime_error(std::string("the ") + meaning + " is not UTF-8");
}

static std::string Text(const ZRUUID& uuid) {
  ZRSTR text = nullptr;
  if (ZR_FAILED(ZrStringFromUUID(&uuid, &text))) return "?";
  return ToUtf8(StringOwner(text).get());
}

// One line of the report, flushed so that it stays ahead of what is written to standard error.
static void Say(const char* topic, const std::string& text) {
  std::printf("  %-13s %s\n", topic, text.c_str());
  (void)std::fflush(stdout);
}

static void Complain(const char* text) { std::fprintf(stderr, "zrdemo: %s\n", text); }

// What the library says of a class that no discovery lists: one with an identifier made this moment.
static std::string AskForUnknown() {
  const std::unique_ptr<ZRUUID, decltype(&ZrDestroyUUID)> classId(ZrGenerateUUID(), &ZrDestroyUUID);
  void* object = nullptr;
  const ZRRESULT result = ZrCreateInstance(classId.get(), 0, &kBodyTableInterface, 0, &object);
  return Text(*classId) + ": " + Describe(result);
}

static void SayFailures(const std::vector<std::string>& lines) {
  constexpr std::size_t kMost = 10;
  for (std::size_t i = 0; i < lines.size() && i < kMost; ++i) Say(i == 0 ? "Not converted" : "", lines[i]);
  if (lines.size() > kMost) Say("", "and " + std::to_string(lines.size() - kMost) + " more");
}

static void Show(WideView text) {
  const StringOwner string(MakeString(text));
  if (string == nullptr) throw std::bad_alloc();
  std::printf("\n%s", ToUtf8(string.get()).c_str());
}

// The client's road: name, identifier, object, columns of texts in, columns of values out.
static void ShowTable(CTableClient& client, ZRSTR className, const CTableDiscovery& discovery, const CsvTable& table,
                      const std::string& csvPath, CStringBook& book) {
  Say("Asked for", ToUtf8(className));
  client.Find(className);
  Say("Identifier", Text(client.ClassId()) + ", which is " + client.ClassName());
  Say("Not known", AskForUnknown());
  client.Open();
  Say("Answered by", ToUtf8(discovery.Answered()));
  client.AddTable(table);
  Say("Handed over", std::to_string(table.columns.size()) + " columns of " + std::to_string(table.rows.size()) +
                         " texts each, from " + csvPath);
  Say("Shared", std::to_string(book.Strings()) + " strings, " + std::to_string(book.References()) +
                    " references on them while the object holds its columns");
  const CTableText text(table, client.Columns());
  Show(text.Cells(OutputWidth()));
  Show(text.Summary(client.Summary(), OutputWidth()));
  std::printf("\n");
  SayFailures(text.Failures());
}

// Registers, lets the client work, and takes everything down again, whether that went well or not.
static bool Run(const Arguments& arguments) {
  CStringBook book;
  const CsvTable table = ReadCsvFile(arguments.csvPath, book);
  const ZRSTR listedName = book.Enter(FromUtf8(kClassName));
  const ZRSTR modulePath = book.Enter(DecodeArgument(arguments.modulePath, "module path"));
  // Not in the book: the library remembers a name that it could answer, and so may keep a reference on it.
  const StringOwner className = DecodeArgument(arguments.className, "class name");

  (void)ZrInitialize();  // can't fail
  CTableDiscovery* discovery = new CTableDiscovery;
  uint32_t cookie = 0;
  CTableClient client;
  bool isGood = true;
  try {
    discovery->Add(kBodyTableClass, listedName, modulePath);
    // The library keeps the records of released REFs and SREFs for the next ones, so many of each.
    discovery->Settings().Add(W("EnableAllocator"), W("TRUE"));
    discovery->Settings().Add(W("ZR_VT_REF"), W("64"));
    discovery->Settings().Add(W("ZR_VT_SREF"), W("16"));
    if (const ZRRESULT result = ZrAddComponentDiscovery(discovery, &cookie); ZR_FAILED(result)) {
      throw std::runtime_error("the discovery was refused: " + Describe(result));
    }
    std::printf("ZrCore demo: from a class name to an object of a module that the client never names\n\n");
    Say("Registered", "a discovery, under cookie " + std::to_string(cookie) + ", that lists");
    Say("", ToUtf8(listedName) + " " + Text(kBodyTableClass));
    Say("", "in " + ToUtf8(modulePath));
    Say("Configured", "by " + std::to_string(discovery->Settings().Asked()) + " values that the library asked for");
    ShowTable(client, className.get(), *discovery, table, arguments.csvPath, book);
  } catch (const std::exception& error) {
    Complain(error.what());
    isGood = false;
  }

  // In this order: the object's code goes with the module, and the module with the discovery.
  const uint32_t objectCount = client.Close();
  if (cookie != 0 && ZR_FAILED(ZrRemoveComponentDiscovery(cookie))) isGood = false;
  (void)ZrUninitialize();
  const uint32_t discoveryCount = discovery->Release();

  const bool isBalanced = objectCount == 0 && discoveryCount == 0 && book.Outstanding() == 0;
  Say("References", "left: object " + std::to_string(objectCount) + ", discovery " + std::to_string(discoveryCount) +
                        ", the " + std::to_string(book.Strings()) + " shared strings " +
                        std::to_string(book.Outstanding()) +
                        (isBalanced ? ". All given back." : ". NOT all given back!"));
  return isGood && isBalanced;
}

int main(int count, char** values) {
  try {
    const Arguments arguments = ReadArguments(CommandLine(count, values));
    if (arguments.wantsHelp) {
      std::puts(kUsage);
      return 0;
    }
    bool isGood = Run(arguments);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      Complain("can't write to standard output");
      isGood = false;
    }
    return isGood ? 0 : 1;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    Complain(error.what());
    return 1;
  }
}
