// Dumps of the service's tables to its log, and the recording of request history.
#include <dov/halclient.h>

#include "client/binding.h"
#include "client/request_data.h"

using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

int diagnose(int code, const Operation& operation) {
    return toAcceptance(askMirx(operation, [&](IMirx& hal, int32_t* answer) {
        MirxRequestParcel parcel;
        parcel.requestType = mirx::kDiagnostics;
        parcel.arg4 = 1;
        parcel.requestData.emplace_back().id = code;
        return hal.request(parcel, answer);
    }));
}

}  // namespace

#define DIAGNOSTIC(name, code)                                \
    int name() {                                              \
        return diagnose(code, {"mirx client " #name, #name}); \
    }

// The service defines the codes; 9 is not used.
DIAGNOSTIC(mirxDumpToDoQueue, 0)
DIAGNOSTIC(mirxDumpRunMap, 1)
DIAGNOSTIC(mirxDumpActiveResMap, 2)
DIAGNOSTIC(mirxDumpResRequest, 3)
DIAGNOSTIC(mirxDumpResInfo, 4)
DIAGNOSTIC(mirxDumpSAInfo, 5)
DIAGNOSTIC(mirxDumpPidFdList, 6)
DIAGNOSTIC(mirxDumpPidfdMonitorMap, 7)
DIAGNOSTIC(mirxDumpResRecordList, 8)
DIAGNOSTIC(mirxHistoryRequestRecordOn, 10)
DIAGNOSTIC(mirxHistoryRequestRecordOff, 11)

#undef DIAGNOSTIC

}  // namespace mirxHalclient
