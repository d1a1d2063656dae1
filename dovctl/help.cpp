// The help texts, generated from the commands' tables.
#include "dovctl/help.h"

#include <algorithm>

#include "common/service.h"
#include "dovctl/commands/commands.h"

namespace dovctl {
namespace {

// A heading and two columns, or nothing when there are no rows.
std::string section(const char* heading, const Rows& rows) {
    if (rows.empty()) return "";
    size_t width = 0;
    for (const auto& [left, right] : rows) width = std::max(width, left.size());
    std::string text = std::string("\n") + heading + ":\n";
    for (const auto& [left, right] : rows) {
        text.append("  ")
                .append(left)
                .append(width - left.size() + 2, ' ')
                .append(right)
                .append("\n");
    }
    return text;
}

std::string longForm(const Parameter& option) {
    std::string text = std::string("--") + option.name;
    if (option.placeholder != nullptr) text.append(" ").append(option.placeholder);
    return text;
}

// A parameter in a usage line.
std::string usageOf(const Parameter& parameter, const std::string& form) {
    const std::string repeated = form + (parameter.repeats() ? "..." : "");
    return parameter.required() ? repeated : "[" + repeated + "]";
}

std::string remarks(const Parameter& parameter) {
    std::string text = parameter.help;
    if (parameter.fallback != nullptr)
        text += std::string(" (default: ") + parameter.fallback + ")";
    if (parameter.repeats()) text += " (repeatable)";
    return text;
}

}  // namespace

Rows optionRows(std::span<const Parameter> options) {
    Rows rows;
    for (const Parameter& option : options) {
        const std::string letter =
                option.letter != 0 ? std::string{'-', option.letter, ',', ' '} : "    ";
        rows.emplace_back(letter + longForm(option), remarks(option));
    }
    return rows;
}

Rows argumentRows(const Command& command) {
    Rows rows;
    for (const Parameter& positional : command.positionals) {
        rows.emplace_back(positional.name, remarks(positional));
    }
    return rows;
}

Rows exitCodeRows() {
    Rows rows;
    for (const auto& [code, meaning] : kExitCodes) rows.emplace_back(std::to_string(code), meaning);
    return rows;
}

Rows environmentRows() {
    return {{"DOV_SERVICE_DIR",
             "the services' folder on a machine without a binder driver; without it, "
             "tavro-services in XDG_RUNTIME_DIR, else tavro-services-UID in /tmp"}};
}

std::string usageOf(const Command& command) {
    std::string text = std::string("dovctl ") + command.name + " [OPTION]...";
    for (const Parameter& option : command.options) {
        if (option.required()) text += " " + usageOf(option, longForm(option));
    }
    for (const Parameter& positional : command.positionals) {
        text += " " + usageOf(positional, positional.name);
    }
    return text;
}

std::string programHelp() {
    std::string text = "Usage: dovctl [OPTION]... COMMAND [ARGUMENT]...\n\n";
    text += std::string("Requests performance from the service ") + dovcommon::kServiceName + ".\n";
    Rows rows;
    for (const Command* command : commands()) rows.emplace_back(command->name, command->summary);
    text += section("Commands", rows);
    text += section("Options", optionRows(globalOptions()));
    text += section("Exit codes", exitCodeRows());
    text += section("Environment", environmentRows());
    return text + "\n'dovctl COMMAND --help' describes a command.\n";
}

std::string commandHelp(const Command& command) {
    std::string text = "Usage: " + usageOf(command) + "\n\n" + command.summary + ".\n";
    if (command.details != nullptr) text += command.details;
    text += section("Arguments", argumentRows(command));
    return text + section("Options", optionRows(optionsOf(command)));
}

}  // namespace dovctl
