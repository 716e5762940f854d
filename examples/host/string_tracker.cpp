// Each string in the list holds one reference of the tracker; every further reference is held by somebody else.

#include "host/string_tracker.h"

#include <new>
#include <utility>

#include "code_units.h"

ZRSTR CStringTracker::Add(StringOwner string) { return strings_.emplace_back(std::move(string)).get(); }

ZRSTR CStringTracker::Create(WideView units) {
  StringOwner string(MakeString(units));
  if (string == nullptr) throw std::bad_alloc();
  return Add(std::move(string));
}

std::uint64_t CStringTracker::References() const {
  std::uint64_t sum = 0;
  for (const StringOwner& string : strings_) sum += ZrStringRefCount(string.get());
  return sum;
}
