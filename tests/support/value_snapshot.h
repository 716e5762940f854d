// A copy of a variant at one moment: its record, and the bytes that the record owns. Snapshots compare these bytes and
// format no text. Describe returns the same text as for the variant itself.

#pragma once

#include <string>
#include <string_view>

#include "tests/support/variant_text.h"

class Snapshot {
 public:
  Snapshot() = default;
  explicit Snapshot(const ZRVARIANT& value) { Assign(value); }

  // Replaces this snapshot and reuses its memory.
  void Assign(const ZRVARIANT& value) {
    record_ = value;
    bytes_.clear();
    isTerminated_ = true;
    if (IsNull()) return;
    switch (ValueTag()) {
      case ZR_VT_STR:
        AddText(value.Value.string);
        break;
      case ZR_VT_UUID:
        Add(value.Value.uuid, sizeof(ZRUUID));
        break;
      case ZR_VT_REF:
        Add(value.Value.ref, sizeof(ZRREF));
        break;
      case ZR_VT_SREF:
        bytes_ += static_cast<char>((value.Value.sref->ref != nullptr ? kHasRef : 0) |
                                    (value.Value.sref->text != nullptr ? kHasText : 0));
        if (value.Value.sref->ref != nullptr) Add(value.Value.sref->ref, sizeof(ZRREF));
        if (value.Value.sref->text != nullptr) AddText(value.Value.sref->text);
        break;
      case ZR_VT_BLOB: {
        uint32_t length = 0;
        (void)ZrBlobByteLen(value.Value.blob, &length);
        bytes_.resize(length);
        (void)ZrReadBlobPos(value.Value.blob, bytes_.data(), 0, length);
        break;
      }
    }
  }

  uint16_t Type() const { return record_.Type; }
  bool IsNull() const { return record_.Value.address == nullptr; }
  std::string_view Bytes() const { return bytes_; }    // the bytes that the value owns
  const ZRVARIANT& Record() const { return record_; }  // its pointer to owned bytes may be stale

  // The units of a string, or of the text of an SREF, as bytes. Empty for any other value.
  std::string_view TextBytes() const {
    const std::string_view bytes = bytes_;
    if (IsNull() || (Type() != ZR_VT_STR && Type() != ZR_VT_SREF)) return {};
    if (Type() == ZR_VT_STR) return bytes;
    return (bytes[0] & kHasText) != 0 ? bytes.substr(1 + ((bytes[0] & kHasRef) != 0 ? sizeof(ZRREF) : 0))
                                      : std::string_view();
  }

  // Compares the bytes that a value owns and not their address. A string of whole units without its terminator is not
  // equal to any value.
  friend bool operator==(const Snapshot& left, const Snapshot& right) {
    const ZRVARIANT &l = left.record_, &r = right.record_;
    if (l.Type != r.Type || !left.isTerminated_ || !right.isTerminated_) return false;
    if (l.Reserved1 != r.Reserved1 || l.Reserved2 != r.Reserved2 || l.Reserved3 != r.Reserved3) return false;
    if (!left.OwnsBytes()) return l.Value.ui8 == r.Value.ui8;
    return left.IsNull() == right.IsNull() && left.bytes_ == right.bytes_;
  }

  friend std::string Describe(const Snapshot& snapshot) {
    if (!snapshot.OwnsBytes() || snapshot.IsNull()) return Describe(snapshot.record_);
    OwnedVariant value;
    static_cast<ZRVARIANT&>(value) = snapshot.record_;
    value.Value = snapshot.RestoredPayload();
    return Describe(value) + (snapshot.isTerminated_ ? "" : " without its terminator");
  }

 private:
  static constexpr char kHasRef = 1, kHasText = 2;

  // The tag of a record that contains a value; 0 for a reference or an array.
  int ValueTag() const { return (Type() & (ZR_VT_ARRAY | ZR_VT_BYREF)) == 0 ? Type() & ZR_VT_TYPEMASK : 0; }
  bool OwnsBytes() const {
    const int tag = ValueTag();
    return tag == ZR_VT_STR || tag == ZR_VT_UUID || tag == ZR_VT_REF || tag == ZR_VT_SREF || tag == ZR_VT_BLOB;
  }

  void Add(const void* bytes, std::size_t size) { bytes_.append(static_cast<const char*>(bytes), size); }
  void AddText(ZRSTR string) {
    const uint32_t size = ZrStringByteLen(string);
    Add(string, size);
    isTerminated_ = size % sizeof(WCHAR) != 0 || string[size / sizeof(WCHAR)] == 0;
  }

  static ZRSTR StringFrom(std::string_view bytes) {
    Units units(bytes.size() / sizeof(WCHAR), WCHAR{0});
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(WCHAR));
    return ZrCopyString(Owned(units));
  }

  ZRVARIANTVALUE RestoredPayload() const {
    ZRVARIANTVALUE value = {};
    switch (ValueTag()) {
      case ZR_VT_STR:
        value.string = StringFrom(bytes_);
        break;
      case ZR_VT_UUID:
        value.uuid = ZrCreateUUID();
        std::memcpy(value.uuid, bytes_.data(), sizeof *value.uuid);
        break;
      case ZR_VT_REF:
        value.ref = ZrCreateREF();
        std::memcpy(value.ref, bytes_.data(), sizeof *value.ref);
        break;
      case ZR_VT_SREF:
        value.sref = ZrCreateSREF();
        if ((bytes_[0] & kHasRef) != 0) {
          value.sref->ref = ZrCreateREF();
          std::memcpy(value.sref->ref, bytes_.data() + 1, sizeof *value.sref->ref);
        }
        if ((bytes_[0] & kHasText) != 0) value.sref->text = StringFrom(TextBytes());
        break;
      case ZR_VT_BLOB:
        value.blob = BlobOf(Hexadecimal(bytes_));
        break;
    }
    return value;
  }

  ZRVARIANT record_ = ZR_VARIANT_INIT;
  std::string bytes_;
  bool isTerminated_ = true;
};
