// Reads the words of the command line as values.
#include "dovctl/values.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <list>

#include <android-base/parseint.h>
#include <android-base/stringprintf.h>
#include <dov/DovWrapper.h>
#include <dov/halclient.h>

#include "dovctl/text.h"

namespace dovctl {

// Decimal, or hexadecimal after 0x.
static std::optional<int64_t> readNumber(const std::string& text, int64_t from, int64_t to,
                                         std::string& why) {
    int64_t number = 0;
    if (android::base::ParseInt(text, &number, from, to)) return number;
    why = "'" + text + "' is not " +
          (errno != ERANGE ? "a number"
                           : "in the range " + std::to_string(from) + ".." + std::to_string(to));
    return std::nullopt;
}

static std::optional<Value> readInt32From(int32_t least, const std::string& text,
                                          std::string& why) {
    const auto number = readNumber(text, least, std::numeric_limits<int32_t>::max(), why);
    return number ? std::optional<Value>(static_cast<int32_t>(*number)) : std::nullopt;
}

std::optional<Value> readText(const std::string& text, std::string& /*why*/) {
    return text;
}

std::optional<Value> readInt32(const std::string& text, std::string& why) {
    return readInt32From(std::numeric_limits<int32_t>::min(), text, why);
}

std::optional<Value> readMilliseconds(const std::string& text, std::string& why) {
    return readInt32From(1, text, why);
}

std::optional<Value> readEvent(const std::string& text, std::string& why) {
    constexpr std::string_view kPrefix = "VANTEL_";
    std::string name = upperCase(text);
    if (name.starts_with(kPrefix)) name.erase(0, kPrefix.size());
    const auto action = std::find(gActionList.begin(), gActionList.end(), name);
    if (action != gActionList.end()) {
        return Event{.id = static_cast<int32_t>(action - gActionList.begin()), .action = name};
    }
    const std::optional<Value> number = readInt32(text, why);
    if (number) return Event{.id = std::get<int32_t>(*number), .action = {}};
    // Only names start with a letter.
    const bool named = !name.empty() && name[0] >= 'A' && name[0] <= 'Z';
    if (named) {
        why = "'" + text + "' is neither a number nor an action" + didYouMean(name, gActionList);
    }
    return std::nullopt;
}

std::optional<Value> readResource(const std::string& text, std::string& why) {
    // Users write opcodes as unsigned numbers; the contract carries them as signed ones.
    const size_t equals = text.find('=');
    const std::optional<int64_t> opcode =
            readNumber(text.substr(0, equals), 0, std::numeric_limits<uint32_t>::max(), why);
    if (!opcode) return std::nullopt;
    DovClient::Resource resource;
    resource.opcode = static_cast<int32_t>(static_cast<uint32_t>(*opcode));
    if (equals != std::string::npos) resource.value = text.substr(equals + 1);
    return resource;
}

std::optional<Value> readSetting(const std::string& text, std::string& why) {
    std::optional<Value> value = readResource(text, why);
    if (!value) return std::nullopt;
    const auto& resource = std::get<DovClient::Resource>(*value);
    std::list<DovClient::Resource> alone = {resource};
    if (checkResourceList(alone)) return value;
    why = opcodeText(resource.opcode) +
          (resource.opcode == 0 ? " takes no value" : " has no value: write it behind '='");
    return std::nullopt;
}

std::optional<Value> readPathValue(const std::string& text, std::string& why) {
    const size_t equals = text.find('=');
    PathValue result{.path = text.substr(0, equals), .value = {}};
    if (result.path.empty()) {
        why = "'" + text + "' has no path";
        return std::nullopt;
    }
    if (equals != std::string::npos) result.value = text.substr(equals + 1);
    return result;
}

std::optional<Value> readPathSetting(const std::string& text, std::string& why) {
    std::optional<Value> value = readPathValue(text, why);
    if (!value || std::get<PathValue>(*value).value) return value;
    why = "'" + text + "' has no value; write PATH=VALUE";
    return std::nullopt;
}

std::optional<Value> readOpcodeOrPath(const std::string& text, std::string& why) {
    const bool number = !text.empty() && text[0] >= '0' && text[0] <= '9';
    return number ? readResource(text, why) : readPathValue(text, why);
}

std::string opcodeText(int32_t opcode) {
    return android::base::StringPrintf("0x%08x", static_cast<uint32_t>(opcode));
}

}  // namespace dovctl
