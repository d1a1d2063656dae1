// The opcodes that the list builders use.
#pragma once

#include <cstddef>
#include <cstdint>

namespace dovwrapper {

// All opcode tables in one array; dov/DovWrapper.h declares its parts.
extern "C" const int32_t dovOpcodes[19];

// The index in dovOpcodes at which each table begins.
enum OpcodeTable : size_t {
    kTargetLoad = 0,
    kCoreBoost = 3,
    kCoreLimit = 7,
    kFreqBoost = 11,
    kFreqLimit = 15,
};

// Opcodes that do not depend on a position.
inline constexpr int32_t kColocation = 0x01011040;
inline constexpr int32_t kGroupMigrateFrom = 0x01010fb0;
inline constexpr int32_t kGroupMigrateTo = 0x01010fc0;
inline constexpr int32_t kGameUpgradeLevel = 0x01011040;  // the same resource as kColocation
inline constexpr int32_t kGameUpgradeData = 0x010115b0;

}  // namespace dovwrapper
