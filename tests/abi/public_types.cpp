// Leads to the types that callers use or derive from, also to those that the library itself only
// points to.
#include <dov/ClientCallback.h>

extern "C" void dovPublicTypes(DovClient::Resource& /*resource*/, IClientCallback& /*callback*/,
                               IClientCallbackByPath& /*byPath*/) {}
