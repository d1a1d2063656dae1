// DovEventAcquireWrapper, DovReleaseWapper and DovNotifyWapper with its table of scenes.
#include <utility>

#include <android/log.h>

#include <dov/DovWrapper.h>
#include <dov/dov.h>

#include "common/or_none.h"
#include "wrapper/action_index.h"

using dovcommon::orNone;

namespace {

constexpr char kLogTag[] = "[DOV_CLIENT_WRAPPER]";

// Opcodes that scenes set with values of their own.
constexpr int32_t kSceneFlag = 0x010103a0;
constexpr int32_t kSceneEnable = 0x010112f0;
constexpr int32_t kSceneLimit = 0x01011910;
constexpr int32_t kSceneLevel = 0x01011070;

template <typename... Values>
bool oneOf(int32_t value, Values... values) {
    return ((value == values) || ...);
}

void rule(int32_t ruleId, int32_t status, const std::vector<DovClient::Resource>& resources = {}) {
    dovRuleCtl(ruleId, status, resources);
}

// The table of scenes. The first row that matches makes the only call; a scene without a row sends
// nothing.
void sendScene(int32_t src, int32_t type, int32_t level, std::string data) {
    const bool on = type == 1;
    const bool off = type == 0;
    const bool onWithData = on && !data.empty();
    using std::to_string;
    // clang-format off
    if (oneOf(src, 1, 10, 11, 12, 16, 110, 129, 1000)) return rule(src, type);

    if (oneOf(src, 2, 3, 5, 6)) return rule(200, on ? src : 0);

    if (src == 8 && oneOf(type, 1, 2) && level == 1) return rule(8, type, {{kSceneFlag, "0"}});
    if (src == 8 && oneOf(type, 0, 1, 2))            return rule(8, type);

    if (src == 9 && on)  return rule(9, 1, {{kSceneEnable, "enable 0"}, {kSceneLimit, "0"}});
    if (src == 9 && off) return rule(9, 0);  // Compat: an empty list, not "enable 1"

    if (src == 14 && on)  return rule(14, 1, getGameUpgradeList(0, 0, level, 0, 0, std::move(data)));
    if (src == 14 && off) return clrGameUpgradeMode(14, 0);

    if (src == 15 && oneOf(type, -1, 0, 1)) return rule(15, (type & 0xff) | (level << 8));

    if (src == 102 && on && oneOf(level, 0, -1)) return rule(102, 1, {{kSceneLevel, "3"}});
    if (src == 102 && on)  return rule(102, 1, {{kSceneLevel, to_string(level)}});
    if (src == 102 && off) return rule(102, 0, {{kSceneLevel, "0"}});

    if (src == 111 && oneOf(type, -1, 0, 1)) return rule(111, type, {{kSceneFlag, to_string(type)}});

    if (src == 130 && onWithData) return rule(130, 1, getTargetLoadList(std::move(data)));
    if (src == 130 && off)        return rule(130, 0);

    if (src == 131 && onWithData) return rule(131, 1, getColocationList(std::move(data)));
    if (src == 131 && off)        return rule(131, 0);

    if (src == 9000 && onWithData) return rule(9000, 1, getGameAdpList(std::move(data)));
    if (src == 9000 && off)        return rule(9000, 0);
    // clang-format on
}

}  // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): callers are compiled against these signatures.

int32_t DovEventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                               int32_t timeout) {
    __android_log_print(
            ANDROID_LOG_INFO, kLogTag, "[%s] eventId:%s, scene:%s, identity:%s, timeout:%d",
            "DovEventAcquireWrapper", orNone(eventId), orNone(scene), orNone(identity), timeout);
    const auto action = dovwrapper::findAction(eventId);
    return action ? DovEventAcquire(*action, scene, identity, timeout, {}) : -1;
}

void DovReleaseWapper(int32_t handle) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "[%s] %d", "DovReleaseWapper", handle);
    DovRelease(handle);
}

int32_t DovNotifyWapper(std::string name, int32_t src, int32_t type, int32_t level,
                        int32_t /*reserved1*/, int32_t /*reserved2*/, std::string data) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "[%s] %s, src:%d, type:%d", "DovNotifyWapper",
                        orNone(name), src, type);
    sendScene(src, type, level, std::move(data));
    return 0;
}

// NOLINTEND(performance-unnecessary-value-param)
