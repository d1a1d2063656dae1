// Measures the library's own cost: calls to a service in the same process.
//
// Compares the library with the straightforward implementation (bench/literal.h), and checks that
// the library sends the same as the bare calls of the other benchmark. With --count, calls each way
// a hundred times in countedCalls and prints its name, for a tool that counts instructions.
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <android/log.h>
#include <dov/DovWrapper.h>
#include <dov/dov.h>
#include <dov/halclient.h>

#include "bench/literal.h"
#include "bench/operations.h"
#include "bench/seam.h"
#include "bench/allocations.h"

using DovClient::Resource;
namespace literal = bench::literal;

namespace {

constexpr int kCounted = 100;

// Records the last request and the last callback object.
class Recorder : public bench::QuietService {
  public:
    std::string asked;
    size_t parcelAllocations = 0;
    std::shared_ptr<bench::IMirxCallback> callback;

    ndk::ScopedAStatus request(const bench::MirxRequestParcel& parcel, int32_t* result) override {
        if (recording) record("request", parcel);
        return QuietService::request(parcel, result);
    }
    ndk::ScopedAStatus oneWayRequest(const bench::MirxRequestParcel& parcel) override {
        if (recording) record("oneWayRequest", parcel);
        return QuietService::oneWayRequest(parcel);
    }
    ndk::ScopedAStatus stateRequest(const bench::MirxRequestParcel& parcel,
                                    std::vector<bench::MirxRequestData>* result) override {
        if (recording) record("stateRequest", parcel);
        return QuietService::stateRequest(parcel, result);
    }
    ndk::ScopedAStatus ruleCtl(int32_t ruleId, int32_t status,
                               const std::vector<bench::MirxRequestData>& resources,
                               int32_t* result) override {
        if (recording) {
            bench::MirxRequestParcel parcel;
            parcel.requestData = resources;
            record("ruleCtl " + std::to_string(ruleId) + " " + std::to_string(status), parcel);
        }
        return QuietService::ruleCtl(ruleId, status, resources, result);
    }
    ndk::ScopedAStatus listeningRegister(const bench::MirxRequestParcel& parcel,
                                         const std::shared_ptr<bench::IMirxCallback>& given,
                                         int32_t* result) override {
        if (recording) {
            record("listeningRegister", parcel);
            callback = given;
        }
        return QuietService::listeningRegister(parcel, given, result);
    }

    bool recording = false;

  private:
    void record(const std::string& operation, bench::MirxRequestParcel parcel) {
        parcel.callback = nullptr;
        if (operation == "oneWayRequest") parcel.handle = 0;  // random
        asked = operation + " " + parcel.toString();
        parcelAllocations = allocationsOf([&] { const bench::MirxRequestParcel copy = parcel; });
    }
};

// Whether the bare call and the library send the same. Otherwise their times do not compare.
bool sameIsSent(Recorder& recorder) {
    recorder.recording = true;
    bool same = true;
    for (const bench::Contest& contest :
         bench::operations(bench::IMirx::fromBinder(recorder.asBinder()))) {
        std::map<std::string, std::string> asked;
        for (const bench::Way& way : contest.ways) {
            recorder.asked.clear();
            way.run(0);
            asked[way.name] = recorder.asked;
        }
        if (asked["bare"] == asked["library"]) continue;
        std::fprintf(stderr, "cost_bench: %s\n  bare     %s\n  library  %s\n", contest.name.c_str(),
                     asked["bare"].c_str(), asked["library"].c_str());
        same = false;
    }
    recorder.recording = false;
    return same;
}

class Dropping : public IClientCallback {
  public:
    void onCallback(std::list<Resource>) override {}
};

// A contest, and the number of allocations that its call cannot avoid.
struct Entry {
    bench::Contest contest;
    size_t needed = 0;
};

Entry entry(std::string name, std::function<void()> library, std::function<void()> literally) {
    const auto way = [](std::string title, std::function<void()> run) {
        return bench::Way{std::move(title), [run = std::move(run)](int) { run(); }};
    };
    return {{std::move(name),
             {way("library", std::move(library)), way("literal", std::move(literally))}}};
}

// Makes the call with the log on: lines are formatted and then dropped.
template <typename Call>
std::function<void()> logging(Call call) {
    return [call] {
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        call();
        __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    };
}

std::vector<Entry> entries(Recorder& recorder) {
    std::vector<Entry> table;
    const std::string identity = "launcher";
    for (const std::string package : {"com.example.launcher", "com.example.launcher.quickstep"}) {
        table.push_back(entry(
                "DovEventAcquire" + std::string(package.size() > 22 ? ", long package" : ""),
                [=] { DovEventAcquire(3, package, identity, 2000, {}); },
                [=] { literal::eventAcquire(3, package, identity, 2000, {}); }));
    }
    table.push_back(
            entry("DovEventAcquire, log formatted",
                  logging([=] { DovEventAcquire(3, "com.example", "me", 2000, {}); }),
                  logging([=] { literal::eventAcquire(3, "com.example", "me", 2000, {}); })));
    for (const size_t id : {size_t{0}, gActionList.size() - 1}) {
        const std::string event = "VANTEL_" + gActionList[id];
        table.push_back(entry(
                "DovEventAcquireWrapper, action " + std::to_string(id),
                [=] { DovEventAcquireWrapper(event, "scene", identity, 2000); },
                [=] { literal::eventAcquireWrapper(event, "scene", identity, 2000); }));
    }
    for (const size_t count : bench::kCounts) {
        const auto list = std::make_shared<std::list<Resource>>(bench::resourceList(count));
        table.push_back(entry(
                "mirxResCtlRequest, " + std::to_string(count),
                [=] { mirxHalclient::mirxResCtlRequest(1000, *list, 1234); },
                [=] { literal::resCtlRequest(1000, *list, 1234); }));
    }
    const std::string scene = "2,2,2,1;4,3,2,1;1500000,1800000,2000000,600;1,2,3,4";
    table.push_back(entry(
            "DovNotifyWapper, 16 resources",
            [=] { DovNotifyWapper("scene", 9000, 1, 0, 0, 0, scene); },
            [=] { literal::notifyWrapper("scene", 1, scene); }));
    for (const size_t count : bench::kCounts) {
        const auto asked = std::make_shared<std::vector<Resource>>(bench::resources(count));
        table.push_back(entry(
                "DovMutiResStateRequest, " + std::to_string(count),
                [=] { DovMutiResStateRequest(*asked); },
                [=] { literal::resStateRequest(*asked); }));
    }
    for (Entry& e : table) {
        recorder.recording = true;
        e.contest.ways[0].run(0);
        e.needed = recorder.parcelAllocations;
        recorder.recording = false;
    }

    std::list<Resource> watched = bench::resourceList(1);
    const auto client = std::make_shared<Dropping>();
    recorder.recording = true;
    mirxHalclient::mirxResListeningRegister(watched, 1234, client);
    recorder.recording = false;
    for (const size_t count : bench::kCounts) {
        const auto data = std::make_shared<std::vector<bench::MirxRequestData>>(count);
        for (bench::MirxRequestData& element : *data) element.value = "1500000";
        Entry e = entry(
                "callback, " + std::to_string(count),
                [data, callback = recorder.callback] { callback->onCallback(*data); },
                [=] { literal::onCallback(*data, client); });
        e.needed = count;  // the elements of the client's list
        table.push_back(std::move(e));
    }
    return table;
}

}  // namespace

extern "C" [[gnu::noinline]] void countedCalls(const bench::Way& way);
void countedCalls(const bench::Way& way) {
    for (int call = 0; call < kCounted; ++call) way.run(0);
}

int main(int argc, char** argv) {
    __android_log_set_logger([](const __android_log_message*) {});
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    const auto service = ndk::SharedRefBase::make<Recorder>();
    bench::provide(service);
    literal::bind(service);
    if (!sameIsSent(*service)) return 1;
    const std::vector<Entry> table = entries(*service);
    std::vector<bench::Contest> contests;
    for (const Entry& e : table) contests.push_back(e.contest);

    if (argc == 2 && std::string_view(argv[1]) == "--count") {
        for (const bench::Contest& contest : contests) {
            for (const bench::Way& way : contest.ways) {
                way.run(0);
                countedCalls(way);
                std::printf("%s, %s\n", contest.name.c_str(), way.name.c_str());
            }
        }
        return 0;
    }
    const auto texts = [&](size_t index) -> std::vector<std::string> {
        const auto made = [&](size_t way) {
            return std::to_string(allocationsOf([&] { contests[index].ways[way].run(0); }));
        };
        return {made(0), made(1), std::to_string(table[index].needed)};
    };
    return bench::run(argc, argv, contests, {.rounds = 201, .calls = 200}, {1},
                      {.unit = "ns",
                       .nanosecondsPerUnit = 1,
                       .titles = {"allocations", "literal", "needed"},
                       .texts = texts});
}
