// The toll of every other row: each export pays it once, a peer that inlines does not.

#include "boundary.h"
#include "row.h"

void CallRows() {
  Row("call of an exported function", "floor", [] { BoundaryNothing(); });
}
