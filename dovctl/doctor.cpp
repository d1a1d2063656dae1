// Finds out why nothing happens: the steps of a request, tried one by one.
#include "dovctl/doctor.h"

#include <unistd.h>

#include <atomic>
#include <utility>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <android/binder_manager.h>

#include "dovctl/process.h"
#include "dovctl/within.h"

namespace dovctl {

using dovcommon::IMirx;
using dovcommon::kServiceName;
using dovcommon::MirxRequestData;
using dovcommon::MirxRequestParcel;
using Status = ndk::ScopedAStatus;

namespace {

Finding ok(std::string what) {
    return {Finding::kOk, std::move(what), {}};
}

Finding failed(std::string what, std::string advice) {
    return {Finding::kFailed, std::move(what), std::move(advice)};
}

std::string noAnswer(const Patient& patient) {
    return "no answer within " + std::to_string(patient.patience.count()) + " ms";
}

// The service does not answer: its process may tell why.
Finding hung(const Patient& patient) {
    const Process process = serviceProcess(patient.patience);
    const std::string pid = std::to_string(process.pid);
    if (process.pid == 0) return failed(noAnswer(patient), "find out what its process is doing");
    return failed(noAnswer(patient) + " from " + textOf(process),
                  process.stopped ? "continue it: kill -CONT " + pid
                                  : "find out what it is doing, or start it again");
}

Finding callFailed(const char* call, const Status& status) {
    return failed(std::string(call) + " failed: " + status.getDescription(),
                  status.getExceptionCode() == EX_TRANSACTION_FAILED
                          ? "the connection broke: did the service die? see its log"
                          : "the service says no: see its log");
}

Finding examineTransport(Patient& patient) {
    const dovcommon::Transport& transport = patient.transport;
    if (transport.problem.empty()) {
        return ok((transport.sockets ? "sockets in " : "the kernel's driver ") + transport.place);
    }
    return failed(transport.problem,
                  transport.sockets
                          ? "let DOV_SERVICE_DIR name a folder of your own that others cannot open"
                          : "the kernel has no binder driver, or this user may not use it");
}

Finding examineServiceManager(Patient& patient) {
    const auto declared =
            within(patient.patience, [] { return AServiceManager_isDeclared(kServiceName); });
    if (!declared) return failed(noAnswer(patient), "is the service manager running?");
    patient.declared = *declared;
    return ok(patient.transport.sockets ? "the folder itself" : "answers");
}

Finding examineDeclaration(Patient& patient) {
    if (patient.declared) return ok(kServiceName);
    const std::string cause = std::string("no VINTF manifest declares ") + kServiceName;
    if (patient.transport.sockets) {
        return failed(cause, "copy the service's manifest fragment (*.xml) into " +
                                     patient.transport.place);
    }
    return failed(cause + ", or SELinux does not let this process find it: that looks the same",
                  "look for 'avc: denied { find }' in the kernel's log, and for the service's "
                  "fragment in etc/vintf/manifest");
}

Finding examineRunning(Patient& patient) {
    struct Registered {
        bool is;
        std::shared_ptr<IMirx> mirx;
    };
    // The service's process is asked already here: over sockets by the look-up, over the driver by
    // the question of what interface it has.
    auto registered = within(patient.patience, [] {
        const ndk::SpAIBinder binder(AServiceManager_checkService(kServiceName));
        return Registered{binder.get() != nullptr, IMirx::fromBinder(binder)};
    });
    if (!registered) return hung(patient);
    if (!registered->is) {
        return failed("it is declared, but no process has registered it",
                      "start the service, or see its log for why it ended");
    }
    patient.mirx = std::move(registered->mirx);
    if (patient.mirx == nullptr) {
        return failed("what is registered is another interface",
                      "find out who registers this name");
    }
    return ok("registered");
}

Finding examineProcess(Patient& patient) {
    const Process process = serviceProcess(patient.patience);
    if (process.pid == 0) {
        return {Finding::kNotTried, "the service manager does not tell this user", {}};
    }
    if (process.stopped) {
        return failed(textOf(process), "continue it: kill -CONT " + std::to_string(process.pid));
    }
    return ok(textOf(process));
}

Finding examineInterface(Patient& patient) {
    struct Answer {
        Status status;
        int32_t version = 0;
        std::string hash;
    };
    auto answer = within(patient.patience, [mirx = patient.mirx] {
        Answer answer;
        answer.status = mirx->getInterfaceVersion(&answer.version);
        if (answer.status.isOk()) answer.status = mirx->getInterfaceHash(&answer.hash);
        return answer;
    });
    if (!answer) return hung(patient);
    if (!answer->status.isOk()) return callFailed("getInterfaceVersion", answer->status);
    const std::string found =
            "version " + std::to_string(answer->version) + ", hash " + answer->hash;
    // A later version keeps all that an earlier one has.
    if (answer->version > IMirx::version) return ok(found + " (newer than this client)");
    if (answer->version == IMirx::version && answer->hash == IMirx::hash) return ok(found);
    return failed(found + "; this client has version " + std::to_string(IMirx::version) +
                          ", hash " + IMirx::hash,
                  "build the service and this client from the same frozen interface");
}

Finding examineInit(Patient& patient) {
    auto status = within(patient.patience, [mirx = patient.mirx] { return mirx->init(); });
    if (!status) return hung(patient);
    return status->isOk() ? ok("accepted") : callFailed("init", *status);
}

// Tells what became of a request that holds nothing: acquired, with `meanwhile` called while it is
// held, and released. It ends by itself after a second should the release get lost.
template <typename Meanwhile>
Finding hold(const Patient& patient,
             const std::shared_ptr<aidl::vendor::tavro::hardware::mirx::IMirxCallback>& callback,
             const Meanwhile& meanwhile) {
    struct Answer {
        Status status;
        int32_t number = -1;
    };
    auto acquired = within(patient.patience, [mirx = patient.mirx, callback] {
        MirxRequestParcel parcel;
        parcel.requestType = dovcommon::kResourceControl;
        parcel.handle = -1;
        parcel.arg4 = -1;
        parcel.pid = getpid();
        parcel.duration = 1000;
        parcel.identity = "dovctl doctor";
        parcel.callback = callback;
        Answer answer;
        answer.status = mirx->request(parcel, &answer.number);
        return answer;
    });
    if (!acquired) return hung(patient);
    if (!acquired->status.isOk()) return callFailed("request", acquired->status);
    if (acquired->number == -1) return failed("the service refused to hold", "see its log");
    Finding finding = meanwhile(acquired->number);
    auto released = within(patient.patience, [mirx = patient.mirx, handle = acquired->number] {
        Answer answer;
        answer.status = mirx->release(handle, &answer.number);
        return answer;
    });
    if (!released) return hung(patient);
    if (!released->status.isOk()) return callFailed("release", released->status);
    if (released->number == -1) {
        return failed("the service did not know its own handle", "see its log");
    }
    return finding;
}

Finding examineHold(Patient& patient) {
    return hold(patient, nullptr, [](int32_t handle) {
        return ok("acquired and released, handle " + std::to_string(handle));
    });
}

class Callback : public aidl::vendor::tavro::hardware::mirx::BnMirxCallback {
  public:
    Status onCallback(const std::vector<MirxRequestData>&) override {
        if (!mHeard.exchange(true)) mCalled.set_value();
        return Status::ok();
    }
    std::future<void> called() { return mCalled.get_future(); }

  private:
    std::atomic<bool> mHeard = false;
    std::promise<void> mCalled;
};

Finding examineCallbacks(Patient& patient) {
    const auto callback = ndk::SharedRefBase::make<Callback>();
    auto called = callback->called();
    return hold(patient, callback, [&](int32_t) {
        if (called.wait_for(patient.patience) == std::future_status::ready) {
            return ok("the completion of a request was heard of");
        }
        return failed("the service held, but did not call back within " +
                              std::to_string(patient.patience.count()) + " ms",
                      "does the service complete requests that hold nothing? if so, no binder "
                      "thread of this process was free to hear of it");
    });
}

constexpr Step kSteps[] = {
        {"transport", examineTransport, kNoService},
        {"service manager", examineServiceManager, kNoService},
        {"declared", examineDeclaration, kNoService},
        {"running", examineRunning, kNoService},
        {"process", examineProcess, kNoService},
        {"interface", examineInterface, kRefused},
        {"init", examineInit, kRefused},
        {"hold", examineHold, kRefused},
        {"callbacks", examineCallbacks, kRefused},
};

}  // namespace

std::span<const Step> doctorSteps() {
    return kSteps;
}

}  // namespace dovctl
