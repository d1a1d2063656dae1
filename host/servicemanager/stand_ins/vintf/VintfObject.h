// Stands in for the VINTF library: reads the manifest fragments in a device's folder.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace android::vintf {

enum class HalFormat { AIDL };

// One declared instance. Nothing in a guest comes from an APEX or from another machine.
class ManifestInstance {
  public:
    // `name` is "package.IInterface/instance".
    explicit ManifestInstance(std::string name) : mName(std::move(name)) {}

    HalFormat format() const { return HalFormat::AIDL; }
    std::string package() const { return mName.substr(0, mName.rfind('.', slash())); }
    std::string interface() const {
        const size_t dot = mName.rfind('.', slash());
        return mName.substr(dot + 1, slash() - dot - 1);
    }
    std::string instance() const { return mName.substr(slash() + 1); }
    std::optional<std::string> updatableViaApex() const { return {}; }
    std::optional<std::string> ip() const { return {}; }
    std::optional<uint64_t> port() const { return {}; }

  private:
    size_t slash() const { return mName.find('/'); }
    std::string mName;
};

// Reads the fragments at every query, so that tests can change them.
class HalManifest {
  public:
    bool hasAidlInstance(const std::string& package, const std::string& interface,
                         const std::string& instance) const;
    std::set<std::string> getAidlInstances(const std::string& package,
                                           const std::string& interface) const;
    // Calls `function` for each instance until it returns false; returns false if it did.
    bool forEachInstance(const std::function<bool(const ManifestInstance&)>& function) const;
};

class VintfObject {
  public:
    static std::shared_ptr<VintfObject> GetInstance() { return std::make_shared<VintfObject>(); }
    std::shared_ptr<const HalManifest> getDeviceHalManifest() const {
        return std::make_shared<HalManifest>();
    }
    // A guest has no framework.
    std::shared_ptr<const HalManifest> getFrameworkHalManifest() const {
        return getDeviceHalManifest();
    }
};

}  // namespace android::vintf
