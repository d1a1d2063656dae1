// The resources that the simulated device has.
#include "simulator/resources.h"

#include <android-base/stringprintf.h>

namespace simulator {
namespace {

// Three CPU clusters and a GPU.
constexpr KnownResource kKnown[] = {
        {0x01010010, "cpu0 frequency floor", "300000"},
        {0x01010020, "cpu1 frequency floor", "400000"},
        {0x01010030, "cpu2 frequency floor", "500000"},
        {0x01020050, "gpu frequency floor", "200"},
        {0x010100a0, "cpu0 frequency ceiling", "1800000"},
        {0x010100b0, "cpu1 frequency ceiling", "2400000"},
        {0x010100c0, "cpu2 frequency ceiling", "2800000"},
        {0x01020060, "gpu frequency ceiling", "800"},
        {0x01010b10, "cpu0 cores online at least", "0"},
        {0x01010b20, "cpu1 cores online at least", "0"},
        {0x01010b30, "cpu2 cores online at least", "0"},
        {0x01020070, "gpu cores online at least", "0"},
        {0x01010b90, "cpu0 cores online at most", "4"},
        {0x01010ba0, "cpu1 cores online at most", "3"},
        {0x01010bb0, "cpu2 cores online at most", "1"},
        {0x01020080, "gpu cores online at most", "8"},
        {0x010108a0, "cpu0 target load", "80"},
        {0x010108b0, "cpu1 target load", "80"},
        {0x010108c0, "cpu2 target load", "80"},
        {0x010103a0, "scheduler boost", "0"},
        {0x01010fb0, "group migration up", "95"},
        {0x01010fc0, "group migration down", "85"},
        {0x01011040, "task colocation", "0"},
        {0x01011070, "input boost", "0"},
        {0x010112f0, "core control", "enable 1"},
        {0x010115b0, "game upgrade", ""},
        {0x01011910, "idle depth", "1"},
};

}  // namespace

ResourceKey keyOf(const MirxRequestData& data) {
    if (data.path) return {.path = *data.path};
    return {.opcode = data.id};
}

std::string textOf(const ResourceKey& key) {
    return key.path.empty()
                   ? android::base::StringPrintf("0x%08x", static_cast<uint32_t>(key.opcode))
                   : key.path;
}

std::span<const KnownResource> knownResources() {
    return kKnown;
}

const KnownResource* findResource(const ResourceKey& key) {
    for (const KnownResource& known : kKnown) {
        if (key.path.empty() && known.opcode == key.opcode) return &known;
    }
    return nullptr;
}

std::string labelOf(const ResourceKey& key) {
    const KnownResource* known = findResource(key);
    return known == nullptr ? textOf(key) : std::string(known->name) + " " + textOf(key);
}

std::optional<std::string> idleValueOf(const ResourceKey& key) {
    const KnownResource* known = findResource(key);
    if (known == nullptr) return std::nullopt;
    return known->idleValue;
}

}  // namespace simulator
