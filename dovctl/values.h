// Reads the words of the command line as values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include <dov/Resource.h>

namespace dovctl {

// An event that can be acquired: its number, and its action's name if it was given by name.
struct Event {
    int32_t id = 0;
    std::string action;
};

// PATH or PATH=VALUE.
struct PathValue {
    std::string path;
    std::optional<std::string> value;
};

// The value of one parameter. A flag has no value.
using Value =
        std::variant<std::monostate, std::string, int32_t, Event, DovClient::Resource, PathValue>;

// Reads one value. If `text` is not one, returns nothing and puts the reason into `why`.
using Reader = std::optional<Value> (*)(const std::string& text, std::string& why);

std::optional<Value> readText(const std::string& text, std::string& why);
// Decimal, or hexadecimal after 0x.
std::optional<Value> readInt32(const std::string& text, std::string& why);
// A number from 1 on.
std::optional<Value> readMilliseconds(const std::string& text, std::string& why);
// A number, or an action's name in any case, with or without the prefix "VANTEL_".
std::optional<Value> readEvent(const std::string& text, std::string& why);
// OPCODE, OPCODE= or OPCODE=VALUE: a resource whose value is absent, empty or VALUE.
std::optional<Value> readResource(const std::string& text, std::string& why);
// The same for the low-level client, which sends no resource without a value.
std::optional<Value> readSetting(const std::string& text, std::string& why);
// PATH or PATH=VALUE; the path ends at the first "=".
std::optional<Value> readPathValue(const std::string& text, std::string& why);
// PATH=VALUE.
std::optional<Value> readPathSetting(const std::string& text, std::string& why);
// OPCODE if the text starts with a digit, else PATH; either with =VALUE or without.
std::optional<Value> readOpcodeOrPath(const std::string& text, std::string& why);

// "0x01010010".
std::string opcodeText(int32_t opcode);

}  // namespace dovctl
