// A slow and obvious model of blobs, and sequences of operations on the library's blobs and on the model. After each
// step every handle is compared with its model, including the bytes after the content and the number of handles that
// share a block.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "blobs/blob_handle.h"
#include "tests/support/sequence.h"
#include "zrcore/blob.h"

using Bytes = std::vector<uint8_t>;

struct ModelBlock {
  Bytes bytes;  // the whole capacity: the content and the bytes after it
  uint32_t length = 0, position = 0;

  // Replaces up to `removed` bytes at the offset with `put`. The capacity grows when the content exceeds it.
  ZRRESULT Replace(uint32_t offset, uint32_t removed, const Bytes& put) {
    if (offset > length) return ZR_R_INVALID_ARGUMENTS;
    Bytes content = At(0, length);
    const auto place = content.begin() + offset;
    content.insert(content.erase(place, place + std::min(removed, length - offset)), put.begin(), put.end());
    if (content.size() > bytes.size()) bytes.assign((content.size() / 1024 + 1) * 1024, 0);
    std::fill(bytes.begin(), bytes.begin() + length, uint8_t{0xFE});  // removed bytes are overwritten
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

  // Returns the bytes that a read returns.
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

  // The functions, with a letter for each argument:
  //
  //     b  the blob          r  bytes to read        p  an offset    m  a count that may be far too large
  //     o  the other blob    w  a buffer to write    n  a count
  struct Function {
    const char* name;
    const char* arguments;
  };
  static constexpr Function kFunctions[] = {
      {"ZrCreateBlob", "nr"},      {"ZrCopyBlob", "o"},    {"ZrDestroyBlob", "b"},  {"ZrReadBlob", "bwm"},
      {"ZrReadBlobPos", "bwpm"},   {"ZrSeekBlob", "bp"},   {"ZrWriteBlob", "brn"},  {"ZrInsertBlob", "bprn"},
      {"ZrAppendBlobData", "brn"}, {"ZrAppendBlob", "bo"}, {"ZrRemoveBlob", "bpm"}, {"ZrCompareBlob", "bow"}};

  using CSequence::CSequence;

  // ---- As text, for a failure ----

  std::string NameOfSlot(const Slot& slot) const { return "blob " + std::to_string(&slot - slots_.data()); }

  std::string DescribeSlot(const Slot& slot) const {
    if (!slot.model) return NameOfSlot(slot) + " is null";
    const ModelBlock& model = *slot.model;
    std::string text = NameOfSlot(slot) + Format(" has %u bytes, position %u, capacity %u", model.length,
                                                 model.position, static_cast<uint32_t>(model.bytes.size()));
    for (const Slot& each : slots_) {
      if (&each != &slot && each.model == slot.model) text += ", shared with " + NameOfSlot(each);
    }
    return text + ": " + DescribeBytes(model.bytes.data(), model.length);
  }

  static std::string DescribeBytes(const uint8_t* bytes, std::size_t size) {
    constexpr std::size_t kShown = 24;
    std::string text;
    for (std::size_t at = 0; at < std::min(size, kShown); ++at) text += Format(at == 0 ? "%02x" : " %02x", bytes[at]);
    return text + (size > kShown ? " ..." : "");
  }

  // Describes the first difference between two runs of bytes.
  static std::string DescribeDifference(const uint8_t* found, std::size_t count, const Bytes& expected) {
    const std::size_t common = std::min(count, expected.size());
    const auto at = static_cast<std::size_t>(std::mismatch(found, found + common, expected.begin()).first - found);
    if (at == common) {
      return std::to_string(count) + " bytes, the model expects " + std::to_string(expected.size());
    }
    return Format("0x%02x at offset ", found[at]) + std::to_string(at) +
           Format(", the model expects 0x%02x", expected[at]);
  }

  // ---- The operations ----

  uint32_t OneOf(const std::array<uint32_t, 8>& choices) { return choices[NextBelow(8)]; }

  // Sizes and offsets are near the limits: 0, the most that fits, one more than fits, and the granule of the capacity.
  void Step() {
    Slot& slot = slots_[NextBelow(4)];
    Slot& other = slots_[NextBelow(4)];
    if (slot.model && slot.model->length > 16000) slot = Slot();
    ZRBLOB blob = slot.blob.Get();
    const uint32_t length = slot.model ? slot.model->length : 0;
    const uint32_t freeBytes = slot.model ? static_cast<uint32_t>(slot.model->bytes.size()) - length : 1024;
    const uint32_t offset =
        OneOf({0, 1, length / 2, length - 1, length, length + 1, UINT32_MAX, NextBelow(length + 2)});
    const uint32_t count = OneOf({0, 1, freeBytes, freeBytes + 1, 1023, 1024, NextBelow(20), NextBelow(3000)});
    const uint32_t atMost = NextBelow(8) == 0 ? UINT32_MAX : count;
    Bytes bytes(count), buffer(std::min(atMost, length + 3) + 1, 0x55), read = buffer;
    for (uint8_t& byte : bytes) byte = pattern_ = static_cast<uint8_t>(pattern_ * 5 + 1);
    const bool isGiven = NextBelow(8) != 0, isPut = blob && isGiven && count != 0;
    const uint8_t* given = !isGiven ? nullptr : count != 0 ? bytes.data() : buffer.data();
    uint8_t* to = isGiven ? buffer.data() : nullptr;
    ZRRESULT result = ZR_R_INVALID_ARGUMENTS, expected = result;

    const uint32_t operation = NextBelow(std::size(kFunctions));
    const Function& function = kFunctions[operation];
    const bool hasOther = std::strchr(function.arguments, 'o') != nullptr;
    Note([&] {
      std::string text = function.name;
      const char* separator = "(";
      for (const char* argument = function.arguments; *argument != 0; ++argument) {
        text += std::exchange(separator, ", ");
        text += *argument == 'b'   ? NameOfSlot(slot)
                : *argument == 'o' ? NameOfSlot(other)
                : *argument == 'r'
                    ? (given != nullptr ? Format("{%s}", DescribeBytes(bytes.data(), count).c_str()) : "null")
                : *argument == 'w' ? (to != nullptr ? "buffer" : "null")
                                   : std::to_string(*argument == 'p'   ? offset
                                                    : *argument == 'n' ? count
                                                                       : atMost);
      }
      text += ")";
      return operation <= 1 ? text.append(" as ").append(NameOfSlot(slot)) : text;
    });
    Note([&] {
      std::string text = "before: ";
      text.append(DescribeSlot(slot));
      return hasOther ? text.append("\n          ").append(DescribeSlot(other)) : text;
    });
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
        Note([&] { return Format("with origin %u and direction %u", unsigned{origin}, unsigned{direction}); });
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
    ClaimResult(function.name, result, expected);
    Claim(buffer == read, [&] {
      return std::string(function.name) + " left in the buffer " +
             DescribeDifference(buffer.data(), buffer.size(), read);
    });
    CheckAll();
  }

  void CheckAll() {
    for (const Slot& each : slots_) Check(each);
  }

  void Check(const Slot& slot) {
    ZRBLOB blob = slot.blob.Get();
    Claim((blob != nullptr) == (slot.model != nullptr), [&] {
      return NameOfSlot(slot) +
             (blob != nullptr ? " is not null, the model expects null" : " is null, the model expects a blob");
    });
    if (blob == nullptr || !slot.model) return;
    const ModelBlock& model = *slot.model;
    const ZrBlobBlock& block = *blob->block;
    uint32_t length = 0, position = 0;
    uint8_t after = 9, beyond = 9;
    const bool hasAll = ZrBlobByteLen(blob, &length) == ZR_R_OK && ZrBlobPosition(blob, &position) == ZR_R_OK &&
                        ZrBlobGetAt(blob, length, &after) == ZR_R_OK &&
                        ZrBlobGetAt(blob, length + 1, &beyond) == ZR_R_OK;
    Claim(hasAll, [&] { return "a query of " + NameOfSlot(slot) + " did not return ZR_R_OK"; });
    ClaimFor(slot, "length", length, model.length);
    ClaimFor(slot, "position", position, model.position);
    ClaimFor(slot, "byte after the content", after, block.bytes[length]);
    ClaimFor(slot, "byte past the end", beyond, 0);
    Claim(blob->element->Block() == &block,
          [&] { return NameOfSlot(slot) + " and its element have two different blocks"; });
    ClaimFor(slot, "number of handles that share the block", block.refCount, slot.model.use_count());
    ClaimFor(slot, "byte after the capacity", block.bytes[block.capacity], 0);
    const bool hasBytes =
        block.capacity == model.bytes.size() && std::memcmp(block.bytes, model.bytes.data(), model.bytes.size()) == 0;
    Claim(hasBytes, [&] {
      return NameOfSlot(slot) + ", including the bytes after its content, has " +
             DescribeDifference(block.bytes, block.capacity, model.bytes);
    });
  }

  void ClaimFor(const Slot& slot, const char* what, int64_t found, int64_t expected) {
    Claim(found == expected, [&] {
      return "the " + std::string(what) + " of " + NameOfSlot(slot) + " is " + std::to_string(found) +
             ", the model expects " + std::to_string(expected);
    });
  }

  uint8_t pattern_ = 0;
  std::array<Slot, 4> slots_;
};
