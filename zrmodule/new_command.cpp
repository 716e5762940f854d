// zrmodule new: writes the module project of examples/template into a new folder, with names and identifiers of its
// own.

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

#include "template_files.h"  // generated: kTemplateFiles, the files of examples/template
#include "zr/uuid.hpp"
#include "zrmodule/commands.h"
#include "zrmodule/discovery.h"
#include "zrmodule/text.h"

static void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

static std::string InCase(std::string text, int (*convert)(int)) {
  for (char& c : text) c = static_cast<char>(convert(static_cast<unsigned char>(c)));
  return text;
}

static constexpr std::size_t kUuidLength = 36;

static bool IsUuid(const std::string& text) {
  for (std::size_t index = 0; index < kUuidLength; ++index) {
    const bool isHyphen = index == 8 || index == 13 || index == 18 || index == 23;
    if (isHyphen ? text[index] != '-' : std::isxdigit(static_cast<unsigned char>(text[index])) == 0) return false;
  }
  return true;
}

// Each identifier of the template becomes a new one, the same in all files.
static void ReplaceIdentifiers(std::string& text, std::map<std::string, std::string>& identifiers) {
  for (std::size_t at = 0; at + kUuidLength <= text.size(); ++at) {
    const std::string candidate = text.substr(at, kUuidLength);
    if (!IsUuid(candidate)) continue;
    std::string& made = identifiers[InCase(candidate, std::toupper)];
    if (made.empty()) made = Utf8(zr::Uuid::Generate());
    text.replace(at, kUuidLength, made);
    at += kUuidLength - 1;
  }
}

// Names of targets that CMake has itself.
static constexpr std::array<std::string_view, 7> kCMakeTargets = {"all",     "clean", "depend", "help",
                                                                  "install", "test",  "package"};

static bool IsIdentifier(const std::string& name) {
  static constexpr const char* kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return !name.empty() && std::string(kLetters).find(name[0]) != std::string::npos &&
         name.find_first_not_of(kLetters + std::string("0123456789_")) == std::string::npos;
}

void MakeProject(COutput& output, const std::string& name, const std::string& folderName) {
  const std::filesystem::path folder = PathOf(folderName);
  if (!IsIdentifier(name)) {
    output.Error("usage", {},
                 "the name " + Quoted(name) + " must begin with a letter and have only letters, digits and _");
    output.Raise(ExitCode::Usage);
    return;
  }
  const std::string lowerName = InCase(name, std::tolower);
  if (std::find(kCMakeTargets.begin(), kCMakeTargets.end(), lowerName) != kCMakeTargets.end()) {
    output.Error("usage", {}, "CMake has a target " + Quoted(lowerName) + "; choose another name");
    output.Raise(ExitCode::Usage);
    return;
  }
  std::error_code error;
  if (std::filesystem::exists(folder, error) && !std::filesystem::is_empty(folder, error)) {
    output.Error("usage", {folderName}, "the folder exists and is not empty; nothing was written");
    output.Raise(ExitCode::Usage);
    return;
  }
  std::filesystem::create_directories(folder, error);
  std::map<std::string, std::string> identifiers;
  std::string className = name;
  className[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
  std::vector<std::string> files;
  for (const auto& [fileName, content] : kTemplateFiles) {
    std::string path = fileName, text = content;
    for (std::string* part : {&path, &text}) {
      ReplaceAll(*part, "greeter", lowerName);
      ReplaceAll(*part, "GREETER", InCase(name, std::toupper));
      ReplaceAll(*part, "Greeter", className);
    }
    ReplaceIdentifiers(text, identifiers);
    const std::filesystem::path file = folder / path;
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) {
      output.Error("not-written", {Utf8(file)}, "can't write the file" + (error ? ": " + error.message() : ""));
      output.Raise(ExitCode::Unreadable);
      return;
    }
    files.push_back(path);
    output.Line("wrote " + Utf8(file));
  }
  output.Set("folder", folderName);
  output.Set("files", CJson::List(files));
  output.Line("Build and test it:");
  output.Line("  cmake -S " + folderName + " -B " + folderName + "/build && cmake --build " + folderName + "/build");
  output.Line("  ctest --test-dir " + folderName + "/build");
}
