// Refers to all public types, even those to which the library itself only has pointers.
#include <dov/ClientCallback.h>

extern "C" void dovPublicTypes(DovClient::Resource& /*resource*/, IClientCallback& /*callback*/,
                               IClientCallbackByPath& /*byPath*/) {}
