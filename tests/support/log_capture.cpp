// Captures the log lines of the library under test.
#include "tests/support/log_capture.h"

#include <mutex>
#include <ostream>
#include <string_view>
#include <utility>

#include <android-base/strings.h>
#include <android-base/thread_annotations.h>

namespace {

// Never destroyed: binder threads and the library's destructors log while the process exits.
std::mutex& gMutex = *new std::mutex;
std::vector<LogLine>& gLines GUARDED_BY(gMutex) = *new std::vector<LogLine>;

// The tags of the binder stack and of the tests' service manager.
constexpr std::string_view kPlatformTags =
        " BpBinder FdTrigger IPCThreadState Parcel ProcessState RefBase RpcRawTransport RpcServer "
        "RpcSession RpcState ServiceManagerCppClient hostbinder libbinder_ndk ";

void capture(const __android_log_message* message) {
    const std::string tag = message->tag == nullptr ? "(null)" : message->tag;
    const std::string_view text = message->message;
    // Parts of the stack log without a tag; of the library only the transaction log does.
    if (tag == "(null)" ? !text.starts_with("BnMirxCallback::")
                        : kPlatformTags.find(" " + tag + " ") != std::string_view::npos) {
        return;
    }
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

std::string LogCapture::text(std::string_view usualTag) {
    std::vector<std::string> lines;
    for (const LogLine& line : take()) {
        if (line.text == "ndk backend ~MirxCallbackClient") continue;
        const char priority = "VDIWEF"[line.priority - ANDROID_LOG_VERBOSE];
        const std::string tag = line.tag == usualTag ? "" : line.tag + ": ";
        lines.push_back(priority + (" " + tag) + line.text);
    }
    return android::base::Join(lines, '\n');
}
