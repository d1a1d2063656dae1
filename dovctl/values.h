// How the texts of the command line become values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include <dov/Resource.h>

namespace dovctl {

// What can be acquired: an event by its number, and the action's name where it was given by name.
struct Event {
    int32_t id = 0;
    std::string action;
};

// PATH or PATH=VALUE.
struct PathValue {
    std::string path;
    std::optional<std::string> value;
};

// The value of one parameter; a flag has none.
using Value =
        std::variant<std::monostate, std::string, int32_t, Event, DovClient::Resource, PathValue>;

// Reads one value. Returns nothing, and says in `why` what is wrong with `text`, when it is not
// one.
using Reader = std::optional<Value> (*)(const std::string& text, std::string& why);

std::optional<Value> readText(const std::string& text, std::string& why);
// Decimal, or hexadecimal behind 0x.
std::optional<Value> readInt32(const std::string& text, std::string& why);
// A number from 1 on.
std::optional<Value> readMilliseconds(const std::string& text, std::string& why);
// A number, or an action's name with or without the prefix "VANTEL_".
std::optional<Value> readEvent(const std::string& text, std::string& why);
// OPCODE, OPCODE= or OPCODE=VALUE: a resource whose value is absent, empty or VALUE.
std::optional<Value> readResource(const std::string& text, std::string& why);
// PATH or PATH=VALUE; the path ends at the first "=".
std::optional<Value> readPathValue(const std::string& text, std::string& why);

struct Range {
    int64_t from;
    int64_t to;
};

// The number that `text` is from end to end, as for readInt32.
std::optional<int64_t> readNumber(std::string_view text, Range range, std::string& why);

}  // namespace dovctl
