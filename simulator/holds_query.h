// A query kind that only the simulator knows.
#pragma once

#include <cstdint>

namespace mirx {

// Answered with one element whose value is a JSON object: the holds and the resulting values.
inline constexpr int32_t kHoldsQuery = 0x51300001;

}  // namespace mirx
