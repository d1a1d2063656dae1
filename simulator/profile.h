// The profile: what events, scenes and rules set, from an XML file (docs/profiles.md).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;

class Profile {
  public:
    enum class Kind { kEvent, kScene, kRule };

    // The settings of one event, scene or rule.
    struct Policy {
        std::string name;  // shown in journal, tools and timeline; may be empty
        std::vector<MirxRequestData> resources;
    };

    // Reads `file`. Returns nothing, with "file:line: reason" in `error`, when it cannot be read or
    // is invalid.
    static std::optional<Profile> read(const std::string& file, std::string* error);

    // Returns null when there is no policy. `status` is the status of a rule: a policy for this
    // status is preferred to a policy for any status.
    const Policy* find(Kind kind, int32_t id, std::optional<int32_t> status = {}) const;
    // A line for each policy.
    std::vector<std::string> describe() const;

  private:
    friend class ProfileReader;
    // Kind, id, and the status if the policy is for one status of a rule.
    using Key = std::tuple<Kind, int32_t, std::optional<int32_t>>;

    std::map<Key, Policy> mPolicies;
};

}  // namespace simulator
