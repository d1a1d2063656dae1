// The holds and the resulting values as JSON: the answer to the holds query.
#pragma once

#include <string>

#include "simulator/holds.h"

namespace simulator {

// A JSON object on one line, short enough for one answer.
//
// "holds": oldest first, each with "holder", "for", "package", "identity", "pid" (null when
// unknown), "held_ms", "left_ms" (null when it holds until released) and the number of its
// "resources".
// "resources": every known or held one, with "resource", "name", "value", "idle" (null for an
// unknown one) and "by", the holder that set the value (null when nobody holds it).
// "holds_left_out" and "resources_left_out": how many did not fit. Long texts are shortened.
std::string holdsJson(const Holds& holds);

}  // namespace simulator
