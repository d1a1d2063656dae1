/// @file
/// The one record that every resource list of the library is made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace DovClient {

/// One resource setting. A plain value: copying copies the text, an absent value stays absent.
struct Resource {
    /// Which resource; 0 names none. The service defines the opcodes.
    int32_t opcode = 0;
    /// The value to set, as text. Which calls accept an absent or empty one is said there.
    std::optional<std::string> value;
};

}  // namespace DovClient
