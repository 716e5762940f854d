// The one question that the rest of the library asks about its state as a whole: is it initialised?
//
// The other objects of the state are declared in the headers of their classes.

#pragma once

// Returns whether ZrInitialize is in force: whether the count of initialisations is above 0.
//
// While another thread runs the last ZrUninitialize, this waits for its end. Another thread may change the count as
// soon as this has returned, so the result is only a check of the caller's protocol.
//
// noexcept: a lock that the system can't lock terminates the process.
[[nodiscard]] bool IsLibraryInitialized() noexcept;
