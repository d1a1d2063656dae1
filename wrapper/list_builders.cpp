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

// What a builder appends to: counts first, and collects when it is walked again.
class List {
  public:
    void append(int32_t opcode, std::string_view value) {
        if (mCounting) {
            ++mCount;
        } else {
            mResources.push_back({opcode, std::string(value)});
        }
    }

    // Walks twice, so that the list is allocated once and nothing else is.
    template <typename Walk>
    static std::vector<Resource> collect(const Walk& walk) {
        List list;
        walk(list);
        list.mResources.reserve(list.mCount);
        list.mCounting = false;
        walk(list);
        return std::move(list.mResources);
    }

  private:
    bool mCounting = true;
    size_t mCount = 0;
    std::vector<Resource> mResources;
};

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
    return List::collect([&](List& list) {
        Pieces pieces(data, ",");
        for (size_t i = 0; hasOpcode(kTargetLoad, i); ++i) {
            const auto piece = pieces.next();
            if (!piece) return;
            if (!named) {
                list.append(dovOpcodes[kTargetLoad + i], *piece);
            } else if (const auto pair = firstTwo(*piece, "-")) {
                list.append(dovOpcodes[kTargetLoad + i], pair->second);
            }
        }
    });
}

std::vector<Resource> getColocationList(std::string data) {
    return List::collect([&](List& list) {
        Pieces pieces(data, ",");
        while (const auto piece = pieces.next()) {
            const auto pair = firstTwo(*piece, ":");
            if (!pair) continue;
            if (pair->first == "colocation") {
                list.append(kColocation, pair->second);
            } else if (pair->first == "groupmigrate") {
                const auto numbers = firstTwo(pair->second, "-");
                if (!numbers) continue;
                const int32_t from = parseInt(numbers->first);
                const int32_t to = parseInt(numbers->second);
                if (from <= to) continue;
                list.append(kGroupMigrateFrom, std::to_string(from));
                list.append(kGroupMigrateTo, std::to_string(to));
            }
        }
    });
}

std::vector<Resource> getGameAdpList(std::string data) {
    return List::collect([&](List& list) {
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
                list.append(dovOpcodes[table + i], trim(*item, stringUtils::WHITESPACE));
            }
        }
    });
}

std::vector<Resource> getGameUpgradeList(int32_t /*first*/, int32_t /*second*/, int32_t level,
                                         int32_t /*fourth*/, int32_t /*fifth*/, std::string data) {
    return List::collect([&](List& list) {
        if (level >= 1) list.append(kGameUpgradeLevel, std::to_string(level));
        if (!data.empty()) list.append(kGameUpgradeData, data);
    });
}

void clrGameUpgradeMode(int32_t ruleId, int32_t status) {
    dovRuleCtl(ruleId, status, {{kGameUpgradeLevel, "-1"}, {kGameUpgradeLevel, ""}});
}
