// A trace file of what was held, in the Chrome JSON trace event format.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <android-base/thread_annotations.h>
#include <android-base/unique_fd.h>

#include "simulator/holds.h"

namespace Json {
class Value;
}

namespace simulator {

// The content of the file, with times of CLOCK_BOOTTIME as in a device's own traces:
// - a track for each kind of request, with a slice for each hold;
// - a track for each resource, with a slice for each hold that sets it. Slices of one track must
//   nest, so a hold that overlaps another one goes to a track of the same name and a number;
// - a counter for each resource whose values are numbers, with the effective value.
//
// Each write appends the new entries and an end of the array: it ends all current holds, marked as
// never released, and says that the service died. The next write, at most 250 ms later, overwrites
// that end. So the file is valid at any time, also after the process is killed. Any thread may use
// the object.
class Timeline {
  public:
    // Writes to `file`. Replaces a finished timeline. Continues the timeline of a simulator that
    // died: this process is shown beside the dead one. Returns null, with the reason in `error`,
    // if the file has other content, is in use or cannot be opened.
    static std::unique_ptr<Timeline> make(const std::string& file, std::string* error);
    ~Timeline();  // NOLINT(bugprone-exception-escape): it throws only when memory is exhausted

    // One step of the table of holds, in the order of the steps.
    void step(const Step& step);

    // Ends all slices and closes the file. Later steps are ignored.
    void finish();

  private:
    struct Slice {
        Holder holder;
        int track;
        int64_t since;
        bool timed;  // ends by itself
        const char* colour;
        std::string name;
        std::map<std::string, std::string> details;
    };

    // Writes to `file` from offset `end` on, where `ending` is the current content.
    Timeline(android::base::unique_fd file, int64_t end, std::string ending);

    void begin(const Hold& hold, int64_t at) REQUIRES(mMutex);
    void end(const Holder& holder, const std::string& why, int64_t at) REQUIRES(mMutex);
    int freeTrack(const std::string& name, int order) REQUIRES(mMutex);
    void count(const std::string& label, int64_t value, int64_t at) REQUIRES(mMutex);
    // Completes an entry and adds it to those that the next write puts into the file.
    void add(const char* phase, int process, int track, int64_t at, Json::Value entry)
            REQUIRES(mMutex);
    void addSlice(const Slice& slice, const std::string& why, int64_t at) REQUIRES(mMutex);
    // Writes the added entries and the end of the file as it is now.
    void write(const char* why, int64_t at) REQUIRES(mMutex);
    void runClock() EXCLUDES(mMutex);

    std::mutex mMutex;
    android::base::unique_fd mFile GUARDED_BY(mMutex);  // closed once nothing more is written
    int64_t mEnd GUARDED_BY(mMutex);  // offset behind the entries that are never overwritten
    std::string mEnding GUARDED_BY(mMutex);  // the content of the file from there on
    std::string mAdded GUARDED_BY(mMutex);  // entries that are not written yet
    std::map<std::string, int> mTracks GUARDED_BY(mMutex);
    std::map<std::string, int64_t> mCounters GUARDED_BY(mMutex);
    std::vector<Slice> mOpen GUARDED_BY(mMutex);
    const int64_t mStart;
    std::condition_variable mFinished;
    std::thread mClock;
};

}  // namespace simulator
