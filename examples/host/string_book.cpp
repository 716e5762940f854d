#include "host/string_book.h"

#include <new>
#include <utility>

#include "code_units.h"

ZRSTR CStringBook::Enter(StringOwner string) { return strings_.emplace_back(std::move(string)).get(); }

ZRSTR CStringBook::Write(WideView units) {
  StringOwner string(MakeString(units));
  if (string == nullptr) throw std::bad_alloc();
  return Enter(std::move(string));
}

std::uint64_t CStringBook::References() const {
  std::uint64_t sum = 0;
  for (const StringOwner& string : strings_) sum += ZrStringRefCount(string.get());
  return sum;
}
