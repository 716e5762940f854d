// Blobs as one would write them who needn't be fast, and a run of operations on both, told by bytes: random ones in the
// tests, a fuzzer's in fuzz/. After each step every handle is compared with its model, down to the bytes behind the
// content and the count of those who share it.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "blobs/blob_handle.h"
#include "zrcore/blob.h"

using Bytes = std::vector<uint8_t>;

struct ModelBlock {
  Bytes content, behind;  // together the capacity
  uint32_t position = 0;

  uint32_t Length() const { return static_cast<uint32_t>(content.size()); }

  // Puts new bytes in the place of `removed` old ones; the capacity follows when the content outgrows it.
  void Replace(uint32_t offset, uint32_t removed, const Bytes& bytes) {
    const std::size_t capacity = content.size() + behind.size();
    const auto place = content.begin() + offset;
    content.insert(content.erase(place, place + removed), bytes.begin(), bytes.end());
    if (content.size() > capacity) {
      behind.assign(1024 - content.size() % 1024, 0);
    } else {
      behind.erase(behind.begin(), behind.end() - static_cast<std::ptrdiff_t>(capacity - content.size()));
    }
  }

  ZRRESULT Remove(uint32_t offset, uint32_t count) {
    if (offset > Length()) return ZR_R_INVALID_ARGUMENTS;
    const uint32_t removed = std::min(count, Length() - offset);
    content.erase(content.begin() + offset, content.begin() + offset + removed);
    behind.insert(behind.begin(), removed, 0xFE);
    return ZR_R_OK;
  }

  ZRRESULT Seek(uint32_t offset, uint8_t origin, uint8_t direction) {
    const bool isForward = direction == 1;
    if (origin > 2) return ZR_R_INVALID_ARGUMENTS;
    if (origin == 1 && !isForward) {
      position = offset > position ? 0 : position - offset;
    } else {
      position = std::min(origin == 0 ? offset : origin == 1 ? position + offset : UINT32_MAX, Length());
    }
    return ZR_R_OK;
  }

  // What a read delivers.
  Bytes At(uint32_t offset, uint32_t count) const {
    if (offset >= Length()) return {};
    return {content.begin() + offset, content.begin() + offset + std::min(count, Length() - offset)};
  }
};

class CBlobSequence {
 public:
  // Answers what differed first, or an empty text.
  static std::string Run(const uint8_t* data, std::size_t size) {
    CBlobSequence sequence(data, size);
    while (sequence.difference_.empty() && sequence.at_ != sequence.end_) sequence.Step();
    return sequence.difference_;
  }

 private:
  struct Slot {
    CBlobHolder blob;
    std::shared_ptr<ModelBlock> model;

    ModelBlock& Detached() {
      if (model.use_count() > 1) {
        model = std::make_shared<ModelBlock>(*model);
        std::fill(model->behind.begin(), model->behind.end(), uint8_t{0});
      }
      return *model;
    }
  };

  CBlobSequence(const uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  uint8_t Next() { return at_ != end_ ? *at_++ : uint8_t{0}; }
  uint32_t NextBelow(uint32_t limit) { return (Next() * 256u + Next()) % limit; }

  // Sizes around those that matter: nothing, what just fits, what just doesn't, the granule.
  uint32_t Count(const Slot& slot) {
    const uint32_t room = slot.model ? static_cast<uint32_t>(slot.model->behind.size()) : 1024;
    const std::array<uint32_t, 8> kChoices = {0, 1, room, room + 1, 1023, 1024, NextBelow(20), NextBelow(3000)};
    return kChoices[Next() % kChoices.size()];
  }
  uint32_t Offset(const Slot& slot) {
    const uint32_t length = slot.model ? slot.model->Length() : 0;
    const std::array<uint32_t, 8> kChoices = {0,      1,          length / 2, length - 1,
                                              length, length + 1, UINT32_MAX, NextBelow(length + 2)};
    return kChoices[Next() % kChoices.size()];
  }
  Bytes Pattern(uint32_t size) {
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = pattern_ = static_cast<uint8_t>(pattern_ * 5 + 1);
    return bytes;
  }

  void Claim(bool claim, const char* text) {
    if (!claim && difference_.empty()) difference_ = text;
  }

  void Step() {
    Slot& slot = slots_[Next() % slots_.size()];
    Slot& other = slots_[Next() % slots_.size()];
    if (slot.model && slot.model->Length() > 16000) slot = Slot();
    ZRBLOB blob = slot.blob.Get();
    switch (Next() % 12) {
      case 0: {
        slot = Slot();
        const Bytes bytes = Pattern(Count(slot));
        const uint32_t size = static_cast<uint32_t>(bytes.size());
        const bool isGiven = Next() % 2 == 0;
        slot.blob = CBlobHolder::Adopt(ZrCreateBlob(size, isGiven ? bytes.data() : nullptr));
        if (size == 0) break;
        slot.model = std::make_shared<ModelBlock>();
        slot.model->Replace(0, 0, isGiven ? bytes : Bytes(size));
        slot.model->position = isGiven ? size : 0;
        break;
      }
      case 1:
        if (&slot == &other) break;
        slot = Slot();
        slot = {CBlobHolder::Adopt(ZrCopyBlob(other.blob.Get())), other.model};
        break;
      case 2:
        Claim(ZrDestroyBlob(slot.blob.Detach()) == (blob ? ZR_R_OK : ZR_R_INVALID_POINTER), "destroy");
        slot = Slot();
        break;
      case 3:
      case 4:
        Read(slot, Offset(slot), Next() % 8 == 0 ? UINT32_MAX : Count(slot), Next() % 2 == 0);
        break;
      case 5: {
        const uint32_t offset = Offset(slot);
        const uint8_t origin = Next() % 4, direction = Next() % 3;
        const ZRRESULT result = ZrSeekBlob(blob, offset, origin, direction);
        Claim(result == (blob ? slot.Detached().Seek(offset, origin, direction) : ZR_R_INVALID_ARGUMENTS), "seek");
        break;
      }
      case 6:
      case 7:
      case 8:
        Put(slot, Next() % 3, Offset(slot), Pattern(Count(slot)));
        break;
      case 9: {
        const bool isWhole = slot.model && other.model;
        Claim(ZrAppendBlob(blob, other.blob.Get()) == (isWhole ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS), "append blob");
        if (!isWhole) break;
        ModelBlock& model = slot.Detached();
        model.Replace(model.Length(), 0, Bytes(other.model->content));
        break;
      }
      case 10: {
        const uint32_t offset = Offset(slot), count = Next() % 8 == 0 ? UINT32_MAX : Count(slot);
        const ZRRESULT result = ZrRemoveBlob(blob, offset, count);
        Claim(result == (blob && count ? slot.Detached().Remove(offset, count) : ZR_R_INVALID_ARGUMENTS), "remove");
        break;
      }
      default: {
        uint8_t equal = 9;
        const bool isWhole = slot.model && other.model;
        Claim(ZrCompareBlob(blob, other.blob.Get(), &equal) == (isWhole ? ZR_R_OK : ZR_R_INVALID_ARGUMENTS), "compare");
        Claim(equal == (isWhole ? slot.model->content == other.model->content : 9), "equality");
      }
    }
    for (const Slot& each : slots_) Check(each);
  }

  void Read(Slot& slot, uint32_t offset, uint32_t count, bool atPosition) {
    if (!slot.model || count == 0) {
      uint8_t byte = 0;
      ZRBLOB blob = slot.blob.Get();
      Claim((atPosition ? ZrReadBlob(blob, &byte, count) : ZrReadBlobPos(blob, &byte, offset, count)) ==
                ZR_R_INVALID_ARGUMENTS,
            "read of nothing");
      return;
    }
    Bytes buffer(std::min(count, slot.model->Length() + 3), 0x55);
    Bytes expected = slot.model->At(atPosition ? slot.model->position : offset, count);
    const ZRRESULT result = atPosition ? ZrReadBlob(slot.blob.Get(), buffer.data(), count)
                                       : ZrReadBlobPos(slot.blob.Get(), buffer.data(), offset, count);
    Claim(result == (expected.empty() ? ZR_R_NOT_EXISTING : ZR_R_OK), "read");
    if (atPosition) slot.Detached().position += static_cast<uint32_t>(expected.size());
    expected.resize(buffer.size(), 0x55);
    Claim(buffer == expected, "bytes read");
  }

  void Put(Slot& slot, int way, uint32_t offset, const Bytes& bytes) {
    ZRBLOB blob = slot.blob.Get();
    const uint32_t count = static_cast<uint32_t>(bytes.size());
    const ZRRESULT result = way == 0   ? ZrWriteBlob(blob, bytes.data(), count)
                            : way == 1 ? ZrInsertBlob(blob, offset, bytes.data(), count)
                                       : ZrAppendBlobData(blob, bytes.data(), count);
    ZRRESULT expected = ZR_R_INVALID_ARGUMENTS;
    if (slot.model && count != 0) {
      ModelBlock& model = slot.Detached();
      const uint32_t length = model.Length(), place = way == 0 ? model.position : way == 1 ? offset : length;
      if (place <= length) {
        model.Replace(place, way == 0 ? std::min(count, length - place) : 0, bytes);
        if (way == 0) model.position += count;
        expected = ZR_R_OK;
      }
    }
    Claim(result == expected, way == 0 ? "write" : way == 1 ? "insert" : "append");
  }

  void Check(const Slot& slot) {
    ZRBLOB blob = slot.blob.Get();
    if (blob == nullptr || !slot.model) return Claim(blob == nullptr && !slot.model, "whether there is a blob");
    const ModelBlock& model = *slot.model;
    const ZrBlobBlock& block = *blob->block;
    uint32_t length = 0, position = 0;
    uint8_t last = 9, beyond = 9;
    Claim(ZrBlobByteLen(blob, &length) == ZR_R_OK && length == model.Length(), "length");
    Claim(ZrBlobPosition(blob, &position) == ZR_R_OK && position == model.position, "position");
    Claim(ZrBlobGetAt(blob, length, &last) == ZR_R_OK && last == (model.behind.empty() ? 0 : model.behind[0]),
          "byte behind the content");
    Claim(ZrBlobGetAt(blob, length + 1, &beyond) == ZR_R_OK && beyond == 0, "byte too far");
    Claim(blob->element->Block() == &block && block.refCount == slot.model.use_count(), "who shares");
    Claim(block.capacity == length + model.behind.size(), "capacity");
    Claim(std::equal(model.content.begin(), model.content.end(), block.bytes), "content");
    Claim(std::equal(model.behind.begin(), model.behind.end(), block.bytes + length), "bytes behind the content");
  }

  const uint8_t* at_;
  const uint8_t* end_;
  uint8_t pattern_ = 0;
  std::array<Slot, 4> slots_;
  std::string difference_;
};
