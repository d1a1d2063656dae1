// Prints the changes that the service calls back with.
#pragma once

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>
#include <dov/ClientCallback.h>

#include "dovctl/command.h"
#include "dovctl/output.h"

namespace dovctl {

// One line for each resource, as it arrives, on any thread.
class Changes : public IClientCallback, public IClientCallbackByPath {
  public:
    Changes(Session& session, const Arguments& arguments)
        : mSession(session), mArguments(arguments) {}

    void onCallback(std::list<DovClient::Resource> resources) override {
        Table table{.columns = {"opcode", "value"}, .rows = {}};
        for (const auto& [opcode, value] : resources) {
            table.rows.push_back({opcodeText(opcode), value.value_or("")});
        }
        print(table);
    }

    void onCallback(std::vector<std::string> values, std::vector<std::string> paths) override {
        Table table{.columns = {"path", "value"}, .rows = {}};
        for (size_t i = 0; i < paths.size(); ++i) table.rows.push_back({paths[i], values[i]});
        print(table);
    }

    // Waits until the service has called back, five seconds at the most. Returns whether it has.
    bool waitForFirst() {
        std::unique_lock lock(mMutex);
        const auto called = [this]() REQUIRES(mMutex) { return mCalls > 0; };
        return mCalled.wait_for(lock, std::chrono::seconds(5), called);
    }

  private:
    void print(const Table& table) {
        showLine(mSession.console, mArguments, table);
        if (!mSession.console.outputProblem().empty()) mSession.waiter.wake();
        std::lock_guard lock(mMutex);
        ++mCalls;
        mCalled.notify_all();
    }

    Session& mSession;
    // A copy: the library keeps the callback as long as the service has not called it.
    const Arguments mArguments;
    std::mutex mMutex;
    std::condition_variable mCalled;
    int mCalls GUARDED_BY(mMutex) = 0;
};

}  // namespace dovctl
