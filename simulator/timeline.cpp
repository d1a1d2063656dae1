// A trace file of what was held, in the Chrome JSON trace event format.
#include "simulator/timeline.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <utility>

#include <android-base/file.h>
#include <android-base/parseint.h>
#include <android-base/strings.h>

#include "aidl/request_kinds.h"
#include "simulator/compact_json.h"
#include "simulator/describe.h"

namespace simulator {

using android::base::StartsWith;
using android::base::unique_fd;

namespace {

constexpr char kStart[] = "[\n";
constexpr char kSeparator[] = ",\n";
constexpr char kEnd[] = "\n]\n";

// Why a slice or the whole file ends.
constexpr char kNeverReleased[] = "never released";
constexpr char kStopped[] = "the service stopped";
constexpr char kDied[] = "the service died";

constexpr char kProcess[] = R"({"name":"process_name","args":{"name":"mirx-simulator","boot":")";

// The first entry of a process, up to its id.
std::string processInThisBoot() {
    std::string boot;
    android::base::ReadFileToString("/proc/sys/kernel/random/boot_id", &boot);
    return kProcess + android::base::Trim(boot) + R"("},"ph":"M","pid":)";
}

// The process id under which counters are listed. Viewers show the counters of a process above its
// tracks; under an id that no process has they come below.
int countersProcess() {
    return getpid() + (1 << 22);
}

// Microseconds, as in the file.
int64_t now() {
    timespec time = {};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1'000;
}

// Opens and locks `file` and reads its content. Returns the error, or an empty text.
std::string openAlone(const std::string& file, unique_fd& fd, std::string& text) {
    fd.reset(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    struct stat status = {};
    if (!fd.ok() || fstat(fd.get(), &status) != 0) return std::strerror(errno);
    if (!S_ISREG(status.st_mode)) return "not a regular file";
    // The locks of a killed process last for a moment.
    for (const int64_t until = now() + 2'000'000; flock(fd.get(), LOCK_EX | LOCK_NB) != 0;) {
        if (now() > until) return "another process writes it";
        usleep(20'000);
    }
    return android::base::ReadFdToString(fd, &text) ? "" : std::strerror(errno);
}

// Finds the offset at which to continue; 0 to start over. Returns the error, or an empty text.
std::string findEnd(const std::string& text, size_t& end) {
    end = 0;
    if (text.empty()) return "";
    const size_t last = text.rfind(kEnd);
    if (!StartsWith(text, std::string(kStart) + kProcess) || last == std::string::npos ||
        text.find_first_not_of(' ', last + std::strlen(kEnd)) != std::string::npos) {
        return "it is no timeline; move it away";
    }
    if (text.find(kStopped, text.rfind('\n', last - 1)) != std::string::npos) return "";
    if (!StartsWith(text, kStart + processInThisBoot())) {
        return "its service died before this machine was restarted; move it away";
    }
    end = last;
    return "";
}

// The order of the tracks; those of the same order are sorted by name.
constexpr int kRequests = 0;
constexpr int kResources = 1;

// Colours by the names that viewers of the format know.
constexpr char kRed[] = "rail_animation";

struct Kind {
    const char* track;
    const char* colour;
};

Kind kindOf(const Hold& hold) {
    if (hold.holder.source == Holder::kRule) return {"rules", "thread_state_unknown"};
    switch (hold.requestType) {
        case mirx::kEventAcquire: return {"events", "thread_state_running"};
        case mirx::kSceneControl: return {"scenes", "cq_build_running"};
        case mirx::kPlatformControl: return {"platform control", "thread_state_uninterruptible"};
        default: return {"resource control", "thread_state_runnable"};
    }
}

std::string nameOfCaller(const Hold& hold) {
    if (hold.holder.source == Holder::kRule) return textOf(hold.holder);
    const std::string names = android::base::Trim(hold.package + " " + hold.identity);
    return names.empty() ? "pid " + std::to_string(hold.pid) : names;
}

// The purpose of a hold in the name of its slice: the profile's name if there is one.
std::string purposeOf(const Hold& hold) {
    return hold.name.empty() ? subjectOf(hold) : hold.name;
}

// The values that a hold sets: of two settings in one request the later one counts.
std::map<std::string, std::string> settingsOf(const Hold& hold) {
    std::map<std::string, std::string> settings;
    for (const MirxRequestData& data : hold.resources) {
        settings[labelOf(keyOf(data))] = data.value.value_or("");
    }
    return settings;
}

// The details of a hold. All are texts: some viewers do not show numbers.
std::map<std::string, std::string> detailsOf(const Hold& hold) {
    return {{"holder", textOf(hold.holder)},
            {"for", subjectOf(hold)},
            {"package", hold.package},
            {"identity", hold.identity},
            {"pid", hold.pid != 0 ? std::to_string(hold.pid) : "unknown"},
            {"duration",
             hold.duration > 0 ? std::to_string(hold.duration) + " ms" : "until it is released"}};
}

// The entry that names a process or a track.
Json::Value naming(const char* entry, const std::string& name) {
    Json::Value json;
    json["name"] = entry;
    json["args"]["name"] = name;
    return json;
}

}  // namespace

std::unique_ptr<Timeline> Timeline::make(const std::string& file, std::string* error) {
    unique_fd fd;
    std::string text;
    size_t end = 0;
    *error = openAlone(file, fd, text);
    if (error->empty()) *error = findEnd(text, end);
    if (error->empty()) {
        text.erase(0, end);
        return std::unique_ptr<Timeline>(
                new Timeline(std::move(fd), static_cast<int64_t>(end), std::move(text)));
    }
    *error = file + ": " + *error;
    return nullptr;
}

Timeline::Timeline(unique_fd file, int64_t end, std::string ending)
    : mFile(std::move(file)),
      mEnd(end),
      mEnding(std::move(ending)),
      mAdded((end == 0 ? kStart : kSeparator) + processInThisBoot() + std::to_string(getpid()) +
             "}"),
      mStart(now()) {
    std::lock_guard lock(mMutex);
    add("M", countersProcess(), 0, mStart, naming("process_name", "mirx-simulator values"));
    write(kDied, mStart);
    mClock = std::thread([this] { runClock(); });
}

Timeline::~Timeline() {  // NOLINT(bugprone-exception-escape): as declared
    finish();
    mClock.join();
}

void Timeline::step(const Step& step) {
    std::lock_guard lock(mMutex);
    const int64_t at = now();
    if (step.ended != nullptr) end(step.ended->holder, textOf(step.why), at);
    if (step.begun != nullptr) begin(*step.begun, at);
    for (const MirxRequestData& data : step.changed) {
        const ResourceKey key = keyOf(data);
        const std::string label = labelOf(key);
        int64_t number = 0;
        const bool isNumber = android::base::ParseInt(data.value.value_or(""), &number);
        if (mCounters.count(label) == 0) {
            if (!isNumber) continue;
            // A counter starts with the idle value.
            int64_t idle = 0;
            android::base::ParseInt(idleValueOf(key).value_or(""), &idle);
            count(label, idle, mStart);
        }
        count(label, isNumber ? number : 0, at);
        mCounters[label] = number;
    }
    write(kDied, at);
}

void Timeline::finish() {
    std::lock_guard lock(mMutex);
    if (mFile.ok()) {
        write(kStopped, now());
        mFile.reset();
    }
    mFinished.notify_all();
}

void Timeline::begin(const Hold& hold, int64_t at) {
    const auto [kind, colour] = kindOf(hold);
    Slice slice = {.holder = hold.holder,
                   .track = freeTrack(kind, kRequests),
                   .since = at,
                   .timed = hold.duration > 0,
                   .colour = colour,
                   .name = purposeOf(hold) + " by " + nameOfCaller(hold),
                   .details = detailsOf(hold)};
    mOpen.push_back(slice);
    for (const auto& [label, value] : settingsOf(hold)) {
        slice.track = freeTrack(label, kResources);
        slice.name = value + " by " + nameOfCaller(hold);
        if (hold.subject) slice.name += " for " + purposeOf(hold);
        slice.details["value"] = value;
        mOpen.push_back(slice);
    }
}

void Timeline::end(const Holder& holder, const std::string& why, int64_t at) {
    std::erase_if(mOpen, [&](const Slice& slice) REQUIRES(mMutex) {
        if (slice.holder != holder) return false;
        addSlice(slice, why, at);
        return true;
    });
}

int Timeline::freeTrack(const std::string& name, int order) {
    for (int number = 1;; ++number) {
        const std::string numbered =
                number == 1 ? name : name + " (" + std::to_string(number) + ")";
        const auto [track, isNew] =
                mTracks.try_emplace(numbered, static_cast<int>(mTracks.size()) + 1);
        if (isNew) {
            add("M", getpid(), track->second, mStart, naming("thread_name", numbered));
            Json::Value sorting;
            sorting["name"] = "thread_sort_index";
            sorting["args"]["sort_index"] = order;
            add("M", getpid(), track->second, mStart, sorting);
        }
        const auto taken = [&, id = track->second](const Slice& slice) {
            return slice.track == id;
        };
        if (std::none_of(mOpen.begin(), mOpen.end(), taken)) return track->second;
    }
}

void Timeline::add(const char* phase, int process, int track, int64_t at, Json::Value entry) {
    entry["ph"] = phase;
    entry["pid"] = process;
    entry["tid"] = track;
    entry["ts"] = Json::Int64{at};
    mAdded += kSeparator + compact(entry);
}

void Timeline::addSlice(const Slice& slice, const std::string& why, int64_t at) {
    // Callers should find what they never released at once: it is red.
    const bool forgotten = why == kNeverReleased;
    Json::Value entry;
    entry["dur"] = Json::Int64{at - slice.since};
    entry["cat"] = "hold";
    entry["cname"] = forgotten ? kRed : slice.colour;
    entry["name"] = forgotten ? why + ": " + slice.name : slice.name;
    for (const auto& [name, value] : slice.details) entry["args"][name] = value;
    entry["args"]["ended"] = why;
    add("X", getpid(), slice.track, slice.since, entry);
}

void Timeline::count(const std::string& label, int64_t value, int64_t at) {
    Json::Value entry;
    entry["name"] = label;
    entry["args"]["value"] = Json::Int64{value};
    add("C", countersProcess(), 0, at, entry);
}

void Timeline::write(const char* why, int64_t at) {
    if (!mFile.ok()) return;
    const std::string entries = std::exchange(mAdded, "");
    for (const Slice& slice : mOpen) addSlice(slice, slice.timed ? why : kNeverReleased, at);
    for (const auto& [label, value] : mCounters) count(label, value, at);
    Json::Value state;
    state["s"] = "g";
    state["name"] = why;
    add("i", getpid(), 0, at, state);
    std::string ending = std::exchange(mAdded, "") + kEnd;
    // One write that never shortens the file: a killed process has written all of it or nothing.
    if (entries.size() + ending.size() < mEnding.size()) {
        ending.resize(mEnding.size() - entries.size(), ' ');
    }
    const std::string text = entries + ending;
    if (android::base::WriteFullyAtOffset(mFile, text.data(), text.size(), mEnd)) {
        mEnd += static_cast<int64_t>(entries.size());
        mEnding = std::move(ending);
        return;
    }
    std::cerr << "mirx-simulator: the timeline ends here: " << std::strerror(errno) << std::endl;
    // Restores the earlier content, for which the disk has space.
    if (!android::base::WriteFullyAtOffset(mFile, mEnding.data(), mEnding.size(), mEnd) ||
        ftruncate(mFile.get(), mEnd + static_cast<off_t>(mEnding.size())) != 0) {
        std::cerr << "mirx-simulator: and its file may be damaged" << std::endl;
    }
    mFile.reset();
}

void Timeline::runClock() {
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    while (mFile.ok()) {
        if (mFinished.wait_for(lock, std::chrono::milliseconds(250)) == std::cv_status::timeout) {
            write(kDied, now());
        }
    }
}

}  // namespace simulator
