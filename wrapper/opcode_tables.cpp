// The opcode tables: one array with a symbol for each part.
#include "wrapper/opcode_tables.h"

#include <iterator>

#include <dov/DovWrapper.h>

// Compat: a position beyond the end of a table selects from the next, so the order matters.
// clang-format off
extern "C" [[gnu::used]] const int32_t dovOpcodes[] = {
    0x010108a0, 0x010108b0, 0x010108c0,              // opCodeTargetLoad
    0x01010b10, 0x01010b20, 0x01010b30, 0x01020070,  // opCodeAdpXpuCoreBoost
    0x01010b90, 0x01010ba0, 0x01010bb0, 0x01020080,  // opCodeAdpXpuCoreLimit
    0x01010010, 0x01010020, 0x01010030, 0x01020050,  // opCodeAdpXpuFreqBoost
    0x010100a0, 0x010100b0, 0x010100c0, 0x01020060,  // opCodeAdpXpuFreqLimit
};
// clang-format on

// Defines `name` as a symbol for `length` entries of dovOpcodes from `first`. C++ cannot alias part
// of an array; the assembler can.
#define OPCODE_TABLE(name, table, first, length)                \
    static_assert(dovwrapper::table == (first));                \
    static_assert(std::size(name) == (length));                 \
    static_assert((first) + (length) <= std::size(dovOpcodes)); \
    __asm__(".globl " #name "; .type " #name                    \
            ", %object; "                                       \
            ".set " #name ", dovOpcodes + 4 * " #first          \
            "; "                                                \
            ".size " #name ", 4 * " #length)

OPCODE_TABLE(opCodeTargetLoad, kTargetLoad, 0, 3);
OPCODE_TABLE(opCodeAdpXpuCoreBoost, kCoreBoost, 3, 4);
OPCODE_TABLE(opCodeAdpXpuCoreLimit, kCoreLimit, 7, 4);
OPCODE_TABLE(opCodeAdpXpuFreqBoost, kFreqBoost, 11, 4);
OPCODE_TABLE(opCodeAdpXpuFreqLimit, kFreqLimit, 15, 4);
