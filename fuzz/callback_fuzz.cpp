// Fuzzes the data of callbacks: the client must receive what the data says.
//
// Input: one byte that selects the kind of callback, then the arguments of onCallback.
#include <cstdlib>

#include <android/binder_libbinder.h>
#include <android/binder_parcel_utils.h>
#include <binder/Parcel.h>

#include "client/callback_client.h"
#include "fuzz/fake_service.h"

using dovcommon::MirxRequestData;
using namespace mirxHalclient::internal;

namespace {

using Texts = std::vector<std::string>;

// The data that a client of either kind has received.
struct Heard {
    int calls = 0;
    std::vector<int32_t> opcodes;
    Texts values, paths;
};

struct Listener : IClientCallback {
    void onCallback(std::list<DovClient::Resource> resources) override {
        ++heard.calls;
        for (const auto& [opcode, value] : resources) {
            heard.opcodes.push_back(opcode);
            heard.values.push_back(value.value());
        }
    }
    Heard heard;
};

struct ListenerByPath : IClientCallbackByPath {
    void onCallback(Texts values, Texts paths) override {
        ++heard.calls;
        heard.values = std::move(values);
        heard.paths = std::move(paths);
    }
    Heard heard;
};

void check(bool holds) {
    if (!holds) std::abort();
}

// Reads the arguments independently of the callback object. Returns false if they are malformed.
bool read(const AParcel* in, std::vector<MirxRequestData>& data) {
    return ndk::AParcel_readVector(in, &data) == STATUS_OK;
}

template <typename Kind>
void callBack(bool forOneRequest, bool byPath, std::span<const uint8_t> arguments) {
    const auto listener = std::make_shared<Kind>();
    const auto client = forOneRequest ? forRequest(listener, "") : forRegistration(listener);
    const ndk::SpAIBinder binder = client->asBinder();

    android::Parcel in, reply;
    in.writeInterfaceToken(android::String16(MirxCallbackClient::descriptor));
    const size_t start = in.dataPosition();
    in.write(arguments.data(), arguments.size());
    const std::vector<uint8_t> bytes(in.data(), in.data() + in.dataSize());
    in.setDataPosition(0);
    const auto object = AIBinder_toPlatformBinder(binder.get());
    const bool taken = object->transact(FIRST_CALL_TRANSACTION, in, &reply) == android::OK;

    // The offset matters: no element may end beyond 2 GB.
    const ndk::ScopedAParcel again(AParcel_create());
    AParcel_unmarshal(again.get(), bytes.data(), bytes.size());
    AParcel_setDataPosition(again.get(), static_cast<int32_t>(start));
    std::vector<MirxRequestData> data;
    check(taken == read(again.get(), data));
    const Heard& heard = listener->heard;
    check(heard.calls == (taken && !data.empty()));
    check(heard.calls == 0 || heard.values.size() == data.size());
    for (size_t i = 0; heard.calls == 1 && i < data.size(); ++i) {
        check(heard.values[i] == data[i].value.value_or(""));
        check(byPath ? heard.paths[i] == data[i].path.value_or("")
                     : heard.opcodes[i] == data[i].id);
    }
    check(request_callbacks.size() == (forOneRequest && !taken));
    request_callbacks.clear();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    fuzz::answerNothing();
    const bool forOneRequest = (data[0] & 1) != 0;
    const std::span<const uint8_t> arguments(data + 1, size - 1);
    if ((data[0] & 2) != 0) {
        callBack<ListenerByPath>(forOneRequest, true, arguments);
    } else {
        callBack<Listener>(forOneRequest, false, arguments);
    }
    return 0;
}
