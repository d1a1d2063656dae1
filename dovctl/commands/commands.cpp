// The list of all commands.
#include "dovctl/commands/commands.h"

namespace dovctl {

static constexpr const Command* kCommands[] = {
        &kInit,    &kAcquire, &kResAcquire, &kPlatformAcquire, &kRes,     &kPath,
        &kSa,      &kRelease, &kState,      &kListen,          &kThermal, &kNotify,
        &kScene,   &kRule,    &kSysinfo,    &kHistory,         &kPower,   &kPmStatus,
        &kDataset, &kFeature, &kDump,       &kRecord,          &kProp,    &kFault,
        &kActions, &kScenes,  &kTop,        &kDoctor,          &kHelp,
};

std::span<const Command* const> commands() {
    return kCommands;
}

std::vector<std::string> commandNames() {
    std::vector<std::string> names;
    for (const Command* command : kCommands) names.emplace_back(command->name);
    return names;
}

const Command* findCommand(std::string_view name) {
    for (const Command* command : kCommands) {
        if (command->name == name) return command;
    }
    return nullptr;
}

}  // namespace dovctl
