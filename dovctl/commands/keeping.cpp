// Keeps a hold or a registration until Ctrl-C or until the service dies.
#include "dovctl/commands/keeping.h"

#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <android-base/thread_annotations.h>

#include "dovctl/commands/parameters.h"
#include "dovctl/life.h"

namespace dovctl {
namespace {

// How long the notice of a death may take.
constexpr std::chrono::seconds kLongestNotice{1};

// One life of the service, and the handle that was taken in it.
class Keeper {
  public:
    Keeper(Session& session, const Arguments& arguments, const Kept& kept)
        : mSession(session), mArguments(arguments), mKept(kept) {}

    // Takes the handle, announces it, and keeps it until Ctrl-C or until the service dies.
    ExitCode run(bool again) {
        const bool hold = mKept.kind == Kept::kHold;
        const bool waits = !hold || mArguments.has(kHold.name);
        // The service drops a registration with its process, but not a hold: the program must not
        // end between the service's answer and the release.
        if (hold && waits) mSession.waiter.expectInterrupt();
        const ExitCode code = take();
        if (code != kDone) return code;
        if (waits) mSession.waiter.expectInterrupt();
        if (hold && !mSession.console.print(std::to_string(handle()))) return giveBackUnseen();
        if (!waits) return kDone;
        mSession.console.say(std::string(hold ? "holding" : "listening") + (again ? " again" : "") +
                             "; Ctrl-C " + (hold ? "releases" : "ends it"));
        while (mLife->lasts() && mSession.console.outputProblem().empty()) {
            if (mSession.waiter.wait(std::chrono::hours(1))) break;
        }
        return mLife->lasts() ? giveBack() : died();
    }

  private:
    ExitCode take() {
        const ExitCode code = callService(
                mSession,
                [&] {
                    // Over sockets this look-up too blocks if the service is stopped.
                    mLife.emplace([this] { onDied(); });
                    std::lock_guard lock(mMutex);
                    mHandle = mKept.take();
                    return mHandle != -1;
                },
                mKept.waits);
        if (code == kDone && mKept.onTaken) mKept.onTaken();
        // The handle is of this life only if the life has lasted until after the call.
        if (mLife && mLife->lasts()) return code;
        if (code == kDone) return died();
        awaitNotice();
        return code;
    }

    ExitCode giveBack() {
        const int32_t handle = this->handle();
        return callService(
                mSession, [&] { return mKept.giveBack(handle); }, mKept.waits,
                {kNothing,
                 name() + " had ended before: its time ran out, or it was ended elsewhere"});
    }

    // The handle could not be printed, so no other program can release it.
    ExitCode giveBackUnseen() {
        const ExitCode code = mLife->lasts() ? giveBack() : kDone;
        if (code == kDone) mSession.console.say("released, because the handle cannot be written");
        return code == kDone ? kNoOutput : code;
    }

    ExitCode died() {
        awaitNotice();
        const char* const end = mLife->isDead() ? "died" : "was replaced";
        return mSession.fail(kNoService,
                             std::string("the service ") + end + ", and " + name() + " is lost");
    }

    std::string name() const { return mKept.kind == Kept::kHold ? "the hold" : "the registration"; }

    // Until the notice the library may still list the registration. A service that was replaced
    // may live on, and then no notice comes.
    void awaitNotice() {
        if (handle() != -1) mNoticed.get_future().wait_for(kLongestNotice);
    }

    // Blocks until a running take() has returned. The library is notified of the death afterwards.
    void onDied() {
        const int32_t handle = this->handle();
        if (handle != -1 && mKept.onDied) mKept.onDied(handle);
        mNoticed.set_value();
        mSession.waiter.wake();
    }

    int32_t handle() {
        std::lock_guard lock(mMutex);
        return mHandle;
    }

    Session& mSession;
    const Arguments& mArguments;
    const Kept& mKept;
    std::mutex mMutex;
    int32_t mHandle GUARDED_BY(mMutex) = -1;
    std::promise<void> mNoticed;
    std::optional<Life> mLife;
};

}  // namespace

ExitCode keep(Session& session, const Arguments& arguments, const Kept& kept) {
    constexpr std::chrono::milliseconds kBetweenLooks{100};
    bool again = false;
    while (true) {
        const ExitCode code = Keeper(session, arguments, kept).run(again);
        if (code != kNoService || !arguments.has(kReconnect.name)) return code;
        session.console.say("waiting for the service; Ctrl-C ends it");
        session.waiter.expectInterrupt();
        do {
            if (session.waiter.wait(kBetweenLooks)) return kDone;
        } while (ServiceNow().absence != nullptr);
        again = true;
    }
}

}  // namespace dovctl
