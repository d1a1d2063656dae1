// The name of a trace section, built in a local buffer.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <cutils/trace.h>

namespace dov {

// Collects the name piece by piece without allocating; what does not fit is cut off.
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

    // Begins and at once ends a section with this name, if tracing is on: it marks the call, it
    // does not span it.
    void mark() {
        mText[mLength] = '\0';
        atrace_begin(ATRACE_TAG_ALWAYS, mText.data());
        atrace_end(ATRACE_TAG_ALWAYS);
    }

  private:
    static constexpr size_t kMaxLength = 1022;

    std::array<char, kMaxLength + 1> mText;  // the rest of it is never looked at
    size_t mLength = 0;
};

}  // namespace dov
