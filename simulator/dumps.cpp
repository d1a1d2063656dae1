// The tables that the simulated service writes on request: to its journal, and for dumpsys.
#include <unistd.h>

#include <cerrno>
#include <map>
#include <sstream>
#include <utility>

#include <android-base/file.h>
#include <android-base/stringprintf.h>

#include "aidl/request_kinds.h"
#include "simulator/mirx_service.h"
#include "simulator/describe.h"

namespace simulator {

using namespace mirx;

using android::base::StringPrintf;

namespace {

using Lines = std::vector<std::string>;

Lines runningLines(const std::vector<Hold>& holds) {
    Lines lines;
    for (const Hold& hold : holds) {
        lines.push_back(StringPrintf("%-18s %-36s %8lld ms  pid %-8s %s",
                                     textOf(hold.holder).c_str(), subjectOf(hold).c_str(),
                                     static_cast<long long>(hold.duration),
                                     hold.pid != 0 ? std::to_string(hold.pid).c_str() : "unknown",
                                     quoted(hold.identity).c_str()));
    }
    return lines;
}

Lines requestLines(const std::vector<Hold>& holds) {
    Lines lines;
    for (const Hold& hold : holds) {
        lines.push_back(StringPrintf("%-18s ", textOf(hold.holder).c_str()) +
                        simulator::describe(hold.resources));
    }
    return lines;
}

Lines activeLines(const Holds& holds) {
    Lines lines;
    for (const auto& [key, held] : holds.effective()) {
        lines.push_back(StringPrintf("%-40s %-16s %s", labelOf(key).c_str(), held.first.c_str(),
                                     textOf(held.second).c_str()));
    }
    return lines;
}

Lines resourceLines() {
    Lines lines;
    for (const KnownResource& known : knownResources()) {
        lines.push_back(StringPrintf("0x%08x  %-26s idle %s", static_cast<uint32_t>(known.opcode),
                                     known.name, known.idleValue));
    }
    return lines;
}

Lines sceneLines(std::vector<Hold> holds) {
    std::erase_if(holds, [](const Hold& hold) { return hold.requestType != kSceneControl; });
    return runningLines(holds);
}

Lines processLines(const std::vector<Hold>& holds) {
    std::map<int32_t, int> counts;
    for (const Hold& hold : holds) {
        if (hold.pid != 0) ++counts[hold.pid];
    }
    Lines lines;
    for (const auto& [pid, count] : counts) {
        lines.push_back(StringPrintf("pid %-8d holds %d", pid, count));
    }
    return lines;
}

}  // namespace

std::optional<MirxService::Table> MirxService::table(int32_t code) const {
    switch (code) {
        case 0: return Table{"callbacks to make", mListeners.describeQueue()};
        case 1: return Table{"running requests", runningLines(mHolds.current())};
        case 2: return Table{"active resources", activeLines(mHolds)};
        case 3: return Table{"requested resources", requestLines(mHolds.current())};
        case 4: return Table{"known resources", resourceLines()};
        case 5: return Table{"scenes", sceneLines(mHolds.current())};
        case 6: return Table{"processes that hold", processLines(mHolds.current())};
        case 7: return Table{"listeners", mListeners.describe()};
        case 8: return Table{"recorded requests", mHistory.lines()};
        default: return std::nullopt;
    }
}

int32_t MirxService::diagnose(const MirxRequestParcel& parcel) {
    const int32_t code = parcel.requestData.empty() ? -1 : parcel.requestData.front().id;
    if (code == 10 || code == 11) {
        mHistory.setRecording(code == 10);
        return 1;
    }
    const auto shown = table(code);
    if (!shown) return 0;
    mJournal.table(StringPrintf("dump     %s: %zu", shown->title, shown->lines.size()),
                   shown->lines);
    return 1;
}

binder_status_t MirxService::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
    std::ostringstream text;
    Journal journal(text);
    journal.line("mirx-simulator, process " + std::to_string(getpid()));
    journal.table("faults", mFaults->describe());
    Lines calls;
    {
        std::lock_guard lock(mMutex);
        for (const auto& [operation, count] : mCalls) {
            calls.push_back(StringPrintf("%8zu  %s", count, operation.c_str()));
        }
    }
    journal.table("calls", calls);
    std::vector<Table> tables;
    for (const int32_t code : {1, 3, 2, 7, 0, 6, 8}) tables.push_back(*table(code));
    Table& properties = tables.emplace_back(Table{"properties", {}});
    for (const auto& [key, value] : mProperties.all()) {
        properties.lines.push_back(key + " = " + quoted(value));
    }
    tables.push_back({"profile", mProfile.describe()});
    for (const Table& shown : tables) {
        journal.table(StringPrintf("%s: %zu", shown.title, shown.lines.size()), shown.lines);
    }
    return android::base::WriteStringToFd(text.str(), fd) ? STATUS_OK : -errno;
}

}  // namespace simulator
