// The commands of the program. A new one is declared here and listed in commands.cpp.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "dovctl/command.h"

namespace dovctl {

extern const Command kInit;
extern const Command kAcquire;
extern const Command kResAcquire;
extern const Command kPlatformAcquire;
extern const Command kRelease;
extern const Command kActions;
extern const Command kScenes;
extern const Command kNotify;
extern const Command kScene;
extern const Command kRule;
extern const Command kSysinfo;
extern const Command kState;
extern const Command kHistory;
extern const Command kPower;
extern const Command kPmStatus;
extern const Command kDataset;
extern const Command kFeature;
extern const Command kRes;
extern const Command kPath;
extern const Command kSa;
extern const Command kListen;
extern const Command kThermal;
extern const Command kDump;
extern const Command kFault;
extern const Command kRecord;
extern const Command kProp;
extern const Command kTop;
extern const Command kDoctor;
extern const Command kHelp;

// In the order of the help text.
std::span<const Command* const> commands();

std::vector<std::string> commandNames();

// Null if there is no such command.
const Command* findCommand(std::string_view name);

}  // namespace dovctl
