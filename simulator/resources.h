// The resources that the simulated device has.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <tuple>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;

// The address of a resource: a path, or an opcode when the path is empty.
struct ResourceKey {
    int32_t opcode = 0;
    std::string path;

    bool operator==(const ResourceKey&) const = default;
    bool operator<(const ResourceKey& other) const {
        return std::tie(opcode, path) < std::tie(other.opcode, other.path);
    }
};

ResourceKey keyOf(const MirxRequestData& data);
// The path, or the opcode in hexadecimal.
std::string textOf(const ResourceKey& key);

struct KnownResource {
    int32_t opcode;
    const char* name;
    const char* idleValue;  // while nobody holds it
};

std::span<const KnownResource> knownResources();

// Null for a resource that the device does not know.
const KnownResource* findResource(const ResourceKey& key);
// The name of the resource, if it has one, and the key.
std::string labelOf(const ResourceKey& key);

// The value of a resource that nobody holds. None for a resource that the device does not know.
std::optional<std::string> idleValueOf(const ResourceKey& key);

}  // namespace simulator
