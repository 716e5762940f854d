// Blob owns a byte buffer (zrcore/blob.h).
//
//     zr::Blob blob(bytes, sizeof bytes);
//     blob.Append(more, sizeof more).Value();
//     uint8_t first = blob.At(0).ValueOr(0);
//
// A Blob is one pointer. Null is an empty blob. Copies share the bytes until one of them is changed. Functions that
// change a null Blob fail with ZR_R_INVALID_ARGUMENTS, because only the constructor makes a handle. A moved-from Blob
// is null.
//
// Functions that make or detach a blob throw std::bad_alloc when out of memory for the handle; out of memory for the
// bytes of a new blob terminates the process (blob.h). One thread at a time may use a Blob, except copies of it.

#ifndef ZR_BLOB_HPP
#define ZR_BLOB_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "zr/result.hpp"
#include "zrcore/blob.h"

namespace zr {

/// Origin and Direction say where ZrSeekBlob counts from, and to which side.
enum class Origin : uint8_t { Start = ZR_BLOB_SEEK_START, Position = ZR_BLOB_SEEK_POSITION, End = ZR_BLOB_SEEK_END };
enum class Direction : uint8_t { Forward = ZR_BLOB_FORWARD, Backward = ZR_BLOB_BACKWARD };

/// Blob owns a handle on bytes and a position in them, or null, which is empty and cannot grow.
class Blob {
 public:
  Blob() noexcept = default;
  /// Makes a blob of `size` bytes: a copy of `bytes`, or zeros if that is null. A size of 0 makes a null blob.
  /// The position is at the end, or at the start if `bytes` is null.
  Blob(const void* bytes, uint32_t size) : blob_(size != 0 ? ZrCreateBlob(size, bytes) : nullptr) {}
  /// Makes a blob of these bytes.
  Blob(std::initializer_list<uint8_t> bytes) : Blob(bytes.begin(), static_cast<uint32_t>(bytes.size())) {}

  /// Shares the bytes with the other blob until one of the two changes. Throws std::bad_alloc when out of memory.
  Blob(const Blob& other) : blob_(other.blob_ != nullptr ? ZrCopyBlob(other.blob_) : nullptr) {}
  Blob(Blob&& other) noexcept : blob_(std::exchange(other.blob_, nullptr)) {}
  Blob& operator=(Blob other) noexcept {
    std::swap(blob_, other.blob_);
    return *this;
  }
  ~Blob() { Destroy(blob_); }

  /// Adopt takes a blob that the caller owns.
  [[nodiscard]] static Blob Adopt(ZRBLOB blob) noexcept {
    Blob made;
    made.blob_ = blob;
    return made;
  }
  /// Get lends the blob to functions of the C boundary.
  [[nodiscard]] ZRBLOB Get() const noexcept { return blob_; }
  /// Put destroys the blob and returns the address for an out-parameter.
  [[nodiscard]] ZRBLOB* Put() noexcept {
    Destroy(std::exchange(blob_, nullptr));
    return &blob_;
  }
  /// Detach gives the blob to the caller, who destroys it with ZrDestroyBlob.
  [[nodiscard]] ZRBLOB Detach() noexcept { return std::exchange(blob_, nullptr); }

  /// Size returns the number of bytes.
  [[nodiscard]] uint32_t Size() const noexcept {
    uint32_t size = 0;
    if (blob_ != nullptr) (void)ZrBlobByteLen(blob_, &size);
    return size;
  }

  /// At returns one byte. ZR_R_INVALID_ARGUMENTS if the index is not less than the size, unlike ZrBlobGetAt.
  [[nodiscard]] Result<uint8_t> At(uint32_t index) const noexcept {
    uint8_t byte = 0;
    if (index >= Size()) return Failure{ZR_R_INVALID_ARGUMENTS};
    if (const ZRRESULT result = ZrBlobGetAt(blob_, index, &byte); Failed(result)) return Failure{result};
    return byte;
  }

  /// Read copies up to `count` bytes from `offset` on. It neither uses nor moves the position, and copies no shared
  /// bytes.
  ///
  /// @return
  ///   - ZR_R_OK                 at least one byte was copied. The number is not reported.
  ///   - ZR_R_INVALID_ARGUMENTS  the blob or `buffer` is null, or `count` is 0.
  ///   - ZR_R_NOT_EXISTING       `offset` is not less than the size.
  Result<void> Read(uint32_t offset, void* buffer, uint32_t count) const noexcept {
    return Result<void>(ZrReadBlobPos(blob_, buffer, offset, count));
  }

  /// Insert, Append and Remove change the bytes, and detach shared bytes first. The position does not move.
  ///
  /// @return ZR_R_INVALID_ARGUMENTS if the blob, `bytes` or `other` is null, `count` is 0, or `offset` is greater than
  ///         the size.
  /// @throws std::bad_alloc if the bytes can't grow. Out of memory for detached bytes terminates the process.
  Result<void> Insert(uint32_t offset, const void* bytes, uint32_t count) {
    return Result<void>(ZrInsertBlob(blob_, offset, bytes, count));
  }
  Result<void> Append(const void* bytes, uint32_t count) { return Result<void>(ZrAppendBlobData(blob_, bytes, count)); }
  Result<void> Append(const Blob& other) { return Result<void>(ZrAppendBlob(blob_, other.blob_)); }
  Result<void> Remove(uint32_t offset, uint32_t count) { return Result<void>(ZrRemoveBlob(blob_, offset, count)); }

  /// ReadNext, Write and Seek work at the blob's position, and move it. They detach shared bytes first, with the same
  /// exceptions as Insert.
  ///
  /// @return
  ///   - ZR_R_OK                 bytes were read or written, or the position was set. ReadNext may read fewer bytes;
  ///                             Position then shows how many.
  ///   - ZR_R_INVALID_ARGUMENTS  the blob or a pointer is null; `count` is 0; or Write starts past the end, where
  ///                             Remove may have left the position.
  ///   - ZR_R_NOT_EXISTING       ReadNext: the position is at or past the end.
  Result<void> ReadNext(void* buffer, uint32_t count) { return Result<void>(ZrReadBlob(blob_, buffer, count)); }
  Result<void> Write(const void* bytes, uint32_t count) { return Result<void>(ZrWriteBlob(blob_, bytes, count)); }
  Result<void> Seek(uint32_t offset, Origin origin = Origin::Start, Direction direction = Direction::Forward) {
    return Result<void>(ZrSeekBlob(blob_, offset, static_cast<uint8_t>(origin), static_cast<uint8_t>(direction)));
  }
  /// Position returns the position. ZR_R_INVALID_ARGUMENTS for null.
  [[nodiscard]] Result<uint32_t> Position() const noexcept {
    uint32_t position = 0;
    if (const ZRRESULT result = ZrBlobPosition(blob_, &position); Failed(result)) return Failure{result};
    return position;
  }

  /// Two blobs are equal if their bytes are. A null blob equals only a null blob.
  friend bool operator==(const Blob& left, const Blob& right) noexcept {
    if (left.blob_ == nullptr || right.blob_ == nullptr) return left.blob_ == right.blob_;
    uint8_t equal = 0;
    return !Failed(ZrCompareBlob(left.blob_, right.blob_, &equal)) && equal != 0;
  }
  friend bool operator!=(const Blob& left, const Blob& right) noexcept { return !(left == right); }

 private:
  static void Destroy(ZRBLOB blob) noexcept {
    if (blob != nullptr) (void)ZrDestroyBlob(blob);
  }

  ZRBLOB blob_ = nullptr;
};
static_assert(sizeof(Blob) == sizeof(ZRBLOB), "a Blob is its handle");

}  // namespace zr

#endif
