// What the tool needs from the operating system beyond the standard library.

#ifndef ZRMODULE_SYSTEM_H
#define ZRMODULE_SYSTEM_H

/// Whether standard output is a terminal that shows colours. The environment variable NO_COLOR, if it is not empty,
/// turns colours off (no-color.org).
[[nodiscard]] bool IsColourTerminal();

#endif
