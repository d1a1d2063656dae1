// Finds an action's id by its name.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "wrapper/action_names.h"

namespace dovwrapper {

inline constexpr size_t kActionTextSize = [] {
    size_t size = 0;
    for (const std::string_view name : kActionNames) size += name.size();
    return size;
}();

// The names and a hash table over them. The compiler computes both, and they hold no pointers, so
// the loader relocates nothing and all processes share them.
class ActionIndex {
  public:
    consteval ActionIndex() {
        size_t end = 0;
        for (uint8_t& slot : mSlots) slot = kNone;
        for (size_t id = 0; id < kActionNames.size(); ++id) {
            const std::string_view text = kActionNames[id];
            for (const char c : text) mText[end++] = c;
            mEnds[id] = static_cast<uint16_t>(end);
            uint8_t& slot = mSlots[slotOf(text)];
            if (slot == kNone) slot = static_cast<uint8_t>(id);  // the first of two equals wins
        }
    }

    static constexpr size_t size() { return kActionNames.size(); }

    // The name of the action with this id, which must be less than size().
    constexpr std::string_view name(size_t id) const {
        const size_t begin = id == 0 ? 0 : mEnds[id - 1];
        return {mText.data() + begin, mEnds[id] - begin};
    }

    // The id of the action with exactly this name.
    constexpr std::optional<int32_t> find(std::string_view text) const {
        const uint8_t id = mSlots[slotOf(text)];
        if (id == kNone) return std::nullopt;
        return id;
    }

  private:
    // More than twice the number of names, so that searches are short.
    static constexpr size_t kSlots = 512;
    static constexpr uint8_t kNone = std::numeric_limits<uint8_t>::max();
    static_assert(kActionNames.size() <= kNone && kActionNames.size() < kSlots);
    static_assert(kActionTextSize <= std::numeric_limits<uint16_t>::max());

    // FNV-1a.
    static constexpr uint32_t hashOf(std::string_view text) {
        uint32_t hash = 0x811c9dc5;
        for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 0x01000193;
        return hash;
    }

    // The slot of the name, or the free slot where it would be.
    constexpr size_t slotOf(std::string_view text) const {
        size_t slot = hashOf(text) % kSlots;
        while (mSlots[slot] != kNone && name(mSlots[slot]) != text) slot = (slot + 1) % kSlots;
        return slot;
    }

    std::array<char, kActionTextSize> mText{};
    std::array<uint16_t, kActionNames.size()> mEnds{};
    std::array<uint8_t, kSlots> mSlots{};
};

inline constexpr ActionIndex kActionIndex;

// The id of the action that an event id names: "VANTEL_" followed by the action's exact name.
constexpr std::optional<int32_t> findAction(std::string_view eventId) {
    constexpr std::string_view kPrefix = "VANTEL_";
    // starts_with throws as far as the compiler knows, and nothing here may: see tests/exports.sh.
    if (eventId.size() < kPrefix.size()) return std::nullopt;
    if (std::string_view(eventId.data(), kPrefix.size()) != kPrefix) return std::nullopt;
    eventId.remove_prefix(kPrefix.size());
    return kActionIndex.find(eventId);
}

}  // namespace dovwrapper
