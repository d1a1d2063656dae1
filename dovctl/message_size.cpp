// How large a message may be.
#include "dovctl/message_size.h"

#include <memory>

#include <android/binder_parcel.h>

#include "common/service.h"

namespace dovctl {
namespace {

// Limits of libbinder: of one message over sockets, and of all messages that a process receives
// through the driver at a time.
constexpr size_t kSocketLimit = 100'000;
constexpr size_t kDriverLimit = size_t{1024} * 1024 - size_t{2} * 4096;

size_t limitOf(const dovcommon::Transport& transport) {
    return transport.sockets ? kSocketLimit : kDriverLimit;
}

// A value as an element of a request's data; none for numbers, which need not become elements.
std::optional<dovcommon::MirxRequestData> elementOf(const Value& value) {
    dovcommon::MirxRequestData element;
    if (const auto* text = std::get_if<std::string>(&value)) {
        element.value = *text;
    } else if (const auto* resource = std::get_if<DovClient::Resource>(&value)) {
        element.value = resource->value;
    } else if (const auto* path = std::get_if<PathValue>(&value)) {
        element.path = path->path;
        element.value = path->value;
    } else {
        return std::nullopt;
    }
    return element;
}

}  // namespace

std::string limitText(const dovcommon::Transport& transport) {
    return (transport.sockets ? "sockets, which carry " : "the driver, which carries ") +
           std::to_string(limitOf(transport)) + " bytes";
}

std::string whyTooLarge(const dovcommon::Transport& transport, const Arguments& arguments) {
    const std::unique_ptr<AParcel, void (*)(AParcel*)> parcel(AParcel_create(), AParcel_delete);
    for (const auto& [name, value] : arguments.all()) {
        if (const auto element = elementOf(value)) element->writeToParcel(parcel.get());
    }
    const auto size = static_cast<size_t>(AParcel_getDataSize(parcel.get()));
    if (size <= limitOf(transport)) return "";
    return "the request is too large for " + limitText(transport) + ": its values alone take " +
           std::to_string(size);
}

}  // namespace dovctl
