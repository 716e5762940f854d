// UTF-8 as the system's calls want and give it. Strict where a name is meant, lossy where a person reads.

#pragma once

#include <optional>
#include <string>
#include <string_view>

// Null if a surrogate has no partner: no file has such a name.
[[nodiscard]] std::optional<std::string> ToUtf8(std::u16string_view text);

// U+FFFD stands for a surrogate without a partner.
[[nodiscard]] std::string ToUtf8Lossy(std::u16string_view text);

// U+FFFD stands for each byte that belongs to no well-formed sequence.
[[nodiscard]] std::u16string FromUtf8Lossy(std::string_view bytes);
