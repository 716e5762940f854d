// Sequences of operations on a few SREFs, against plain values: numbers in an array, text in a string. The item caches
// are on, with a small cap, so that records travel between the slots.

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "frame/item_allocator.h"
#include "fuzz/fuzz_support.h"
#include "zrcore/zrcore.h"

using Numbers = std::array<uint32_t, 6>;

struct Model {
  std::optional<Numbers> ref;
  std::optional<std::string> text;  // plain text without zero units
};

struct Slot {
  ZRSREF* sref = nullptr;
  std::optional<Model> model;
};

static std::string Write(const Numbers& n, const char* format) {
  char written[80];
  std::snprintf(written, sizeof written, format, n[0], n[1], n[2], n[3], n[4], n[5]);
  return written;
}
static std::string Plain(const Numbers& n) { return Write(n, "%u.%u.%u.%u.%u.%u"); }

static std::optional<Numbers> Parse(std::string text) {
  static constexpr char kSpace[] = " \t\n\r\f\v";
  text.erase(0, std::min(text.find_first_not_of(kSpace), text.size()));
  text.erase(text.find_last_not_of(kSpace) + 1);
  std::array<unsigned long, 6> n{};
  // Loose in what it takes: writing it back decides.
  if (std::sscanf(text.c_str(), "%lu.%lu.%lu.%lu.%lu.%lu", &n[0], &n[1], &n[2], &n[3], &n[4], &n[5]) != 6) return {};
  Numbers numbers;
  std::transform(n.begin(), n.end(), numbers.begin(), [](unsigned long word) { return static_cast<uint32_t>(word); });
  return Plain(numbers) == text ? std::optional(numbers) : std::nullopt;
}

static int64_t Difference(const Numbers& left, const Numbers& right) {
  const auto [l, r] = std::mismatch(left.begin(), left.end(), right.begin());
  return l == left.end() ? 0 : static_cast<int32_t>(*l - *r);
}

static bool IsNil(const std::optional<Model>& model) {
  if (!model) return true;
  if (!model->ref) return !model->text || model->text->empty() || *model->text == "0.0.0.0.0.0";
  return !model->text && *model->ref == Numbers{};
}

struct Order {
  int64_t order;
  ZRRESULT result = ZR_R_OK;
};

static Order Compare(const std::optional<Model>& left, const std::optional<Model>& right) {
  if (IsNil(left) || IsNil(right)) return {IsNil(right) - IsNil(left)};
  if (left->ref && right->ref) return {Difference(*left->ref, *right->ref)};
  if (left->text && right->text) return {left->text->compare(*right->text)};  // ASCII: bytes and units order alike
  const Numbers& numbers = left->ref ? *left->ref : *right->ref;
  const std::string& text = left->ref ? *right->text : *left->text;
  if (const auto parsed = Parse(text)) {
    return {left->ref ? Difference(numbers, *parsed) : Difference(*parsed, numbers)};
  }
  const int order = Write(numbers, "%d.%d.%d.%d.%d.%d").compare(text);
  return {left->ref ? order : -order, ZR_R_INVALID_ARGUMENTS};
}

static void CheckText(const Slot& slot) {
  if (!slot.model) return;
  ZRSTR text = nullptr;
  FUZZ_CLAIM(ZrSREFToString(slot.sref, &text) == ZR_R_OK && text != nullptr);
  const std::string written(text, text + ZrStringLen(text));
  ZrDestroyString(text);
  FUZZ_CLAIM(written == (slot.model->ref ? Plain(*slot.model->ref) : slot.model->text.value_or("")));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static constexpr char kUnits[] = "0123456789....-+ x";
  CItemAllocator::SetDefaultCap(2);
  CItemAllocator::SetEnabled(true);
  std::array<Slot, 4> slots;
  std::size_t at = 0;
  const auto next = [&]() -> unsigned { return at < size ? data[at++] : 0; };
  while (at < size) {
    const unsigned operation = next();
    Slot& slot = slots[operation >> 3 & 3];
    Slot& other = slots[operation >> 5 & 3];
    std::string text;
    if ((operation & 7) < 3) {
      for (unsigned units = next() % 24; units > 0; --units) text += kUnits[next() % (sizeof kUnits - 1)];
      ZrDestroySREF(slot.sref);
      slot = {};
    }
    const std::basic_string<WCHAR> units(text.begin(), text.end());
    ZRSTR string = ZrCreateStringByteLen(units.data(), static_cast<uint32_t>(units.size() * sizeof(WCHAR)));
    switch (operation & 7) {
      case 0:  // any text
        FUZZ_CLAIM(ZrStringToSREF(string, &slot.sref) == ZR_R_OK);
        slot.model = Parse(text) ? Model{Parse(text), {}} : Model{{}, text};
        break;
      case 1: {  // numbers, with or without a text of their own
        Numbers numbers{};
        for (uint32_t& word : numbers) word = next() * 0x01010101u;  // small and far apart
        slot.sref = ZrCreateSREF();
        slot.sref->ref = ZrCreateREF();
        std::copy(numbers.begin(), numbers.end(), slot.sref->ref->words);
        slot.model = Model{numbers, {}};
        if (!text.empty()) {
          slot.sref->text = ZrCopyString(string);
          slot.model->text = text;
        }
        break;
      }
      case 2:  // neither, or a text that isn't asked whether it is numbers
        slot.sref = ZrCreateSREF();
        slot.model = Model{};
        if (!text.empty()) {
          slot.sref->text = ZrCopyString(string);
          slot.model->text = text;
        }
        break;
      case 3:
      case 4: {  // copy, to a slot of its own or onto itself
        if (!other.model) break;
        ZRSREF* copy = nullptr;
        const bool isNothing = !other.model->ref && !other.model->text;
        FUZZ_CLAIM(ZrCopySREF(other.sref, &copy) == (isNothing ? 1 : ZR_R_OK) && (copy == nullptr) == isNothing);
        const std::optional<Model> model = isNothing ? std::nullopt : other.model;
        ZrDestroySREF(slot.sref);
        slot = {copy, model};
        break;
      }
      default: {
        const Order expected = Compare(slot.model, other.model);
        int32_t order = 9;
        uint8_t equal = 9;
        FUZZ_CLAIM(ZrCompareSREF_ThreeWay(slot.sref, other.sref, &order) == expected.result);
        FUZZ_CLAIM((order > 0) == (expected.order > 0) && (order < 0) == (expected.order < 0));
        FUZZ_CLAIM(ZrCompareSREF(slot.sref, other.sref, &equal) == expected.result && equal == (expected.order == 0));
        FUZZ_CLAIM(ZRSREFGreater(slot.sref, other.sref) == (expected.order > 0));
        FUZZ_CLAIM(ZRSREFLess(slot.sref, other.sref) == (expected.order < 0));
      }
    }
    CheckText(slot);
    ZrDestroyString(string);
  }
  for (Slot& slot : slots) ZrDestroySREF(slot.sref);
  CItemAllocator::SetEnabled(false);
  return 0;
}
