// A class library for Poco's class loader: as many classes as the ZrCore module has, all from one template.

#include <Poco/ClassLibrary.h>

#include <string>
#include <utility>

#include "modules/poco_name.h"
#include "modules/widget.h"

template <std::size_t index>
class PocoWidget final : public Widget {
 public:
  uint64_t Value() const override { return value_; }

 private:
  uint64_t value_ = index;
};

template <std::size_t... index>
static void Export(Poco::Manifest<Widget>& manifest, std::index_sequence<index...>) {
  (manifest.insert(new Poco::MetaObject<PocoWidget<index>, Widget>(PocoName(index).c_str())), ...);
}

// clang-format off
POCO_BEGIN_MANIFEST(Widget)
  Export(*pManifest, std::make_index_sequence<kClassCount>());
POCO_END_MANIFEST
// clang-format on
