// By which way dovctl reaches services when nothing else is linked into it.
#include "common/transport.h"

namespace dovcommon {

[[gnu::weak]] Transport transport() {
    return driverTransport();
}

}  // namespace dovcommon
