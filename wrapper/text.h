// String utilities on string_views, for the list builders.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace dovwrapper {

// Splits a text at any of a set of delimiter characters; no piece is empty. The text and the set
// must outlive it.
class Pieces {
  public:
    Pieces(std::string_view text, std::string_view delimiters)
        : mRest(text), mDelimiters(delimiters) {}

    // The next piece; nothing at the end.
    std::optional<std::string_view> next();

  private:
    std::string_view mRest;
    std::string_view mDelimiters;
};

// The first two pieces of a text; nothing when it has fewer.
struct Pair {
    std::string_view first;
    std::string_view second;
};
std::optional<Pair> firstTwo(std::string_view text, std::string_view delimiters);

// Like stringUtils, but return parts of `text`.
std::string_view trimLeft(std::string_view text, std::string_view chars);
std::string_view trimRight(std::string_view text, std::string_view chars);
std::string_view trim(std::string_view text, std::string_view chars);
int32_t parseInt(std::string_view text);

}  // namespace dovwrapper
