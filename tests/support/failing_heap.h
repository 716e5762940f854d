// A heap that fails on demand, in the calling thread: malloc, calloc and realloc as the library's objects call them,
// and the global allocation function.

#pragma once

// Counts allocations from now on and fails the n-th, and that one only; 0 fails none.
void FailAllocation(int n);

// Ends that; whether the failure came about.
bool AllocationFailed();

// Sees each block that the library's objects free, before the heap gets it. Null for nobody.
extern void (*g_onFree)(const void* block);
