// Text on a terminal: what may be shown of it, how wide it is, and which word comes close.
#include "dovctl/text.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <android-base/stringprintf.h>

namespace dovctl {
namespace {

struct Character {
    std::string_view bytes;
    wchar_t code;  // 0: the byte is not UTF-8
    size_t columns;
};

// The characters of `text`, read as UTF-8 whatever the user's locale.
std::vector<Character> charactersOf(std::string_view text) {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = uselocale(utf8);
    std::vector<Character> characters;
    while (!text.empty()) {
        mbstate_t state = {};
        wchar_t code = 0;
        size_t length = mbrtowc(&code, text.data(), text.size(), &state);
        if (length == 0 || length > text.size()) {
            length = 1;
            code = 0;
        }
        const auto columns = static_cast<size_t>(std::max(wcwidth(code), 0));
        characters.push_back({text.substr(0, length), code, columns});
        text.remove_prefix(length);
    }
    uselocale(before);
    return characters;
}

bool commandsTerminal(wchar_t code) {
    return code < 0x20 || (code >= 0x7f && code < 0xa0);
}

// How many letters must be inserted, dropped or replaced to turn one word into the other.
size_t distance(std::string_view from, std::string_view to) {
    std::vector<size_t> row(to.size() + 1);
    for (size_t j = 0; j <= to.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= from.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i);
        for (size_t j = 1; j <= to.size(); ++j) {
            const size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, replaced}));
        }
    }
    return row[to.size()];
}

}  // namespace

std::string printable(std::string_view text, bool lines) {
    std::string shown;
    for (const auto& [bytes, code, columns] : charactersOf(text)) {
        if (!commandsTerminal(code) || (lines && code == L'\n')) {
            shown += bytes;
            continue;
        }
        for (const char byte : bytes) {
            android::base::StringAppendF(&shown, "\\x%02x", static_cast<unsigned char>(byte));
        }
    }
    return shown;
}

size_t columnsOf(std::string_view text) {
    size_t sum = 0;
    for (const Character& character : charactersOf(text)) sum += character.columns;
    return sum;
}

std::string_view cut(std::string_view text, size_t columns) {
    size_t length = 0;
    for (const Character& character : charactersOf(text)) {
        if (character.columns > columns) break;
        columns -= character.columns;
        length += character.bytes.size();
    }
    return text.substr(0, length);
}

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

std::string didYouMean(std::string_view word, std::span<const std::string> names) {
    const std::string wanted = upperCase(word);
    const std::string* closest = nullptr;
    // More letters may be wrong in a long word, but most of it must be right.
    size_t best = std::min<size_t>(wanted.size() / 3, 4) + 1;
    for (const std::string& name : names) {
        const size_t difference = distance(wanted, upperCase(name));
        if (difference >= best) continue;
        best = difference;
        closest = &name;
    }
    return closest == nullptr ? "" : "; did you mean " + *closest + "?";
}

}  // namespace dovctl
