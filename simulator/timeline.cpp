// A trace file of what was held, in the Chrome JSON trace event format.
#include "simulator/timeline.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <optional>

#include <android-base/file.h>
#include <android-base/parseint.h>
#include <json/json.h>

namespace simulator {

using android::base::unique_fd;

namespace {

constexpr char kWithoutResources[] = "without resources";

// The values that a hold sets: of two settings in one request the later one counts.
std::map<std::string, std::string> settingsOf(const Hold& hold) {
    std::map<std::string, std::string> settings;
    for (const MirxRequestData& data : hold.resources) {
        settings[labelOf(keyOf(data))] = data.value.value_or("");
    }
    if (settings.empty()) settings[kWithoutResources] = "";
    return settings;
}

}  // namespace

std::unique_ptr<Timeline> Timeline::make(const std::string& file, std::string* error) {
    unique_fd fd(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!fd.ok()) {
        *error = file + ": " + std::strerror(errno);
        return nullptr;
    }
    return std::unique_ptr<Timeline>(new Timeline(std::move(fd)));
}

Timeline::Timeline(unique_fd file) : mFile(std::move(file)) {
    Json::Value name = entry("M", 0);
    name["name"] = "process_name";
    name["args"]["name"] = "mirx-simulator";
    write(name);
}

Timeline::~Timeline() {
    finish();
}

void Timeline::step(const Hold* ended, End why, const Hold* begun,
                    const std::vector<MirxRequestData>& changed) {
    std::lock_guard lock(mMutex);
    if (ended != nullptr) end(ended->holder, textOf(why));
    if (begun != nullptr) begin(*begun);
    for (const MirxRequestData& data : changed) {
        const ResourceKey key = keyOf(data);
        // The first change shows from which value it came.
        if (mCounted.insert(key).second) {
            if (const auto idle = idleValueOf(key)) count(key, *idle, true);
        }
        if (data.value) count(key, *data.value, false);
    }
}

void Timeline::mark(const std::string& track, const std::string& name,
                    const std::vector<std::pair<std::string, std::string>>& details) {
    std::lock_guard lock(mMutex);
    Json::Value instant = entry("i", trackOf(track));
    instant["name"] = name;
    instant["s"] = "t";
    for (const auto& [key, value] : details) instant["args"][key] = value;
    write(instant);
}

void Timeline::finish() {
    std::lock_guard lock(mMutex);
    while (!mOpen.empty()) end(mOpen.back().holder, "the service stopped");
    if (mFile.ok()) android::base::WriteStringToFd("\n]\n", mFile);
    mFile.reset();
}

Json::Value Timeline::entry(const char* phase, int track) const {
    Json::Value entry;
    entry["ph"] = phase;
    entry["pid"] = getpid();
    entry["tid"] = track;
    entry["ts"] = Json::Int64{
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - mStart).count()};
    return entry;
}

void Timeline::begin(const Hold& hold) {
    for (const auto& [label, value] : settingsOf(hold)) {
        const int track = freeTrack(label);
        Json::Value slice = entry("B", track);
        slice["cat"] = "hold";
        slice["name"] = value.empty() ? subjectOf(hold) : value + " (" + subjectOf(hold) + ")";
        Json::Value& details = slice["args"];
        details["holder"] = textOf(hold.holder);
        details["for"] = subjectOf(hold);
        details["value"] = value;
        details["package"] = hold.package;
        details["identity"] = hold.identity;
        if (hold.pid != 0) details["pid"] = hold.pid;
        details["duration_ms"] = Json::Int64{hold.duration};
        write(slice);
        mOpen.push_back({track, hold.holder});
    }
}

void Timeline::end(const Holder& holder, const char* why) {
    std::erase_if(mOpen, [&](const Slice& slice) REQUIRES(mMutex) {
        if (slice.holder != holder) return false;
        Json::Value end = entry("E", slice.track);
        end["args"]["ended"] = why;
        write(end);
        return true;
    });
}

void Timeline::count(const ResourceKey& key, const std::string& value, bool fromTheStart) {
    int64_t number = 0;
    if (!android::base::ParseInt(value, &number)) return;
    Json::Value counter = entry("C", 0);
    if (fromTheStart) counter["ts"] = 0;
    counter["name"] = labelOf(key);
    counter["args"]["value"] = Json::Int64{number};
    write(counter);
}

int Timeline::freeTrack(const std::string& label) {
    for (int number = 1;; ++number) {
        const int track =
                trackOf(number == 1 ? label : label + " (" + std::to_string(number) + ")");
        const auto taken = [&](const Slice& slice) { return slice.track == track; };
        if (std::none_of(mOpen.begin(), mOpen.end(), taken)) return track;
    }
}

int Timeline::trackOf(const std::string& name) {
    const auto [track, isNew] = mTracks.try_emplace(name, static_cast<int>(mTracks.size()) + 1);
    if (isNew) {
        Json::Value label = entry("M", track->second);
        label["name"] = "thread_name";
        label["args"]["name"] = name;
        write(label);
    }
    return track->second;
}

void Timeline::write(const Json::Value& entry) {
    if (!mFile.ok()) return;
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    const off_t before = lseek(mFile.get(), 0, SEEK_CUR);
    if (android::base::WriteStringToFd(mSeparator + Json::writeString(writer, entry), mFile)) {
        mSeparator = ",\n";
        return;
    }
    std::cerr << "mirx-simulator: the timeline ends here: " << std::strerror(errno) << std::endl;
    // Half an entry would make the file unreadable.
    if (before >= 0 && ftruncate(mFile.get(), before) != 0) {
        std::cerr << "mirx-simulator: and its file may be damaged" << std::endl;
    }
    mFile.reset();
}

}  // namespace simulator
