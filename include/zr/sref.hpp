// Sref is a reference by six numbers or by text (zrcore/reference.h).
//
//     zr::Sref byNumbers = zr::Sref::Parse(u"1.2.3.4.5.6");
//     zr::Sref byText = zr::Sref::Parse(u"Mars");
//
// An Sref owns a ZRSREF record; null is a reference to nothing. A copy copies the record, which throws std::bad_alloc
// when out of memory. A moved-from Sref is null.
//
// There is no operator < and no hash. The order of references is not transitive (ref.hpp), and a reference by numbers
// equals a reference by the text of these numbers.

#ifndef ZR_SREF_HPP
#define ZR_SREF_HPP

#include <cstdint>
#include <utility>

#include "zr/ref.hpp"
#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zrcore/reference.h"

namespace zr {

/// Sref owns a reference by numbers or by text, or null, which is a reference to nothing.
class Sref {
 public:
  Sref() noexcept = default;
  /// Makes a reference by numbers. Throws std::bad_alloc when out of memory.
  explicit Sref(const Ref& ref) : Sref() {
    const ZRSREF record = {const_cast<Ref*>(&ref), nullptr};  // only read
    (void)ZrCopySREF(&record, &sref_);
  }

  /// Copies the record. A record with neither numbers nor a text becomes null.
  Sref(const Sref& other) {
    if (other.sref_ != nullptr) (void)ZrCopySREF(other.sref_, &sref_);  // null for a record without fields
  }
  Sref(Sref&& other) noexcept : sref_(std::exchange(other.sref_, nullptr)) {}
  Sref& operator=(Sref other) noexcept {
    std::swap(sref_, other.sref_);
    return *this;
  }
  ~Sref() { Destroy(sref_); }

  /// Parse makes a reference by numbers if the text is that of a Ref, else a reference by text. Null stays null. Throws
  /// std::bad_alloc when out of memory.
  [[nodiscard]] static Sref Parse(const String& text) {
    Sref made;
    if (text.Get() != nullptr) (void)ZrStringToSREF(text.Get(), &made.sref_);
    return made;
  }

  /// Adopt takes a record that the caller owns.
  [[nodiscard]] static Sref Adopt(ZRSREF* sref) noexcept {
    Sref made;
    made.sref_ = sref;
    return made;
  }
  /// Get lends the record to functions of the C boundary.
  [[nodiscard]] const ZRSREF* Get() const noexcept { return sref_; }
  /// Put destroys the record and returns the address for an out-parameter.
  [[nodiscard]] ZRSREF** Put() noexcept {
    Destroy(std::exchange(sref_, nullptr));
    return &sref_;
  }
  /// Detach gives the record to the caller, who destroys it with ZrDestroySREF.
  [[nodiscard]] ZRSREF* Detach() noexcept { return std::exchange(sref_, nullptr); }

  /// ToString returns the numbers with points between them or, without numbers, the text. It is empty for null. Throws
  /// std::bad_alloc when out of memory.
  [[nodiscard]] String ToString() const {
    String text;
    if (sref_ != nullptr && (Failed(ZrSREFToString(sref_, text.Put())) || text.Get() == nullptr)) detail::OutOfMemory();
    return text;
  }

  /// Compare returns a negative number, 0 or a positive number. It is valid even where the export returns a failure,
  /// which it does for a Ref beside a text that is not that of a Ref.
  [[nodiscard]] static int32_t Compare(const Sref& left, const Sref& right) noexcept {
    int32_t order = 0;
    (void)ZrCompareSREF_ThreeWay(left.sref_, right.sref_, &order);
    return order;
  }
  /// Two references are equal if Compare returns 0.
  friend bool operator==(const Sref& left, const Sref& right) noexcept { return Compare(left, right) == 0; }
  friend bool operator!=(const Sref& left, const Sref& right) noexcept { return Compare(left, right) != 0; }

 private:
  // The export ignores null too, but the compiler sees this test, so that a moved-from Sref costs no call.
  static void Destroy(ZRSREF* sref) noexcept {
    if (sref != nullptr) ZrDestroySREF(sref);
  }

  ZRSREF* sref_ = nullptr;
};
static_assert(sizeof(Sref) == sizeof(ZRSREF*), "an Sref is its handle");

}  // namespace zr

#endif
