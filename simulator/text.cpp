// Escapes, quotes and shortens texts from other processes.
#include "simulator/text.h"

#include <android-base/stringprintf.h>

namespace simulator {

using android::base::StringAppendF;
using android::base::StringPrintf;

namespace {

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

// The length of the UTF-8 character at `at`; 0 if none starts there. Does not check for overlong
// forms of three bytes and more, and for surrogates: terminals do not obey them.
size_t characterAt(const std::string& text, size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const size_t length = lead < 0x80   ? 1
                          : lead < 0xc2 ? 0
                          : lead < 0xe0 ? 2
                          : lead < 0xf0 ? 3
                          : lead < 0xf5 ? 4
                                        : 0;
    for (size_t i = 1; i < length; ++i) {
        if (at + i >= text.size() || !isContinuation(text[at + i])) return 0;
    }
    return length;
}

bool isControl(const std::string& text, size_t at, size_t length) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (length == 1) return first < 0x20 || first == 0x7f;
    // U+0080 to U+009F
    return length == 2 && first == 0xc2 && static_cast<unsigned char>(text[at + 1]) < 0xa0;
}

}  // namespace

std::string printable(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const size_t length = characterAt(text, at);
        if (length == 0 || isControl(text, at, length)) {
            // A byte that is not UTF-8 may be a control character to a terminal.
            StringAppendF(&result, "\\x%02x", static_cast<unsigned char>(text[at]));
            ++at;
        } else {
            result.append(text, at, length);
            at += length;
        }
    }
    return result;
}

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return printable(result + "\"");
}

std::string shortened(const std::string& text, size_t longest) {
    if (text.size() <= longest) return text;
    while (longest > 0 && isContinuation(text[longest])) --longest;
    return StringPrintf("%s… (%zu more bytes)", text.substr(0, longest).c_str(),
                        text.size() - longest);
}

}  // namespace simulator
