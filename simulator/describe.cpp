// Describes requests as text for the journal.
#include "simulator/describe.h"

#include <algorithm>
#include <array>
#include <utility>

#include <android-base/stringprintf.h>

#include "aidl/request_kinds.h"

namespace simulator {

using namespace mirx;

using android::base::StringAppendF;
using android::base::StringPrintf;

namespace {

constexpr std::array<std::pair<RequestKind, const char*>, 13> kRequestKinds = {{
        {kStateQuery, "state query"},
        {kResourceControl, "resource control"},
        {kSceneControl, "scene control"},
        {kDiagnostics, "diagnostics"},
        {kThermalNotification, "thermal notification"},
        {kEventAcquire, "event acquire"},
        {kNotification, "notification"},
        {kHistoryQuery, "history query"},
        {kPlatformControl, "platform control"},
        {kPowerModeQuery, "power-mode query"},
        {kPowerConsumptionQuery, "power-consumption query"},
        {kDatasetFetch, "dataset fetch"},
        {kFeatureQuery, "feature query"},
}};

void appendText(std::string& line, const char* name, const std::optional<std::string>& text) {
    if (text) StringAppendF(&line, " %s=%s", name, quoted(*text).c_str());
}

// Most ids are opcodes, written in hexadecimal. Small ones are event, scene and feature ids.
std::string idText(int32_t id) {
    return id > -0x10000 && id < 0x10000 ? std::to_string(id)
                                         : StringPrintf("0x%08x", static_cast<uint32_t>(id));
}

}  // namespace

const char* requestKindName(int32_t requestType) {
    for (const auto& [type, name] : kRequestKinds) {
        if (type == requestType) return name;
    }
    return "unknown";
}

std::optional<int32_t> requestKindNamed(const std::string& name) {
    for (const auto& [type, known] : kRequestKinds) {
        std::string candidate = known;
        std::replace(candidate.begin(), candidate.end(), ' ', '-');
        if (candidate == name) return type;
    }
    return std::nullopt;
}

std::string describe(const std::vector<MirxRequestData>& data) {
    std::string line = "[";
    for (const MirxRequestData& element : data) {
        line += line.size() > 1 ? " {" : "{";
        line += "id=" + idText(element.id);
        if (element.arg != 0) line += " arg=" + std::to_string(element.arg);
        appendText(line, "value", element.value);
        appendText(line, "path", element.path);
        appendText(line, "extra", element.extra);
        line += "}";
    }
    return line + "]";
}

std::string describe(const MirxRequestParcel& parcel) {
    std::string line =
            StringPrintf("%s (%d)", requestKindName(parcel.requestType), parcel.requestType);
    const std::array<std::pair<const char*, int64_t>, 4> numbers = {{{"handle", parcel.handle},
                                                                     {"pid", parcel.pid},
                                                                     {"duration", parcel.duration},
                                                                     {"arg4", parcel.arg4}}};
    for (const auto& [name, value] : numbers) {
        if (value != 0) line += " " + std::string(name) + "=" + std::to_string(value);
    }
    if (parcel.flag) line += " flag";
    appendText(line, "package", parcel.packageName);
    appendText(line, "identity", parcel.identity);
    if (parcel.callback != nullptr) line += " callback";
    if (parcel.stringList) {
        line += " texts=[";
        for (const auto& text : *parcel.stringList) {
            if (line.back() != '[') line += " ";
            line += text ? quoted(*text) : "absent";
        }
        line += "]";
    }
    if (parcel.numbers) StringAppendF(&line, " numbers=%zu", parcel.numbers->size());
    return line + " data=" + describe(parcel.requestData);
}

}  // namespace simulator
