// Stands in for the service without a transport: its replies are bytes that a fuzz target chooses.
#pragma once

#include <cstdint>
#include <span>

namespace fuzz {

// From now on both bindings find a service, which answers every transaction with these bytes. They
// must stay as they are until the next call. Keeps what the library logs from being printed.
void answerWith(std::span<const uint8_t> reply);

// From now on no service is declared.
void answerNothing();

}  // namespace fuzz
