// A trace file of what was held: for the Perfetto UI, chrome://tracing and whatever else reads the
// Chrome JSON trace event format.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <android-base/thread_annotations.h>
#include <android-base/unique_fd.h>

#include "simulator/holds.h"

namespace Json {
class Value;
}

namespace simulator {

// A track a resource with a slice a hold, a counter for each resource whose values are numbers, and
// tracks of instants. Holds that overlap on a resource go to a further track of the same name and a
// number, because slices of one track must nest.
//
// Every entry is one write at the end of a JSON array, which needs no closing bracket: the file is
// valid at any time, also when the process is killed. Any thread may use it.
class Timeline {
  public:
    // Writes to `file`, in place of what it holds. Returns null, with the reason in `error`, when
    // it cannot be opened.
    static std::unique_ptr<Timeline> make(const std::string& file, std::string* error);
    ~Timeline();

    // One step of the table of holds; see Holds::Callbacks::onStep.
    void step(const Hold* ended, End why, const Hold* begun,
              const std::vector<MirxRequestData>& changed);

    // An instant on the track of that name, with details for who selects it.
    void mark(const std::string& track, const std::string& name,
              const std::vector<std::pair<std::string, std::string>>& details);

    // Ends what is still held and closes the file. What comes afterwards is left out.
    void finish();

  private:
    using Clock = std::chrono::steady_clock;
    struct Slice {
        int track;
        Holder holder;
    };

    explicit Timeline(android::base::unique_fd file);

    Json::Value entry(const char* phase, int track) const;
    void begin(const Hold& hold) REQUIRES(mMutex);
    void end(const Holder& holder, const char* why) REQUIRES(mMutex);
    void count(const ResourceKey& key, const std::string& value, bool fromTheStart)
            REQUIRES(mMutex);
    int freeTrack(const std::string& label) REQUIRES(mMutex);
    int trackOf(const std::string& name) REQUIRES(mMutex);
    void write(const Json::Value& entry) REQUIRES(mMutex);

    std::mutex mMutex;
    android::base::unique_fd mFile GUARDED_BY(mMutex);  // closed once nothing more is written
    const Clock::time_point mStart = Clock::now();
    const char* mSeparator GUARDED_BY(mMutex) = "[\n";
    std::map<std::string, int> mTracks GUARDED_BY(mMutex);
    std::set<ResourceKey> mCounted GUARDED_BY(mMutex);
    std::vector<Slice> mOpen GUARDED_BY(mMutex);
};

}  // namespace simulator
