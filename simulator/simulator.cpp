// The simulator as an object, so that it can run within a test.
#include "simulator/simulator.h"

#include <utility>

#include <android/binder_manager.h>

#include "simulator/options.h"
#include "simulator/profile.h"

namespace simulator {

std::optional<int> Simulator::start(const std::vector<std::string>& args) {
    constexpr int kCannotServe = 1;
    constexpr int kWrongUsage = 2;
    Options options;
    std::string error = readOptions(args, options);
    if (!error.empty()) return fail(kWrongUsage, error + "; try --help");
    if (options.help) {
        mOut << kUsage << std::flush;
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
    mService = ndk::SharedRefBase::make<MirxService>(mJournal, std::move(profile), mTimeline.get());
    const std::string instance = std::string(MirxService::descriptor) + "/default";
    const binder_status_t status =
            AServiceManager_addService(mService->asBinder().get(), instance.c_str());
    if (status != STATUS_OK) {
        return fail(kCannotServe, "cannot register " + instance +
                                          (AServiceManager_isDeclared(instance.c_str())
                                                   ? ""
                                                   : ": not declared in a VINTF manifest"));
    }
    mJournal.line("serving  " + instance);
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
