// What the simulated device sets for its events, scenes and rules, read from an XML file.
#include "simulator/profile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include <android-base/parseint.h>
#include <tinyxml2.h>

namespace simulator {

using tinyxml2::XMLElement;

// Reads one file to its end and keeps the first fault in it; what it reads after that is of no use.
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
    Number numberOf(const XMLElement& element, const char* attribute,
                    bool (*parse)(const std::string&, Number*)) {
        Number number = 0;
        const char* text = element.Attribute(attribute);
        if (text == nullptr) {
            fail(element, std::string("needs ") + attribute + "=\"…\"");
        } else if (!parse(text, &number)) {
            fail(element, std::string(attribute) + "=\"" + text + "\" is not a 32-bit number");
        }
        return number;
    }

    int32_t idOf(const XMLElement& element, const char* attribute) {
        return numberOf<int32_t>(element, attribute, [](const std::string& text, int32_t* number) {
            return android::base::ParseInt(text, number);
        });
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
            // Written as the 32 bits that it is; the contract carries it as a signed number.
            data.id = static_cast<int32_t>(numberOf<uint32_t>(
                    element, "opcode", [](const std::string& text, uint32_t* number) {
                        return android::base::ParseUint(text, number);
                    }));
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
        static constexpr std::array<std::pair<std::string_view, Profile::Kind>, 3> kKinds = {{
                {"event", Profile::Kind::kEvent},
                {"scene", Profile::Kind::kScene},
                {"rule", Profile::Kind::kRule},
        }};
        const auto kind = std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& entry) {
            return entry.first == element.Name();
        });
        if (kind == kKinds.end()) return fail(element, "is none of <event>, <scene> and <rule>");
        std::optional<int32_t> status;
        if (kind->second == Profile::Kind::kRule) {
            checkAttributes(element, {"id", "name", "status"});
            if (element.Attribute("status") != nullptr) status = idOf(element, "status");
            if (status == 0) fail(element, "status=\"0\" ends a rule and can set nothing");
        } else {
            checkAttributes(element, {"id", "name"});
        }
        Profile::Policy policy;
        if (const char* name = element.Attribute("name")) policy.name = name;
        forEachChild(element, [&](const XMLElement& child) {
            policy.resources.push_back(readResource(child));
        });
        if (element.NoChildren()) fail(element, "sets nothing");
        const Profile::Key key = {kind->second, idOf(element, "id"), status};
        if (!mProfile.mPolicies.emplace(key, std::move(policy)).second) {
            fail(element, "stands here for the second time");
        }
    }

    Profile mProfile;
    std::string mFault;
};

namespace {

// What the parser has against a file: "XML_ERROR_MISMATCHED_ELEMENT" as "mismatched element".
std::string reasonOf(const tinyxml2::XMLDocument& document) {
    std::string reason = document.ErrorName();
    if (reason.starts_with("XML_ERROR_")) reason.erase(0, std::strlen("XML_ERROR_"));
    for (char& c : reason) c = c == '_' ? ' ' : static_cast<char>(std::tolower(c));
    return "is not well-formed XML: " + reason;
}

}  // namespace

std::optional<Profile> Profile::read(const std::string& file, std::string* error) {
    // Not by its name, so that errno tells why it cannot be opened.
    std::FILE* const stream = std::fopen(file.c_str(), "re");
    if (stream == nullptr) {
        *error = file + ": " + std::strerror(errno);
        return std::nullopt;
    }
    tinyxml2::XMLDocument document;
    document.LoadFile(stream);
    std::fclose(stream);
    if (document.Error()) {
        const int line = std::max(document.ErrorLineNum(), 1);
        *error = file + ":" + std::to_string(line) + ": " + reasonOf(document);
        return std::nullopt;
    }
    if (document.RootElement() == nullptr) {
        *error = file + ":1: has no <profile>";
        return std::nullopt;
    }
    ProfileReader reader(*document.RootElement());
    if (!reader.fault().empty()) {
        *error = file + ":" + reader.fault();
        return std::nullopt;
    }
    return reader.take();
}

const Profile::Policy* Profile::find(Kind kind, int32_t id, std::optional<int32_t> status) const {
    auto policy = mPolicies.find({kind, id, status});
    if (policy == mPolicies.end()) policy = mPolicies.find({kind, id, std::nullopt});
    return policy == mPolicies.end() ? nullptr : &policy->second;
}

}  // namespace simulator
