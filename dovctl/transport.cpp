// The transport of dovctl if no other is linked into it.
#include "common/transport.h"

namespace dovcommon {

[[gnu::weak]] Transport transport() {
    return driverTransport();
}

}  // namespace dovcommon
