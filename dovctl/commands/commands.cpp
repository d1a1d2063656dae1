// The list of all commands.
#include "dovctl/commands/commands.h"

namespace dovctl {

static constexpr const Command* kCommands[] = {
        &kInit, &kAcquire, &kResAcquire, &kPlatformAcquire, &kRelease, &kHelp,
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
