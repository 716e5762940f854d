// zrmodule new: writes the module project of examples/template into a new folder, with names and identifiers of its own.

#include <fstream>
#include <map>
#include <system_error>

#include "template_files.h"   // generated: kTemplateFiles, the files of examples/template
#include "zr/zr.hpp"
#include "zrmodule/commands.h"

static void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// Each identifier of the template becomes a new one, the same in all files.
static void ReplaceIdentifiers(std::string& text, std::map<std::string, std::string>& identifiers) {
  static constexpr std::size_t kLength = 36;
  for (std::size_t at = 0; at + kLength <= text.size(); ++at) {
    const std::string candidate = text.substr(at, kLength);
    if (candidate[8] != '-' || candidate[23] != '-' || !zr::Uuid::Parse(candidate)) continue;
    std::string& made = identifiers[candidate];
    if (made.empty()) made = zr::Uuid::Generate().ToString().ToUtf8().substr(1, kLength);
    text.replace(at, kLength, made);
    at += kLength - 1;
  }
}

static bool IsIdentifier(const std::string& name) {
  static constexpr const char* kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return !name.empty() && std::string(kLetters).find(name[0]) != std::string::npos &&
         name.find_first_not_of(kLetters + std::string("0123456789_")) == std::string::npos;
}

static std::string InCase(std::string text, int (*convert)(int)) {
  for (char& c : text) c = static_cast<char>(convert(static_cast<unsigned char>(c)));
  return text;
}

void MakeProject(COutput& output, const std::string& name, const std::filesystem::path& folder) {
  const std::string folderName = folder.string();
  if (!IsIdentifier(name)) {
    output.Finding(Level::Error, name, 0, 0, "the name must begin with a letter and have only letters, digits and _");
    output.Raise(ExitCode::Usage);
    return;
  }
  std::error_code error;
  if (std::filesystem::exists(folder, error) && !std::filesystem::is_empty(folder, error)) {
    output.Finding(Level::Error, folderName, 0, 0, "the folder exists and is not empty; nothing was written");
    output.Raise(ExitCode::Usage);
    return;
  }
  std::filesystem::create_directories(folder, error);
  std::map<std::string, std::string> identifiers;
  std::string className = name;
  className[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
  output.Document()["folder"] = folderName;
  output.Document()["files"] = Json::array();
  for (const auto& [fileName, content] : kTemplateFiles) {
    std::string path = fileName, text = content;
    for (std::string* part : {&path, &text}) {
      ReplaceAll(*part, "greeter", InCase(name, std::tolower));
      ReplaceAll(*part, "GREETER", InCase(name, std::toupper));
      ReplaceAll(*part, "Greeter", className);
    }
    ReplaceIdentifiers(text, identifiers);
    std::ofstream stream(folder / path, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) {
      output.Finding(Level::Error, (folder / path).string(), 0, 0, "can't write the file");
      output.Raise(ExitCode::Unreadable);
      return;
    }
    output.Document()["files"].push_back(path);
    output.Line("wrote " + (folder / path).string());
  }
  output.Line("Build and test it:");
  output.Line("  cmake -S " + folderName + " -B " + folderName + "/build && cmake --build " + folderName + "/build");
  output.Line("  ctest --test-dir " + folderName + "/build");
}
