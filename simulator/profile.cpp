// The profile: what events, scenes and rules set, from an XML file (docs/profiles.md).
#include "simulator/profile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include <android-base/file.h>
#include <android-base/parseint.h>
#include <tinyxml2.h>

#include "simulator/describe.h"

namespace simulator {

using tinyxml2::XMLElement;

// By Profile::Kind.
static constexpr std::array<std::string_view, 3> kKinds = {"event", "scene", "rule"};

// Reads one file to its end and keeps the first fault. After a fault the profile is unusable.
class ProfileReader {
  public:
    explicit ProfileReader(const XMLElement& root) {
        if (std::strcmp(root.Name(), "profile") != 0) fail(root, "is not <profile>");
        checkAttributes(root, {"name"});
        forEachChild(root, [this](const XMLElement& element) { readPolicy(element); });
    }

    // "line: reason", or an empty text.
    const std::string& fault() const { return mFault; }
    Profile take() { return std::move(mProfile); }

  private:
    void fail(const XMLElement& element, const std::string& reason) {
        if (!mFault.empty()) return;
        mFault = std::to_string(element.GetLineNum()) + ": <" + element.Name() + "> " + reason;
    }

    void checkAttributes(const XMLElement& element, std::initializer_list<std::string_view> known) {
        for (auto* a = element.FirstAttribute(); a != nullptr; a = a->Next()) {
            if (std::find(known.begin(), known.end(), a->Name()) == known.end()) {
                fail(element, "has no attribute '" + std::string(a->Name()) + "'");
            }
        }
    }

    template <typename Visit>
    void forEachChild(const XMLElement& parent, const Visit& visit) {
        for (auto* node = parent.FirstChild(); node != nullptr; node = node->NextSibling()) {
            if (const XMLElement* element = node->ToElement()) {
                visit(*element);
            } else if (node->ToComment() == nullptr) {
                fail(parent, "has text in it");
            }
        }
    }

    // The number that an attribute must hold; 0 after a fault.
    template <typename Number>
    Number numberOf(const XMLElement& element, const char* attribute) {
        using Limits = std::numeric_limits<Number>;
        int64_t number = 0;
        const char* text = element.Attribute(attribute);
        if (text == nullptr) {
            fail(element, std::string("needs ") + attribute + "=\"…\"");
        } else if (!android::base::ParseInt(text, &number, int64_t{Limits::min()},
                                            int64_t{Limits::max()})) {
            fail(element, std::string(attribute) + "=\"" + text + "\" is not a 32-bit number");
        }
        return static_cast<Number>(number);
    }

    MirxRequestData readResource(const XMLElement& element) {
        if (std::strcmp(element.Name(), "resource") != 0) fail(element, "is not <resource>");
        checkAttributes(element, {"opcode", "path", "value"});
        forEachChild(element,
                     [this](const XMLElement& child) { fail(child, "does not belong here"); });
        const char* path = element.Attribute("path");
        const char* value = element.Attribute("value");
        MirxRequestData data;
        if ((path != nullptr) == (element.Attribute("opcode") != nullptr)) {
            fail(element, "needs either opcode=\"…\" or path=\"…\"");
        }
        if (path != nullptr) {
            if (*path == '\0') fail(element, "has an empty path");
            data.path = path;
        } else {
            // Opcodes are written as unsigned numbers; the contract carries the same bits signed.
            data.id = static_cast<int32_t>(numberOf<uint32_t>(element, "opcode"));
            if (data.id == 0) fail(element, "opcode=\"0\" names no resource");
        }
        if (value == nullptr || *value == '\0') {
            fail(element, "needs value=\"…\"");
        } else {
            data.value = value;
        }
        return data;
    }

    void readPolicy(const XMLElement& element) {
        const auto name = std::find(kKinds.begin(), kKinds.end(), element.Name());
        if (name == kKinds.end()) return fail(element, "is none of <event>, <scene> and <rule>");
        const auto kind = static_cast<Profile::Kind>(name - kKinds.begin());
        std::optional<int32_t> status;
        if (kind == Profile::Kind::kRule) {
            checkAttributes(element, {"id", "name", "status"});
            if (element.Attribute("status") != nullptr) {
                status = numberOf<int32_t>(element, "status");
            }
            if (status == 0) fail(element, "status=\"0\" ends a rule and can set nothing");
        } else {
            checkAttributes(element, {"id", "name"});
        }
        Profile::Policy policy;
        if (const char* text = element.Attribute("name")) policy.name = text;
        forEachChild(element, [&](const XMLElement& child) {
            policy.resources.push_back(readResource(child));
        });
        if (element.NoChildren()) fail(element, "sets nothing");
        const Profile::Key key = {kind, numberOf<int32_t>(element, "id"), status};
        if (!mProfile.mPolicies.emplace(key, std::move(policy)).second) {
            fail(element, "may appear only once");
        }
    }

    Profile mProfile;
    std::string mFault;
};

namespace {

// The parser's error as text: "XML_ERROR_MISMATCHED_ELEMENT" becomes "mismatched element".
std::string reasonOf(const tinyxml2::XMLDocument& document) {
    std::string reason = document.ErrorName();
    if (reason.starts_with("XML_ERROR_")) reason.erase(0, std::strlen("XML_ERROR_"));
    for (char& c : reason) c = c == '_' ? ' ' : static_cast<char>(std::tolower(c));
    return "is not well-formed XML: " + reason;
}

}  // namespace

std::optional<Profile> Profile::read(const std::string& file, std::string* error) {
    const auto fail = [&](const std::string& reason) {
        *error = file + ":" + reason;
        return std::nullopt;
    };
    // Not read by the parser, which does not keep errno.
    std::string text;
    if (!android::base::ReadFileToString(file, &text, /*follow_symlinks=*/true)) {
        return fail(std::string(" ") + std::strerror(errno));
    }
    tinyxml2::XMLDocument document;
    document.Parse(text.data(), text.size());
    if (document.Error()) {
        const int line = std::max(document.ErrorLineNum(), 1);
        return fail(std::to_string(line) + ": " + reasonOf(document));
    }
    if (document.RootElement() == nullptr) return fail("1: has no <profile>");
    ProfileReader reader(*document.RootElement());
    if (!reader.fault().empty()) return fail(reader.fault());
    return reader.take();
}

const Profile::Policy* Profile::find(Kind kind, int32_t id, std::optional<int32_t> status) const {
    auto policy = mPolicies.find({kind, id, status});
    if (policy == mPolicies.end()) policy = mPolicies.find({kind, id, std::nullopt});
    return policy == mPolicies.end() ? nullptr : &policy->second;
}

std::vector<std::string> Profile::describe() const {
    std::vector<std::string> lines;
    for (const auto& [key, policy] : mPolicies) {
        const auto& [kind, id, status] = key;
        lines.push_back(std::string(kKinds[static_cast<size_t>(kind)]) + " " + std::to_string(id) +
                        (status ? " status " + std::to_string(*status) : "") + " " + policy.name +
                        " " + simulator::describe(policy.resources));
    }
    return lines;
}

}  // namespace simulator
