// The simulator as an object, which a test can run in its own process.
#include "simulator/simulator.h"

#include <utility>

#include <android-base/stringprintf.h>
#include <android/binder_manager.h>

#include "common/transport.h"
#include "simulator/options.h"
#include "simulator/predecessor.h"
#include "simulator/profile.h"

namespace simulator {

std::optional<int> Simulator::start(const std::vector<std::string>& args) {
    constexpr int kCannotServe = 1;
    constexpr int kWrongUsage = 2;
    Options options;
    std::string error = readOptions(args, options);
    if (!error.empty()) return fail(kWrongUsage, error + "; try --help");
    if (options.help) {
        mOut << usage() << std::flush;
        return 0;
    }
    Profile profile;
    if (!options.profile.empty()) {
        auto read = Profile::read(options.profile, &error);
        if (!read) return fail(kCannotServe, error);
        profile = *std::move(read);
    }
    if (!options.timeline.empty()) {
        mTimeline = Timeline::make(options.timeline, &error);
        if (mTimeline == nullptr) return fail(kCannotServe, error);
    }
    const auto faults = std::make_shared<Faults>();
    for (const std::string& fault : options.faults) {
        error = faults->add(fault);
        if (!error.empty()) {
            return fail(kWrongUsage, android::base::StringPrintf("--fault %s: %s; try --help",
                                                                 fault.c_str(), error.c_str()));
        }
    }
    mService = ndk::SharedRefBase::make<MirxService>(
            mJournal, std::move(profile), mTimeline.get(), faults, [this](const std::string& pid) {
                mJournal.line("replaced by process " + pid);
                mOnReplaced();
            });
    const std::string instance = std::string(MirxService::descriptor) + "/default";
    if (options.declare && dovcommon::declareService != nullptr) {
        error = dovcommon::declareService(instance);
        if (!error.empty()) return fail(kCannotServe, "--declare: " + error);
    }
    const Predecessor predecessor(instance);
    const binder_status_t status =
            AServiceManager_addService(mService->asBinder().get(), instance.c_str());
    if (status != STATUS_OK) {
        return fail(kCannotServe, "cannot register " + instance +
                                          (AServiceManager_isDeclared(instance.c_str())
                                                   ? ""
                                                   : ": not declared in a VINTF manifest "
                                                     "(--declare does that)"));
    }
    if (!predecessor.name().empty()) mJournal.line("replaces " + predecessor.name());
    mJournal.line("serving  " + instance);
    predecessor.tell();
    return std::nullopt;
}

void Simulator::stop() {
    if (mTimeline != nullptr) mTimeline->finish();
    mJournal.line("stopped");
}

std::optional<int> Simulator::fail(int code, const std::string& why) {
    mErr << "mirx-simulator: " << why << std::endl;
    return code;
}

}  // namespace simulator
