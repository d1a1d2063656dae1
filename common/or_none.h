// How an empty text appears in the log.
#pragma once

#include <string>
#include <string_view>

namespace dovcommon {

// A zero character follows in both cases, so data() may go to the log as it is.
inline std::string_view orNone(const std::string& text) {
    return text.empty() ? std::string_view("none") : text;
}

}  // namespace dovcommon
