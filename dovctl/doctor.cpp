// Diagnoses why nothing happens: tries the steps of a request one by one.
#include "dovctl/doctor.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <android-base/strings.h>
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

// The service does not answer: look whether its process is stopped.
Finding hung(const Patient& patient) {
    const Process process = serviceProcess(patient.patience);
    const std::string pid = std::to_string(process.pid);
    if (process.pid == 0) return failed(noAnswer(patient), "restart the service");
    return failed(noAnswer(patient) + " from " + textOf(process),
                  process.stopped ? "continue it: kill -CONT " + pid
                                  : "look at its threads (debuggerd -b " + pid + ", or gdb -p " +
                                            pid + "), or restart it");
}

std::string adviceFor(const Status& status) {
    if (status.getExceptionCode() != EX_TRANSACTION_FAILED) {
        return "read the service's log: it answered with an error";
    }
    if (status.getStatus() == STATUS_UNKNOWN_TRANSACTION) {
        return "replace the service by one that is built from version " +
               std::to_string(IMirx::version) +
               " of the interface or a later one: it lacks this operation";
    }
    return "read the service's log for why the connection broke, and restart the service";
}

Finding callFailed(const char* call, const Status& status) {
    return failed(std::string(call) + " failed: " + status.getDescription(), adviceFor(status));
}

std::string adviceForDriver(const std::string& device) {
    if (access(device.c_str(), F_OK) == 0) {
        return "run this as a user who may read and write " + device;
    }
    // A program that can use sockets has chosen them before.
    return "load the kernel's binder driver (modprobe binder_linux) and mount binderfs, so that " +
           device + " exists";
}

std::string adviceForFolder(const std::string& folder) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0) {
        if (errno == ENOENT) return "mkdir -p -m 700 " + folder;
        return "let DOV_SERVICE_DIR name a folder that you may open";
    }
    if (S_ISDIR(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & 077) != 0) {
        return "chmod 700 " + folder;
    }
    return "let DOV_SERVICE_DIR name a folder of your own that others cannot open, with a short "
           "path";
}

// Over sockets a service answers on FOLDER/PACKAGE.IInterface@INSTANCE.PID.NUMBER.
bool fitsSocket(const std::string& folder) {
    constexpr std::string_view kLongestSuffix = ".4194304.99";
    return folder.size() + 1 + std::strlen(kServiceName) + kLongestSuffix.size() <
           sizeof(sockaddr_un::sun_path);
}

Finding examineTransport(Patient& patient) {
    const dovcommon::Transport& transport = patient.transport;
    if (!transport.problem.empty()) {
        return failed(transport.problem, transport.sockets ? adviceForFolder(transport.place)
                                                           : adviceForDriver(transport.place));
    }
    if (!transport.sockets) return ok("the kernel's driver " + transport.place);
    if (!fitsSocket(transport.place)) {
        return failed(transport.place + ": too long for the path of a socket",
                      "let DOV_SERVICE_DIR name a folder with a shorter path");
    }
    return ok("sockets in " + transport.place);
}

Finding examineServiceManager(Patient& patient) {
    const auto declared =
            within(patient.patience, [] { return AServiceManager_isDeclared(kServiceName); });
    if (!declared) return failed(noAnswer(patient), "start the service manager, or restart it");
    patient.declared = *declared;
    return ok(patient.transport.sockets ? "the folder itself" : "answers");
}

Finding examineDeclaration(Patient& patient) {
    if (patient.declared) return ok(kServiceName);
    const std::string cause = std::string("no VINTF manifest declares ") + kServiceName;
    if (patient.transport.sockets) {
        // A fragment that cannot be read is logged as "FILE: REASON".
        for (const std::string& problem : patient.log->problems()) {
            if (!problem.starts_with(patient.transport.place + "/")) continue;
            return failed(android::base::Join(std::vector{cause, problem}, "; "),
                          "correct that file, or replace it");
        }
        return failed(cause, "copy the service's manifest fragment (*.xml) into " +
                                     patient.transport.place +
                                     ", or start mirx-simulator with --declare");
    }
    return failed(
            cause + ", or SELinux hides it from this process, which looks the same",
            "install the service's fragment in etc/vintf/manifest; if it is there, allow what "
            "'avc: denied { find }' in the kernel's log names");
}

Finding examineRunning(Patient& patient) {
    // May block: over sockets the look-up calls the service's process, over the driver the question
    // for its interface does.
    auto registered = within(patient.patience, [] {
        const ndk::SpAIBinder binder(AServiceManager_checkService(kServiceName));
        return std::pair(binder, IMirx::fromBinder(binder));
    });
    if (!registered) return hung(patient);
    if (registered->first.get() == nullptr) {
        return failed("it is declared, but no process has registered it",
                      "start the service; its log says why it ended, if it did");
    }
    patient.mirx = std::move(registered->second);
    if (patient.mirx == nullptr) {
        return failed("what is registered is another interface",
                      "end the process that registers this name");
    }
    return ok("registered");
}

Finding examineProcess(Patient& patient) {
    const Process process = serviceProcess(patient.patience);
    if (process.pid == 0) {
        return {Finding::kNotTried, "the service manager does not say", {}};
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
    // A later version has every operation of an earlier one.
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

// Acquires a request without resources, calls `meanwhile` and releases the request. Its duration
// ends it after a minute if the release is lost.
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
        parcel.requestType = mirx::kResourceControl;
        parcel.handle = -1;
        parcel.arg4 = -1;
        parcel.pid = getpid();
        parcel.duration = 60'000;
        parcel.identity = "dovctl doctor";
        parcel.callback = callback;
        Answer answer;
        answer.status = mirx->request(parcel, &answer.number);
        return answer;
    });
    if (!acquired) return hung(patient);
    if (!acquired->status.isOk()) return callFailed("request", acquired->status);
    if (acquired->number == -1) return failed("the service refused to hold", "read its log");
    Finding finding = meanwhile(acquired->number);
    auto released = within(patient.patience, [mirx = patient.mirx, handle = acquired->number] {
        Answer answer;
        answer.status = mirx->release(handle, &answer.number);
        return answer;
    });
    if (!released) return hung(patient);
    if (!released->status.isOk()) return callFailed("release", released->status);
    if (released->number == -1) {
        return failed("the service did not know its own handle", "read its log");
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
        if (!mArrived.exchange(true)) mCalled.set_value();
        return Status::ok();
    }
    std::future<void> called() { return mCalled.get_future(); }

  private:
    std::atomic<bool> mArrived = false;
    std::promise<void> mCalled;
};

Finding examineCallbacks(Patient& patient) {
    const auto callback = ndk::SharedRefBase::make<Callback>();
    auto called = callback->called();
    return hold(patient, callback, [&](int32_t) {
        if (called.wait_for(patient.patience) == std::future_status::ready) {
            return ok("the completion callback arrived");
        }
        return failed("the service held, but did not call back within " +
                              std::to_string(patient.patience.count()) + " ms",
                      "make the service complete requests without resources too; if it does, read "
                      "its log for why the callback failed");
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
