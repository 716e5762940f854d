// The book of the strings that the host shares with others. It knows at any time how many references are out.

#ifndef EXAMPLES_HOST_STRING_BOOK_H
#define EXAMPLES_HOST_STRING_BOOK_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "code_units.h"
#include "owners.h"

class CStringBook {
 public:
  /// Enter takes a reference and holds it until the book goes. Answers the string, lent for as long.
  ZRSTR Enter(StringOwner string);

  /// Write makes a string of these units and enters it. Throws std::bad_alloc if there is no room for it.
  ZRSTR Write(WideView units);

  std::size_t Strings() const { return strings_.size(); }

  /// References counts all references on the book's strings as they are now, the book's own among them.
  std::uint64_t References() const;

  /// Outstanding counts the references that others hold.
  std::uint64_t Outstanding() const { return References() - strings_.size(); }

 private:
  std::vector<StringOwner> strings_;
};

#endif
