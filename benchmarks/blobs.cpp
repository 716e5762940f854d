// Blobs, compared with the byte buffers of the frameworks. A copy of a standard container copies the bytes; a copy of a
// blob, QByteArray or GBytes shares them until one is written.

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "boundary.h"
#include "row.h"
#include "zrcore/blob.h"

#if BENCH_QT
#include <QByteArray>
#endif
#if BENCH_GLIB
#include <glib.h>
#endif

using Bytes = std::vector<uint8_t>;

static Bytes Content(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7);
  return bytes;
}

static const char* Characters(const Bytes& bytes) { return reinterpret_cast<const char*>(bytes.data()); }

// Shared ownership of a blob handle, so that a row can keep it.
static std::shared_ptr<tagZRBLOB> Share(const Bytes& bytes) {
  return std::shared_ptr<tagZRBLOB>(ZrCreateBlob(static_cast<uint32_t>(bytes.size()), bytes.data()), ZrDestroyBlob);
}

// The allocations that the contract requires for a blob: a handle, an element, a block and an initialised buffer.
struct LowerBoundBlob {
  void* handle;
  void* element;
  int32_t* block;
  uint8_t* buffer;
};

static LowerBoundBlob LowerBoundCreate(const Bytes& bytes) {
  const std::size_t capacity = (bytes.size() & ~std::size_t{1023}) + 1024;
  LowerBoundBlob blob = {std::malloc(16), std::malloc(16), static_cast<int32_t*>(std::malloc(24)),
                         static_cast<uint8_t*>(std::malloc(capacity))};
  *blob.block = 1;
  std::memcpy(blob.buffer, bytes.data(), bytes.size());
  std::memset(blob.buffer + bytes.size(), 0, capacity - bytes.size());
  return blob;
}

static void LowerBoundDestroy(const LowerBoundBlob& blob) {
  std::free(blob.buffer);
  std::free(blob.block);
  std::free(blob.element);
  std::free(blob.handle);
}

static void CreateRows() {
  const std::string operation = "blob create+destroy 64 B";
  const Bytes bytes = Content(64);

  Row(operation, "ZrCore", [bytes] {
    ZRBLOB blob = ZrCreateBlob(64, bytes.data());
    Consume(blob);
    ZrDestroyBlob(blob);
  });
  Row(operation, "std::vector", [bytes] {
    Bytes v(bytes);
    Consume(v.data());
  });
  Row(operation, "std::string", [bytes] {
    std::string s(Characters(bytes), bytes.size());
    Consume(s.data());
  });
  Row(operation, "std::make_shared<vector>", [bytes] {
    auto v = std::make_shared<Bytes>(bytes);
    Consume(v);
  });
#if BENCH_QT
  Row(operation, "QByteArray", [bytes] {
    QByteArray array(Characters(bytes), static_cast<qsizetype>(bytes.size()));
    Consume(array);
  });
#endif
#if BENCH_GLIB
  Row(operation, "GBytes", [bytes] {
    GBytes* b = g_bytes_new(bytes.data(), bytes.size());
    Consume(b);
    g_bytes_unref(b);
  });
  Row(operation, "GByteArray", [bytes] {
    GByteArray* array = g_byte_array_new();
    g_byte_array_append(array, bytes.data(), static_cast<guint>(bytes.size()));
    Consume(array);
    g_byte_array_unref(array);
  });
#endif
  Row(operation, "lower bound by contract", [bytes] {
    const LowerBoundBlob blob = LowerBoundCreate(bytes);
    Consume(blob);
    LowerBoundDestroy(blob);
  });
  Row(operation, "lower bound", [bytes] {
    void* block = std::malloc(64);
    std::memcpy(block, bytes.data(), 64);
    Consume(block);
    std::free(block);
  });
}

static void CopyRows() {
  const std::string operation = "blob copy+destroy 4 KiB";
  const Bytes bytes = Content(4096);

  RowOnOneAndTwoThreads(operation, "ZrCore", [blob = Share(bytes)] {
    ZRBLOB copy = ZrCopyBlob(blob.get());
    Consume(copy);
    ZrDestroyBlob(copy);
  });
  RowOnOneAndTwoThreads(operation, "std::vector", [bytes] {
    Bytes copy(bytes);
    Consume(copy.data());
  });
  RowOnOneAndTwoThreads(operation, "std::string", [text = std::string(Characters(bytes), bytes.size())] {
    std::string copy(text);
    Consume(copy.data());
  });
  RowOnOneAndTwoThreads(operation, "std::shared_ptr<vector>", [shared = std::make_shared<const Bytes>(bytes)] {
    std::shared_ptr<const Bytes> copy(shared);
    Consume(copy);
  });
#if BENCH_QT
  RowOnOneAndTwoThreads(operation, "QByteArray",
                        [array = QByteArray(Characters(bytes), static_cast<qsizetype>(bytes.size()))] {
                          QByteArray copy(array);
                          Consume(copy);
                        });
#endif
#if BENCH_GLIB
  const std::shared_ptr<GBytes> shared(g_bytes_new(bytes.data(), bytes.size()), g_bytes_unref);
  RowOnOneAndTwoThreads(operation, "GBytes", [shared] {
    GBytes* copy = g_bytes_ref(shared.get());
    Consume(copy);
    g_bytes_unref(copy);
  });
#endif
  auto count = std::make_shared<int32_t>(1);
  RowOnOneAndTwoThreads(operation, "lower bound by contract", [count] {
    void* element = std::malloc(16);
    void* handle = std::malloc(16);
    Consume(__atomic_add_fetch(count.get(), 1, __ATOMIC_SEQ_CST));
    Consume(element);
    Consume(handle);
    Consume(__atomic_sub_fetch(count.get(), 1, __ATOMIC_SEQ_CST));
    std::free(element);
    std::free(handle);
  });
  RowOnOneAndTwoThreads(operation, "lower bound", [count] {
    Consume(__atomic_add_fetch(count.get(), 1, __ATOMIC_SEQ_CST));
    Consume(__atomic_sub_fetch(count.get(), 1, __ATOMIC_SEQ_CST));
  });
}

static void WriteRows() {
  const std::string operation = "blob write after copy+destroy 4 KiB";
  const Bytes bytes = Content(4096);

  // The copy starts at the position of the original, which is the start, so the write overwrites the first bytes.
  auto shared = Share(bytes);
  Require(ZrSeekBlob(shared.get(), 0, ZR_BLOB_SEEK_START, 0) == ZR_R_OK, "a blob's position can be set");
  Row(operation, "ZrCore", [shared] {
    ZRBLOB copy = ZrCopyBlob(shared.get());
    Consume(ZrWriteBlob(copy, "12345678", 8));
    ZrDestroyBlob(copy);
  });
  Row(operation, "std::vector", [bytes] {
    Bytes copy(bytes);
    std::memcpy(copy.data(), "12345678", 8);
    Consume(copy.data());
  });
  Row(operation, "std::string", [text = std::string(Characters(bytes), bytes.size())] {
    std::string copy(text);
    std::memcpy(copy.data(), "12345678", 8);
    Consume(copy.data());
  });
#if BENCH_QT
  Row(operation, "QByteArray", [array = QByteArray(Characters(bytes), static_cast<qsizetype>(bytes.size()))] {
    QByteArray copy(array);
    std::memcpy(copy.data(), "12345678", 8);
    Consume(copy);
  });
#endif
#if BENCH_GLIB
  const std::shared_ptr<GBytes> gbytes(g_bytes_new(bytes.data(), bytes.size()), g_bytes_unref);
  Row(operation, "GBytes unref_to_array", [gbytes] {
    GByteArray* copy = g_bytes_unref_to_array(g_bytes_ref(gbytes.get()));
    std::memcpy(copy->data, "12345678", 8);
    Consume(copy);
    g_byte_array_unref(copy);
  });
#endif
  auto count = std::make_shared<int32_t>(1);
  Row(operation, "lower bound by contract", [bytes, count] {
    void* element = std::malloc(16);
    void* handle = std::malloc(16);
    Consume(__atomic_add_fetch(count.get(), 1, __ATOMIC_SEQ_CST));
    const LowerBoundBlob blob = {handle, std::malloc(16), static_cast<int32_t*>(std::malloc(24)),
                                 static_cast<uint8_t*>(std::malloc(5120))};
    std::memcpy(blob.buffer, bytes.data(), 4096);
    std::memset(blob.buffer + 4096, 0, 1024);
    Consume(__atomic_sub_fetch(count.get(), 1, __ATOMIC_SEQ_CST));
    std::free(element);
    std::memcpy(blob.buffer, "12345678", 8);
    Consume(blob);
    LowerBoundDestroy(blob);
  });
  Row(operation, "lower bound", [bytes] {
    void* block = std::malloc(4096);
    std::memcpy(block, bytes.data(), 4096);
    Consume(block);
    std::free(block);
  });
}

// Each row starts with a buffer of one byte and ends with 1001.
static void AppendRows() {
  const std::string operation = "blob 1000 appends of 1 B";
  constexpr int kAppends = 1000;

  Row(operation, "ZrCore", [] {
    ZRBLOB blob = ZrCreateBlob(1, "x");
    for (int i = 0; i < kAppends; ++i) Consume(ZrAppendBlobData(blob, "y", 1));
    ZrDestroyBlob(blob);
  });
  Row(operation, "std::vector push_back", [] {
    Bytes v(1);
    for (int i = 0; i < kAppends; ++i) {
      v.push_back('y');
      Consume(v.data());
    }
  });
  Row(operation, "std::string push_back", [] {
    std::string s(1, 'x');
    for (int i = 0; i < kAppends; ++i) {
      s.push_back('y');
      Consume(s.data());
    }
  });
  Row(operation, "std::string append(pointer, 1)", [] {
    std::string s(1, 'x');
    for (int i = 0; i < kAppends; ++i) {
      s.append("y", 1);
      Consume(s.data());
    }
  });
#if BENCH_QT
  Row(operation, "QByteArray append", [] {
    QByteArray array(1, 'x');
    for (int i = 0; i < kAppends; ++i) {
      array.append('y');
      Consume(array);
    }
  });
  Row(operation, "QByteArray append(pointer, 1)", [] {
    QByteArray array(1, 'x');
    for (int i = 0; i < kAppends; ++i) {
      array.append("y", 1);
      Consume(array);
    }
  });
#endif
#if BENCH_GLIB
  Row(operation, "GByteArray", [] {
    GByteArray* array = g_byte_array_new();
    const guint8 byte = 'y';
    for (int i = 0; i < kAppends; ++i) {
      g_byte_array_append(array, &byte, 1);
      Consume(array);
    }
    g_byte_array_unref(array);
  });
#endif
  Row(operation, "lower bound by contract", [] {
    auto* buffer = static_cast<uint8_t*>(std::malloc(kAppends));
    for (int i = 0; i < kAppends; ++i) {
      BoundaryNothing();
      buffer[i] = 'y';
      Consume(buffer);
    }
    std::free(buffer);
  });
  Row(operation, "lower bound", [] {
    auto* buffer = static_cast<uint8_t*>(std::malloc(kAppends));
    for (int i = 0; i < kAppends; ++i) {
      buffer[i] = 'y';
      Consume(buffer);
    }
    std::free(buffer);
  });
}

void BlobRows() {
  CreateRows();
  CopyRows();
  WriteRows();
  AppendRows();
}
