// dovctl actions and scenes: what acquire and scene accept.
#include <set>

#include <dov/DovWrapper.h>

#include "dovctl/commands/commands.h"
#include "dovctl/output.h"
#include "dovctl/text.h"

namespace dovctl {
namespace {

// One row for each call that a scene can become: the first row that fits counts.
struct Scene {
    const char* scene;
    const char* type;
    const char* level;
    const char* sends;
};

constexpr Scene kTable[] = {
        {"1, 10, 11, 12, 16, 110, 129, 1000", "any", "-", "rule SCENE, status TYPE"},
        {"2, 3, 5, 6", "1", "-", "rule 200, status SCENE"},
        {"2, 3, 5, 6", "other", "-", "rule 200, status 0"},
        {"8", "1, 2", "1", "rule 8, status TYPE: 0x010103a0=0"},
        {"8", "0, 1, 2", "any", "rule 8, status TYPE"},
        {"9", "1", "-", "rule 9, status 1: 0x010112f0='enable 0', 0x01011910=0"},
        {"9", "0", "-", "rule 9, status 0"},
        {"14", "1", "any", "rule 14, status 1: 0x01011040=LEVEL from 1 on, 0x010115b0=DATA if any"},
        {"14", "0", "-", "rule 14, status 0: 0x01011040=-1, 0x01011040="},
        {"15", "-1, 0, 1", "any", "rule 15, status TYPE (low 8 bits) + 256 * LEVEL"},
        {"102", "1", "0, -1", "rule 102, status 1: 0x01011070=3"},
        {"102", "1", "other", "rule 102, status 1: 0x01011070=LEVEL"},
        {"102", "0", "-", "rule 102, status 0: 0x01011070=0"},
        {"111", "-1, 0, 1", "-", "rule 111, status TYPE: 0x010103a0=TYPE"},
        {"130", "1", "-", "rule 130, status 1: DATA as a target load"},
        {"130", "0", "-", "rule 130, status 0"},
        {"131", "1", "-", "rule 131, status 1: DATA as a colocation"},
        {"131", "0", "-", "rule 131, status 0"},
        {"9000", "1", "-", "rule 9000, status 1: DATA as a game adaptation"},
        {"9000", "0", "-", "rule 9000, status 0"},
};

ExitCode runScenes(Session& session, const Arguments& arguments) {
    Table table{.columns = {"scene", "type", "level", "sends"}, .rows = {}};
    for (const auto& [scene, type, level, sends] : kTable) {
        table.rows.push_back({scene, type, level, sends});
    }
    show(session.console, arguments, table);
    return kDone;
}

ExitCode runActions(Session& session, const Arguments& arguments) {
    const std::string filter = upperCase(arguments.get<std::string>("FILTER"));
    Table table{.columns = {"id", "name", "reachable"}, .rows = {}};
    std::set<std::string> seen;
    for (size_t id = 0; id < gActionList.size(); ++id) {
        const std::string& name = gActionList[id];
        // A name that is listed twice maps to its first id.
        const bool reachable = seen.insert(name).second;
        if (name.find(filter) == std::string::npos) continue;
        table.rows.push_back({static_cast<int64_t>(id), name, reachable});
    }
    show(session.console, arguments, table);
    return kDone;
}

}  // namespace

const Command kActions{
        .name = "actions",
        .summary = "List the actions that can be acquired by name",
        .details =
                "A name listed twice maps to its first id; the other id is not reachable by "
                "name.\n",
        .positionals = {{.name = "FILTER",
                         .read = readText,
                         .help = "list only names with this part, in any case"}},
        .options = {kJson},
        .run = runActions,
        .offline = true,
};

const Command kScenes{
        .name = "scenes",
        .summary = "List the scenes that can be reported, and what each sends",
        .details =
                "Target load: values separated by ',', or 'name-value' pieces, for 0x010108a0, "
                "0x010108b0\nand 0x010108c0. Colocation: 'colocation:V' gives 0x01011040=V; "
                "'groupmigrate:A-B' gives\n0x01010fb0=A, 0x01010fc0=B if A > B. Game adaptation: "
                "up to four groups separated by ';'\nfor core floors, core ceilings, frequency "
                "floors and frequency ceilings, each a list of\nvalues separated by ',' for the "
                "CPU clusters 0 to 2 and the GPU. Where DATA is needed, a\nscene without it sends "
                "nothing.\n",
        .options = {kJson},
        .run = runScenes,
        .offline = true,
};

}  // namespace dovctl
