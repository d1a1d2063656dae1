// How the texts of the command line become values.
#include "dovctl/values.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include <dov/DovWrapper.h>

namespace dovctl {

std::optional<int64_t> readNumber(std::string_view text, Range range, std::string& why) {
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = hex ? text.substr(2) : text;
    const char* const end = digits.data() + digits.size();
    int64_t number = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, number, hex ? 16 : 10);
    // A sign is read in front of hexadecimal digits too, but "0x-1" is not a number.
    const bool signInside = hex && digits.starts_with('-');
    if (error == std::errc::invalid_argument || stop != end || signInside) {
        why = "'" + std::string(text) + "' is not a number";
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range || number < range.from || number > range.to) {
        why = "'" + std::string(text) + "' is not in the range " + std::to_string(range.from) +
              ".." + std::to_string(range.to);
        return std::nullopt;
    }
    return number;
}

std::optional<Value> readText(const std::string& text, std::string& /*why*/) {
    return text;
}

std::optional<Value> readInt32(const std::string& text, std::string& why) {
    constexpr Range kInt32{std::numeric_limits<int32_t>::min(),
                           std::numeric_limits<int32_t>::max()};
    const std::optional<int64_t> number = readNumber(text, kInt32, why);
    if (!number) return std::nullopt;
    return static_cast<int32_t>(*number);
}

std::optional<Value> readMilliseconds(const std::string& text, std::string& why) {
    const std::optional<int64_t> number =
            readNumber(text, {1, std::numeric_limits<int32_t>::max()}, why);
    if (!number) return std::nullopt;
    return static_cast<int32_t>(*number);
}

std::optional<Value> readEvent(const std::string& text, std::string& why) {
    constexpr std::string_view kPrefix = "VANTEL_";
    const std::string name = text.starts_with(kPrefix) ? text.substr(kPrefix.size()) : text;
    if (!name.starts_with("ACTION_")) {
        const std::optional<Value> number = readInt32(text, why);
        if (!number) return std::nullopt;
        return Event{.id = std::get<int32_t>(*number), .action = {}};
    }
    const auto action = std::find(gActionList.begin(), gActionList.end(), name);
    if (action == gActionList.end()) {
        why = "there is no action '" + name + "'";
        return std::nullopt;
    }
    return Event{.id = static_cast<int32_t>(action - gActionList.begin()), .action = name};
}

std::optional<Value> readResource(const std::string& text, std::string& why) {
    // Opcodes are written as the 32 bits they are; the contract carries them as a signed number.
    constexpr Range kOpcode{0, std::numeric_limits<uint32_t>::max()};
    const size_t equals = text.find('=');
    const std::optional<int64_t> opcode = readNumber(text.substr(0, equals), kOpcode, why);
    if (!opcode) return std::nullopt;
    DovClient::Resource resource;
    resource.opcode = static_cast<int32_t>(static_cast<uint32_t>(*opcode));
    if (equals != std::string::npos) resource.value = text.substr(equals + 1);
    return resource;
}

std::optional<Value> readPathValue(const std::string& text, std::string& why) {
    const size_t equals = text.find('=');
    PathValue result{.path = text.substr(0, equals), .value = {}};
    if (result.path.empty()) {
        why = "'" + text + "' has no path";
        return std::nullopt;
    }
    if (equals != std::string::npos) result.value = text.substr(equals + 1);
    return result;
}

}  // namespace dovctl
