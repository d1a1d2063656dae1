// Stands in for the VINTF library: reads the manifest fragments in a device's folder.
#include <vintf/VintfObject.h>

#include "host/services/vintf_manifest.h"

namespace android::vintf {

static const char kFragments[] = "/vendor/etc/vintf/manifest";

bool HalManifest::forEachInstance(
        const std::function<bool(const ManifestInstance&)>& function) const {
    for (const std::string& name : hostbinder::declaredInstances(kFragments)) {
        if (!function(ManifestInstance(name))) return false;
    }
    return true;
}

std::set<std::string> HalManifest::getAidlInstances(const std::string& package,
                                                    const std::string& interface) const {
    std::set<std::string> instances;
    forEachInstance([&](const ManifestInstance& declared) {
        if (declared.package() == package && declared.interface() == interface)
            instances.insert(declared.instance());
        return true;
    });
    return instances;
}

bool HalManifest::hasAidlInstance(const std::string& package, const std::string& interface,
                                  const std::string& instance) const {
    return getAidlInstances(package, interface).contains(instance);
}

}  // namespace android::vintf
