// What the simulated device sets for its events, scenes and rules, read from an XML file
// (docs/profiles.md).
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

    // What one event, scene or rule sets.
    struct Policy {
        std::string name;  // for people; may be empty
        std::vector<MirxRequestData> resources;
    };

    // Reads `file`. Returns nothing, with "file:line: reason" in `error`, when it cannot be read or
    // anything in it is not as it should be.
    static std::optional<Profile> read(const std::string& file, std::string* error);

    // Null when the profile sets nothing. `status` is a rule's: a policy for just this status goes
    // before one for any.
    const Policy* find(Kind kind, int32_t id, std::optional<int32_t> status = {}) const;

  private:
    friend class ProfileReader;
    // Kind, id and, of a rule that asks for one, its status.
    using Key = std::tuple<Kind, int32_t, std::optional<int32_t>>;

    std::map<Key, Policy> mPolicies;
};

}  // namespace simulator
