// Captures the log lines of the library under test.
#include "tests/support/log_capture.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <ostream>
#include <string_view>
#include <utility>

#include <android-base/thread_annotations.h>

namespace {

// Never destroyed: binder threads and the library's destructors log while the process exits.
std::mutex& gMutex = *new std::mutex;
std::vector<LogLine>& gLines GUARDED_BY(gMutex) = *new std::vector<LogLine>;

constexpr std::array<std::string_view, 4> kLibraryTags = {"MIRXFramework-lib-vendor",
                                                          "MirxFramework-lib-vendor",
                                                          "[DOV_CLIENT]", "[DOV_CLIENT_WRAPPER]"};

// Other lines come from the binder stack or the test's service manager.
bool isTheLibrarys(std::string_view tag, std::string_view text) {
    return std::find(kLibraryTags.begin(), kLibraryTags.end(), tag) != kLibraryTags.end() ||
           (tag == "(null)" && text.starts_with("BnMirxCallback::"));
}

void capture(const __android_log_message* message) {
    const std::string tag = message->tag == nullptr ? "(null)" : message->tag;
    if (!isTheLibrarys(tag, message->message)) return;
    std::lock_guard lock(gMutex);
    gLines.push_back({message->priority, tag, message->message});
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
    return out << line.priority << " " << line.tag << ": " << line.text;
}

LogCapture::LogCapture() {
    take();
    __android_log_set_logger(capture);
    __android_log_set_default_tag("(null)");  // the tag of lines that are logged without one
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
}

std::vector<LogLine> LogCapture::take() {
    std::lock_guard lock(gMutex);
    return std::exchange(gLines, {});
}
