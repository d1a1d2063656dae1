// The list builders: scene descriptions into resources.
#include <iterator>
#include <utility>

#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "wrapper/opcode_tables.h"
#include "wrapper/text.h"

using DovClient::Resource;
using namespace dovwrapper;

namespace {

// Collects what `walk` gives to its argument, an opcode and a value each. Walks twice, first to
// count, so that nothing but the list is allocated.
template <typename Walk>
std::vector<Resource> collect(const Walk& walk) {
    size_t count = 0;
    walk([&count](int32_t, std::string_view) { ++count; });
    std::vector<Resource> list;
    list.reserve(count);
    walk([&list](int32_t opcode, std::string_view value) {
        list.push_back({opcode, std::string(value)});
    });
    return list;
}

// Whether there is an opcode for a position: in the table or in those behind it.
bool hasOpcode(OpcodeTable table, size_t position) {
    return position < std::size(dovOpcodes) - table;
}

}  // namespace

Resource DovResourceInfo(int32_t opcode, std::string value) {
    return {opcode, std::move(value)};
}

std::vector<Resource> getTargetLoadList(std::string data) {
    const bool named = data.find('-') != std::string::npos;
    return collect([&](auto append) {
        Pieces pieces(data, ",");
        for (size_t i = 0; hasOpcode(kTargetLoad, i); ++i) {
            const auto piece = pieces.next();
            if (!piece) return;
            if (!named) {
                append(dovOpcodes[kTargetLoad + i], *piece);
            } else if (const auto pair = firstTwo(*piece, "-")) {
                append(dovOpcodes[kTargetLoad + i], pair->second);
            }
        }
    });
}

std::vector<Resource> getColocationList(std::string data) {
    return collect([&](auto append) {
        Pieces pieces(data, ",");
        while (const auto piece = pieces.next()) {
            const auto pair = firstTwo(*piece, ":");
            if (!pair) continue;
            if (pair->first == "colocation") {
                append(kColocation, pair->second);
            } else if (pair->first == "groupmigrate") {
                const auto numbers = firstTwo(pair->second, "-");
                if (!numbers) continue;
                const int32_t from = parseInt(numbers->first);
                const int32_t to = parseInt(numbers->second);
                if (from <= to) continue;
                append(kGroupMigrateFrom, std::to_string(from));
                append(kGroupMigrateTo, std::to_string(to));
            }
        }
    });
}

std::vector<Resource> getGameAdpList(std::string data) {
    return collect([&](auto append) {
        Pieces groups(data, ";");
        for (const OpcodeTable table : {kCoreBoost, kCoreLimit, kFreqBoost, kFreqLimit}) {
            const auto group = groups.next();
            if (!group) return;
            // A group of a single value does not count, but keeps its place.
            if (group->find(',') == std::string_view::npos) continue;
            Pieces items(*group, ",");
            for (size_t i = 0; hasOpcode(table, i); ++i) {
                const auto item = items.next();
                if (!item) break;
                append(dovOpcodes[table + i], trim(*item, stringUtils::WHITESPACE));
            }
        }
    });
}

std::vector<Resource> getGameUpgradeList(int32_t /*first*/, int32_t /*second*/, int32_t level,
                                         int32_t /*fourth*/, int32_t /*fifth*/, std::string data) {
    return collect([&](auto append) {
        if (level >= 1) append(kGameUpgradeLevel, std::to_string(level));
        if (!data.empty()) append(kGameUpgradeData, data);
    });
}

void clrGameUpgradeMode(int32_t ruleId, int32_t status) {
    dovRuleCtl(ruleId, status, {{kGameUpgradeLevel, "-1"}, {kGameUpgradeLevel, ""}});
}
