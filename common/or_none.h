// How an empty text appears in the log.
#pragma once

#include <string>

namespace dovcommon {

inline const char* orNone(const std::string& text) {
    return text.empty() ? "none" : text.c_str();
}
const char* orNone(std::string&&) = delete;  // the result would not outlive it

}  // namespace dovcommon
