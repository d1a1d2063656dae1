// Measures a look-up in the index of action names against a linear search.
#include <dov/DovWrapper.h>

#include <chrono>
#include <cstdio>

#include "wrapper/action_index.h"

namespace {

// The straightforward implementation: compares every entry, with the public string utilities.
std::optional<int32_t> scan(const std::string& eventId) {
    for (size_t id = 0; id < gActionList.size(); ++id) {
        if (stringUtils::contains(eventId, "VANTEL_") &&
            stringUtils::equals(eventId.substr(7), gActionList[id])) {
            return static_cast<int32_t>(id);
        }
    }
    return std::nullopt;
}

// The nanoseconds of one call of `find`, averaged over `rounds` passes through `eventIds`.
template <typename Find>
double measure(const Find& find, const std::vector<std::string>& eventIds, int rounds) {
    int64_t sum = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (int round = 0; round < rounds; ++round) {
        for (const std::string& eventId : eventIds) sum += find(eventId).value_or(-1);
    }
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - begin;
    [[maybe_unused]] volatile int64_t used = sum;  // keeps the compiler from removing the calls
    return time.count() / (rounds * static_cast<double>(eventIds.size()));
}

}  // namespace

int main() {
    struct Set {
        const char* name;
        std::vector<std::string> eventIds;
    };
    std::vector<Set> sets = {{"all 199 names", {}},
                             {"the first name", {"VANTEL_" + gActionList.front()}},
                             {"the last name", {"VANTEL_" + gActionList.back()}},
                             {"an unknown name", {"VANTEL_ACTION_CAMERA_UNKNOWN"}}};
    for (const std::string& name : gActionList) sets[0].eventIds.push_back("VANTEL_" + name);
    std::printf("%-16s %12s %12s\n", "looked up", "index", "scan");
    for (const auto& [name, eventIds] : sets) {
        const int rounds = static_cast<int>(2000000 / eventIds.size());
        const double index = measure(dovwrapper::findAction, eventIds, rounds);
        std::printf("%-16s %9.1f ns %9.1f ns\n", name, index,
                    measure(scan, eventIds, rounds / 100));
    }
}
