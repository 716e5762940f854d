// Bytes per object: the variable that a program keeps, the heap blocks that belong to it, and what the allocator adds
// to them for its header and for rounding. For example, an object in the heap costs at least the 8 bytes of its pointer
// and the smallest block, 32 bytes.
//
// Each figure is the average of many objects that live at the same time, made in a new process. The heap is measured by
// the C library's own statistics.

#include <malloc.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "array_fixtures.h"
#include "component_host.h"
#include "figure.h"
#include "variant_fixtures.h"
#include "zrcore/zrcore.h"

#if BENCH_QT
#include <QByteArray>
#include <QPluginLoader>
#include <QRecursiveMutex>

#include "modules/qt_plugin.h"
#endif
#if BENCH_ICU
#include <unicode/unistr.h>
#endif
#if BENCH_BOOST
#include <boost/uuid/uuid.hpp>
#endif
#if BENCH_POCO
#include <Poco/ClassLoader.h>
#include <Poco/Mutex.h>
#include <Poco/UUID.h>

#include "modules/poco_name.h"
#endif

static constexpr std::size_t kObjects = 10'000;
static constexpr std::size_t kLargeObjects = 1000;

static std::size_t HeapInUse() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

// Registers the figure of objects that `make` returns. They are never destroyed. `make` must not keep memory that is
// not part of the object, except in its first call.
template <class Make>
static void SizeRow(const std::string& operation, const std::string& library, Make make, std::size_t count = kObjects) {
  FigureRow(operation, library, "bytes", [make, count] {
    using Object = decltype(make());
    auto* objects = static_cast<Object*>(::operator new(count * sizeof(Object)));
    (void)make();
    const std::size_t before = HeapInUse();
    for (std::size_t index = 0; index < count; ++index) new (objects + index) Object(make());
    const std::size_t used = HeapInUse() - before;
    Consume(objects);
    // Rounding leaves out the few blocks that were free before or are kept for reuse.
    return static_cast<double>(sizeof(Object) + (used + count / 2) / count);
  });
}

// The lower bound: a pointer to a block with the content.
static void BlockRow(const std::string& operation, const std::string& library, std::size_t size) {
  SizeRow(operation, library, [size] { return std::malloc(size); });
}

static constexpr std::size_t kStringHeader = 8;

static void StringRows16() {
  static const std::u16string text = u"sixteen units of";
  std::string operation = "size of a string of 16 units";
  SizeRow(operation, "ZrCore", [] { return ZrCreateString(text.c_str()); });
  SizeRow(operation, "std::u16string", [] { return std::u16string(text.c_str()); });
  SizeRow(operation, "std::shared_ptr<u16string>", [] { return std::make_shared<const std::u16string>(text); });
  SizeRow(operation, "std::string (char)", [] { return std::string(text.begin(), text.end()); });
#if BENCH_QT
  SizeRow(operation, "QString", [] { return QString::fromStdU16String(text); });
#endif
#if BENCH_ICU
  SizeRow(operation, "icu::UnicodeString", [] { return icu::UnicodeString(text.c_str()); });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GRefString (char)", [] { return g_ref_string_new("sixteen units of"); });
#endif
  BlockRow(operation, "lower bound", (text.size() + 1) * sizeof(WCHAR));
  BlockRow(operation, "lower bound by contract", kStringHeader + (text.size() + 1) * sizeof(WCHAR));

  operation = "size of a copied string of 16 units";
  SizeRow(operation, "ZrCore", [] {
    static ZRSTR original = ZrCreateString(text.c_str());
    return ZrCopyString(original);
  });
  SizeRow(operation, "std::u16string", [] { return std::u16string(text); });
  SizeRow(operation, "std::shared_ptr<u16string>", [] {
    static const SharedText original = std::make_shared<const std::u16string>(text);
    return SharedText(original);
  });
#if BENCH_QT
  SizeRow(operation, "QString", [] {
    static const QString original = QString::fromStdU16String(text);
    return QString(original);
  });
#endif
#if BENCH_ICU
  SizeRow(operation, "icu::UnicodeString", [] {
    static const icu::UnicodeString original(text.c_str());
    return icu::UnicodeString(original);
  });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GRefString (char)", [] {
    static char* original = g_ref_string_new("sixteen units of");
    return g_ref_string_acquire(original);
  });
#endif
}

// A handle on an element, both of two pointers. Each copy has its own.
static void* LowerBoundBlobCopy() {
  Consume(std::malloc(2 * sizeof(void*)));
  return std::malloc(2 * sizeof(void*));
}

// Copies share a block, which has at least length, position and the pointer to a buffer, and the buffer.
static void* LowerBoundBlob(std::size_t size) {
  Consume(std::malloc(2 * sizeof(uint32_t) + sizeof(void*)));
  Consume(std::malloc((size / 1024 + 1) * 1024));
  return LowerBoundBlobCopy();
}

static void BlobSizeRows(std::size_t size) {
  const std::string suffix = size < 1024 ? std::to_string(size) + " B" : std::to_string(size / 1024) + " KiB";
  std::string operation = "size of a blob of " + suffix;
  const auto bytes = std::make_shared<std::vector<uint8_t>>(size, uint8_t{7});
  SizeRow(operation, "ZrCore", [bytes] { return ZrCreateBlob(static_cast<uint32_t>(bytes->size()), bytes->data()); });
  SizeRow(operation, "std::vector", [bytes] { return std::vector<uint8_t>(*bytes); });
#if BENCH_QT
  SizeRow(operation, "QByteArray", [bytes] {
    return QByteArray(reinterpret_cast<const char*>(bytes->data()), static_cast<qsizetype>(bytes->size()));
  });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GBytes", [bytes] { return g_bytes_new(bytes->data(), bytes->size()); });
  SizeRow(operation, "GByteArray", [bytes] {
    return g_byte_array_append(g_byte_array_new(), bytes->data(), static_cast<guint>(bytes->size()));
  });
#endif
  BlockRow(operation, "lower bound", size);
  SizeRow(operation, "lower bound by contract", [size] { return LowerBoundBlob(size); });

  operation = "size of a copied blob of " + suffix;
  SizeRow(operation, "ZrCore", [bytes] {
    static ZRBLOB original = ZrCreateBlob(static_cast<uint32_t>(bytes->size()), bytes->data());
    return ZrCopyBlob(original);
  });
  SizeRow(operation, "std::vector", [bytes] { return std::vector<uint8_t>(*bytes); });
#if BENCH_QT
  SizeRow(operation, "QByteArray", [bytes] {
    static const QByteArray original(reinterpret_cast<const char*>(bytes->data()),
                                     static_cast<qsizetype>(bytes->size()));
    return QByteArray(original);
  });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GBytes", [bytes] {
    static GBytes* original = g_bytes_new(bytes->data(), bytes->size());
    return g_bytes_ref(original);
  });
#endif
  SizeRow(operation, "lower bound by contract", [] { return LowerBoundBlobCopy(); });
}

static void IdentifierRows() {
  std::string operation = "size of a UUID";
  SizeRow(operation, "ZrCore", [] { return ZrCreateUUID(); });
  SizeRow(operation, "ZrCore (ZRUUID by value)", [] { return ZRUUID(); });
#if BENCH_QT
  SizeRow(operation, "QUuid", [] { return QUuid(); });
#endif
#if BENCH_BOOST
  SizeRow(operation, "boost::uuids::uuid", [] { return boost::uuids::uuid(); });
#endif
#if BENCH_POCO
  SizeRow(operation, "Poco::UUID", [] { return Poco::UUID(); });
#endif
  BlockRow(operation, "lower bound by contract", sizeof(ZRUUID));

  // Libraries have no such type, so the peers are the containers in which a program would keep the numbers or the text.
  static const std::u16string text = u"1.2.3.4.5.6";
  operation = "size of a REF";
  SizeRow(operation, "ZrCore", [] { return ZrCreateREF(); });
  SizeRow(operation, "std::vector of 6 numbers", [] { return std::vector<uint32_t>(6); });
#if BENCH_QT
  SizeRow(operation, "QList of 6 numbers", [] { return QList<uint32_t>(6); });
#endif
  BlockRow(operation, "lower bound by contract", sizeof(ZRREF));

  operation = "size of an SREF";
  SizeRow(operation, "ZrCore", [] {
    static ZRSTR written = ZrCreateString(text.c_str());
    ZRSREF* made = nullptr;
    Require(ZrStringToSREF(written, &made) == ZR_R_OK && made != nullptr, "an SREF's text is read");
    return made;
  });
  SizeRow(operation, "std::u16string", [] { return std::u16string(text); });
#if BENCH_QT
  SizeRow(operation, "QString", [] { return QString::fromStdU16String(text); });
#endif
  SizeRow(operation, "lower bound by contract", [] {
    auto* record = static_cast<void**>(std::malloc(sizeof(ZRSREF)));
    *record = std::malloc(sizeof(ZRREF));  // the text is the one of a REF
    return record;
  });
}

static void VariantSizeRows() {
  std::string operation = "size of a variant with an int32";
  SizeRow(operation, "ZrCore", [] { return *HoldInteger(kInteger); });
  SizeRow(operation, "std::variant", [] { return Visited(kInteger); });
#if BENCH_QT
  SizeRow(operation, "QVariant", [] { return QVariant(kInteger); });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GValue", [] {
    GValue value = G_VALUE_INIT;
    g_value_init(&value, G_TYPE_INT);
    return value;
  });
  SizeRow(operation, "GVariant", [] { return g_variant_ref_sink(g_variant_new_int32(kInteger)); });
#endif
#if BENCH_POCO
  SizeRow(operation, "Poco::Dynamic::Var", [] { return Poco::Dynamic::Var(kInteger); });
#endif

  operation = "size of a variant with a text of 32 units";
  SizeRow(operation, "ZrCore", [] {
    ZRVARIANT variant = Tagged(ZR_VT_STR);
    variant.Value.string = ZrCreateString(u"a sentence of thirty-two units.!");
    return variant;
  });
  SizeRow(operation, "std::variant of shared_ptr", [] { return VisitedText(kSentence); });
#if BENCH_QT
  SizeRow(operation, "QVariant", [] { return QVariant(QString(kSentence)); });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GValue (char)", [] {
    GValue value = G_VALUE_INIT;
    g_value_init(&value, G_TYPE_STRING);
    g_value_set_string(&value, kSentence);
    return value;
  });
  SizeRow(operation, "GVariant (char)", [] { return g_variant_ref_sink(g_variant_new_string(kSentence)); });
#endif
#if BENCH_POCO
  SizeRow(operation, "Poco::Dynamic::Var (char)", [] { return Poco::Dynamic::Var(std::string(kSentence)); });
#endif
}

static void ArraySizeRows(uint32_t count) {
  const std::string operation = "size of an " + Elements(count, "doubles");
  const std::size_t objects = count < kFew ? kObjects : kLargeObjects;
  SizeRow(
      operation, "ZrCore", [count] { return CArray(ZR_VT_R8, count); }, objects);
  SizeRow(
      operation, "std::vector", [count] { return std::vector<double>(count); }, objects);
#if BENCH_QT
  SizeRow(
      operation, "QList", [count] { return QList<double>(count); }, objects);
#endif
#if BENCH_GLIB
  SizeRow(
      operation, "GArray", [count] { return HoldGArray<double>(count); }, objects);
  SizeRow(
      operation, "GVariant",
      [count] {
        static const std::vector<double> zeros(kMany);
        return g_variant_ref_sink(
            g_variant_new_fixed_array(G_VARIANT_TYPE_DOUBLE, zeros.data(), count, sizeof(double)));
      },
      objects);
#endif
  BlockRow(operation, "lower bound", count * sizeof(double));
}

static void VariantArraySizeRows(uint32_t count) {
  std::string operation = "size of an " + Elements(count, "variants with an int32");
  const std::size_t objects = count < kFew ? kObjects : kLargeObjects;
  SizeRow(
      operation, "ZrCore",
      [count] {
        return FilledArray<ZRVARIANT>(ZR_VT_VARIANT, count, [](uint32_t index) {
          ZRVARIANT variant = Tagged(ZR_VT_I4);
          variant.Value.i4 = IntegerAt(index);
          return variant;
        });
      },
      objects);
  SizeRow(
      operation, "std::vector<std::variant>", [count] { return Filled<std::vector<Visited>>(count, IntegerAt); },
      objects);
#if BENCH_QT
  SizeRow(
      operation, "QVariantList", [count] { return Filled<QVariantList>(count, IntegerAt); }, objects);
#endif
#if BENCH_POCO
  SizeRow(
      operation, "std::vector<Poco::Dynamic::Var>",
      [count] { return Filled<std::vector<Poco::Dynamic::Var>>(count, IntegerAt); }, objects);
#endif
  BlockRow(operation, "lower bound by contract", count * sizeof(ZRVARIANT));

  operation = "size of an " + Elements(count, "texts of 32 units");
  static constexpr auto at = [](uint32_t index) { return SentenceAt(index).substr(0, 32); };
  SizeRow(
      operation, "ZrCore", [count] { return FilledArray<ZRSTR>(ZR_VT_STR, count, at); }, objects);
  SizeRow(
      operation, "std::vector<std::u16string>", [count] { return Filled<std::vector<std::u16string>>(count, at); },
      objects);
#if BENCH_QT
  SizeRow(
      operation, "QStringList", [count] { return Filled<QList<QString>>(count, at); }, objects);
#endif
}

static void LockSizeRows() {
  const std::string operation = "size of a lock";
  SizeRow(operation, "ZrCore", [] {
    ZRCRITICALSECTION section = nullptr;
    Require(ZR_SUCCEEDED(ZrInitializeCriticalSection(&section)), "a lock is made");
    return section;
  });
  SizeRow(operation, "std::recursive_mutex", [] { return std::recursive_mutex(); });
#if BENCH_QT
  SizeRow(operation, "QRecursiveMutex", [] { return QRecursiveMutex(); });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GRecMutex", [] {
    GRecMutex mutex;
    g_rec_mutex_init(&mutex);
    g_rec_mutex_lock(&mutex);  // allocates
    g_rec_mutex_unlock(&mutex);
    return mutex;
  });
#endif
#if BENCH_POCO
  SizeRow(operation, "Poco::Mutex", [] { return Poco::Mutex(); });
#endif
}

static void ComponentSizeRows() {
  const std::string operation = "size of an object of a loaded module";
  SizeRow(operation, "ZrCore", [] {
    static const CWidgetHost* host = new CWidgetHost;
    Consume(host);
    const ZRUUID id = WidgetClass(kMeasuredClass);
    void* object = nullptr;
    Require(ZR_SUCCEEDED(ZrCreateInstance(&id, 0, &kWidgetInterface, 0, &object)), "a class makes an object");
    return object;
  });
#if BENCH_POCO
  SizeRow(operation, "Poco::ClassLoader", [] {
    static auto* loader = new Poco::ClassLoader<Widget>;
    if (!loader->isLibraryLoaded(BENCH_POCO_CLASSES)) loader->loadLibrary(BENCH_POCO_CLASSES);
    return loader->create(PocoName(kMeasuredClass));
  });
#endif
#if BENCH_QT
  SizeRow(operation, "QPluginLoader", [] {
    static auto* loader = new QPluginLoader(QString::fromUtf8(BENCH_QT_PLUGIN));
    return qobject_cast<WidgetFactory*>(loader->instance())->Create();
  });
#endif
#if BENCH_GLIB
  SizeRow(operation, "GObject (bare object)", [] { return g_object_new(G_TYPE_OBJECT, nullptr); });
#endif
  BlockRow(operation, "lower bound", sizeof(Widget));
}

void ObjectSizeRows() {
  StringRows16();
  BlobSizeRows(64);
  BlobSizeRows(4096);
  IdentifierRows();
  VariantSizeRows();
  ArraySizeRows(10);
  ArraySizeRows(kFew);
  VariantArraySizeRows(10);
  VariantArraySizeRows(kFew);
  LockSizeRows();
  ComponentSizeRows();
}
