// Text on a terminal: what may be shown of it, how wide it is, and which word comes close.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace dovctl {

// `text` without anything that a terminal obeys: control characters and bytes that are not UTF-8
// become "\x1b". Line feeds stay if `lines` is set.
std::string printable(std::string_view text, bool lines = false);

// How many columns `text`, which is UTF-8, takes on a terminal.
size_t columnsOf(std::string_view text);

// The start of `text` that fits into `columns`.
std::string_view cut(std::string_view text, size_t columns);

// ASCII only, whatever the locale.
std::string upperCase(std::string_view text);

// "; did you mean NAME?" if one of `names` is nearly `word`, else nothing. Ignores case.
std::string didYouMean(std::string_view word, std::span<const std::string> names);

}  // namespace dovctl
