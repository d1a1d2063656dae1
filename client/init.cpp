// mirx_init: asks the service to initialise.
#include <dov/halclient.h>

#include "client/binding.h"

namespace mirxHalclient {

void mirx_init() {
    internal::callMirx({"mirx client mirx_init", "mirx_init"},
                       [](dovcommon::IMirx& hal) { return hal.init(); });
}

}  // namespace mirxHalclient
