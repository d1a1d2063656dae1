// A table of every call that the library makes to its service.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include <dov/ClientCallback.h>
#include <dov/Resource.h>

// The service's answer to an operation, besides the status.
enum class Reply { kNone, kNumber, kText, kData, kOneWay };

struct Operation {
    const char* name;
    // The name of the service's operation that is called.
    const char* service;
    Reply reply;
    // What call(5) sends: shown() of the recorded call, without the operation's name.
    const char* sent;
    // Makes the call. Returns its outcome as text: the returned number or text, the exception, or
    // nothing. Sends `n` to the service if the operation has an argument for it. Thread-safe.
    std::string (*call)(int n);
    // The outcome of call(5) if the service answers 3: as a number, a text or one element.
    const char* result = "3";
    // The outcome of a failed call.
    const char* failed = "-1";
    // What call(5) logs, one line each: the priority and the text. Lines about an undeclared service
    // and "NAME() failed" follow by themselves; "f NAME" gives another name. A line that begins
    // with a small letter is logged only then: u if the service is undeclared, b if it is bound, s
    // if the call succeeds, f if it fails. Null for "I mirx client NAME".
    const char* log = nullptr;
    // The outcome with an undeclared service, if that is not `failed`.
    const char* unbound = nullptr;
};

// All operations, in the order of the headers.
const std::vector<Operation>& operations();

// Registers `callback` for resources and returns the handle. Never runs in parallel with a thermal
// registration of the table, because the library has no lock for those.
int registerListener(std::list<DovClient::Resource> resources,
                     const std::shared_ptr<IClientCallback>& callback);

// Unregisters the last registration of the calling thread, if there is one. Until then the same
// list cannot be registered again. Returns its handle if it may remain registered, because no
// service was bound; otherwise -1.
int endRegistration();
