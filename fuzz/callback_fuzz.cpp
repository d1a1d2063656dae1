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

// A client of either kind, and the data that it has received.
struct Listener : IClientCallback, IClientCallbackByPath {
    void onCallback(std::list<DovClient::Resource> resources) override {
        ++calls;
        for (const auto& [opcode, value] : resources) {
            opcodes.push_back(opcode);
            values.push_back(value.value());
        }
    }
    void onCallback(Texts theValues, Texts thePaths) override {
        ++calls;
        values = std::move(theValues);
        paths = std::move(thePaths);
    }

    int calls = 0;
    std::vector<int32_t> opcodes;
    Texts values, paths;
};

void check(bool holds) {
    if (!holds) std::abort();
}

template <typename Kind>
void callBack(bool forOneRequest, bool byPath, std::span<const uint8_t> arguments) {
    const auto heard = std::make_shared<Listener>();
    const std::shared_ptr<Kind> kind = heard;
    const auto client = forOneRequest ? forRequest(kind, "") : forRegistration(kind);
    const ndk::SpAIBinder binder = client->asBinder();

    android::Parcel in, reply;
    in.writeInterfaceToken(android::String16(MirxCallbackClient::descriptor));
    const size_t start = in.dataPosition();
    in.write(arguments.data(), arguments.size());
    const ndk::ScopedAParcel again(AParcel_create());
    AParcel_unmarshal(again.get(), in.data(), in.dataSize());
    in.setDataPosition(0);
    const auto object = AIBinder_toPlatformBinder(binder.get());
    const bool taken = object->transact(FIRST_CALL_TRANSACTION, in, &reply) == android::OK;

    // Reads the arguments again, which fails if they are malformed. The offset matters: no element
    // may end beyond 2 GB.
    AParcel_setDataPosition(again.get(), static_cast<int32_t>(start));
    std::vector<MirxRequestData> data;
    check(taken == (ndk::AParcel_readVector(again.get(), &data) == STATUS_OK));
    check(heard->calls == (taken && !data.empty()));
    check(heard->calls == 0 || heard->values.size() == data.size());
    for (size_t i = 0; heard->calls == 1 && i < data.size(); ++i) {
        check(heard->values[i] == data[i].value.value_or(""));
        check(byPath ? heard->paths[i] == data[i].path.value_or("")
                     : heard->opcodes[i] == data[i].id);
    }
    check(request_callbacks.size() == (forOneRequest && !taken));
    request_callbacks.clear();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    fuzz::answerNothing();
    const bool forOneRequest = (data[0] & 1) != 0, byPath = (data[0] & 2) != 0;
    const auto call = byPath ? callBack<IClientCallbackByPath> : callBack<IClientCallback>;
    call(forOneRequest, byPath, {data + 1, size - 1});
    return 0;
}
