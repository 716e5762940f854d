// Variants, compared with the dynamic values of the frameworks and with std::variant. GValue has no comparison, so it
// has no rows there.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <variant>

#include "variant_fixtures.h"

// ---- Creation and copy ----------------------------------------------------------------------------------------------

static void InitRows() {
  const std::string operation = "variant init+clear";
  Row(operation, "ZrCore", [] {
    ZRVARIANT variant;
    ZrVariantInit(&variant);
    Consume(ZrVariantClear(&variant));
  });
  Row(operation, "std::variant", [] {
    Visited value;
    Consume(value);
  });
#if BENCH_QT
  Row(operation, "QVariant", [] {
    QVariant value;
    Consume(value);
  });
#endif
#if BENCH_POCO
  Row(operation, "Poco::Dynamic::Var", [] {
    Poco::Dynamic::Var value;
    Consume(value);
  });
#endif
  Row(operation, "lower bound", [] {
    ZRVARIANT variant = ZR_VARIANT_INIT;
    Consume(variant);
  });
}

// Registers a row that copies a value and destroys the copy.
template <class Value>
static void CopyRow(const std::string& operation, const std::string& library, const Value& value) {
  Row(operation, library, [value] {
    Value copy(value);
    Consume(copy);
  });
}

#if BENCH_GLIB
static void GValueCopyRow(const std::string& operation, const GValueHolder& source) {
  Row(operation, "GValue", [source] {
    GValue copy = G_VALUE_INIT;
    g_value_init(&copy, G_VALUE_TYPE(source.get()));
    g_value_copy(source.get(), &copy);
    Consume(copy);
    g_value_unset(&copy);
  });
}
#endif

static void ZrCoreCopyRow(const std::string& operation, const Holder& source) {
  Row(operation, "ZrCore", [source] {
    ZRVARIANT copy = ZR_VARIANT_INIT;
    Consume(ZrVariantCopy(&copy, source.get()));
    ZrVariantClear(&copy);
  });
}

static void AtomicPairRow(const std::string& operation) {
  Row(operation, "lower bound", [count = std::make_shared<std::atomic<uint32_t>>(1)] {
    count->fetch_add(1);
    Consume(count->fetch_sub(1));
  });
}

static void CopyRows() {
  std::string operation = "variant copy int32+clear";
  ZrCoreCopyRow(operation, HoldInteger(kInteger));
  CopyRow(operation, "std::variant", Visited(kInteger));
#if BENCH_QT
  CopyRow(operation, "QVariant", QVariant(kInteger));
#endif
#if BENCH_GLIB
  GValueCopyRow(operation, HoldGValue(G_TYPE_INT, g_value_set_int, kInteger));
#endif
#if BENCH_POCO
  CopyRow(operation, "Poco::Dynamic::Var", Poco::Dynamic::Var(kInteger));
#endif
  Row(operation, "lower bound", [source = HoldInteger(kInteger)] {
    const ZRVARIANT copy = *source;
    Consume(copy);
  });

  operation = "variant copy text of 32 units+clear";
  ZrCoreCopyRow(operation, HoldText(kSentence));
  CopyRow(operation, "std::variant of shared_ptr", VisitedText(kSentence));
#if BENCH_QT
  CopyRow(operation, "QVariant", QVariant(QString(kSentence)));
#endif
#if BENCH_GLIB
  GValueCopyRow(operation, HoldGValue(G_TYPE_STRING, g_value_set_string, kSentence));
#endif
#if BENCH_POCO
  CopyRow(operation, "Poco::Dynamic::Var", Poco::Dynamic::Var(std::string(kSentence)));
#endif
  AtomicPairRow(operation);

  operation = "variant copy blob of 64 B+clear";
  ZrCoreCopyRow(operation, HoldConverted(HoldText(kSentence), ZR_VT_BLOB));
#if BENCH_QT
  CopyRow(operation, "QVariant(QByteArray)", QVariant(QByteArray(64, 'x')));
#endif
#if BENCH_GLIB
  GValueCopyRow(operation, HoldGValue(G_TYPE_BYTES, g_value_take_boxed, g_bytes_new(kSentence, sizeof kSentence)));
#endif
  AtomicPairRow(operation);

  operation = "variant copy UUID+clear";
  ZrCoreCopyRow(operation, HoldConverted(HoldText(kUuidText), ZR_VT_UUID));
#if BENCH_QT
  CopyRow(operation, "QVariant(QUuid)", QVariant(QUuid::createUuid()));
#endif
  Row(operation, "lower bound by contract", [] {
    void* record = std::malloc(sizeof(ZRUUID));
    std::memset(record, 1, sizeof(ZRUUID));
    Consume(record);
    std::free(record);
  });
}

// ---- Comparison -----------------------------------------------------------------------------------------------------

static void ZrCoreCompareRow(const std::string& operation, const Holder& left, const Holder& right, bool expected) {
  uint8_t checked = 2;
  Require(ZrVariantCompare(left.get(), right.get(), &checked) == ZR_R_OK && checked == expected,
          "two variants compare as expected");
  Row(operation, "ZrCore", [left, right] {
    uint8_t equal = 0;
    Consume(ZrVariantCompare(left.get(), right.get(), &equal));
    Consume(equal);
  });
}

template <class Value>
static void EqualRow(const std::string& operation, const std::string& library, const Value& left, const Value& right) {
  Row(operation, library, [left, right] {
    Consume(left);
    Consume(right);
    Consume(left == right);
  });
}

static void CompareRows() {
  std::string operation = "variant compare two int32";
  ZrCoreCompareRow(operation, HoldInteger(kInteger), HoldInteger(kInteger), true);
#if BENCH_QT
  EqualRow(operation, "QVariant", QVariant(kInteger), QVariant(kInteger));
#endif
#if BENCH_POCO
  EqualRow(operation, "Poco::Dynamic::Var", Poco::Dynamic::Var(kInteger), Poco::Dynamic::Var(kInteger));
#endif
  EqualRow(operation, "std::variant", Visited(kInteger), Visited(kInteger));
  Row(operation, "lower bound", [left = HoldInteger(kInteger), right = HoldInteger(kInteger)] {
    Consume(std::memcmp(left.get(), right.get(), sizeof(ZRVARIANT)) == 0);
  });

  operation = "variant compare int32 with double";
  ZrCoreCompareRow(operation, HoldInteger(kInteger), HoldReal(kInteger), false);
#if BENCH_QT
  EqualRow(operation, "QVariant", QVariant(kInteger), QVariant(double{kInteger}));
#endif
#if BENCH_POCO
  EqualRow(operation, "Poco::Dynamic::Var", Poco::Dynamic::Var(kInteger), Poco::Dynamic::Var(double{kInteger}));
#endif
  EqualRow(operation, "std::variant", Visited(kInteger), Visited(double{kInteger}));

  operation = "variant compare two doubles";
  ZrCoreCompareRow(operation, HoldReal(kReal), HoldReal(kReal), true);
#if BENCH_QT
  EqualRow(operation, "QVariant", QVariant(kReal), QVariant(kReal));
#endif
#if BENCH_POCO
  EqualRow(operation, "Poco::Dynamic::Var", Poco::Dynamic::Var(kReal), Poco::Dynamic::Var(kReal));
#endif
  EqualRow(operation, "std::variant", Visited(kReal), Visited(kReal));

  operation = "variant compare texts of 32 units";
  ZrCoreCompareRow(operation, HoldText(kSentence), HoldText(kSentence), true);
#if BENCH_QT
  // Two separate strings. If they shared one block, QString would compare only the addresses.
  EqualRow(operation, "QVariant", QVariant(QString(kSentence)), QVariant(QString(kSentence)));
#endif
#if BENCH_POCO
  EqualRow(operation, "Poco::Dynamic::Var (char)", Poco::Dynamic::Var(std::string(kSentence)),
           Poco::Dynamic::Var(std::string(kSentence)));
#endif
  using Valued = std::variant<std::monostate, int32_t, double, std::u16string>;
  EqualRow(operation, "std::variant (text by value)", Valued(Widened(kSentence)), Valued(Widened(kSentence)));
  Row(operation, "lower bound", [left = Widened(kSentence), right = Widened(kSentence)] {
    Consume(std::memcmp(left.data(), right.data(), left.size() * sizeof(WCHAR)) == 0);
  });
}

void VariantRows() {
  InitRows();
  CopyRows();
  CompareRows();
}
