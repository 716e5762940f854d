// Reads any text as the configuration file of a host. Problems must have places in the text. The values of the manifest
// must keep their types, the settings of the library have theirs, and all values must come back unchanged if a file is
// written from them.

#include <set>

#include "fuzz/host_kit.h"
#include "hostkit/configuration_file.h"
#include "zr/zr.hpp"

struct NamedType {
  const char* name;
  uint16_t type;
};

// Types whose values survive a round trip through text.
static constexpr NamedType kExactTypes[] = {{"BOOL", ZR_VT_BOOL}, {"I1", ZR_VT_I1},    {"I2", ZR_VT_I2},
                                            {"I4", ZR_VT_I4},     {"I8", ZR_VT_I8},    {"UI1", ZR_VT_UI1},
                                            {"UI2", ZR_VT_UI2},   {"UI4", ZR_VT_UI4},  {"UI8", ZR_VT_UI8},
                                            {"STR", ZR_VT_STR},   {"UUID", ZR_VT_UUID}};

static std::string TextOfValue(const zr::Variant& value) { return value.To<zr::String>().Value().ToUtf8(); }

// The values of the manifest, one of each type.
static Configurations InManifest() {
  std::vector<Setting> settings;
  for (const auto& [name, type] : kExactTypes) {
    Setting setting{
        zr::String::FromUtf8(name).Value(), {}, zr::Variant(type == ZR_VT_BOOL ? zr::Variant(true) : zr::Variant(7))};
    if (type == ZR_VT_UUID) setting.value = zr::Variant(zr::Uuid("31AD0869-6C4B-4C0E-9B3A-2F7D1C5E8A10"));
    FUZZ_CLAIM(setting.value.ChangeType(type).Code() == ZR_R_OK);
    settings.push_back(std::move(setting));
  }
  Configurations configurations;
  configurations[zr::String::FromUtf8("C").Value()] = std::move(settings);
  return configurations;
}

struct Read {
  Configurations configurations = InManifest();
  std::vector<Setting> library;
  CProblems problems;

  explicit Read(const std::filesystem::path& file) {
    const zr::String known = zr::String::FromUtf8("A").Value();
    const auto find = [&](const zr::String& name) { return name == known ? &configurations : nullptr; };
    library = ReadConfigurationFile(file, find, problems);
  }
};

// Writes settings as JSON with their types; only those that text can express exactly.
static std::string JsonOfSettings(const std::vector<Setting>& settings) {
  std::string json;
  std::set<zr::String> names;
  for (const Setting& setting : settings) {
    FUZZ_CLAIM(names.insert(setting.name).second);
    for (const auto& [name, type] : kExactTypes) {
      if (type != setting.value.Type()) continue;
      json += (json.empty() ? "" : ",") + JsonOf(setting.name.ToUtf8()) + ":{\"type\":\"" + name +
              "\",\"value\":" + JsonOf(TextOfValue(setting.value)) + "}";
    }
  }
  return "{" + json + "}";
}

static std::string JsonOfFile(const Read& read) {
  std::string json;
  for (const auto& [name, settings] : read.configurations) {
    json += (json.empty() ? "" : ",") + JsonOf(name.ToUtf8()) + ":" + JsonOfSettings(settings);
  }
  return R"({"schema":1,"library":)" + JsonOfSettings(read.library) + R"(,"classes":{"A":{)" + json + "}}}";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const CFuzzFolder folder;
  const std::string text(data, data + size);
  const Read read(folder.Write("host.json", text));
  for (const Problem& problem : read.problems.Rows()) {
    ClaimProblemIn(text, problem.place, static_cast<uint32_t>(problem.severity), problem.reason.View());
  }
  for (const auto& [name, type] : kExactTypes) {
    const zr::String wanted = zr::String::FromUtf8(name).Value();
    for (const Setting& setting : read.configurations.at(zr::String::FromUtf8("C").Value())) {
      FUZZ_CLAIM(setting.name != wanted || setting.value.Type() == type);
    }
  }
  for (const Setting& setting : read.library) {
    FUZZ_CLAIM(setting.value.Type() == (setting.name.View().front() == 'E' ? ZR_VT_BOOL : ZR_VT_UI4));
  }
  const std::string json = JsonOfFile(read);
  const Read again(folder.Write("host.json", json));
  FUZZ_CLAIM(again.problems.Rows().empty() && JsonOfFile(again) == json);
  return 0;
}
