// Compares the answers that callers got with the calls in the service's journal.
#include "tests/soak/ledger.h"

#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace soak {
namespace {

// For each beginning of a journal line, the text before the number of its call. The first entry
// whose two texts are in the line applies.
constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kPlaces = {{
        {"request ", " pid="},
        {"request ", " identity=\""},
        {"request  notification", "{id="},
        {"one-way ", " identity=\""},
        {"state    state query", " pid="},
        {"state    state query", "{id="},
        {"state    power-mode", "{id="},
        {"state    feature", "{id="},
        {"listen ", " pid="},
        {"listen ", " thermal "},
        {"release ", " handle "},
        {"property ", " \""},
}};
constexpr std::array<std::string_view, 2> kFirstIsNumber = {"rule     ", "sysinfo  "};

// The number of the call in a journal line, if it has one.
std::optional<int> numberIn(const std::string& line) {
    const auto at = [&line](size_t position) {
        return static_cast<int>(std::strtol(line.c_str() + position, nullptr, 0));
    };
    for (const std::string_view beginning : kFirstIsNumber) {
        if (line.starts_with(beginning)) return at(beginning.size());
    }
    for (const auto& [beginning, place] : kPlaces) {
        if (!line.starts_with(beginning)) continue;
        const size_t found = line.find(place);
        if (found != std::string::npos) return at(found + place.size());
    }
    return std::nullopt;
}

}  // namespace

void Ledger::called(int n, const char* name, bool answered,
                    const std::optional<std::string>& result) {
    std::lock_guard lock(mMutex);
    const Call call{name, answered, result};
    if (const auto received = mReceived.extract(n)) {
        compare(n, call, received.mapped());
    } else {
        (answered ? mAnswered : mFailed).emplace(n, call);
    }
}

void Ledger::received(const std::string& line) {
    const std::optional<int> n = numberIn(line);
    if (!n || *n < kFirstNumber) return;
    const size_t arrow = line.rfind(" -> ");
    const std::string result = arrow == std::string::npos ? "" : line.substr(arrow + 4);
    std::lock_guard lock(mMutex);
    for (auto* calls : {&mAnswered, &mFailed, &mFailedBefore}) {
        if (const auto call = calls->extract(*n)) return compare(*n, call.mapped(), result);
    }
    if (!mReceived.emplace(*n, result).second) {
        mDisagreements += "received twice: " + line + "\n";
    }
}

void Ledger::compare(int n, const Call& call, const std::string& received) {
    if (!call.answered) return;
    if (call.result && *call.result != received) {
        mDisagreements += std::to_string(n) + ", " + call.name + ": the caller got " +
                          *call.result + ", the service answered " + received + "\n";
    }
    ++mAgreed;
}

void Ledger::serviceEnded() {
    std::lock_guard lock(mMutex);
    mFailedBefore = std::exchange(mFailed, {});
}

std::string Ledger::disagreements() const {
    std::lock_guard lock(mMutex);
    std::string all = mDisagreements;
    for (const auto& [n, call] : mAnswered) {
        all += std::to_string(n) + ", " + call.name + ": answered with " +
               call.result.value_or("something") + ", but never received\n";
    }
    for (const auto& [n, result] : mReceived) {
        all += std::to_string(n) + ": received, but never called\n";
    }
    return all;
}

}  // namespace soak
