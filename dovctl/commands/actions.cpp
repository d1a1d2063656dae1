// dovctl actions: the names that acquire takes.
#include <set>

#include <dov/DovWrapper.h>

#include "dovctl/commands/commands.h"
#include "dovctl/output.h"

namespace dovctl {
namespace {

ExitCode runActions(Session& session, const Arguments& arguments) {
    const auto filter = arguments.get<std::string>("FILTER");
    Table table{.columns = {"id", "name", "reachable"}, .rows = {}};
    std::set<std::string> seen;
    for (size_t id = 0; id < gActionList.size(); ++id) {
        const std::string& name = gActionList[id];
        // A name that stands twice is found at its first place.
        const bool reachable = seen.insert(name).second;
        if (name.find(filter) == std::string::npos) continue;
        table.rows.push_back({static_cast<int64_t>(id), name, reachable});
    }
    show(session.console, arguments, table);
    return kDone;
}

constexpr Parameter kPositionals[] = {
        {.name = "FILTER", .read = readText, .help = "part of the names to list"},
};
constexpr Parameter kOptions[] = {kJson};

}  // namespace

constinit const Command kActions{
        .name = "actions",
        .summary = "List the actions that can be acquired by name",
        .details = "A name that stands twice leads to its first id; the other cannot be reached.\n",
        .positionals = kPositionals,
        .options = kOptions,
        .run = runActions,
        .offline = true,
};

}  // namespace dovctl
