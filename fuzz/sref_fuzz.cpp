// Performs any sequence of operations on a few SREFs and compares each step with a model: numbers in an array, text in
// a string. The item caches are enabled with a small cap, so that the slots reuse each other's records.

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "runtime/item_allocator.h"
#include "tests/support/sequence.h"
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

static std::string FormatNumbers(const Numbers& n, const char* format) {
  char written[80];
  std::snprintf(written, sizeof written, format, n[0], n[1], n[2], n[3], n[4], n[5]);
  return written;
}
static std::string Plain(const Numbers& n) { return FormatNumbers(n, "%u.%u.%u.%u.%u.%u"); }

static std::optional<Numbers> Parse(std::string text) {
  static constexpr char kSpace[] = " \t\n\r\f\v";
  text.erase(0, std::min(text.find_first_not_of(kSpace), text.size()));
  text.erase(text.find_last_not_of(kSpace) + 1);
  std::array<unsigned long, 6> n{};
  // sscanf accepts too much, so the numbers are formatted again and compared with the text.
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
  const int order = FormatNumbers(numbers, "%d.%d.%d.%d.%d.%d").compare(text);
  return {left->ref ? order : -order, ZR_R_INVALID_ARGUMENTS};
}

class CSrefSequence : public CSequence<CSrefSequence> {
  friend CSequence;

  using CSequence::CSequence;
  ~CSrefSequence() {
    for (Slot& slot : slots_) ZrDestroySREF(slot.sref);
  }

  std::string DescribeSlot(const Slot& slot) const {
    std::string text = "SREF " + std::to_string(&slot - slots_.data()) + " is ";
    if (!slot.model) return text + "null";
    text += slot.model->ref ? Plain(*slot.model->ref) : "without numbers";
    return text + (slot.model->text ? ", text \"" + *slot.model->text + "\"" : ", without a text");
  }

  void Step() {
    const uint32_t operation = NextBelow(256);
    Slot& slot = slots_[operation >> 3 & 3];
    Slot& other = slots_[operation >> 5 & 3];
    switch (operation & 7) {
      case 0:
      case 1:
      case 2:
        Make(operation & 7, slot);
        break;
      case 3:
      case 4:
        Note([&] { return "ZrCopySREF to " + DescribeSlot(slot) + "\n  from " + DescribeSlot(other); });
        Copy(slot, other);
        break;
      default:
        Note([&] { return "a comparison of " + DescribeSlot(slot) + "\n  with " + DescribeSlot(other); });
        CheckOrder(slot, other);
    }
    CheckText(slot);
  }

  void Make(uint32_t way, Slot& slot) {
    static constexpr char kUnits[] = "0123456789....-+ x";
    std::string text;
    for (uint32_t units = NextBelow(24); units > 0; --units) text += kUnits[NextBelow(sizeof kUnits - 1)];
    ZrDestroySREF(slot.sref);
    slot = {};
    const Owned string(Widened(text));
    if (way == 0) {  // any text
      Note([&] { return "ZrStringToSREF(\"" + text + "\")"; });
      ClaimResult("ZrStringToSREF", ZrStringToSREF(string, &slot.sref), ZR_R_OK);
      slot.model = Parse(text) ? Model{Parse(text), {}} : Model{{}, text};
      return;
    }
    slot.sref = ZrCreateSREF();
    slot.model = Model{};
    if (way == 1) {  // numbers, small and far apart, with or without a text of their own
      Numbers numbers{};
      for (uint32_t& word : numbers) word = NextBelow(256) * 0x01010101u;
      slot.sref->ref = ZrCreateREF();
      std::copy(numbers.begin(), numbers.end(), slot.sref->ref->words);
      slot.model->ref = numbers;
    }
    if (!text.empty()) {  // a text that is not parsed, even if it has the form of numbers
      slot.sref->text = ZrCopyString(string);
      slot.model->text = text;
    }
    Note([&] { return "a new slot: " + DescribeSlot(slot); });
  }

  // Copies into another slot or into itself.
  void Copy(Slot& slot, const Slot& other) {
    if (!other.model) return;
    ZRSREF* copy = nullptr;
    const bool isNothing = !other.model->ref && !other.model->text;
    ClaimResult("ZrCopySREF", ZrCopySREF(other.sref, &copy), isNothing ? 1 : ZR_R_OK);
    Claim((copy == nullptr) == isNothing,
          [&] { return copy == nullptr ? "the copy is null" : "the copy is not null"; });
    const std::optional<Model> model = isNothing ? std::nullopt : other.model;
    ZrDestroySREF(slot.sref);
    slot = {copy, model};
  }

  void CheckOrder(const Slot& left, const Slot& right) {
    const Order expected = Compare(left.model, right.model);
    int32_t order = 9;
    uint8_t equal = 9;
    ClaimResult("ZrCompareSREF_ThreeWay", ZrCompareSREF_ThreeWay(left.sref, right.sref, &order), expected.result);
    ClaimNumber("the sign of the order", (order > 0) - (order < 0), (expected.order > 0) - (expected.order < 0));
    ClaimResult("ZrCompareSREF", ZrCompareSREF(left.sref, right.sref, &equal), expected.result);
    ClaimNumber("the equality", equal, expected.order == 0);
    ClaimNumber("ZRSREFGreater", ZRSREFGreater(left.sref, right.sref), expected.order > 0);
    ClaimNumber("ZRSREFLess", ZRSREFLess(left.sref, right.sref), expected.order < 0);
  }

  void CheckText(const Slot& slot) {
    if (!slot.model) return;
    Owned text;
    ClaimResult("ZrSREFToString", ZrSREFToString(slot.sref, &text.string), ZR_R_OK);
    Claim(text.string != nullptr, [] { return "ZrSREFToString returned no string"; });
    if (text.string == nullptr) return;
    const std::string written(text.string, text.string + ZrStringLen(text));
    const std::string expected = slot.model->ref ? Plain(*slot.model->ref) : slot.model->text.value_or("");
    Claim(written == expected,
          [&] { return "ZrSREFToString gave \"" + written + "\", the model expects \"" + expected + "\""; });
  }

  void CheckAll() {
    for (const Slot& slot : slots_) CheckText(slot);
  }

  std::array<Slot, 4> slots_;
};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CItemAllocator::SetDefaultCap(2);
  CItemAllocator::SetEnabled(true);
  FuzzRequire(CSrefSequence::Run(data, size));
  CItemAllocator::SetEnabled(false);
  return 0;
}
