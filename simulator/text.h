// Escapes, quotes and shortens texts from other processes.
#pragma once

#include <string>

namespace simulator {

// `text` with control characters as "\x1b", so that it stays on one line and a terminal does not
// obey it. Other UTF-8 characters stay as they are.
std::string printable(const std::string& text);

// `text` in quotes, printable, with quotes and backslashes escaped.
std::string quoted(const std::string& text);

// `text`, or its start and the number of bytes that were cut: "abc… (7 more bytes)". Cuts between
// characters.
std::string shortened(const std::string& text, size_t longest);

}  // namespace simulator
