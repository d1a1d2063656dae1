// The transport between a test and its service: sockets or the kernel's binder driver.
#include "tests/support/transport.h"

#include <stdlib.h>

#include <stdexcept>

Transport& Transport::chosen() {
    static const std::unique_ptr<Transport> transport = [] {
        const char* const variable = getenv("DOV_TEST_TRANSPORT");
        const std::string name = variable == nullptr ? "sockets" : variable;
        if (name == "driver") return makeDriverTransport();
        if (name == "sockets") return makeSocketTransport();
        throw std::runtime_error("DOV_TEST_TRANSPORT: unknown transport '" + name + "'");
    }();
    return *transport;
}
