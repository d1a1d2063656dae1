// A table of every call that the library makes to its service.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <dov/ClientCallback.h>

// The service's answer to an operation, besides the status.
enum class Reply { kNone, kNumber, kText, kData, kOneWay };

struct Operation {
    const char* name;
    // The name of the service's operation that is called.
    const char* service;
    Reply reply;
    // Makes the call. Returns its outcome as text: the returned number or text, the exception, or
    // nothing. Sends `n` to the service if the operation has an argument for it. Thread-safe.
    std::string (*call)(int n);
    // The outcome of a failed call.
    const char* failed = "-1";
};

// All operations, in the order of the headers.
const std::vector<Operation>& operations();

// Registers `callback` for a resource and returns the handle. Never runs in parallel with a thermal
// registration of the table, because the library has no lock for those.
int registerListener(int opcode, const std::shared_ptr<IClientCallback>& callback);

// Unregisters the last registration of the calling thread, if there is one. Until then the same `n`
// cannot be registered again.
void endRegistration();
