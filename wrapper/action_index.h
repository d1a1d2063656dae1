// Finds the id of an action: one hash of the name and one comparison.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "wrapper/action_names.h"

namespace dovwrapper {

// A table in which every name has a slot of its own. It is computed by the compiler and lies in
// read-only memory, so a look-up may run before the library's own initialisers.
class ActionIndex {
  public:
    consteval ActionIndex() {
        uint64_t hashes[kActionNames.size()] = {};
        uint16_t firsts[kActionNames.size()] = {};
        size_t count = 0;
        for (size_t id = 0; id < kActionNames.size(); ++id) {
            const uint64_t hash = hashOf(kActionNames[id]);
            size_t known = 0;
            while (known < count && hashes[known] != hash) ++known;
            if (known < count) continue;  // the first of two equal names wins
            hashes[count] = hash;
            firsts[count++] = static_cast<uint16_t>(id);
        }
        // Tries factors until one spreads all names; each try marks the slots that it takes with
        // its own number, which saves clearing them.
        uint32_t takenBy[kSlots] = {};
        for (uint32_t attempt = 1;; ++attempt) {
            mFactor = 0x9e3779b97f4a7c15 * (2 * uint64_t{attempt} - 1);
            size_t placed = 0;
            while (placed < count && takenBy[slotOf(hashes[placed])] != attempt) {
                takenBy[slotOf(hashes[placed++])] = attempt;
            }
            if (placed == count) break;
        }
        for (uint8_t& id : mIds) id = kNone;
        for (size_t i = 0; i < count; ++i) {
            mIds[slotOf(hashes[i])] = static_cast<uint8_t>(firsts[i]);
        }
    }

    // The id of the action with exactly this name.
    constexpr std::optional<int32_t> find(std::string_view name) const {
        const uint8_t id = mIds[slotOf(hashOf(name))];
        if (id == kNone || kActionNames[id] != name) return std::nullopt;
        return id;
    }

  private:
    static constexpr int kSlotBits = 12;
    static constexpr size_t kSlots = size_t{1} << kSlotBits;
    static constexpr uint8_t kNone = std::numeric_limits<uint8_t>::max();
    static_assert(kActionNames.size() <= kNone);

    // FNV-1a.
    static constexpr uint64_t hashOf(std::string_view text) {
        uint64_t hash = 0xcbf29ce484222325;
        for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001b3;
        return hash;
    }

    constexpr size_t slotOf(uint64_t hash) const {
        return static_cast<size_t>((hash * mFactor) >> (64 - kSlotBits));
    }

    uint64_t mFactor = 0;
    uint8_t mIds[kSlots] = {};
};

inline constexpr ActionIndex kActionIndex;

// The id of the action that an event id names: "VANTEL_" and then the action's name, exactly.
constexpr std::optional<int32_t> findAction(std::string_view eventId) {
    constexpr std::string_view kPrefix = "VANTEL_";
    if (!eventId.starts_with(kPrefix)) return std::nullopt;
    return kActionIndex.find(eventId.substr(kPrefix.size()));
}

}  // namespace dovwrapper
