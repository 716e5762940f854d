// The manager of blobs: one object without data, whose virtual operations are all operations on handles.

#pragma once

#include <cstdint>

#include "zrcore/blob.h"

// The contract fixes the order of the virtual operations, so it must not change. It differs from the order of the
// public header. zrcore/blob.h documents each operation under the export of the same name; only differences are stated
// here.
//
// The class is final, so that the compiler can make calls on the object direct. It has no destructor, so that the
// object can be used until the process ends.
class CZrBlobMgr final {
 public:
  // Overwrites `*blob` without releasing its old value. ZR_R_INVALID_ARGUMENTS if `blob` is null or `size` is 0.
  virtual ZRRESULT CreateBlob(uint32_t size, const void* bytes, ZRBLOB* blob);
  // Destroys the old handle in `*copy` first, so `*copy` must not be `source`. ZR_R_FAILED if an argument is null.
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
  // Detaches the handle: afterwards no other element shares its block. Throws std::bad_alloc; nothing has changed then.
  static void EnsureExclusive(ZRBLOB blob);
  // Detaches the handle and returns change(block).
  template <class Change>
  static ZRRESULT ChangeBlock(ZRBLOB blob, Change&& change);
};

// The only manager. src/runtime/library_state.cpp defines it.
extern constinit CZrBlobMgr g_blobManager;
