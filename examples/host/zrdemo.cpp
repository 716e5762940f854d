// zrdemo: finds modules in a folder, creates an object by the name of its class, passes it the columns of a CSV file,
// and shows the values that it returns. At the end the host checks that every reference was released.

#include <zr/host.hpp>
#include <zr/zr.hpp>

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "body_table.h"
#include "support/arguments.h"
#include "support/csv.h"
#include "support/environment.h"
#include "support/report.h"
#include "support/typed_text.h"

static void Require(ZRRESULT code, const std::string& problem) {
  if (zr::Failed(code)) throw std::runtime_error(problem + ": " + zr::Error(code).what());
}
template <class T>
static T Require(zr::Result<T> result, const std::string& problem) {
  Require(result.Code(), problem);
  return *std::move(result);
}

static zr::String Text(const std::string& utf8) {
  return Require(zr::String::FromUtf8(utf8), "\"" + utf8 + "\" is not UTF-8");
}

static std::string Utf8(const WCHAR* text) { return zr::String(text).ToUtf8(); }

// Shows the classes of the folder. A problem with a file is printed, but it doesn't stop the host.
static void ShowClasses(IZrComponentDiscovery& discovery) {
  const auto classes = Require(zr::ListHostClasses(discovery), "can't list the classes");
  for (const ZrHostClass& found : classes) {
    PrintLine("Found", Utf8(found.name) + " in " + Utf8(found.moduleFile));
  }
  const auto problems = Require(zr::ListHostProblems(discovery), "can't list the problems");
  for (const ZrHostProblem& problem : problems) {
    const std::string place = std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": ";
    PrintError((Utf8(problem.file) + ": " + (problem.line != 0 ? place : "") + Utf8(problem.reason)).c_str());
  }
}

struct Column {
  zr::String title;
  uint16_t type;
  std::vector<zr::String> texts;
};

static std::vector<Column> ReadColumns(const std::vector<CsvLine>& lines) {
  std::vector<Column> columns;
  for (const std::string& field : lines[0].fields) {
    const ColumnTitle title = ReadColumnTitle(field);
    columns.push_back({Text(title.text), title.type, {}});
  }
  for (std::size_t row = 1; row < lines.size(); ++row) {
    for (std::size_t c = 0; c < columns.size(); ++c) columns[c].texts.push_back(Text(lines[row].fields[c]));
  }
  return columns;
}

// Returns the number of references that others have to the texts of the columns.
static uint32_t SharedReferences(const std::vector<Column>& columns) {
  uint32_t references = 0;
  for (const Column& column : columns) {
    for (const zr::String& text : column.texts) references += text.IsEmpty() ? 0 : text.ReferenceCount() - 1;
  }
  return references;
}

// Passes each column to the object as an array of strings, and shows the arrays that the object returns.
static void ShowTable(IBodyTable& table, const std::vector<Column>& columns, const std::vector<CsvLine>& lines) {
  for (const Column& column : columns) {
    const zr::Array<zr::String> texts(column.texts.data(), static_cast<uint32_t>(column.texts.size()));
    Require(table.AddColumn(column.title.Get(), column.type, zr::Variant(texts).Get()), "the object refused a column");
  }
  PrintLine("Shared", std::to_string(SharedReferences(columns)) + " references of the object to the host's texts");
  TableReport report(lines);
  for (uint32_t c = 0; c < columns.size(); ++c) {
    zr::Variant values;
    zr::Variant codes;
    Require(table.Column(c, values.Put(), codes.Put()), "the object didn't return a column");
    report.AddColumn(columns[c].type, values.TakeArray().Value(), zr::Array<int32_t>::From(std::move(codes)).Value());
  }
  zr::Variant summary;
  Require(table.Summary(summary.Put()), "the object didn't summarise its columns");
  report.Print(zr::Array<zr::Variant>::From(std::move(summary)).Value());
}

// Returns whether the table was shown and no reference is left.
static bool Run(const Arguments& arguments) {
  const std::vector<CsvLine> lines = ReadCsv(arguments.csvPath);
  const std::vector<Column> columns = ReadColumns(lines);
  const std::string configurationFile = PathInProgramFolder("zrdemo.json");
  auto discovery = Require(zr::MakeFolderDiscovery({Text(arguments.moduleFolder)}, Text(configurationFile)),
                           "can't search for modules");
  ShowClasses(*discovery);

  bool isGood = true;
  uint32_t objectReferences = 0;
  try {  // a failure releases first the object, then its module, then the library
    const zr::Library library;
    zr::Registration registration(discovery);
    Require(registration.Code(), "can't register the discovery");
    PrintLine("Configured", "by " + configurationFile);
    PrintLine("Unknown class", zr::Error(zr::Create<IBodyTable>(zr::Uuid::Generate()).Code()).what());
    const std::string name = "\"" + arguments.className + "\"";
    const auto classId =
        Require(zr::ClassIdOf(Text(arguments.className)), "no class is registered under the name " + name);
    PrintLine("Class", arguments.className + " " + classId.ToString().ToUtf8());
    auto table = Require(zr::Create<IBodyTable>(classId), "can't create an object of " + name);
    ShowTable(*table, columns, lines);
    objectReferences = table.Reset();
    Require(registration.Remove().Code(), "can't remove the discovery");
  } catch (const std::exception& error) {
    PrintError(error.what());
    isGood = false;
  }
  const uint32_t objects = objectReferences + discovery.Reset();
  const uint32_t strings = SharedReferences(columns);
  PrintLine("References", "left: objects " + std::to_string(objects) + ", shared strings " + std::to_string(strings) +
                              (objects + strings == 0 ? ". All released." : ". NOT all released: this is a leak!"));
  return isGood && objects + strings == 0;
}

int main(int count, char** values) { return RunWithArguments(CommandLine(count, values), Run); }
