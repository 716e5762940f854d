// The values of cells, as the library knows them: each title of bodies.csv stands for one type.

#ifndef EXAMPLES_MODULE_VALUE_H
#define EXAMPLES_MODULE_VALUE_H

#include <zrcore/zrcore.h>

#include <memory>

#include "code_units.h"

/// ValueKind is what a column's title promises: "Body" an identity, "Place" numbers such as 3.1 (planet, moon),
/// "Discovered" a date, "Period d" a number of days, "Note" a text that is kept as UTF-8. Others are plain text.
enum class ValueKind { Text, Identity, Place, Moment, Span, Bytes };

ValueKind KindOfTitle(WideView title);

/// countedHandles is how many records the values of all threads own; the owners keep it.
extern uint32_t countedHandles;

template <class Record, auto destroy>
struct Destroyer {
  void operator()(Record* record) const noexcept {
    (void)destroy(record);
    (void)ZrInterlockedDecrementU32(&countedHandles);
  }
};
template <class Record, auto destroy>
using RecordOwner = std::unique_ptr<Record, Destroyer<Record, destroy>>;

/// Own gives an owner a record, unless it is null.
template <class Owner>
void Own(Owner& owner, typename Owner::pointer record) noexcept {
  if (record != nullptr) (void)ZrInterlockedIncrementU32(&countedHandles);
  owner.reset(record);
}

/// Value is one cell's value. Only the member of its kind means something.
struct Value {
  ValueKind kind = ValueKind::Text;
  RecordOwner<ZRUUID, ZrDestroyUUID> identity;
  RecordOwner<ZRREF, ZrDestroyREF> place;
  ZRDATETIME moment = 0;
  ZRTIMESPAN span = 0;
  RecordOwner<tagZRBLOB, ZrDestroyBlob> bytes;
};

/// ReadValue makes the value of a cell. An empty cell, and one that doesn't read as its column's kind, stays a text;
/// every body is given a new identity.
///
/// @throws std::bad_alloc
Value ReadValue(ValueKind kind, WideView text);

/// ShortText is what a cell of the table shows of its value.
///
/// @param text  what the cell was read from: the answer for a text and for an identity.
WideText ShortText(const Value& value, WideView text);

/// FullText is all that there is to tell about a value; empty for a text.
WideText FullText(const Value& value);

#endif
