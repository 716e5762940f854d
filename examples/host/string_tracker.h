// Owns the strings that the host shares with the library and with modules, and counts the references that others hold.
// If any are left at the end, somebody leaks strings.

#ifndef EXAMPLES_HOST_STRING_TRACKER_H
#define EXAMPLES_HOST_STRING_TRACKER_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "code_units.h"
#include "owners.h"

class CStringTracker {
 public:
  /// Add takes a reference and keeps it until the tracker is destroyed. The result is lent for that time.
  ZRSTR Add(StringOwner string);

  /// Create makes a string of these units and adds it. Throws std::bad_alloc when out of memory.
  ZRSTR Create(WideView units);

  std::size_t Count() const { return strings_.size(); }

  /// References returns the current number of references to all strings, including the tracker's own.
  std::uint64_t References() const;

  /// Outstanding returns the number of references that others hold.
  std::uint64_t Outstanding() const { return References() - strings_.size(); }

 private:
  std::vector<StringOwner> strings_;
};

#endif
