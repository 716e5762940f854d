// zrdemo: creates an object by the name of its class, passes it the columns of a CSV file, and shows the converted
// table.
//
// This file is the host: it registers a discovery that knows which module file contains which class. The client
// (table_client.h) knows only the class name. At the end the host checks that every reference was released.

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
#include "host/string_tracker.h"
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

// The command line is wrong: the exit status is 2 instead of 1.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

static Arguments ReadArguments(const std::vector<std::string>& values) {
  Arguments arguments{PathInProgramFolder(ModuleFileName("bodies")), kClassName, PathInProgramFolder("bodies.csv"),
                      false};
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
  if (FindInvalidUtf8(argument) == std::string::npos) return FromUtf8(argument);
  throw std::runtime_error(std::string("the argument for the ") + meaning + " is not UTF-8");
}

static std::string Text(const ZRUUID& uuid) {
  ZRSTR text = nullptr;
  if (ZR_FAILED(ZrStringFromUUID(&uuid, &text))) return "?";
  return ToUtf8(StringOwner(text).get());
}

// Prints one line of the report. It is flushed so that it appears before later messages on standard error.
static void PrintLine(const char* topic, const std::string& text) {
  std::printf("  %-13s %s\n", topic, text.c_str());
  (void)std::fflush(stdout);
}

static void PrintError(const char* text) { std::fprintf(stderr, "zrdemo: %s\n", text); }

// Tries to create an object of a class that no discovery lists, by a new identifier, and describes the result.
static std::string CreateUnknownClass() {
  const std::unique_ptr<ZRUUID, decltype(&ZrDestroyUUID)> classId(ZrGenerateUUID(), &ZrDestroyUUID);
  void* object = nullptr;
  const ZRRESULT result = ZrCreateInstance(classId.get(), 0, &kBodyTableInterface, 0, &object);
  return Text(*classId) + ": " + Describe(result);
}

static void PrintFailures(const std::vector<std::string>& lines) {
  constexpr std::size_t kMaxLines = 10;
  for (std::size_t i = 0; i < lines.size() && i < kMaxLines; ++i) PrintLine(i == 0 ? "Not converted" : "", lines[i]);
  if (lines.size() > kMaxLines) PrintLine("", "and " + std::to_string(lines.size() - kMaxLines) + " more");
}

static void PrintText(WideView text) {
  const StringOwner string(MakeString(text));
  if (string == nullptr) throw std::bad_alloc();
  std::printf("\n%s", ToUtf8(string.get()).c_str());
}

// The client's call path: name, identifier, object, columns of texts in, columns of values out.
static void ShowTable(CTableClient& client, ZRSTR className, const CTableDiscovery& discovery, const CsvTable& table,
                      const std::string& csvPath, CStringTracker& strings) {
  PrintLine("Class name", ToUtf8(className));
  client.Find(className);
  PrintLine("Identifier", Text(client.ClassId()) + ", the class " + client.ClassName());
  PrintLine("Unknown class", CreateUnknownClass());
  client.Open();
  PrintLine("Loaded from", ToUtf8(discovery.LastModulePath()));
  client.AddTable(table);
  PrintLine("Added", std::to_string(table.columns.size()) + " columns of " + std::to_string(table.rows.size()) +
                         " texts each, from " + csvPath);
  PrintLine("Shared", std::to_string(strings.Count()) + " strings, with " + std::to_string(strings.References()) +
                          " references while the object exists");
  const CTableText text(table, client.Columns());
  PrintText(text.Cells(OutputWidth()));
  PrintText(text.Summary(client.Summary(), OutputWidth()));
  std::printf("\n");
  PrintFailures(text.Failures());
}

// Opens the library, registers the discovery, lets the client work, and releases everything again, also after a
// failure. Returns whether all of it succeeded and no reference is left.
static bool Run(const Arguments& arguments) {
  CStringTracker strings;
  const CsvTable table = ReadCsvFile(arguments.csvPath, strings);
  const ZRSTR listedName = strings.Add(FromUtf8(kClassName));
  const ZRSTR modulePath = strings.Add(DecodeArgument(arguments.modulePath, "module path"));
  // Not tracked: the library remembers a class name that it found until the process ends, and keeps a reference to it.
  const StringOwner className = DecodeArgument(arguments.className, "class name");

  (void)ZrInitialize();  // never fails
  CTableDiscovery* discovery = new CTableDiscovery;
  uint32_t cookie = 0;
  CTableClient client;
  bool isGood = true;
  try {
    discovery->Add(kBodyTableClass, listedName, modulePath);
    // The library may keep the memory of up to 64 destroyed REFs and 16 destroyed SREFs, to reuse it for new ones.
    discovery->Settings().Add(W("EnableAllocator"), W("TRUE"));
    discovery->Settings().Add(W("ZR_VT_REF"), W("64"));
    discovery->Settings().Add(W("ZR_VT_SREF"), W("16"));
    if (const ZRRESULT result = ZrAddComponentDiscovery(discovery, &cookie); ZR_FAILED(result)) {
      throw std::runtime_error("can't register the discovery: " + Describe(result));
    }
    std::printf("ZrCore demo: a client creates an object by its class name, without knowing the module\n\n");
    PrintLine("Registered", "a discovery with cookie " + std::to_string(cookie) + ", which lists the class");
    PrintLine("", ToUtf8(listedName) + " " + Text(kBodyTableClass));
    PrintLine("", "in the module " + ToUtf8(modulePath));
    PrintLine("Configured", "the library read " + std::to_string(discovery->Settings().ValuesRead()) + " settings");
    ShowTable(client, className.get(), *discovery, table, arguments.csvPath, strings);
  } catch (const std::exception& error) {
    PrintError(error.what());
    isGood = false;
  }

  // This order is required: removing the discovery unloads the module, and with it the code of the object. Calling an
  // object afterwards runs unloaded code and crashes.
  const uint32_t objectCount = client.Close();
  if (cookie != 0 && ZR_FAILED(ZrRemoveComponentDiscovery(cookie))) isGood = false;
  (void)ZrUninitialize();
  const uint32_t discoveryCount = discovery->Release();

  const bool isBalanced = objectCount == 0 && discoveryCount == 0 && strings.Outstanding() == 0;
  PrintLine("References", "left: object " + std::to_string(objectCount) + ", discovery " +
                              std::to_string(discoveryCount) + ", the " + std::to_string(strings.Count()) +
                              " shared strings " + std::to_string(strings.Outstanding()) +
                              (isBalanced ? ". All released." : ". NOT all released: this is a leak!"));
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
      PrintError("can't write to standard output");
      isGood = false;
    }
    return isGood ? 0 : 1;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    PrintError(error.what());
    return 1;
  }
}
