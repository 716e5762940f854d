// The manager of blobs: all operations on handles, on one object without data of its own.

#pragma once

#include <cstdint>

#include "zrcore/blob.h"

// The order of the operations is that of their slots and must not change. What each does stands at the export of its
// name. Final and without a destructor of its own: calls on the object are direct, and its end needs no code.
class CZrBlobMgr final {
 public:
  // Overwrites `*blob` unseen. ZR_R_INVALID_ARGUMENTS if `blob` is null or `size` is 0.
  virtual ZRRESULT CreateBlob(uint32_t size, const void* bytes, ZRBLOB* blob);
  // Destroys what `*copy` holds first, so that must not be `source` itself. ZR_R_FAILED if an argument is null.
  virtual ZRRESULT CopyBlob(ZRBLOB source, ZRBLOB* copy);
  virtual ZRRESULT DestroyBlob(ZRBLOB blob) noexcept;
  virtual ZRRESULT ReadBlobPos(ZRBLOB blob, void* buffer, uint32_t offset, uint32_t count) noexcept;
  virtual ZRRESULT ReadBlob(ZRBLOB blob, void* buffer, uint32_t count);
  virtual ZRRESULT WriteBlob(ZRBLOB blob, const void* bytes, uint32_t count);
  virtual ZRRESULT BlobPosition(ZRBLOB blob, uint32_t* position) noexcept;
  virtual ZRRESULT SeekBlob(ZRBLOB blob, uint32_t offset, uint8_t origin, uint8_t direction);
  virtual ZRRESULT InsertBlob(ZRBLOB blob, uint32_t offset, const void* bytes, uint32_t count);
  virtual ZRRESULT AppendBlob(ZRBLOB blob, ZRBLOB other);
  virtual ZRRESULT AppendBlobData(ZRBLOB blob, const void* bytes, uint32_t count);
  virtual ZRRESULT RemoveBlob(ZRBLOB blob, uint32_t offset, uint32_t count);
  virtual ZRRESULT CompareBlob(ZRBLOB left, ZRBLOB right, uint8_t* equal) noexcept;
  virtual ZRRESULT BlobByteLen(ZRBLOB blob, uint32_t* length) noexcept;
  virtual ZRRESULT BlobGetAt(ZRBLOB blob, uint32_t index, uint8_t* byte) noexcept;

 private:
  static void EnsureExclusive(ZRBLOB blob);
  template <class Change>
  static ZRRESULT ChangeBlock(ZRBLOB blob, Change&& change);
};

extern constinit CZrBlobMgr g_blobManager;
