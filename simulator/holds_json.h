// What is held and which values show, as the answer to the holds query.
#pragma once

#include <string>

#include "simulator/holds.h"

namespace simulator {

// A JSON object on one line. "holds": oldest first, each with "holder", "for", "package",
// "identity", "pid" (null when it is not told), "held_ms", "left_ms" (null when it has no end of
// its own) and the number of its "resources". "resources": every known or held one, with
// "resource", "name", "value", "idle" (null for an unknown one) and "by", the holder that the value
// comes from (null: nobody holds it).
std::string holdsJson(const Holds& holds);

}  // namespace simulator
