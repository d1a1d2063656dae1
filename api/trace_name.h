// The name of a trace section, built in a local buffer.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include <cutils/trace.h>

namespace dov {

// Collects the name piece by piece, without allocating; cuts off what does not fit.
class TraceName {
  public:
    explicit TraceName(std::string_view text) { append(text); }

    TraceName& append(std::string_view text) {
        const size_t length = std::min(text.size(), kMaxLength - mLength);
        std::memcpy(mText.data() + mLength, text.data(), length);
        mLength += length;
        return *this;
    }

    TraceName& append(int32_t number) {
        std::array<char, 12> digits;
        const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
        return append(std::string_view(digits.data(), static_cast<size_t>(end - digits.begin())));
    }

    // A zero character in the text ends the name there.
    TraceName& appendOrNone(const std::string& text) {
        return append(text.empty() ? std::string_view("none") : text);
    }

    // Begins a section with this name and ends it at once, if tracing is on: it marks the call and
    // does not span it.
    void mark() {
        mText[mLength] = '\0';
        atrace_begin(ATRACE_TAG_ALWAYS, mText.data());
        atrace_end(ATRACE_TAG_ALWAYS);
    }

  private:
    static constexpr size_t kMaxLength = 1022;

    std::array<char, kMaxLength + 1> mText;  // not initialised behind mLength
    size_t mLength = 0;
};

}  // namespace dov
