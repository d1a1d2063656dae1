// Every call that the library makes to its service, as one table.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <dov/ClientCallback.h>

// What the service answers to an operation beside its status.
enum class Reply { kNone, kNumber, kText, kData, kOneWay };

struct Operation {
    const char* name;
    // The service's operation that it calls.
    const char* service;
    Reply reply;
    // Makes the call and gives what came out of it as text: the number or the text returned, what
    // was thrown, or nothing. `n` goes to the service where there is room for it. Any thread.
    std::string (*call)(int n);
    // What comes out when the call fails.
    const char* failed = "-1";
};

// All operations, in the order of the headers.
const std::vector<Operation>& operations();

// Registers `callback` for a resource in the way of the operations, which see to it that thermal
// registrations meet no other. Gives the handle.
int registerListener(int opcode, const std::shared_ptr<IClientCallback>& callback);

// Ends the registration that the calling thread has made last by any of these; does nothing
// when there is none. Until then the same `n` cannot be registered again.
void endRegistration();
