// The tables that the simulated service writes on request.
#include <algorithm>
#include <set>

#include <android-base/stringprintf.h>

#include "aidl/request_kinds.h"
#include "simulator/describe.h"
#include "simulator/mirx_service.h"

namespace simulator {

using namespace mirx;

using android::base::StringPrintf;

namespace {

std::vector<std::string> runningLines(const std::vector<Hold>& holds) {
    std::vector<std::string> lines;
    lines.reserve(holds.size());
    for (const Hold& hold : holds) {
        lines.push_back(StringPrintf("%-18s %-22s %8lld ms  %s", textOf(hold.holder).c_str(),
                                     subjectOf(hold).c_str(), static_cast<long long>(hold.duration),
                                     quoted(hold.identity).c_str()));
    }
    return lines;
}

std::vector<std::string> requestLines(const std::vector<Hold>& holds) {
    std::vector<std::string> lines;
    lines.reserve(holds.size());
    for (const Hold& hold : holds) {
        lines.push_back(StringPrintf("%-18s %s", textOf(hold.holder).c_str(),
                                     describe(hold.resources).c_str()));
    }
    return lines;
}

std::vector<std::string> activeLines(const Holds& holds) {
    std::vector<std::string> lines;
    for (const auto& [key, held] : holds.effective()) {
        lines.push_back(StringPrintf("%-28s %-16s %s", textOf(key).c_str(), held.first.c_str(),
                                     textOf(held.second).c_str()));
    }
    return lines;
}

std::vector<std::string> resourceLines() {
    std::vector<std::string> lines;
    for (const KnownResource& known : knownResources()) {
        lines.push_back(StringPrintf("0x%08x  %-26s idle %s", static_cast<uint32_t>(known.opcode),
                                     known.name, known.idleValue));
    }
    return lines;
}

std::vector<std::string> sceneLines(std::vector<Hold> holds) {
    std::erase_if(holds, [](const Hold& hold) { return hold.requestType != kSceneControl; });
    return runningLines(holds);
}

std::vector<std::string> processLines(const std::vector<Hold>& holds) {
    std::set<int32_t> pids;
    for (const Hold& hold : holds) {
        if (hold.pid != 0) pids.insert(hold.pid);
    }
    std::vector<std::string> lines;
    for (const int32_t pid : pids) {
        const auto count = std::count_if(holds.begin(), holds.end(),
                                         [&](const Hold& hold) { return hold.pid == pid; });
        lines.push_back(StringPrintf("pid %-8d %lld holds", pid, static_cast<long long>(count)));
    }
    return lines;
}

}  // namespace

void MirxService::writeTable(const std::string& title, const std::vector<std::string>& lines) {
    std::string text = StringPrintf("dump     %s: %zu", title.c_str(), lines.size());
    for (const std::string& line : lines) text += "\n    " + line;
    mJournal.line(text);
}

int32_t MirxService::diagnose(const MirxRequestParcel& parcel) {
    switch (parcel.requestData.empty() ? -1 : parcel.requestData.front().id) {
        case 0: writeTable("callbacks to make", mListeners.describeQueue()); break;
        case 1: writeTable("running requests", runningLines(mHolds.current())); break;
        case 2: writeTable("active resources", activeLines(mHolds)); break;
        case 3: writeTable("requested resources", requestLines(mHolds.current())); break;
        case 4: writeTable("known resources", resourceLines()); break;
        case 5: writeTable("scenes", sceneLines(mHolds.current())); break;
        case 6: writeTable("processes that hold", processLines(mHolds.current())); break;
        case 7: writeTable("listeners", mListeners.describe()); break;
        case 8: writeTable("recorded requests", mHistory.lines()); break;
        case 10: mHistory.setRecording(true); break;
        case 11: mHistory.setRecording(false); break;
        default: return 0;
    }
    return 1;
}

}  // namespace simulator
