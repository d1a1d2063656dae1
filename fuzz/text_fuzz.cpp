// Fuzzes the string utilities and the list builders against straightforward implementations.
//
// Input: one character to split and trim by, then the text.
#include <algorithm>
#include <cstdlib>

#include <dov/DovWrapper.h>

using DovClient::Resource;

namespace {

using Texts = std::vector<std::string>;
using Resources = std::vector<Resource>;

constexpr int32_t kOpcodes[] = {0x010108a0, 0x010108b0, 0x010108c0, 0x01010b10, 0x01010b20,
                                0x01010b30, 0x01020070, 0x01010b90, 0x01010ba0, 0x01010bb0,
                                0x01020080, 0x01010010, 0x01010020, 0x01010030, 0x01020050,
                                0x010100a0, 0x010100b0, 0x010100c0, 0x01020060};

void check(bool holds) {
    if (!holds) std::abort();
}

bool isIn(const std::string& set, char c) {
    return set.find(c) != std::string::npos;
}

Texts split(const std::string& text, const std::string& delimiters) {
    Texts pieces = {""};
    for (const char c : text) {
        if (isIn(delimiters, c)) pieces.emplace_back();
        if (!isIn(delimiters, c)) pieces.back() += c;
    }
    std::erase(pieces, "");
    return pieces;
}

std::string trim(std::string text, const std::string& set, bool left, bool right) {
    while (left && !text.empty() && isIn(set, text.front())) text.erase(0, 1);
    while (right && !text.empty() && isIn(set, text.back())) text.pop_back();
    return text;
}

int32_t parseInt(const std::string& text) {
    const long number = std::strtol(text.c_str(), nullptr, 10);
    return number < INT32_MIN || number > INT32_MAX ? 0 : static_cast<int32_t>(number);
}

Resources targetLoad(const std::string& data) {
    Resources list;
    const Texts pieces = split(data, ",");
    for (size_t i = 0; i < pieces.size() && i < std::size(kOpcodes); ++i) {
        const Texts parts = isIn(data, '-') ? split(pieces[i], "-") : Texts{"", pieces[i]};
        if (parts.size() >= 2) list.push_back({kOpcodes[i], parts[1]});
    }
    return list;
}

Resources colocation(const std::string& data) {
    Resources list;
    for (const std::string& piece : split(data, ",")) {
        const Texts parts = split(piece, ":");
        if (parts.size() < 2) continue;
        if (parts[0] == "colocation") list.push_back({0x01011040, parts[1]});
        const Texts numbers = split(parts[1], "-");
        if (parts[0] != "groupmigrate" || numbers.size() < 2) continue;
        const int32_t a = parseInt(numbers[0]), b = parseInt(numbers[1]);
        if (a <= b || a == -1 || b == -1) continue;
        list.push_back({0x01010fb0, std::to_string(a)});
        list.push_back({0x01010fc0, std::to_string(b)});
    }
    return list;
}

Resources gameAdp(const std::string& data) {
    Resources list;
    const Texts groups = split(data, ";");
    for (size_t g = 0; g < groups.size() && g < 4; ++g) {
        if (!isIn(groups[g], ',')) continue;
        const Texts items = split(groups[g], ",");
        for (size_t i = 0, o = 3 + 4 * g; i < items.size() && o < std::size(kOpcodes); ++i, ++o) {
            list.push_back({kOpcodes[o], trim(items[i], " \n\r\t", true, true)});
        }
    }
    return list;
}

bool same(const Resources& a, const Resources& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.opcode == y.opcode && x.value == y.value;
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string text(data + 1, data + size);
    const char set[] = {static_cast<char>(data[0]), 'a', '\0'};  // an empty set if data[0] is zero

    check(stringUtils::parseInt(text) == parseInt(text));
    check(stringUtils::trimLeft(text, set) == trim(text, set, true, false));
    check(stringUtils::trimRight(text, set) == trim(text, set, false, true));
    check(stringUtils::trim(text, set) == trim(text, set, true, true));
    check(stringUtils::split(text, set) == split(text, set));

    check(same(getTargetLoadList(text), targetLoad(text)));
    check(same(getColocationList(text), colocation(text)));
    check(same(getGameAdpList(text), gameAdp(text)));
    return 0;
}
