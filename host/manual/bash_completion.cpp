// dovctl's completion in bash.
#include <set>
#include <span>

#include "dovctl/commands/commands.h"
#include "host/manual/pages.h"

namespace manual {
namespace {

using namespace dovctl;

constexpr char kHead[] = R"(# Completes dovctl in bash; generated from its commands.
_dovctl() {
    local word=${COMP_WORDS[COMP_CWORD]} command='' given=0 previous='' options='' valued='' values='' i
    for ((i = 1; i <= COMP_CWORD; i++)); do
        # The value of an option is no argument, and values of options cannot be listed.
        if [[ -n $previous && " $valued " == *" $previous "* ]]; then
            [[ $i != "$COMP_CWORD" ]] || return
        elif [[ $i != "$COMP_CWORD" && ${COMP_WORDS[i]} != -* ]]; then
            if [[ -n $command ]]; then
                given=$((given + 1))
            else
                command=${COMP_WORDS[i]}
            fi
        fi
        previous=${COMP_WORDS[i]}
        case $command in
)";
constexpr char kTail[] = R"(            *) return ;;
        esac
    done
    [[ $word != -* ]] || values=$options
    [[ $word == -* || $given == 0 ]] || return
    mapfile -t COMPREPLY < <(compgen -W "$values" -- "$word")
}
complete -F _dovctl dovctl
)";

// One branch of the script: what it may list after `command`.
std::string branch(const std::string& command, std::span<const Parameter> options,
                   const std::set<std::string>& values) {
    std::string text = "            '" + command + "')\n                options='";
    for (const Parameter& option : options) text.append(" --").append(option.name);
    text += "' valued='";
    for (const Parameter& option : options) {
        if (option.read != nullptr) text.append(" --").append(option.name);
    }
    text += "'\n                values='";
    for (const std::string& value : values) text.append(" ").append(value);
    return text + "' ;;\n";
}

}  // namespace

std::string bashCompletion() {
    std::set<std::string> names;
    for (const Command* command : commands()) names.insert(command->name);
    std::string text = kHead + branch("", globalOptions(), names);
    for (const Command* command : commands()) {
        const auto& positionals = command->positionals;
        std::set<std::string> values;
        if (!positionals.empty() && positionals.front().choices != nullptr) {
            for (std::string& value : positionals.front().choices())
                values.insert(std::move(value));
        }
        text += branch(command->name, optionsOf(*command), values);
    }
    return text + kTail;
}

}  // namespace manual
