// mirxPropertyGet and mirxPropertySet: the service's named properties.
#include <dov/halclient.h>

#include <cstring>

#include "client/binding.h"

using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

constexpr size_t kPropertySize = 256;  // with the terminating zero

}  // namespace

char* mirxPropertyGet(const std::string& key) {
    std::string value;  // stays empty when there is no service to ask, or the call fails
    callMirx({"mirx client mirxPropertyGet", "mirxPropertyGet"},
             [&](IMirx& hal) { return hal.propertyGet(key, &value); });
    // Compat: callers assume a 256-byte buffer; a longer value aborts the process.
    const size_t length = std::strlen(value.c_str());
    if (length >= kPropertySize) {
        __android_log_assert("length < kPropertySize", kLogTag,
                             "mirxPropertyGet: a value of %zu characters does not fit into %zu",
                             length, kPropertySize - 1);
    }
    char* const buffer = new char[kPropertySize]();
    std::memcpy(buffer, value.c_str(), length);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "mirxPropertyGet %s ", buffer);
    return buffer;
}

int mirxPropertySet(const std::string& key, const std::string& value) {
    return askMirx(
            {"mirx client mirxPropertySet", "mirxPropertySet"},
            [&](IMirx& hal, int32_t* answer) { return hal.propertySet(key, value, answer); });
}

}  // namespace mirxHalclient
