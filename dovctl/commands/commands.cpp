// The list of all commands.
#include "dovctl/commands/commands.h"

namespace dovctl {

static constexpr const Command* kCommands[] = {
        &kInit,     &kAcquire,   &kResAcquire, &kPlatformAcquire,
        &kRelease,  &kActions,   &kNotify,     &kScene,
        &kRule,     &kSysinfo,   &kState,      &kHistory,
        &kPower,    &kPmStatus,  &kDataset,    &kFeature,
        &kRes,      &kPath,      &kSa,         &kResRelease,
        &kResState, &kPathState, &kListen,     &kThermal,
        &kDump,     &kRecord,    &kProp,       &kTop,
        &kDoctor,   &kHelp,
};

std::span<const Command* const> commands() {
    return kCommands;
}

const Command* findCommand(std::string_view name) {
    for (const Command* command : kCommands) {
        if (command->name == name) return command;
    }
    return nullptr;
}

}  // namespace dovctl
