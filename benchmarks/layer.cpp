// The C++ layer, compared with calls of the C boundary as a careful user writes them. Both do the same work and check
// the same things, so both should take the same time.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "component_host.h"
#include "row.h"
#include "texts.h"
#include "zr/zr.hpp"
#include "zrcore/zrcore.h"

static const std::string kLayer = "zr layer";
static const std::string kByHand = "by hand";

static void LayerStringRow(const std::string& text) {
  const std::string operation = "layer: string make+copy+drop " + std::to_string(text.size()) + " units";
  Row(operation, kLayer, [units = Widened(text)] {
    const zr::String made = units.c_str();
    const zr::String copy = made;
    Consume(copy);
  });
  Row(operation, kByHand, [units = Widened(text)] {
    ZRSTR made = ZrCreateString(units.c_str());
    if (made == nullptr) return;
    ZRSTR copy = ZrCopyString(made);
    Consume(copy);
    ZrDestroyString(copy);
    ZrDestroyString(made);
  });
}

static void LayerVariantRow() {
  const std::string operation = "layer: variant from double to text";
  Row(operation, kLayer, [number = 1234.567891] {
    const zr::Variant variant = number;
    const zr::Result<zr::String> text = variant.To<zr::String>();
    if (text) Consume(*text);
  });
  Row(operation, kByHand, [number = 1234.567891] {
    ZRVARIANT variant = ZR_VARIANT_INIT;
    variant.Type = ZR_VT_R8;
    variant.Value.r8 = number;
    ZRVARIANT text = ZR_VARIANT_INIT;
    if (ZrVariantChangeType(&text, &variant, 0, ZR_VT_STR) < 0) return;
    Consume(text);
    ZrDestroyString(text.Value.string);
  });
}

static void LayerArrayRows(uint32_t count) {
  const auto array = std::make_shared<zr::Array<double>>(count);
  for (uint32_t index = 0; index < count; ++index) Require(!!array->Set(index / 8.0, index), "an element is set");

  std::string operation = "layer: array of " + std::to_string(count) + " doubles, sum under lend";
  Row(operation, kLayer, [array] {
    const auto lent = std::as_const(*array).Lend();
    if (!lent) return;
    double sum = 0;
    for (const double number : *lent) sum += number;
    Consume(sum);
  });
  Row(operation, kByHand, [array] {
    void* data = nullptr;
    if (ZrSafeArrayAccessData(array->Get(), &data) < 0) return;
    uint32_t size = 0;
    if (data != nullptr) (void)ZrSafeArrayGetElementCount(array->Get(), &size, nullptr);
    double sum = 0;
    for (const double *number = static_cast<double*>(data), *end = number + size; number != end; ++number) {
      sum += *number;
    }
    (void)ZrSafeArrayUnaccessData(array->Get());
    Consume(sum);
  });

  operation = "layer: array element get";
  Row(operation, kLayer, [array, index = count / 2] {
    Consume(index);
    const zr::Result<double> element = array->At(index);
    if (element) Consume(*element);
  });
  Row(operation, kByHand, [array, index = count / 2] {
    Consume(index);
    uint32_t dimensions = 0;
    const ZrSafeArrayBound* bounds = nullptr;
    if (ZrSafeArrayGetBounds(array->Get(), &dimensions, &bounds) < 0 || dimensions != 1) return;
    if (index - static_cast<uint32_t>(bounds->lowerBound) >= bounds->elementCount) return;
    double element = 0;
    if (ZrSafeArrayGetElement(array->Get(), &index, &element) < 0) return;
    Consume(element);
  });
  Row(operation, kByHand + " (bounds not checked)", [array, index = count / 2] {
    Consume(index);
    double element = 0;
    if (ZrSafeArrayGetElement(array->Get(), &index, &element) < 0) return;
    Consume(element);
  });
}

static void LayerUuidRows(const std::string& text) {
  const zr::Uuid uuid = zr::Uuid::Parse(text).ValueOr(zr::Uuid());
  Require(!uuid.IsNil(), "a UUID's text is read");

  std::string operation = "layer: UUID parse";
  Row(operation, kLayer, [text] {
    const zr::Result<zr::Uuid> parsed = zr::Uuid::Parse(text);
    if (parsed) Consume(*parsed);
  });
  Row(operation, kLayer + " (from a view)", [text] {
    const zr::Result<zr::Uuid> parsed = zr::Uuid::Parse(std::string_view(text));
    if (parsed) Consume(*parsed);
  });
  Row(operation, kByHand, [text] {
    ZRUUID parsed{};
    if (ZrUUIDFromString(text.c_str(), &parsed) < 0) return;
    Consume(parsed);
  });

  operation = "layer: UUID compare equal";
  Row(operation, kLayer, [left = uuid, right = uuid] {
    Consume(left);
    Consume(right);
    Consume(left == right);
  });
  Row(operation, kByHand, [left = uuid, right = uuid] {
    Consume(left);
    Consume(right);
    Consume(std::memcmp(&left, &right, sizeof left) == 0);
  });
}

struct IWidget : IZrUnknown {
  static constexpr zr::Uuid kId{kWidgetInterface};

 protected:
  ~IWidget() = default;
};

static void LayerObjectRow() {
  const std::string operation = "layer: object create+release, warm";
  const zr::Uuid id = WidgetClass(kMeasuredClass);
  RowWithin<CWidgetHost>(operation, kLayer, [id] {
    const zr::Result<zr::Ptr<IWidget>> widget = zr::Create<IWidget>(id);
    if (widget) Consume(*widget);
  });
  RowWithin<CWidgetHost>(operation, kByHand, [id] {
    void* object = nullptr;
    if (ZrCreateInstance(&id, 0, &IWidget::kId, 0, &object) < 0 || object == nullptr) return;
    Consume(object);
    (void)static_cast<IWidget*>(object)->Release();
  });
}

void LayerRows() {
  LayerStringRow("a text of 16 un.");
  LayerVariantRow();
  LayerArrayRows(1000);
  LayerUuidRows("31AD0869-8AC8-4D25-A11C-A887BE515257");
  LayerObjectRow();
}
