// Tests the host kit as a host uses it: folders of manifests and modules, a configuration file, and the problems of bad
// files.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "tests/support/result_names.h"
#include "tests/support/system.h"
#include "zr/zr.hpp"
#include "zrhost/host.h"

namespace fs = std::filesystem;

static constexpr const char* kMars = "31AD0869-6C4B-4C0E-9B3A-2F7D1C5E8A10";
static constexpr const char* kVenus = "6B8A0D21-0B1E-4F0C-8E55-5C1D7A9F3E42";

static zr::String Text(const std::string& utf8) { return zr::String::FromUtf8(utf8).Value(); }
static std::string Utf8(const WCHAR* text) { return zr::String(text).ToUtf8(); }

// A folder of its own for each test, with an empty module file.
class HostKit : public testing::Test {
 protected:
  void SetUp() override {
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    root_ = fs::path(TEST_DIRECTORY) / ("hostkit_" + name);
    fs::remove_all(root_);
    fs::create_directories(root_);
    Write("module.so", "");
  }
  void TearDown() override { fs::remove_all(root_); }

  void Write(const fs::path& name, const std::string& content) const {
    fs::create_directories((root_ / name).parent_path());
    std::ofstream(root_ / name, std::ios::binary) << content;
  }

  // Makes a discovery of folders below the test's own; of that one itself, if there are none.
  void Discover(std::vector<std::string> folders = {""}, const std::string& configuration = "", uint32_t flags = 0) {
    std::vector<zr::String> texts;
    std::vector<const WCHAR*> paths;
    for (const std::string& folder : folders) texts.push_back(Text((root_ / folder).string()));
    for (const zr::String& text : texts) paths.push_back(text.Get());
    const zr::String file = Text((root_ / configuration).string());
    ASSERT_RESULT(ZrHostCreateFolderDiscovery(paths.data(), static_cast<uint32_t>(paths.size()),
                                              configuration.empty() ? nullptr : file.Get(), flags, discovery_.Put()),
                  ZR_R_OK);
  }

  // All problems, one per line: the file's name, the place, the severity and the reason.
  [[nodiscard]] std::string Problems() const {
    ZrHostProblem* rows = nullptr;
    uint32_t count = 0;
    EXPECT_RESULT(ZrHostListProblems(discovery_.Get(), &rows, &count), ZR_R_OK);
    std::string text;
    for (uint32_t row = 0; row < count; ++row) {
      text += fs::path(Utf8(rows[row].file)).filename().string() + ":" + std::to_string(rows[row].line) + ":" +
              std::to_string(rows[row].column) + (rows[row].severity == ZRHOST_ERROR ? ": error: " : ": warning: ") +
              Utf8(rows[row].reason) + "\n";
    }
    ZrHostDestroyList(rows);
    return text;
  }

  // The names of all classes, in the order of the list.
  [[nodiscard]] std::string Classes() const {
    ZrHostClass* rows = nullptr;
    uint32_t count = 0;
    EXPECT_RESULT(ZrHostListClasses(discovery_.Get(), &rows, &count), ZR_R_OK);
    std::string text;
    for (uint32_t row = 0; row < count; ++row) text += (row == 0 ? "" : " ") + Utf8(rows[row].name);
    ZrHostDestroyList(rows);
    return text;
  }

  // A value of a configuration as text; an empty text if there is no such value.
  [[nodiscard]] std::string Value(const char* id, const char* configuration, const char* name, uint16_t type) const {
    zr::Ptr<IZrConfiguration> found;
    zr::Ptr<IZrConfigurationSection> section;
    zr::Ptr<IZrConfigurationValue> value;
    const zr::Uuid classId = zr::Uuid::Parse(id).Value();
    if (zr::Failed(discovery_->QueryConfiguration(&classId, Text(configuration).Get(), found.Put())) ||
        zr::Failed(found->QuerySection(section.Put())) ||
        zr::Failed(section->QueryValue(Text(name).Get(), value.Put()))) {
      return {};
    }
    zr::Variant read;
    EXPECT_RESULT(value->Read(nullptr, type, read.Put()), ZR_R_OK);
    EXPECT_EQ(read.Type(), type);
    return read.To<zr::String>().Value().ToUtf8();
  }

  fs::path root_;
  zr::Ptr<IZrComponentDiscovery> discovery_;
};

static std::string Manifest(const std::string& classes, const std::string& module = "module.so") {
  return "{\"schema\": 1, \"module\": \"" + module + "\", \"classes\": [" + classes + "]}";
}
static std::string Class(const std::string& name, const std::string& id, const std::string& more = "") {
  return "{\"name\": \"" + name + "\", \"id\": \"" + id + "\"" + more + "}";
}

TEST_F(HostKit, AHostFindsAModuleByTheNameOfItsClass) {
  fs::copy_file(fs::path(TEST_DIRECTORY) / ("good" MODULE_SUFFIX), root_ / "good.so");
  Write("good.zrmodule", Manifest(Class("Tests.Good", kMars), "good.so"));
  Discover();
  const zr::Library library;
  zr::Registration registration(*discovery_);
  const zr::Uuid id = zr::ClassIdOf(Text("Tests.Good")).Value();
  EXPECT_EQ(id, zr::Uuid::Parse(kMars).Value());
  EXPECT_EQ(zr::ClassNameOf(id).Value(), Text("Tests.Good"));
  void* object = nullptr;
  EXPECT_RESULT(ZrCreateInstance(&id, 0, &id, 0, &object), ZR_R_OK);
  static_cast<IZrUnknown*>(object)->Release();
  EXPECT_RESULT(registration.Remove().Code(), ZR_R_OK);
}

TEST_F(HostKit, ListsWhatTheManifestSays) {
  Write("sub/a.zrmodule",
        R"({"schema": 1, "module": "a.so", "version": "1.2", "classes": [)" +
            Class("Planets.Mars", kMars,
                  std::string(R"(, "description": "ä red one", "interfaces": [{"id": ")") + kVenus +
                      R"(", "name": "IPlanet"}])") +
            "]}");
  Write("sub/a.so", "");
  Discover({"sub"});
  EXPECT_EQ(Problems(), "");
  ZrHostClass* rows = nullptr;
  uint32_t count = 0;
  ASSERT_RESULT(ZrHostListClasses(discovery_.Get(), &rows, &count), ZR_R_OK);
  ASSERT_EQ(count, 1u);
  EXPECT_EQ(zr::Uuid(rows->classId), zr::Uuid::Parse(kMars).Value());
  EXPECT_EQ(Utf8(rows->description), "ä red one");
  EXPECT_EQ(Utf8(rows->moduleVersion), "1.2");
  EXPECT_EQ(fs::path(Utf8(rows->moduleFile)), root_ / "sub" / "a.so");
  EXPECT_EQ(fs::path(Utf8(rows->manifestFile)), root_ / "sub" / "a.zrmodule");
  ASSERT_EQ(rows->interfaceCount, 1u);
  EXPECT_EQ(zr::Uuid(rows->interfaces->interfaceId), zr::Uuid::Parse(kVenus).Value());
  EXPECT_EQ(Utf8(rows->interfaces->name), "IPlanet");
  ZrHostDestroyList(rows);
  ZrHostDestroyList(nullptr);
}

// One problem each, with its place; the good manifest beside it keeps working.
TEST_F(HostKit, NamesWhatIsWrongWithAManifest) {
  const std::string id = std::string("\"id\": \"") + kVenus + "\"";
  const std::pair<std::string, std::string> kCases[] = {
      {"", ":1:1: error: not valid JSON: syntax error while parsing value - unexpected end of input"},
      {"{\"schema\": 1,\n \"module\": \"\xFF\"}", ":2:13: error: not valid JSON: syntax error while parsing value - "
                                                 "invalid string: ill-formed UTF-8 byte"},
      {"{\"schema\": 1, \"schema\": 1}", ":1:15: error: the key \"schema\" occurs twice in one object"},
      {std::string(17, '['), ":1:17: error: lists and objects are nested deeper than 16 levels"},
      {std::string(1024 * 1024 + 1, ' '), ":0:0: error: longer than 1048576 bytes"},
      {"[]", ":1:1: error: the file must be an object, not a list"},
      {"{}", ":1:1: error: the file has no \"schema\""},
      {"{\"schema\": 2}", ":1:12: error: schema 2 is not supported, only schema 1"},
      {"{\"schema\": \"1\"}", ":1:12: error: \"schema\" must be an integer, not a text"},
      {"{\"schema\": 1, \"classes\": []}", ":1:1: error: the manifest has no \"module\""},
      {"{\"schema\": 1, \"module\": \"module.so\"}", ":1:1: error: the manifest has no \"classes\""},
      {Manifest("", "missing.so"), ":1:25: error: the module \"missing.so\" doesn't exist, or is not a file"},
      {Manifest("", "../module.so"), ":1:25: error: the module \"../module.so\" must be a path below the folder of the "
                                     "manifest, not an absolute path or one with \"..\""},
      {Manifest("", "/bin/sh"), ":1:25: error: the module \"/bin/sh\" must be a path below"},
      {Manifest("", "a\\u0000b"), ":1:25: error: the path of the module is empty or contains a zero"},
      {Manifest("{" + id + "}"), ":1:51: error: a class has no \"name\""},
      {Manifest("{\"name\": \"\", " + id + "}"), ":1:60: error: a class has an empty \"name\""},
      {Manifest("{\"name\": \"A\"}"), ":1:51: error: the class \"A\" has no \"id\""},
      {Manifest(Class("A", "6B8A0D21")), ":1:71: error: the \"id\" of the class \"A\" is not an identifier"},
      {Manifest(Class("A", "00000000-0000-0000-0000-000000000000")), ":1:71: error: the \"id\" of the class \"A\" is the "
                                                                     "nil identifier"},
      {Manifest(Class("Planets.Mars", kVenus)), ":1:51: error: the class \"Planets.Mars\" is not used, because the class "
                                                "\"Planets.Mars\" of "},
      {Manifest(Class("A", kMars)), " has the same \"id\""},
      {Manifest(Class("A", kVenus, ", \"colour\": 1")), ":1:111: warning: the class \"A\" has an unknown key \"colour\""},
      {Manifest(Class("A", kVenus, ", \"interfaces\": [{}]")), ": error: an interface of the class \"A\" has no \"id\""},
      {Manifest(Class("A", kVenus, ", \"configurations\": {\"C\": {\"x\": null}}")),
       ": error: the value \"x\" must be a boolean, a number, a text, or an object with \"type\" and \"value\""},
      {Manifest(Class("A", kVenus, ", \"configurations\": {\"C\": {\"x\": {\"type\": \"UI1\", \"value\": 300}}}")),
       ": error: the value \"x\" does not convert to ZR_VT_UI1: ZR_R_INVALID_ARGUMENTS"},
      {Manifest(Class("A", kVenus, ", \"configurations\": {\"C\": {\"x\": {\"type\": \"BLOB\", \"value\": 1}}}")),
       ": error: the value \"x\" has an unknown type \"BLOB\""},
  };
  Write("a.zrmodule", Manifest(Class("Planets.Mars", kMars)));
  for (const auto& [content, problem] : kCases) {
    SCOPED_TRACE(content.substr(0, 200));
    Write("b.zrmodule", content);
    Discover();
    const std::string found = Problems();
    EXPECT_NE(found.find(problem), std::string::npos) << found;
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 1) << found;
    EXPECT_NE(Classes().find("Planets.Mars"), std::string::npos);
  }
}

TEST_F(HostKit, TheFirstOfTwoClassesCounts) {
  for (const char* const folder : {"first", "second"}) {
    Write(std::string(folder) + "/module.so", "");
    Write(std::string(folder) + "/b.zrmodule", Manifest(Class("Planets.Mars", folder[0] == 'f' ? kMars : kVenus)));
  }
  Write("second/a.zrmodule", Manifest(Class("Planets.Venus", kMars)));
  const zr::String name = Text("Planets.Mars");
  zr::Uuid id;
  Discover({"first", "second"});
  EXPECT_RESULT(discovery_->QueryClassId(name.Get(), &id), ZR_R_OK);
  EXPECT_EQ(id, zr::Uuid::Parse(kMars).Value());
  EXPECT_EQ(Classes(), "Planets.Mars");
  Discover({"second", "first"});
  EXPECT_RESULT(discovery_->QueryClassId(name.Get(), &id), ZR_R_OK);
  EXPECT_EQ(id, zr::Uuid::Parse(kVenus).Value());
  EXPECT_EQ(Classes(), "Planets.Mars Planets.Venus");
}

TEST_F(HostKit, FilesThatAreNoRegularFilesOrFoldersAreProblems) {
  fs::create_directory(root_ / "folder.zrmodule");
  Write("other.txt", "not a manifest");
  Discover({"", "missing"});
  EXPECT_EQ(Problems().substr(0, 46), "folder.zrmodule:0:0: error: not a regular file");
  EXPECT_NE(Problems().find("\nmissing:0:0: error: can't read the folder: "), std::string::npos) << Problems();
}

#if !defined(_WIN32)   // links need a privilege there
TEST_F(HostKit, LinksMustNotLeaveTheFolder) {
  Write("outside/module.so", "");
  Write("outside/m.zrmodule", Manifest(Class("Planets.Mars", kMars), "inside.so"));
  Write("folder/inside.so", "");
  fs::create_symlink("../outside/module.so", root_ / "folder/module.so");
  fs::create_symlink("inside.so", root_ / "folder/link.so");
  fs::create_symlink("../outside/m.zrmodule", root_ / "folder/m.zrmodule");
  Write("folder/a.zrmodule", Manifest(Class("Planets.Venus", kVenus)));
  Discover({"folder"});
  EXPECT_EQ(Problems(),
            "a.zrmodule:1:25: error: the symbolic link \"module.so\" leaves the folder\n"
            "m.zrmodule:1:25: error: the symbolic link \"m.zrmodule\" leaves the folder\n");
  Discover({"folder"}, "", ZRHOST_ALLOW_OUTSIDE);
  EXPECT_EQ(Problems(), "");
  EXPECT_EQ(Classes(), "Planets.Mars Planets.Venus");
  Write("folder/a.zrmodule", Manifest(Class("Planets.Venus", kVenus), "link.so"));
  fs::remove(root_ / "folder/m.zrmodule");
  Discover({"folder"});
  EXPECT_EQ(Problems(), "");
}
#endif

TEST_F(HostKit, ValuesHaveTheTypesOfTheManifestAndTheFileOfTheHost) {
  Write("a.zrmodule", Manifest(Class("Planets.Mars", kMars, R"(, "configurations": {"Orbit": {"flag": true, "small": -7,
      "wide": 3000000000, "huge": 18446744073709551615, "real": 0.5, "text": "x", "typed": {"type": "UI2", "value": "12"}},
      "Empty": {}})")));
  Write("host.json", R"({"schema": 1, "library": {"EnableAllocator": true, "ZR_VT_REF": 256, "ZR_VT_DATE": 1},
      "classes": {"Planets.Mars": {"Orbit": {"typed": 13, "small": "none", "added": 1}, "New": {"x": 1}},
      "Planets.Pluto": {}}, "more": 1})");
  Discover({""}, "host.json");
  EXPECT_EQ(Value(kMars, "Orbit", "flag", ZR_VT_BOOL), "ZR_TRUE");
  EXPECT_EQ(Value(kMars, "Orbit", "small", ZR_VT_I4), "-7");
  EXPECT_EQ(Value(kMars, "Orbit", "wide", ZR_VT_I8), "3000000000");
  EXPECT_EQ(Value(kMars, "Orbit", "huge", ZR_VT_UI8), "18446744073709551615");
  EXPECT_EQ(Value(kMars, "Orbit", "real", ZR_VT_R8), "0.5");
  EXPECT_EQ(Value(kMars, "Orbit", "text", ZR_VT_STR), "x");
  EXPECT_EQ(Value(kMars, "Orbit", "typed", ZR_VT_UI2), "13");
  EXPECT_EQ(Value(kMars, "Orbit", "added", ZR_VT_I4), "1");
  EXPECT_EQ(Value(kMars, "New", "x", ZR_VT_I4), "1");
  EXPECT_EQ(Value(kMars, "Empty", "x", ZR_VT_I4), "");
  EXPECT_EQ(Value(kVenus, "Orbit", "flag", ZR_VT_BOOL), "");
  const char* const nil = "00000000-0000-0000-0000-000000000000";
  EXPECT_EQ(Value(nil, "ZrCore", "EnableAllocator", ZR_VT_BOOL), "ZR_TRUE");
  EXPECT_EQ(Value(nil, "ZrCore", "ZR_VT_REF", ZR_VT_UI4), "256");
  EXPECT_EQ(Value(nil, "Other", "ZR_VT_REF", ZR_VT_UI4), "");
  EXPECT_EQ(Problems(),
            "host.json:3:91: warning: the configuration file has an unknown key \"more\"\n");
}

TEST_F(HostKit, RefreshReadsAgainAndKeepsOldLists) {
  Write("a.zrmodule", Manifest(Class("Planets.Mars", kMars)));
  Discover();
  ZrHostClass* old = nullptr;
  uint32_t count = 0;
  ASSERT_RESULT(ZrHostListClasses(discovery_.Get(), &old, &count), ZR_R_OK);
  Write("a.zrmodule", Manifest(Class("Planets.Venus", kVenus)));
  EXPECT_EQ(Classes(), "Planets.Mars");
  EXPECT_RESULT(ZrHostRefresh(discovery_.Get()), ZR_R_OK);
  EXPECT_EQ(Classes(), "Planets.Venus");
  EXPECT_EQ(Utf8(old->name), "Planets.Mars");
  ZrHostDestroyList(old);
}

TEST_F(HostKit, SearchesTheFoldersOfTheEnvironment) {
#if defined(_WIN32)
  const auto setPath = [](const std::string& value) { _putenv_s("ZRCORE_MODULE_PATH", value.c_str()); };
  const std::string separator = ";";
#else
  const auto setPath = [](const std::string& value) { setenv("ZRCORE_MODULE_PATH", value.c_str(), 1); };
  const std::string separator = ":";
#endif
  const auto folders = [&] {
    const WCHAR** rows = nullptr;
    uint32_t count = 0;
    EXPECT_RESULT(ZrHostCreateFolderDiscovery(nullptr, 0, nullptr, 0, discovery_.Put()), ZR_R_OK);
    EXPECT_RESULT(ZrHostListFolders(discovery_.Get(), &rows, &count), ZR_R_OK);
    std::string text;
    for (uint32_t row = 0; row < count; ++row) text += Utf8(rows[row]) + "|";
    ZrHostDestroyList(rows);
    return text;
  };
  const std::string first = (root_ / "a").string(), second = (root_ / "b c").string();
  setPath(first + separator + separator + second);
  EXPECT_EQ(folders(), first + "|" + second + "|");
  setPath("");
  const std::string installed = folders();
  EXPECT_EQ(fs::path(installed.substr(0, installed.size() - 1)).filename(), "modules");
}

TEST_F(HostKit, RefusesWrongArguments) {
  Discover();
  const zr::Ptr<IZrComponentDiscovery> other = zr::MakeObject<zr::TableDiscovery>(zr::TableDiscovery::Rows());
  const WCHAR lone[] = {0xD800, 0};
  const WCHAR* const paths[] = {nullptr, lone};
  zr::Ptr<IZrComponentDiscovery> made;
  uint32_t count = 1;
  ZrHostClass* rows = nullptr;
  EXPECT_RESULT(ZrHostCreateFolderDiscovery(nullptr, 0, nullptr, 0, nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostCreateFolderDiscovery(nullptr, 1, nullptr, 0, made.Put()), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostCreateFolderDiscovery(paths, 1, nullptr, 0, made.Put()), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostCreateFolderDiscovery(paths + 1, 1, nullptr, 0, made.Put()), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostCreateFolderDiscovery(nullptr, 0, lone, 0, made.Put()), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostCreateFolderDiscovery(nullptr, 0, nullptr, 2, made.Put()), ZR_R_INVALID_ARGUMENTS);
  EXPECT_FALSE(made);
  EXPECT_RESULT(ZrHostRefresh(nullptr), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostRefresh(other.Get()), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostListClasses(other.Get(), &rows, &count), ZR_R_INVALID_ARGUMENTS);
  EXPECT_EQ(count, 0u);
  EXPECT_RESULT(ZrHostListClasses(discovery_.Get(), nullptr, &count), ZR_R_INVALID_ARGUMENTS);
  EXPECT_RESULT(ZrHostListClasses(discovery_.Get(), &rows, nullptr), ZR_R_INVALID_ARGUMENTS);
}
