// The list builders.
#include <iterator>
#include <utility>

#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "wrapper/opcode_tables.h"
#include "wrapper/text.h"

using DovClient::Resource;
using namespace dovwrapper;

namespace {

using List = std::vector<Resource>;

void append(List& list, int32_t opcode, std::string_view value) {
    list.push_back({opcode, std::string(value)});
}

// Compat: a position past the end of a table takes its opcode from the tables behind it.
bool hasOpcode(OpcodeTable table, size_t position) {
    return position < std::size(dovOpcodes) - table;
}

}  // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): callers are compiled against these signatures.

Resource DovResourceInfo(int32_t opcode, std::string value) {
    return {opcode, std::move(value)};
}

std::vector<Resource> getTargetLoadList(std::string data) {
    List list;
    const bool named = data.find('-') != std::string::npos;
    Pieces pieces(data, ",");
    for (size_t i = 0; hasOpcode(kTargetLoad, i); ++i) {
        const auto piece = pieces.next();
        if (!piece) break;
        if (!named) {
            append(list, dovOpcodes[kTargetLoad + i], *piece);
        } else if (const auto pair = firstTwo(*piece, "-")) {
            append(list, dovOpcodes[kTargetLoad + i], pair->second);
        }
    }
    return list;
}

std::vector<Resource> getColocationList(std::string data) {
    List list;
    Pieces pieces(data, ",");
    while (const auto piece = pieces.next()) {
        const auto pair = firstTwo(*piece, ":");
        if (!pair) continue;
        if (pair->first == "colocation") {
            append(list, kColocation, pair->second);
        } else if (pair->first == "groupmigrate") {
            const auto numbers = firstTwo(pair->second, "-");
            if (!numbers) continue;
            const int32_t from = parseInt(numbers->first);
            const int32_t to = parseInt(numbers->second);
            if (from <= to) continue;
            append(list, kGroupMigrateFrom, std::to_string(from));
            append(list, kGroupMigrateTo, std::to_string(to));
        }
    }
    return list;
}

std::vector<Resource> getGameAdpList(std::string data) {
    List list;
    Pieces groups(data, ";");
    for (const OpcodeTable table : {kCoreBoost, kCoreLimit, kFreqBoost, kFreqLimit}) {
        const auto group = groups.next();
        if (!group) break;
        // Compat: a group of a single value is skipped but keeps its position.
        if (group->find(',') == std::string_view::npos) continue;
        Pieces items(*group, ",");
        for (size_t i = 0; hasOpcode(table, i); ++i) {
            const auto item = items.next();
            if (!item) break;
            append(list, dovOpcodes[table + i], trim(*item, stringUtils::WHITESPACE));
        }
    }
    return list;
}

std::vector<Resource> getGameUpgradeList(int32_t /*first*/, int32_t /*second*/, int32_t level,
                                         int32_t /*fourth*/, int32_t /*fifth*/, std::string data) {
    List list;
    if (level >= 1) append(list, kGameUpgradeLevel, std::to_string(level));
    if (!data.empty()) append(list, kGameUpgradeData, data);
    return list;
}

// NOLINTEND(performance-unnecessary-value-param)

void clrGameUpgradeMode(int32_t ruleId, int32_t status) {
    dovRuleCtl(ruleId, status, {{kGameUpgradeLevel, "-1"}, {kGameUpgradeLevel, ""}});
}
