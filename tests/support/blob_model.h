// Blobs as one would write them who needn't be fast, and a run of operations on both. After each step every handle is
// compared with its model, down to the bytes behind the content and the count of those who share it.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "blobs/blob_handle.h"
#include "tests/support/sequence.h"
#include "zrcore/blob.h"

using Bytes = std::vector<uint8_t>;

struct ModelBlock {
  Bytes bytes;  // as many as the capacity: the content, and what lies behind
  uint32_t length = 0, position = 0;

  // Puts bytes in the place of up to `removed` old ones; the capacity follows when the content outgrows it.
  ZRRESULT Replace(uint32_t offset, uint32_t removed, const Bytes& put) {
    if (offset > length) return ZR_R_INVALID_ARGUMENTS;
    Bytes content = At(0, length);
    const auto place = content.begin() + offset;
    content.insert(content.erase(place, place + std::min(removed, length - offset)), put.begin(), put.end());
    if (content.size() > bytes.size()) bytes.assign((content.size() / 1024 + 1) * 1024, 0);
    std::fill(bytes.begin(), bytes.begin() + length, uint8_t{0xFE});  // what isn't overwritten has been removed
    std::copy(content.begin(), content.end(), bytes.begin());
    length = static_cast<uint32_t>(content.size());
    return ZR_R_OK;
  }

  ZRRESULT Seek(uint32_t offset, uint8_t origin, uint8_t direction) {
    if (origin > 2) return ZR_R_INVALID_ARGUMENTS;
    if (origin == 1 && direction != 1) {
      position -= std::min(offset, position);
    } else {
      position = std::min(origin == 0 ? offset : origin == 1 ? position + offset : UINT32_MAX, length);
    }
    return ZR_R_OK;
  }

  // What a read delivers.
  Bytes At(uint32_t offset, uint32_t count) const {
    if (offset >= length) return {};
    return {bytes.begin() + offset, bytes.begin() + offset + std::min(count, length - offset)};
  }
};

class CBlobSequence : public CSequence<CBlobSequence> {
  friend CSequence;

  struct Slot {
    CBlobHolder blob;
    std::shared_ptr<ModelBlock> model;

    ModelBlock& Detached() {
      if (model.use_count() > 1) {
        model = std::make_shared<ModelBlock>(*model);
        std::fill(model->bytes.begin() + model->length, model->bytes.end(), uint8_t{0});
      }
      return *model;
    }
  };

  using CSequence::CSequence;

  uint32_t OneOf(const std::array<uint32_t, 8>& choices) { return choices[NextBelow(8)]; }

  // Sizes and offsets are around those that matter: nothing, what just fits, what just doesn't, the granule.
  void Step() {
    Slot& slot = slots_[NextBelow(4)];
    Slot& other = slots_[NextBelow(4)];
    if (slot.model && slot.model->length > 16000) slot = Slot();
    ZRBLOB blob = slot.blob.Get();
    const uint32_t length = slot.model ? slot.model->length : 0;
    const uint32_t room = slot.model ? static_cast<uint32_t>(slot.model->bytes.size()) - length : 1024;
    const uint32_t offset =
        OneOf({0, 1, length / 2, length - 1, length, length + 1, UINT32_MAX, NextBelow(length + 2)});
    const uint32_t count = OneOf({0, 1, room, room + 1, 1023, 1024, NextBelow(20), NextBelow(3000)});
    const uint32_t atMost = NextBelow(8) == 0 ? UINT32_MAX : count;
    Bytes bytes(count), buffer(std::min(atMost, length + 3) + 1, 0x55), read = buffer;
    for (uint8_t& byte : bytes) byte = pattern_ = static_cast<uint8_t>(pattern_ * 5 + 1);
    const bool isGiven = NextBelow(8) != 0, isPut = blob && isGiven && count != 0;
    const uint8_t* given = !isGiven ? nullptr : count != 0 ? bytes.data() : buffer.data();
    uint8_t* to = isGiven ? buffer.data() : nullptr;
    ZRRESULT result = ZR_R_INVALID_ARGUMENTS, expected = result;

    const uint32_t operation = NextBelow(12);
    switch (operation) {
      case 0:
        slot = {CBlobHolder::Adopt(ZrCreateBlob(count, given)), nullptr};
        if (count == 0) break;
        slot.model = std::make_shared<ModelBlock>();
        (void)slot.model->Replace(0, 0, isGiven ? bytes : Bytes(count));
        slot.model->position = isGiven ? count : 0;
        break;
      case 1:
        if (&slot != &other) slot = {CBlobHolder::Adopt(ZrCopyBlob(other.blob.Get())), other.model};
        break;
      case 2:
        result = ZrDestroyBlob(slot.blob.Detach());
        expected = blob ? ZR_R_OK : ZR_R_INVALID_POINTER;
        slot = Slot();
        break;
      case 3:
      case 4: {
        result = operation == 3 ? ZrReadBlob(blob, to, atMost) : ZrReadBlobPos(blob, to, offset, atMost);
        if (!blob || !isGiven || atMost == 0) break;
        const Bytes delivered = slot.model->At(operation == 3 ? slot.model->position : offset, atMost);
        expected = delivered.empty() ? ZR_R_NOT_EXISTING : ZR_R_OK;
        if (operation == 3) slot.Detached().position += static_cast<uint32_t>(delivered.size());
        std::copy(delivered.begin(), delivered.end(), read.begin());
        break;
      }
      case 5: {
        const uint8_t origin = static_cast<uint8_t>(NextBelow(4)), direction = static_cast<uint8_t>(NextBelow(3));
        result = ZrSeekBlob(blob, offset, origin, direction);
        if (blob) expected = slot.Detached().Seek(offset, origin, direction);
        break;
      }
      case 6:
        result = ZrWriteBlob(blob, given, count);
        if (isPut) expected = slot.Detached().Replace(slot.model->position, count, bytes);
        if (expected == ZR_R_OK) slot.model->position += count;
        break;
      case 7:
        result = ZrInsertBlob(blob, offset, given, count);
        if (isPut) expected = slot.Detached().Replace(offset, 0, bytes);
        break;
      case 8:
        result = ZrAppendBlobData(blob, given, count);
        if (isPut) expected = slot.Detached().Replace(length, 0, bytes);
        break;
      case 9:
        result = ZrAppendBlob(blob, other.blob.Get());
        if (blob && other.model) expected = slot.Detached().Replace(length, 0, other.model->At(0, UINT32_MAX));
        break;
      case 10:
        result = ZrRemoveBlob(blob, offset, atMost);
        if (blob && atMost != 0) expected = slot.Detached().Replace(offset, atMost, {});
        break;
      default:
        result = ZrCompareBlob(blob, other.blob.Get(), to);
        if (!blob || !other.model || !isGiven) break;
        expected = ZR_R_OK;
        read[0] = slot.model->At(0, UINT32_MAX) == other.model->At(0, UINT32_MAX) ? 1 : 0;
    }
    Claim(result == expected, "result of operation " + std::to_string(operation));
    Claim(buffer == read, "what was delivered");
    for (const Slot& each : slots_) Check(each);
  }

  void Check(const Slot& slot) {
    ZRBLOB blob = slot.blob.Get();
    if (blob == nullptr || !slot.model) return Claim(blob == nullptr && !slot.model, "whether there is a blob");
    const ModelBlock& model = *slot.model;
    const ZrBlobBlock& block = *blob->block;
    uint32_t length = 0, position = 0;
    uint8_t behind = 9, beyond = 9;
    Claim(ZrBlobByteLen(blob, &length) == ZR_R_OK && length == model.length, "length");
    Claim(ZrBlobPosition(blob, &position) == ZR_R_OK && position == model.position, "position");
    Claim(ZrBlobGetAt(blob, length, &behind) == ZR_R_OK && behind == block.bytes[length], "byte behind the content");
    Claim(ZrBlobGetAt(blob, length + 1, &beyond) == ZR_R_OK && beyond == 0, "byte too far");
    Claim(blob->element->Block() == &block && block.refCount == slot.model.use_count(), "who shares");
    Claim(Bytes(block.bytes, block.bytes + block.capacity) == model.bytes, "content, or bytes behind");
    Claim(block.bytes[block.capacity] == 0, "the byte more");
  }

  uint8_t pattern_ = 0;
  std::array<Slot, 4> slots_;
};
