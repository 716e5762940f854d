// Texts for libraries that hold them in 16-bit units.

#pragma once

#include <memory>
#include <string>

inline std::u16string Widened(const std::string& text) { return std::u16string(text.begin(), text.end()); }

using SharedText = std::shared_ptr<const std::u16string>;
