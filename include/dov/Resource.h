/// @file
/// The element of every resource list.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace DovClient {

/// One resource setting. Copying copies the text; an absent value stays absent.
struct Resource {
    /// The resource; 0 names none. The service defines the opcodes.
    int32_t opcode = 0;
    /// The value to set, as text. Each call documents whether it accepts an absent or empty value.
    std::optional<std::string> value;
};

}  // namespace DovClient
