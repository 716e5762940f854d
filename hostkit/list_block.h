// Makes a list for a caller: records, followed by the arrays and texts to which they point, in one memory block.
//
// The list is written twice by the same code: first into nothing, which counts the bytes, and then into the block.

#ifndef HOSTKIT_LIST_BLOCK_H
#define HOSTKIT_LIST_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unordered_map>

#include "zr/string.hpp"

class CListBlock {
 public:
  /// Reserves an array; null while counting, or if it is empty.
  template <class T>
  [[nodiscard]] T* Reserve(std::size_t count) noexcept {
    used_ = (used_ + alignof(T) - 1) / alignof(T) * alignof(T);
    T* const first = start_ != nullptr && count != 0 ? reinterpret_cast<T*>(start_ + used_) : nullptr;
    used_ += count * sizeof(T);
    return first;
  }

  /// Writes an element of a reserved array.
  template <class T>
  static void Put(T* first, std::size_t index, const T& value) noexcept {
    if (first != nullptr) new (first + index) T(value);
  }

  /// Copies a text, with its terminator.
  [[nodiscard]] const WCHAR* Text(const zr::String& text) {
    const zr::StringView view = text.View();
    WCHAR* const copy = Reserve<WCHAR>(view.size() + 1);
    if (copy != nullptr) {
      if (!view.empty()) std::memcpy(copy, view.data(), view.size() * sizeof(WCHAR));
      copy[view.size()] = 0;
    }
    return copy;
  }

  /// Copies a text once, however many records point to it. Its handle must not be released before the list is complete.
  [[nodiscard]] const WCHAR* SharedText(const zr::String& text) {
    const auto [place, isNew] = shared_.try_emplace(text.Get());
    if (isNew) place->second = Text(text);
    return place->second;
  }

  /// MakeList calls write(block) twice; `write` returns its first array. `*list` receives the second one, in a memory
  /// block of malloc.
  template <class T, class Write>
  [[nodiscard]] static ZRRESULT MakeList(T** list, const Write& write) {
    CListBlock counting(nullptr);
    (void)write(counting);
    if (counting.used_ == 0) return ZR_R_OK;
    void* const memory = std::malloc(counting.used_);
    if (memory == nullptr) return ZR_R_NO_MEMORY;
    CListBlock writing(static_cast<std::byte*>(memory));
    try {
      *list = write(writing);
    } catch (...) {
      std::free(memory);
      throw;
    }
    return ZR_R_OK;
  }

 private:
  explicit CListBlock(std::byte* start) : start_(start) {}

  std::byte* start_;  // null while counting
  std::size_t used_ = 0;
  std::unordered_map<const WCHAR*, const WCHAR*> shared_;  // the copies of shared texts, by their handles
};

#endif
