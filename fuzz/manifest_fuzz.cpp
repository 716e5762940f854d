// Reads any two texts as the manifests of a folder. Problems must have places in the texts. The classes must be unique,
// be found by name and by identifier, and come back unchanged if a manifest is written from their list. A zero byte
// separates the two texts, since no valid text contains it.

#include <set>
#include <tuple>

#include "fuzz/host_kit.h"
#include "zr/zr.hpp"
#include "zrhost/host.h"

// The order in which a list has its classes.
struct ListedClass {
  zr::String name;
  std::string id;
  std::string description;
  std::string version;
  std::vector<std::pair<std::string, std::string>> interfaces;

  friend bool operator==(const ListedClass&, const ListedClass&) = default;
};

static std::string TextOfId(const ZRUUID& id) { return zr::Uuid(id).ToString().ToUtf8().substr(1, 36); }
static std::string Utf8(const WCHAR* text) { return zr::String(text).ToUtf8(); }

static zr::Ptr<IZrComponentDiscovery> Discover(const std::filesystem::path& folder) {
  const zr::String text = zr::String::FromUtf8(folder.string()).Value();
  const WCHAR* const path = text.Get();
  zr::Ptr<IZrComponentDiscovery> discovery;
  FUZZ_CLAIM(ZrHostCreateFolderDiscovery(&path, 1, nullptr, 0, discovery.Put()) == ZR_R_OK);
  return discovery;
}

// All classes, which the discovery must find one by one.
static std::vector<ListedClass> ClassesOf(IZrComponentDiscovery& discovery, const std::filesystem::path& folder) {
  std::vector<ListedClass> classes;
  std::set<std::string> ids;
  ZrHostClass* rows = nullptr;
  uint32_t count = 0;
  FUZZ_CLAIM(ZrHostListClasses(&discovery, &rows, &count) == ZR_R_OK);
  for (const ZrHostClass* row = rows; row != rows + count; ++row) {
    ListedClass made{row->name, TextOfId(row->classId), Utf8(row->description), Utf8(row->moduleVersion), {}};
    FUZZ_CLAIM(classes.empty() || classes.back().name.View() < made.name.View());
    FUZZ_CLAIM(ids.insert(made.id).second);
    FUZZ_CLAIM(Utf8(row->moduleFile) == (folder / "module.so").string());

    zr::Uuid id;
    zr::String name, path;
    ZrModuleEntryPoints functions = {};
    FUZZ_CLAIM(discovery.QueryClassId(made.name.Get(), &id) == ZR_R_OK && id == zr::Uuid(row->classId));
    FUZZ_CLAIM(discovery.QueryClassName(&id, name.Put()) == ZR_R_OK && name == made.name);
    FUZZ_CLAIM(discovery.QueryComponent(&id, path.Put(), &functions) == ZR_R_OK && path == zr::String(row->moduleFile));
    for (uint32_t index = 0; index < row->interfaceCount; ++index) {
      made.interfaces.emplace_back(TextOfId(row->interfaces[index].interfaceId), Utf8(row->interfaces[index].name));
    }
    classes.push_back(std::move(made));
  }
  ZrHostDestroyList(rows);
  return classes;
}

static void ClaimProblems(IZrComponentDiscovery& discovery, const std::string (&texts)[2]) {
  ZrHostProblem* rows = nullptr;
  uint32_t count = 0;
  FUZZ_CLAIM(ZrHostListProblems(&discovery, &rows, &count) == ZR_R_OK);
  std::tuple<bool, uint32_t, uint32_t> last;
  for (const ZrHostProblem* row = rows; row != rows + count; ++row) {
    const std::string name = std::filesystem::path(Utf8(row->file)).filename().string();
    const bool isSecond = name == "b.zrmodule";
    FUZZ_CLAIM(isSecond || name == "a.zrmodule");
    ClaimProblemIn(texts[isSecond], {row->line, row->column}, row->severity, row->reason);
    const std::tuple place(isSecond, row->line, row->column);
    FUZZ_CLAIM(last <= place);
    last = place;
  }
  ZrHostDestroyList(rows);
}

static std::string ManifestOf(const std::vector<ListedClass>& classes, const std::string& version) {
  std::string list;
  for (const ListedClass& row : classes) {
    if (row.version != version) continue;
    std::string interfaces;
    for (const auto& [id, name] : row.interfaces) {
      interfaces += (interfaces.empty() ? "" : ",") + ("{\"id\":\"" + id) + "\",\"name\":" + JsonOf(name) + "}";
    }
    list += (list.empty() ? "" : ",") + ("{\"name\":" + JsonOf(row.name.ToUtf8())) + ",\"id\":\"" + row.id +
            "\",\"description\":" + JsonOf(row.description) + ",\"interfaces\":[" + interfaces + "]}";
  }
  return R"({"schema":1,"module":"module.so","version":)" + JsonOf(version) + ",\"classes\":[" + list + "]}";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const CFuzzFolder folder;
  folder.Write("module.so", "");
  const std::string input(data, data + size);
  const std::size_t split = std::min(input.find('\0'), size);
  const std::string texts[2] = {input.substr(0, split), input.substr(std::min(split + 1, size))};
  ClaimJson(texts[0]);

  folder.Write("a.zrmodule", texts[0]);
  folder.Write("b.zrmodule", texts[1]);
  zr::Ptr<IZrComponentDiscovery> discovery = Discover(folder.Path());
  const std::vector<ListedClass> classes = ClassesOf(*discovery, folder.Path());
  ClaimProblems(*discovery, texts);

  std::set<std::string> versions;  // one per manifest
  for (const ListedClass& row : classes) versions.insert(row.version);
  for (const char* const other : {"", "other"}) {
    if (versions.size() < 2) versions.insert(other);
  }
  folder.Write("a.zrmodule", ManifestOf(classes, *versions.begin()));
  folder.Write("b.zrmodule", ManifestOf(classes, *versions.rbegin()));
  FUZZ_CLAIM(ZrHostRefresh(discovery.Get()) == ZR_R_OK);
  FUZZ_CLAIM(ClassesOf(*discovery, folder.Path()) == classes);
  uint32_t count = 1;
  ZrHostProblem* rows = nullptr;
  FUZZ_CLAIM(ZrHostListProblems(discovery.Get(), &rows, &count) == ZR_R_OK && count == 0);
  return 0;
}
