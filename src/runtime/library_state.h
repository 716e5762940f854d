// What the rest of the library may ask of its state as a whole.

#pragma once

// Whether ZrInitialize is in force. Waits out a last ZrUninitialize; the answer may be old by the time it is read.
[[nodiscard]] bool IsLibraryInitialized() noexcept;
