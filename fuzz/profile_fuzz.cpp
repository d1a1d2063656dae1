// Fuzzes the simulator's profiles.
//
// A profile that is read must hold what the file says; one that is rejected must have a line and a
// reason. Input: the file.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include <android-base/parseint.h>
#include <tinyxml2.h>

#include "simulator/profile.h"

using simulator::Profile;
using tinyxml2::XMLElement;

namespace {

void check(bool holds) {
    if (!holds) std::abort();
}

std::string textOf(const XMLElement& element, const char* attribute) {
    const char* text = element.Attribute(attribute);
    return text == nullptr ? "" : text;
}

int32_t numberOf(const XMLElement& element, const char* attribute) {
    int32_t number = 0;
    check(android::base::ParseInt(element.Attribute(attribute), &number));
    return number;
}

Profile::Kind kindOf(const XMLElement& element) {
    const std::string_view name = element.Name();
    if (name == "event") return Profile::Kind::kEvent;
    check(name == "scene" || name == "rule");
    return name == "scene" ? Profile::Kind::kScene : Profile::Kind::kRule;
}

// Checks that the profile has the event, scene or rule of `element`, with all resources in order.
void checkPolicy(const Profile& profile, const XMLElement& element) {
    std::optional<int32_t> status;
    if (element.Attribute("status") != nullptr) status = numberOf(element, "status");
    const Profile::Policy* policy = profile.find(kindOf(element), numberOf(element, "id"), status);
    check(policy != nullptr && policy->name == textOf(element, "name"));
    check(status != 0 && !policy->resources.empty());
    auto resource = policy->resources.begin();
    for (auto* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
        check(resource != policy->resources.end());
        uint32_t opcode = 0;
        const bool byPath = child->Attribute("path") != nullptr;
        check(byPath || android::base::ParseUint(textOf(*child, "opcode"), &opcode));
        check(byPath == (opcode == 0) && byPath == resource->path.has_value());
        check(resource->path.value_or("") == textOf(*child, "path"));
        check(static_cast<uint32_t>(resource->id) == opcode);
        check(!resource->value->empty() && *resource->value == textOf(*child, "value"));
        ++resource;
    }
    check(resource == policy->resources.end());
}

// Checks that `error` is "FILE:LINE: reason" and that the file has this line.
void checkError(const std::string& error, const std::string& file, const std::string& text) {
    check(error.starts_with(file + ":"));
    char* end = nullptr;
    const long line = std::strtol(error.c_str() + file.size() + 1, &end, 10);
    check(line >= 1 && line <= 1 + std::count(text.begin(), text.end(), '\n'));
    check(std::string_view(end).starts_with(": ") && std::string_view(end).size() > 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // One file in memory for all inputs.
    static const int fd = memfd_create("profile", MFD_CLOEXEC);
    static const std::string file = "/proc/self/fd/" + std::to_string(fd);
    const std::string text(data, data + size);
    check(ftruncate(fd, 0) == 0 && pwrite(fd, data, size, 0) == static_cast<ssize_t>(size));

    std::string error;
    const std::optional<Profile> profile = Profile::read(file, &error);
    check(profile.has_value() == error.empty());
    if (!profile) {
        checkError(error, file, text);
        return 0;
    }
    tinyxml2::XMLDocument document;
    check(document.Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS);
    const XMLElement* root = document.RootElement();
    for (auto* child = root->FirstChildElement(); child; child = child->NextSiblingElement()) {
        checkPolicy(*profile, *child);
    }
    return 0;
}
