// Tests the host kit as a host uses it: folders of manifests and modules, a configuration file, and the problems of bad
// files.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>
#include <vector>

#include "tests/support/failing_heap.h"
#include "tests/support/race.h"
#include "tests/support/text.h"
#include "zr/zr.hpp"
#include "zrhost/host.h"

namespace fs = std::filesystem;

static constexpr const char* kMars = "31AD0869-6C4B-4C0E-9B3A-2F7D1C5E8A10";
static constexpr const char* kVenus = "6B8A0D21-0B1E-4F0C-8E55-5C1D7A9F3E42";
static constexpr const char* kNil = "00000000-0000-0000-0000-000000000000";

static zr::String Text(const std::string& utf8) { return zr::String::FromUtf8(utf8).Value(); }
static std::string Utf8(const WCHAR* text) { return zr::String(text).ToUtf8(); }
static zr::Uuid Id(const char* text) { return zr::Uuid::Parse(text).Value(); }

static std::string Manifest(const std::string& classes, const std::string& module = "module.so") {
  return "{\"schema\": 1, \"module\": \"" + module + "\", \"classes\": [" + classes + "]}";
}
static std::string Class(const std::string& name, const std::string& id, const std::string& more = "") {
  return "{\"name\": \"" + name + "\", \"id\": \"" + id + "\"" + more + "}";
}
static std::string Configured(const std::string& values) {
  return Manifest(Class("A", kVenus, ", \"configurations\": {\"C\": " + values + "}"));
}

// The line and column of the mark "^", which is removed; "0:0" without a mark.
static std::string TakePlace(std::string& text) {
  const std::size_t mark = text.find('^');
  if (mark == std::string::npos) return "0:0";
  text.erase(mark, 1);
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(mark);
  auto lineStart = std::find(std::reverse_iterator(end), text.rend(), '\n').base();
  if (lineStart == text.begin() && text.rfind("\xEF\xBB\xBF", 0) == 0) lineStart += 3;
  return Format("%d:%d", static_cast<int>(std::count(text.begin(), end, '\n') + 1),
                static_cast<int>(end - lineStart + 1));
}

// A folder of its own for each test, with an empty module file.
class HostKit : public testing::Test {
 protected:
  void SetUp() override {
    const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    root_ = fs::absolute(fs::path(TEST_DIRECTORY) / ("hostkit_" + name)).make_preferred();  // with a drive on Windows
    fs::remove_all(root_);
    Write("module.so", "");
  }
  void TearDown() override { fs::remove_all(root_); }

  void Write(const fs::path& name, const std::string& content) const {
    fs::create_directories((root_ / name).parent_path());
    std::ofstream(root_ / name, std::ios::binary) << content;
  }

  // Makes a discovery of folders below the test's own, and of a configuration file there.
  ZRRESULT Create(const std::vector<std::string>& folders, const std::string& configuration = "", uint32_t flags = 0) {
    std::vector<zr::String> texts;
    std::vector<const WCHAR*> paths;
    for (const std::string& folder : folders) texts.push_back(Text((root_ / folder).string()));
    for (const zr::String& text : texts) paths.push_back(text.Get());
    const zr::String file = Text((root_ / configuration).string());
    return ZrHostCreateFolderDiscovery(paths.data(), static_cast<uint32_t>(paths.size()),
                                       configuration.empty() ? nullptr : file.Get(), flags, discovery_.Put());
  }
  void Discover(const std::vector<std::string>& folders = {""}, const std::string& configuration = "",
                uint32_t flags = 0) {
    ASSERT_RESULT(Create(folders, configuration, flags), ZR_R_OK);
  }

  // All problems, one per line: the file's name, the place, the severity and the reason.
  [[nodiscard]] std::string Problems() const {
    ZrHostProblem* rows = nullptr;
    uint32_t count = 0;
    EXPECT_RESULT(ZrHostListProblems(discovery_.Get(), &rows, &count), ZR_R_OK);
    std::string text;
    for (uint32_t row = 0; row < count; ++row) {
      EXPECT_TRUE(fs::path(Utf8(rows[row].file)).is_absolute()) << Utf8(rows[row].file);
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

  [[nodiscard]] std::string IdOf(const std::string& name) const {
    zr::Uuid id;
    const bool isFound = !zr::Failed(discovery_->QueryClassId(Text(name).Get(), &id));
    return isFound ? id.ToString().ToUtf8().substr(1, 36) : "";
  }

  // A value of a configuration as text, after its type; an empty text if there is no such value.
  [[nodiscard]] std::string Value(const char* id, const char* configuration, const char* name, uint16_t type) const {
    zr::Ptr<IZrConfiguration> found;
    zr::Ptr<IZrConfigurationSection> section;
    zr::Ptr<IZrConfigurationValue> value;
    const zr::Uuid classId = Id(id);
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

TEST_F(HostKit, AHostMakesAnObjectByTheNameOfItsClass) {
  fs::copy_file(fs::path(TEST_DIRECTORY) / ("good" MODULE_SUFFIX), root_ / "good.so");
  Write("good.zrmodule", Manifest(Class("Tests.Good", kMars), "good.so"));
  Discover();
  const zr::Library library;
  zr::Registration registration(*discovery_);
  const zr::Uuid id = zr::ClassIdOf(Text("Tests.Good")).Value();
  EXPECT_EQ(id, Id(kMars));
  EXPECT_EQ(zr::ClassNameOf(id).Value(), Text("Tests.Good"));
  void* object = nullptr;
  EXPECT_RESULT(ZrCreateInstance(&id, 0, &id, 0, &object), ZR_R_OK);
  EXPECT_EQ(object, reinterpret_cast<void*>(uintptr_t{0x31AD0869}));  // what that module makes
  EXPECT_RESULT(registration.Remove().Code(), ZR_R_OK);
}

TEST_F(HostKit, ListsWhatTheManifestSays) {
  Write("sub/a.zrmodule",
        "\xEF\xBB\xBF{\"$schema\": \"x\", \"schema\": 1, \"module\": \"./a.so\", \"version\": \"1.2\"," +
            ("\"classes\": [" + Class("B", kVenus)) + "," +
            Class("A", kMars,
                  ", \"description\": \"\xC3\xA4 \\u00e4\", \"interfaces\": [{\"id\": \"" + std::string(kVenus) +
                      "\", \"name\": \"IPlanet\"}]") +
            "]}");
  Write("sub/a.so", "");
  Discover({"./sub"});
  EXPECT_EQ(Problems(), "");
  ZrHostClass* rows = nullptr;
  uint32_t count = 0;
  ASSERT_RESULT(ZrHostListClasses(discovery_.Get(), &rows, &count), ZR_R_OK);
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(Utf8(rows[1].name), "B");
  EXPECT_EQ(rows[1].interfaces, nullptr);
  EXPECT_EQ(zr::Uuid(rows->classId), Id(kMars));
  EXPECT_EQ(Utf8(rows->description), "\xC3\xA4 \xC3\xA4");
  EXPECT_EQ(Utf8(rows->moduleVersion), "1.2");
  EXPECT_EQ(fs::path(Utf8(rows->moduleFile)), root_ / "sub" / "a.so");
  EXPECT_EQ(fs::path(Utf8(rows->manifestFile)), root_ / "sub" / "a.zrmodule");
  ASSERT_EQ(rows->interfaceCount, 1u);
  EXPECT_EQ(zr::Uuid(rows->interfaces->interfaceId), Id(kVenus));
  EXPECT_EQ(Utf8(rows->interfaces->name), "IPlanet");
  ZrHostDestroyList(rows);
  ZrHostDestroyList(nullptr);
}

// The content of a bad file, with a mark "^" where the problem is, and the end of its report.
struct BadFile {
  std::string content;
  std::string report;
};

static const std::string kLong = std::string(150000, 'x');

// One problem each; the good manifest beside it keeps working.
TEST_F(HostKit, NamesWhatIsWrongWithAManifest) {
  const std::string id = std::string("\"id\": \"") + kVenus + "\"";
  const BadFile kCases[] = {
      {"^",
       "error: not valid JSON: syntax error while parsing value - unexpected end of input; expected '[', '{', or a "
       "literal"},
      {"{\"schema\": 1,\n \"module\": \"\xC3\xA4^\xFF\"}",
       "error: not valid JSON: syntax error while parsing value - invalid string: ill-formed UTF-8 byte"},
      {"\xEF\xBB\xBF{\"a\": ^\xC3}", "error: not valid JSON: syntax error while parsing value - invalid literal"},
      {"[1,^,2]",
       "error: not valid JSON: syntax error while parsing value - unexpected ','; expected '[', '{', or a "
       "literal"},
      {"{\"schema\": 1\r\n\r\n  ^\"module\": 2}",
       "error: not valid JSON: syntax error while parsing object - unexpected string literal; expected '}'"},
      {"{\"schema\": ^1e999}", "error: not valid JSON: number overflow parsing '1e999'"},
      {"{\"schema\": 1, ^\"schema\": 1, \"other\": 2}", "error: the key \"schema\" occurs twice in one object"},
      {"{\"module\": ^\"a\\u0000b\"}", "error: a text contains the character U+0000"},
      {"{\"x\": " + std::string(15, '[') + "\n^[", "error: lists and objects are nested deeper than 16 levels"},
      {std::string(1024 * 1024 + 1, ' '), "error: longer than 1048576 bytes"},
      {"{^\"a\\u0000\": 1}", "error: a text contains the character U+0000"},
      {"^17", "error: the manifest must be an object, not an integer"},
      {"^[]", "error: the manifest must be an object, not a list"},
      {"^{}", "error: the manifest has no \"schema\""},
      {"{\"schema\": ^2}", "error: schema 2 is not supported, only schema 1"},
      {"{\"schema\": ^\"1\"}", "error: the value of \"schema\" must be an integer, not a text"},
      {"^{\"schema\": 1, \"classes\": []}", "error: the manifest has no \"module\""},
      {"^{\"schema\": 1, \"module\": \"module.so\"}", "error: the manifest has no \"classes\""},
      {"{\"schema\": 1, \"module\": ^\"\", \"classes\": []}", "error: the module \"\" has an empty path"},
      {"{\"schema\": 1, \"module\": ^\"b.so\", \"classes\": []}", "error: the module \"b.so\" doesn't exist"},
      {"{\"schema\": 1, \"module\": ^\".\", \"classes\": []}", "error: the module \".\" is not a regular file"},
      {"{\"schema\": 1, \"module\": ^\"x/../module.so\", \"classes\": []}",
       "error: the module \"x/../module.so\" must be below the folder of the manifest; absolute paths and \"..\" are "
       "not "
       "allowed"},
      {"{\"schema\": 1, \"module\": ^\"/bin/sh\", \"classes\": []}",
       "error: the module \"/bin/sh\" must be below the folder of the manifest; absolute paths and \"..\" are not "
       "allowed"},
      {Manifest("^{" + id + "}"), "error: a class has no \"name\""},
      {Manifest("{\"name\": ^\"\", " + id + "}"), "error: a class has an empty \"name\""},
      {Manifest("^7"), "error: a class must be an object, not an integer"},
      {Manifest("^{\"name\": \"A\"}"), "error: the class \"A\" has no \"id\""},
      {Manifest("{\"name\": \"A\\u001b\\u009b\\u007f\xC2\xA0\", \"id\": ^\"6B8A0D21\"}"),
       "error: the \"id\" of the class \"A\\u001b\\u009b\\u007f\xC2\xA0\" is not an identifier: \"6B8A0D21\""},
      {Manifest("{\"name\": \"A\", \"id\": ^\"{" + std::string(kVenus) + "}\"}"),
       "error: the \"id\" of the class \"A\" is not an identifier: \"{" + std::string(kVenus) + "}\""},
      {Manifest("{\"name\": \"A\", \"id\": ^\"" + std::string(kNil) + "\"}"),
       "error: the \"id\" of the class \"A\" is the nil identifier"},
      {Manifest("^" + Class("Planets.Mars", kVenus)), "has the same name"},
      {Manifest("^" + Class("A", kMars)), "has the same \"id\""},
      {Manifest(Class("A", kVenus) + ", ^" + Class("A", kVenus)), "has the same name"},
      {Manifest(Class("A", kVenus, ", ^\"colour\": 1")), "warning: the class \"A\" has an unknown key \"colour\""},
      {Manifest(Class("A", kVenus, ", \"interfaces\": [^{}]")), "error: an interface of the class \"A\" has no \"id\""},
      {Manifest(Class("A", kVenus, ", \"description\": ^[]")),
       "error: the value of \"description\" must be a text, not a list"},
      {Configured("{\"x\": ^null}"),
       "error: the value \"x\" of the configuration \"C\" of the class \"A\" must be a "
       "boolean, a number, a text, or an object with \"type\" and \"value\""},
      {Configured("^1"), "error: the configuration \"C\" of the class \"A\" must be an object, not an integer"},
      {Configured("{\"x\": ^{\"type\": \"UI1\"}}"),
       "error: the value \"x\" of the configuration \"C\" of the class \"A\" has no \"value\""},
      {Configured("{\"x\": ^{\"value\": 1}}"),
       "error: the value \"x\" of the configuration \"C\" of the class \"A\" has no \"type\""},
      {Configured("{\"x\": {\"type\": \"UI1\", \"value\": ^[]}}"),
       "error: the value \"x\" of the configuration \"C\" of the class \"A\" must be a boolean, a number, a text, or "
       "an "
       "object with \"type\" and \"value\""},
      {Configured("{\"x\": {\"type\": ^\"UI9\", \"value\": 1}}"),
       "error: the value \"x\" of the configuration \"C\" of the class \"A\" has an unknown type \"UI9\""},
      {Configured("{\"x\": ^{\"type\": \"UI1\", \"value\": 300}}"),
       "error: the value \"x\" does not convert to ZR_VT_UI1: ZR_R_INVALID_ARGUMENTS (0x80000004)"},
      // A long text is cut off, and not within a character.
      {"{\"schema\": 1, ^\"" + std::string(199, 'x') + "\xC3\xA4" + kLong +
           "\": 1, \"module\": \"module.so\", "
           "\"classes\": []}",
       "warning: the manifest has an unknown key \"" + std::string(199, 'x') + "...\""},
  };
  Write("a.zrmodule", Manifest(Class("Planets.Mars", kMars)));
  for (auto [content, report] : kCases) {
    SCOPED_TRACE(content.substr(0, 200));
    const std::string place = TakePlace(content);
    Write("b.zrmodule", content);
    Discover();
    const std::string found = Problems(), start = "b.zrmodule:" + place + ": ";
    EXPECT_EQ(found.substr(0, start.size()), start) << found;
    EXPECT_EQ(found.substr(found.size() - std::min(found.size(), report.size() + 2)), " " + report + "\n") << found;
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 1) << found;
    EXPECT_EQ(IdOf("Planets.Mars"), kMars);
  }
}

TEST_F(HostKit, NamesWhatIsWrongWithAConfigurationFile) {
  const BadFile kCases[] = {
      {"{\"schema\": 1,^]",
       "error: not valid JSON: syntax error while parsing object key - unexpected ']'; expected "
       "string literal"},
      {"{\"schema\": 1, ^\"more\": 1}", "warning: the configuration file has an unknown key \"more\""},
      {"{\"schema\": 1, \"library\": ^1}", "error: the value of \"library\" must be an object, not an integer"},
      {"{\"schema\": 1, \"library\": {\"ZR_VT_DATE\": ^1}}", "warning: the library has no setting \"ZR_VT_DATE\""},
      {"{\"schema\": 1, \"library\": {\"ZR_VT_REF\": ^-1}}",
       "error: the value \"ZR_VT_REF\" does not convert to ZR_VT_UI4: ZR_R_INVALID_ARGUMENTS (0x80000004)"},
      {"{\"schema\": 1, \"classes\": {^\"Pluto\": {}}}", "warning: the class \"Pluto\" is not in any manifest"},
      {"{\"schema\": 1, \"classes\": {\"A\": ^[]}}", "error: the class \"A\" must be an object, not a list"},
      {"{\"schema\": 1, \"classes\": {\"A\": {\"C\": {\n\"x\":\t^\"none\"}}}}",
       "error: the value \"x\" does not convert to ZR_VT_UI1: ZR_R_FAILED (0x80000000)"},
  };
  Write("a.zrmodule", Configured("{\"x\": {\"type\": \"UI1\", \"value\": 3}}"));
  for (auto [content, report] : kCases) {
    SCOPED_TRACE(content);
    const std::string place = TakePlace(content);
    Write("host.json", content);
    Discover({""}, "host.json");
    EXPECT_EQ(Problems(), "host.json:" + place + ": " + report + "\n");
    EXPECT_EQ(Value(kVenus, "C", "x", ZR_VT_UI1), "3");
  }
  Discover({""}, "missing.json");
  EXPECT_EQ(Problems().rfind("missing.json:0:0: error: can't read the file: ", 0), 0u) << Problems();
}

TEST_F(HostKit, ListsProblemsInTheOrderOfFoldersFilesAndLines) {
  Write("2/b.zrmodule", "");
  Write("1/B.zrmodule", "{\"schema\": 1, \"module\": \"none\",\n \"classes\": [],\n \"x\": 1, \"version\": 1}");
  Write("1/a.zrmodule", "");
  Discover({"2", "1", "./2/"});  // a folder counts once
  const std::string problems = Problems();
  std::string found;
  for (std::size_t at = 0; at < problems.size(); at = problems.find('\n', at) + 1) {
    found += problems.substr(at, problems.find(": ", at) - at) + " ";
  }
  EXPECT_EQ(found, "b.zrmodule:1:1 B.zrmodule:1:25 B.zrmodule:3:2 B.zrmodule:3:21 a.zrmodule:1:1 ");
}

TEST_F(HostKit, ListsOneHundredProblemsOfAFile) {
  std::string classes;
  for (int count = 0; count < 1000; ++count) classes += "0,";
  Write("a.zrmodule", Manifest(classes + "0"));
  Discover();
  const std::string problems = Problems();
  EXPECT_EQ(std::count(problems.begin(), problems.end(), '\n'), 100);
  const std::string last = "a.zrmodule:1:248: error: from here on, there are 902 problems\n";
  EXPECT_EQ(problems.substr(problems.size() - last.size()), last);
}

TEST_F(HostKit, TheFirstOfTwoClassesCounts) {
  for (const char* const folder : {"first", "second"}) {
    Write(std::string(folder) + "/module.so", "");
    Write(std::string(folder) + "/b.zrmodule", Manifest(Class("Planets.Mars", folder[0] == 'f' ? kMars : kVenus)));
  }
  Write("second/a.zrmodule", Manifest(Class("Planets.Venus", kMars)));
  Discover({"first", "second"});
  EXPECT_EQ(Classes(), "Planets.Mars");
  EXPECT_EQ(IdOf("Planets.Mars"), kMars);
  const std::string reason = " is not used, because the class \"Planets.Mars\" of \"" +
                             (root_ / "first" / "b.zrmodule").string() + "\" has the same ";
  EXPECT_EQ(Problems(), "a.zrmodule:1:50: error: the class \"Planets.Venus\"" + reason + "\"id\"\n" +
                            "b.zrmodule:1:50: error: the class \"Planets.Mars\"" + reason + "name\n");
  Discover({"second", "first"});
  EXPECT_EQ(Classes(), "Planets.Mars Planets.Venus");
  EXPECT_EQ(IdOf("Planets.Mars"), kVenus);
}

TEST_F(HostKit, FilesThatAreNoRegularFilesOrFoldersAreProblems) {
  fs::create_directory(root_ / "folder.zrmodule");
  Write("other.txt", "not a manifest");
  Discover({"", "missing", "other.txt"});
  const std::string found = Problems();
  EXPECT_EQ(found.rfind("folder.zrmodule:0:0: error: not a regular file\n"
                        "missing:0:0: error: can't read the folder: ",
                        0),
            0u)
      << found;
  EXPECT_NE(found.find("\nother.txt:0:0: error: can't read the folder: "), std::string::npos) << found;
}

#if !defined(_WIN32)  // links need a privilege there, and names are text
TEST_F(HostKit, LinksMustNotLeaveTheFolder) {
  Write("outside/module.so", "");
  Write("outside/m.zrmodule", Manifest(Class("Planets.Mars", kMars), "inside.so"));
  Write("folder/inside.so", "");
  fs::create_symlink("../outside/module.so", root_ / "folder/module.so");
  fs::create_symlink("inside.so", root_ / "folder/link.so");
  fs::create_symlink("../outside/m.zrmodule", root_ / "folder/m.zrmodule");
  fs::create_symlink("loop.so", root_ / "folder/loop.so");
  fs::create_directory_symlink("folder", root_ / "folder-link");
  fs::create_directory_symlink("../outside", root_ / "folder/sub");
  Write("folder/a.zrmodule", Manifest(Class("Planets.Venus", kVenus)));
  Write("folder/b.zrmodule", Manifest("", "sub/module.so"));
  Write("folder/c.zrmodule", Manifest("", "link.so"));
  Write("folder/d.zrmodule", Manifest("", "loop.so"));
  const std::string reason = " is outside the folder, through a symbolic link\n";
  for (const char* const folder : {"folder", "folder-link"}) {
    Discover({folder});
    EXPECT_EQ(Problems(),
              "a.zrmodule:1:25: error: the module \"module.so\"" + reason +
                  "b.zrmodule:1:25: error: the module \"sub/module.so\"" + reason +
                  "d.zrmodule:1:25: error: the module \"loop.so\" can't be read: Too many levels of symbolic "
                  "links\n" +
                  "m.zrmodule:0:0: error: the manifest" + reason);
    EXPECT_EQ(Classes(), "");
  }
  Write("folder/c.zrmodule", Manifest("", "../outside/module.so"));
  fs::remove(root_ / "folder/d.zrmodule");
  Discover({"folder"}, "", ZRHOST_ALLOW_OUTSIDE);
  EXPECT_EQ(Problems(), "");
  EXPECT_EQ(Classes(), "Planets.Mars Planets.Venus");
}

TEST_F(HostKit, ANameThatIsNotUtf8IsAProblem) {
  Write("\xFF.zrmodule", Manifest(Class("Planets.Mars", kMars)));
  Discover();
  EXPECT_EQ(Problems(), "\xEF\xBF\xBD.zrmodule:0:0: error: the path is not UTF-8\n");
}

// Every allocation of the kit fails once. Nothing may be left out silently, and nothing may leak.
TEST_F(HostKit, ReportsOutOfMemory) {
  Write("a.zrmodule", Configured("{\"x\": 1, \"y\": {\"type\": \"UI1\", \"value\": 300}}"));
  Write("host.json", "{\"schema\": 1, \"classes\": {\"A\": {\"C\": {\"x\": 2}}}}");
  Discover({""}, "host.json");
  const std::string classes = Classes(), problems = Problems();
  const auto until = [&](const auto& operation) {
    for (int n = 1;; ++n) {
      FailAllocation(n);
      const ZRRESULT result = operation();
      const bool hasFailed = AllocationFailed();
      EXPECT_RESULT(result, hasFailed && result != ZR_R_OK ? ZR_R_NO_MEMORY : ZR_R_OK) << "allocation " << n;
      if (!hasFailed) return;
      EXPECT_EQ(Classes() + Problems(), classes + problems) << "allocation " << n;
    }
  };
  const zr::Ptr<IZrComponentDiscovery> first = discovery_;
  const zr::String folder = Text(root_.string()), file = Text((root_ / "host.json").string());
  until([&] {
    const WCHAR* const path = folder.Get();
    discovery_.Reset();
    const ZRRESULT result = ZrHostCreateFolderDiscovery(&path, 1, file.Get(), 0, discovery_.Put());
    if (result != ZR_R_OK) discovery_ = first;
    return result;
  });
  until([&] { return ZrHostRefresh(discovery_.Get()); });
  until([&] {
    ZrHostClass* rows = nullptr;
    uint32_t count = 7;
    const ZRRESULT result = ZrHostListClasses(discovery_.Get(), &rows, &count);
    EXPECT_TRUE((result == ZR_R_OK && count == 1) || (rows == nullptr && count == 0));
    ZrHostDestroyList(rows);
    return result;
  });
}
#endif

TEST_F(HostKit, ValuesHaveTheTypesOfTheManifestAndTheFileOfTheHost) {
  Write("a.zrmodule", Manifest(Class("Planets.Mars", kMars, R"(, "configurations": {"Orbit": {"flag": true, "small": -7,
      "low": -3000000000, "wide": 3000000000, "huge": 18446744073709551615, "real": 0.5, "text": "x",
      "typed": {"type": "UI2", "value": "12"}, "kept": 1}, "Empty": {}})")));
  Write("host.json", R"({"schema": 1, "library": {"EnableAllocator": "ZR_TRUE", "ZR_VT_REF": 256},
      "classes": {"Planets.Mars": {"Orbit": {"typed": 13, "small": "8", "added": 1, "kept": "x"}, "New": {"x": 1}}}})");
  Discover({""}, "host.json");
  const struct {
    const char *id, *configuration, *name;
    uint16_t type;
    const char* value;
  } kCases[] = {
      {kMars, "Orbit", "flag", ZR_VT_BOOL, "TRUE"},
      {kMars, "Orbit", "small", ZR_VT_I4, "8"},  // converted to the type in the manifest
      {kMars, "Orbit", "low", ZR_VT_I8, "-3000000000"},
      {kMars, "Orbit", "wide", ZR_VT_I8, "3000000000"},
      {kMars, "Orbit", "huge", ZR_VT_UI8, "18446744073709551615"},
      {kMars, "Orbit", "real", ZR_VT_R8, "0.500000"},
      {kMars, "Orbit", "text", ZR_VT_STR, "x"},
      {kMars, "Orbit", "typed", ZR_VT_UI2, "13"},
      {kMars, "Orbit", "kept", ZR_VT_I4, "1"},  // what doesn't convert leaves the value of the manifest
      {kMars, "Orbit", "added", ZR_VT_I4, "1"},
      {kMars, "New", "x", ZR_VT_I4, "1"},
      {kMars, "Empty", "x", ZR_VT_I4, ""},
      {kMars, "ZrCore", "ZR_VT_REF", ZR_VT_UI4, ""},
      {kVenus, "Orbit", "flag", ZR_VT_BOOL, ""},
      {kNil, "ZrCore", "EnableAllocator", ZR_VT_BOOL, "TRUE"},
      {kNil, "ZrCore", "ZR_VT_REF", ZR_VT_UI4, "256"},
      {kNil, "Other", "ZR_VT_REF", ZR_VT_UI4, ""},
  };
  for (const auto& row : kCases) {
    EXPECT_EQ(Value(row.id, row.configuration, row.name, row.type), row.value) << row.configuration << " " << row.name;
  }
  EXPECT_EQ(Problems(),
            "host.json:2:93: error: the value \"kept\" does not convert to ZR_VT_I4: "
            "ZR_R_FAILED (0x80000000)\n");
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

// One thread changes the folder and refreshes. The others must see all classes of one reading.
TEST_F(HostKit, ThreadsAskWhileOneRefreshes) {
  const auto change = [&](int round) {
    const std::string name = round % 2 == 0 ? "Mars" : "Venus";
    Write("next", Manifest(Class(name, kMars) + "," + Class(name + "2", kVenus)));
    fs::rename(root_ / "next", root_ / "a.zrmodule");
    ASSERT_RESULT(ZrHostRefresh(discovery_.Get()), ZR_R_OK);
  };
  Discover();
  change(0);
  std::array<std::set<std::string>, kThreads> seen;
  int rounds = 0;
  Race(100, [&](int thread) {
    if (thread == 0) return change(++rounds);
    seen[static_cast<std::size_t>(thread)].insert(Classes());
    EXPECT_EQ(Problems(), "");
    const std::string mars = IdOf("Mars"), venus = IdOf("Venus2");
    EXPECT_TRUE((mars.empty() || mars == kMars) && (venus.empty() || venus == kVenus));
  });
  std::set<std::string> all;
  for (const std::set<std::string>& own : seen) all.insert(own.begin(), own.end());
  all.insert({"Mars Mars2", "Venus Venus2"});
  EXPECT_EQ(all, (std::set<std::string>{"Mars Mars2", "Venus Venus2"}));
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
#if !defined(_WIN32)  // where an empty variable does not exist
  unsetenv("ZRCORE_MODULE_PATH");
  EXPECT_EQ(folders(), installed);
#endif
  EXPECT_EQ(fs::path(installed.substr(0, installed.size() - 1)).filename(), "modules");
  EXPECT_EQ(Problems(), "");  // it needn't exist
}

TEST_F(HostKit, RefusesWrongArguments) {
  Discover();
  const zr::Ptr<IZrComponentDiscovery> other = zr::MakeObject<zr::TableDiscovery>(zr::TableDiscovery::Rows());
  const WCHAR lone[] = {0xD800, 0}, empty[] = {0};
  const WCHAR* const paths[] = {nullptr, lone, empty};
  zr::Ptr<IZrComponentDiscovery> made;
  zr::String path, name;
  ZrModuleEntryPoints functions = {};
  const zr::Uuid unknown = Id(kMars);
  EXPECT_RESULT(discovery_->QueryComponent(&unknown, path.Put(), &functions), ZR_R_UNKNOWN_IDENTIFIER);
  EXPECT_RESULT(discovery_->QueryClassName(&unknown, name.Put()), ZR_R_NOT_EXISTING);
  uint32_t count = 1;
  ZrHostClass* rows = nullptr;
  ExpectRejected({ZrHostCreateFolderDiscovery(nullptr, 0, nullptr, 0, nullptr),
                  ZrHostCreateFolderDiscovery(nullptr, 1, nullptr, 0, made.Put()),
                  ZrHostCreateFolderDiscovery(paths, 1, nullptr, 0, made.Put()),
                  ZrHostCreateFolderDiscovery(paths + 1, 1, nullptr, 0, made.Put()),
                  ZrHostCreateFolderDiscovery(paths + 2, 1, nullptr, 0, made.Put()),
                  ZrHostCreateFolderDiscovery(nullptr, 0, lone, 0, made.Put()),
                  ZrHostCreateFolderDiscovery(nullptr, 0, nullptr, 2, made.Put()), ZrHostRefresh(nullptr),
                  ZrHostRefresh(other.Get()), ZrHostListClasses(other.Get(), &rows, &count),
                  ZrHostListClasses(discovery_.Get(), nullptr, &count),
                  ZrHostListClasses(discovery_.Get(), &rows, nullptr)});
  EXPECT_FALSE(made);
  EXPECT_EQ(count, 0u);
}
