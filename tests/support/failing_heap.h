// A heap that fails on demand in the calling thread: malloc, calloc and realloc when the library's objects call them,
// and the global operator new.

#pragma once

// Counts allocations from now on and fails only the n-th. 0 fails none.
void FailAllocation(int n);

// Stops counting. Returns whether an allocation has failed.
bool AllocationFailed();

// If not null, it is called with each block that the library's objects free, before the heap frees the block.
extern void (*g_onFree)(const void* block);
