// The exports of blobs, in the order of the public header. Each forwards to the manager, which checks the arguments.
//
// They call the manager by the name of the object, not through a pointer or reference. The compiler knows the class
// then, so the call of a virtual operation is direct.

#include "blobs/blob_manager.h"
#include "zrcore/blob.h"

ZRBLOB ZrCreateBlob(uint32_t size, const void* bytes) {
  if (size == 0) return nullptr;  // there is no empty blob handle
  ZRBLOB blob = nullptr;
  (void)g_blobManager.CreateBlob(size, bytes, &blob);  // a null blob shows the failure
  return blob;
}

ZRBLOB ZrCopyBlob(ZRBLOB source) {
  ZRBLOB copy = nullptr;
  (void)g_blobManager.CopyBlob(source, &copy);  // a null copy shows the failure
  return copy;
}

ZRRESULT ZrDestroyBlob(ZRBLOB blob) noexcept { return g_blobManager.DestroyBlob(blob); }

ZRRESULT ZrReadBlobPos(ZRBLOB blob, void* buffer, uint32_t offset, uint32_t count) noexcept {
  return g_blobManager.ReadBlobPos(blob, buffer, offset, count);
}

ZRRESULT ZrReadBlob(ZRBLOB blob, void* buffer, uint32_t count) { return g_blobManager.ReadBlob(blob, buffer, count); }

ZRRESULT ZrBlobGetAt(ZRBLOB blob, uint32_t index, uint8_t* byte) noexcept {
  return g_blobManager.BlobGetAt(blob, index, byte);
}

ZRRESULT ZrBlobByteLen(ZRBLOB blob, uint32_t* length) noexcept { return g_blobManager.BlobByteLen(blob, length); }

ZRRESULT ZrCompareBlob(ZRBLOB left, ZRBLOB right, uint8_t* equal) noexcept {
  return g_blobManager.CompareBlob(left, right, equal);
}

ZRRESULT ZrBlobPosition(ZRBLOB blob, uint32_t* position) noexcept { return g_blobManager.BlobPosition(blob, position); }

ZRRESULT ZrSeekBlob(ZRBLOB blob, uint32_t offset, uint8_t origin, uint8_t direction) {
  return g_blobManager.SeekBlob(blob, offset, origin, direction);
}

ZRRESULT ZrWriteBlob(ZRBLOB blob, const void* bytes, uint32_t count) {
  return g_blobManager.WriteBlob(blob, bytes, count);
}

ZRRESULT ZrInsertBlob(ZRBLOB blob, uint32_t offset, const void* bytes, uint32_t count) {
  return g_blobManager.InsertBlob(blob, offset, bytes, count);
}

ZRRESULT ZrAppendBlob(ZRBLOB blob, ZRBLOB other) { return g_blobManager.AppendBlob(blob, other); }

ZRRESULT ZrAppendBlobData(ZRBLOB blob, const void* bytes, uint32_t count) {
  return g_blobManager.AppendBlobData(blob, bytes, count);
}

ZRRESULT ZrRemoveBlob(ZRBLOB blob, uint32_t offset, uint32_t count) {
  return g_blobManager.RemoveBlob(blob, offset, count);
}
