// A fake service without a transport, whose replies are bytes that a fuzz target chooses.
#pragma once

#include <cstdint>
#include <span>

namespace fuzz {

// Makes both bindings find a service that answers every transaction with `reply`. The bytes must
// stay valid until the next call of this function. Also discards the library's log lines.
void answerWith(std::span<const uint8_t> reply);

// Makes the service undeclared.
void answerNothing();

}  // namespace fuzz
