// A heap that fails on demand, in the calling thread: malloc, calloc and realloc as the library's objects call them,
// and the global allocation function.

#pragma once

// Counts allocations from now on and fails the n-th, and that one only; 0 fails none.
void FailAllocation(int n);

// Ends that; whether the failure came about.
bool AllocationFailed();
