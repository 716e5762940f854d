// The cost of calling a function of a shared library. Each ZrCore row includes it once per call; a peer that the
// compiler inlines doesn't have it.

#include "boundary.h"
#include "row.h"

void CallRows() {
  Row("call of an exported function", "lower bound", [] { BoundaryNothing(); });
}
