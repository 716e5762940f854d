// 16-bit texts for the peers.

#pragma once

#include <memory>
#include <string>

// Only for ASCII: each byte becomes one unit.
inline std::u16string Widened(const std::string& text) { return std::u16string(text.begin(), text.end()); }

using SharedText = std::shared_ptr<const std::u16string>;
