// Tests what all owners of the C++ layer have in common: copies, moves, Put, Detach and Adopt. Samples share one string
// and one object, so a reference that is lost or released twice shows in their counts. The address sanitizer finds the
// other leaks.

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "tests/support/variant_text.h"
#include "zr/zr.hpp"

static const zr::String kText(W("shared"));

// Makes two different samples of an owner, and describes one as text. An owner without content is described as "".
template <class T>
struct Sample;

template <>
struct Sample<zr::String> {
  static zr::String First() { return kText; }
  static zr::String Second() { return zr::String(W("second")); }
  static std::string Describe(const zr::String& string) { return string.ToUtf8(); }
};
template <>
struct Sample<zr::Blob> {
  static zr::Blob First() { return {1, 2}; }
  static zr::Blob Second() { return {3}; }
  static std::string Describe(const zr::Blob& blob) { return Hexadecimal(BytesOf(blob.Get())); }
};
template <>
struct Sample<zr::Sref> {
  static zr::Sref First() { return zr::Sref::Parse(kText); }
  static zr::Sref Second() { return zr::Sref(zr::Ref(1, 2, 3, 4, 5, 6)); }
  static std::string Describe(const zr::Sref& sref) { return sref.ToString().ToUtf8(); }
};
template <>
struct Sample<zr::Variant> {
  static zr::Variant First() { return kText; }
  static zr::Variant Second() { return 2.5; }
  static std::string Describe(const zr::Variant& variant) {
    return variant.IsEmpty() ? "" : ::Describe(*variant.Get());
  }
};
template <>
struct Sample<zr::Array<zr::String>> {
  static zr::Array<zr::String> First() { return {kText, kText}; }
  static zr::Array<zr::String> Second() { return {W("second")}; }
  static std::string Describe(const zr::Array<zr::String>& array) {
    return array.Size() != 0 ? array.At(array.Size() - 1)->ToUtf8() + std::to_string(array.Size()) : "";
  }
};
template <>
struct Sample<zr::AnyArray> {
  static zr::AnyArray First() { return Sample<zr::Array<zr::String>>::First(); }
  static zr::AnyArray Second() { return Sample<zr::Array<zr::String>>::Second(); }
  static std::string Describe(const zr::AnyArray& array) {
    return Sample<zr::Array<zr::String>>::Describe(zr::Array<zr::String>::From(array).ValueOr({}));
  }
};
template <>
struct Sample<zr::Ptr<IZrUnknown>> {
  static zr::Ptr<IZrUnknown> First() { return zr::Ptr<IZrUnknown>::Share(&g_object); }
  static zr::Ptr<IZrUnknown> Second() {
    static CountedObject other;
    return zr::Ptr<IZrDispatch>::Share(&other);
  }
  static std::string Describe(const zr::Ptr<IZrUnknown>& object) {
    return !object ? "" : object.Get() == &g_object ? "first" : "second";
  }
};
template <>
struct Sample<zr::Memory> {
  static zr::Memory First() { return Of("first"); }
  static zr::Memory Second() { return Of("second"); }
  static std::string Describe(const zr::Memory& block) {
    return block.Get() != nullptr ? static_cast<const char*>(block.Get()) : "";
  }
  static zr::Memory Of(const char* text) {
    zr::Memory block(static_cast<uint32_t>(std::strlen(text)) + 1);
    std::strcpy(static_cast<char*>(block.Get()), text);
    return block;
  }
};

template <class T>
class Owners : public testing::Test {
 protected:
  static_assert(std::is_nothrow_default_constructible_v<T> && std::is_nothrow_move_constructible_v<T>);
  static_assert(std::is_nothrow_move_assignable_v<T> && std::is_nothrow_destructible_v<T>);
  static_assert(sizeof(T) == (std::is_same_v<T, zr::Variant> ? 16 : sizeof(void*)));

  void TearDown() override {
    EXPECT_EQ(kText.ReferenceCount(), 1u);
    EXPECT_EQ(g_object.references, 0u);
  }
  static T First() { return Sample<T>::First(); }
  static T Second() { return Sample<T>::Second(); }
  static std::string Text(const T& owner) { return Sample<T>::Describe(owner); }
  const std::string first_ = Text(First()), second_ = Text(Second());
};
using OwnerTypes = testing::Types<zr::String, zr::Blob, zr::Sref, zr::Variant, zr::AnyArray, zr::Array<zr::String>,
                                  zr::Ptr<IZrUnknown>, zr::Memory>;
TYPED_TEST_SUITE(Owners, OwnerTypes);

TYPED_TEST(Owners, AMovedFromOwnerIsEmptyAndUsable) {
  TypeParam from = this->First();
  TypeParam to = std::move(from);
  EXPECT_EQ(this->Text(to), this->first_);
  EXPECT_EQ(this->Text(from), "");
  from = this->Second();
  EXPECT_EQ(this->Text(from), this->second_);
  to = std::move(from);  // releases the old value at once, rather than giving it to `from`
  EXPECT_EQ(this->Text(to), this->second_);
  EXPECT_EQ(this->Text(from), "");
  EXPECT_EQ(kText.ReferenceCount(), 1u);
  EXPECT_EQ(g_object.references, 0u);
  to = std::move(from);
  EXPECT_EQ(this->Text(to), "");
}

TYPED_TEST(Owners, AssignmentToItselfKeepsTheValue) {
  TypeParam owner = this->First();
  TypeParam& same = owner;
  owner = std::move(same);
  EXPECT_EQ(this->Text(owner), this->first_);
  std::swap(owner, same);
  EXPECT_EQ(this->Text(owner), this->first_);
  if constexpr (std::is_copy_assignable_v<TypeParam>) owner = same;
  EXPECT_EQ(this->Text(owner), this->first_);
}

TYPED_TEST(Owners, CopiesAreIndependent) {
  if constexpr (std::is_copy_constructible_v<TypeParam>) {
    TypeParam owner = this->First();
    TypeParam copy = owner;
    const TypeParam copyOfCopy = copy;
    copy = this->Second();
    EXPECT_EQ(this->Text(owner), this->first_);
    std::swap(owner, copy);
    EXPECT_EQ(this->Text(owner) + this->Text(copy), this->second_ + this->first_);
    owner = copyOfCopy;
    copy = TypeParam();
    const TypeParam copyOfEmpty = copy;
    EXPECT_EQ(this->Text(owner) + this->Text(copy) + this->Text(copyOfEmpty), this->first_);
    EXPECT_TRUE(copy == copyOfEmpty && owner == copyOfCopy && owner != copy);
  }
}

TYPED_TEST(Owners, PutReleasesAndDetachGives) {
  TypeParam owner = this->First();
  if constexpr (requires { TypeParam::Adopt(owner.Detach()); }) {
    auto raw = owner.Detach();
    EXPECT_EQ(this->Text(owner), "");
    owner = TypeParam::Adopt(raw);
    EXPECT_EQ(this->Text(owner), this->first_);
  }
  if constexpr (requires { owner.Put(); }) {
    auto* address = owner.Put();
    EXPECT_EQ(this->Text(owner), "");
    EXPECT_EQ(kText.ReferenceCount() + g_object.references, 1u);
    *address = this->Second().Detach();
    EXPECT_EQ(this->Text(owner), this->second_);
  }
}

// Plain values are their records: they can be copied as bytes and passed where the C boundary wants a record.
template <class T, class Record>
constexpr bool kIsPlain =
    sizeof(T) == sizeof(Record) &&
    std::is_trivially_copyable_v<T>&& std::is_standard_layout_v<T>&& std::is_nothrow_default_constructible_v<T>;
static_assert(kIsPlain<zr::Uuid, ZRUUID> && kIsPlain<zr::Ref, ZRREF> && kIsPlain<zr::DateTime, ZRDATETIME> &&
              kIsPlain<zr::TimeSpan, ZRTIMESPAN> && kIsPlain<zr::Currency, ZRCY>);
static_assert(sizeof(zr::Lock) == sizeof(ZRCRITICALSECTION) && !std::is_copy_constructible_v<zr::Memory> &&
              !std::is_copy_constructible_v<zr::Lent<int>> && !std::is_copy_constructible_v<zr::Registration>);

TEST(Memory, ResizingKeepsTheContentAndZeroFreesIt) {
  zr::Memory block = Sample<zr::Memory>::Of("first");
  block.Resize(100);
  EXPECT_EQ(Sample<zr::Memory>::Describe(block), "first");
  block.Resize(0);
  EXPECT_EQ(block.Get(), nullptr);
  block.Resize(4);
  EXPECT_EQ(Sample<zr::Memory>::Describe(block), "");
}
