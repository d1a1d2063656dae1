// How large a message may be.
#pragma once

#include <string>

#include "common/transport.h"
#include "dovctl/arguments.h"

namespace dovctl {

// "sockets, which carry 100000 bytes".
std::string limitText(const dovcommon::Transport& transport);

// Why the values of a command cannot be sent; empty if they can. Counts what they take up in a
// parcel, without the rest of the request.
std::string whyTooLarge(const dovcommon::Transport& transport, const Arguments& arguments);

}  // namespace dovctl
