// stringUtils, and the same functions on string_views.
#include <algorithm>
#include <charconv>

#include <dov/DovWrapper.h>

#include "wrapper/text.h"

namespace dovwrapper {

std::optional<std::string_view> Pieces::next() {
    // Written out: texts are short, usually with one delimiter, and the library searches cost a
    // call per character.
    const auto isDelimiter = [this](char c) {
        return mDelimiters.size() == 1 ? c == mDelimiters.front()
                                       : mDelimiters.find(c) != std::string_view::npos;
    };
    const auto begin = std::find_if_not(mRest.begin(), mRest.end(), isDelimiter);
    mRest.remove_prefix(static_cast<size_t>(begin - mRest.begin()));
    if (mRest.empty()) return std::nullopt;
    const auto end = std::find_if(mRest.begin(), mRest.end(), isDelimiter);
    const std::string_view piece(mRest.data(), static_cast<size_t>(end - mRest.begin()));
    mRest.remove_prefix(piece.size());
    return piece;
}

std::optional<Pair> firstTwo(std::string_view text, std::string_view delimiters) {
    Pieces pieces(text, delimiters);
    const auto first = pieces.next();
    const auto second = pieces.next();
    if (!second) return std::nullopt;
    return Pair{*first, *second};
}

std::string_view trimLeft(std::string_view text, std::string_view chars) {
    text.remove_prefix(std::min(text.find_first_not_of(chars), text.size()));
    return text;
}

std::string_view trimRight(std::string_view text, std::string_view chars) {
    return {text.data(), text.find_last_not_of(chars) + 1};  // npos + 1 is 0
}

std::string_view trim(std::string_view text, std::string_view chars) {
    return trimRight(trimLeft(text, chars), chars);
}

int32_t parseInt(std::string_view text) {
    text = trimLeft(text, " \t\n\v\f\r");
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return 0;
    }
    int32_t number = 0;  // stays 0 when the conversion fails
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace dovwrapper

namespace stringUtils {

const char* WHITESPACE = " \n\r\t";

// NOLINTBEGIN(performance-unnecessary-value-param): callers are compiled against these signatures.

bool contains(std::string s, std::string sub) {
    return s.find(sub) != std::string::npos;
}

bool equals(std::string a, std::string b) {
    return a == b;
}

int32_t parseInt(std::string s) {
    return dovwrapper::parseInt(s);
}

std::string valueOf(int32_t n) {
    return std::to_string(n);
}

std::string trimLeft(const std::string& s, const char* chars) {
    return std::string(dovwrapper::trimLeft(s, chars));
}

std::string trimRight(const std::string& s, const char* chars) {
    return std::string(dovwrapper::trimRight(s, chars));
}

std::string trim(const std::string& s, const char* chars) {
    return std::string(dovwrapper::trim(s, chars));
}

std::vector<std::string> split(const std::string& s, std::string delimiters) {
    std::vector<std::string> result;
    dovwrapper::Pieces pieces(s, delimiters);
    while (const auto piece = pieces.next()) result.emplace_back(*piece);
    return result;
}

// NOLINTEND(performance-unnecessary-value-param)

}  // namespace stringUtils
