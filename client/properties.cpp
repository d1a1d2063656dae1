// The service's named properties.
#include <dov/halclient.h>

#include <cstring>

#include "client/binding.h"

using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

constexpr size_t kPropertySize = 256;  // with the terminating zero

// Callers read a text of their own known size: one that does not fit ends the process.
void copyProperty(const std::string& value, char* buffer) {
    const size_t length = std::strlen(value.c_str());
    if (length >= kPropertySize) {
        __android_log_assert("length < kPropertySize", kLogTag,
                             "mirxPropertyGet: a value of %zu characters does not fit into %zu",
                             length, kPropertySize - 1);
    }
    std::memcpy(buffer, value.c_str(), length + 1);
}

}  // namespace

char* mirxPropertyGet(const std::string& key) {
    // All zero: an empty text when there is no service to ask.
    auto buffer = std::make_unique<char[]>(kPropertySize);
    callMirx({"mirx client mirxPropertyGet", "mirxPropertyGet"}, [&](IMirx& hal) {
        std::string value;
        ndk::ScopedAStatus status = hal.propertyGet(key, &value);
        copyProperty(value, buffer.get());
        return status;
    });
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "mirxPropertyGet %s ", buffer.get());
    return buffer.release();
}

int mirxPropertySet(const std::string& key, const std::string& value) {
    int32_t result = -1;
    callMirx({"mirx client mirxPropertySet", "mirxPropertySet"},
             [&](IMirx& hal) { return hal.propertySet(key, value, &result); });
    return result;
}

}  // namespace mirxHalclient
