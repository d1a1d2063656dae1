// The service instances that the VINTF manifest fragments of a folder declare.
#include "host/services/vintf_manifest.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <android/log.h>
#include <tinyxml2.h>

namespace hostbinder {
namespace {

std::string textOf(const tinyxml2::XMLElement* element) {
    const char* text = element == nullptr ? nullptr : element->GetText();
    return text == nullptr ? "" : text;
}

void addInstancesOfHal(const tinyxml2::XMLElement& hal, std::set<std::string>& instances) {
    const std::string package = textOf(hal.FirstChildElement("name"));
    for (auto* fqname = hal.FirstChildElement("fqname"); fqname != nullptr;
         fqname = fqname->NextSiblingElement("fqname")) {
        instances.insert(package + "." + textOf(fqname));
    }
    for (auto* interface = hal.FirstChildElement("interface"); interface != nullptr;
         interface = interface->NextSiblingElement("interface")) {
        const std::string prefix =
                package + "." + textOf(interface->FirstChildElement("name")) + "/";
        for (auto* instance = interface->FirstChildElement("instance"); instance != nullptr;
             instance = instance->NextSiblingElement("instance")) {
            instances.insert(prefix + textOf(instance));
        }
    }
}

void addInstancesOfFragment(const std::string& file, std::set<std::string>& instances) {
    tinyxml2::XMLDocument document;
    if (document.LoadFile(file.c_str()) != tinyxml2::XML_SUCCESS) {
        __android_log_print(ANDROID_LOG_WARN, "hostbinder", "%s: %s", file.c_str(),
                            document.ErrorStr());
        return;
    }
    const tinyxml2::XMLElement* manifest = document.FirstChildElement("manifest");
    if (manifest == nullptr) {
        __android_log_print(ANDROID_LOG_WARN, "hostbinder", "%s: has no <manifest>", file.c_str());
        return;
    }
    for (auto* hal = manifest->FirstChildElement("hal"); hal != nullptr;
         hal = hal->NextSiblingElement("hal")) {
        if (hal->Attribute("format", "aidl") != nullptr) addInstancesOfHal(*hal, instances);
    }
}

}  // namespace

std::set<std::string> declaredInstances(const std::string& folder) {
    std::set<std::string> instances;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".xml") addInstancesOfFragment(entry.path(), instances);
    }
    return instances;
}

std::string declareInstance(const std::string& folder, const std::string& instance) {
    if (declaredInstances(folder).count(instance) != 0) return "";
    const size_t dot = instance.rfind('.', instance.find('/'));
    if (dot == std::string::npos) return instance + ": is not package.IInterface/instance";
    const std::string package = instance.substr(0, dot);
    const std::string file = folder + "/" + package + "-service.xml";
    std::ofstream fragment(file);
    fragment << "<manifest version=\"1.0\" type=\"device\">\n    <hal format=\"aidl\">\n        "
                "<name>"
             << package << "</name>\n        <fqname>" << instance.substr(dot + 1)
             << "</fqname>\n    </hal>\n</manifest>\n";
    fragment.close();
    return fragment ? "" : file + ": " + std::strerror(errno);
}

}  // namespace hostbinder
