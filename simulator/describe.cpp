// What the service receives, as text for people.
#include "simulator/describe.h"

#include <array>
#include <utility>

#include <android-base/stringprintf.h>

namespace simulator {

using android::base::StringAppendF;
using android::base::StringPrintf;

namespace {

constexpr std::array<std::pair<int32_t, const char*>, 13> kRequestKinds = {{
        {0x0, "state"},
        {0x1, "resource control"},
        {0x2, "scene control"},
        {0x5, "diagnostics"},
        {0x7, "thermal notification"},
        {0x8, "event acquire"},
        {0xa, "notification"},
        {0xb, "history query"},
        {0xc, "platform control"},
        {0xd, "power-mode query"},
        {0xf, "power-consumption query"},
        {0x10, "dataset fetch"},
        {0x11, "feature query"},
}};

void appendText(std::string& line, const char* name, const std::optional<std::string>& text) {
    if (text) StringAppendF(&line, " %s=%s", name, quoted(*text).c_str());
}

// Ids are opcodes more often than not; small ones are event, scene and feature ids.
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

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            StringAppendF(&result, "\\x%02x", static_cast<unsigned>(c));
        } else {
            result += c;
        }
    }
    return result + "\"";
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
