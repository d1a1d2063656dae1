// Makes the binder tests run as in a vendor process, when preloaded.
//
// A vendor process has two copies of libbinder: one for the library and one for libbinder_ndk. The
// library's copy has no state for a thread that has used only the NDK's functions.
#include <dlfcn.h>

#include <cstdlib>
#include <string_view>

#include <binder/IPCThreadState.h>

namespace android {

// Overrides libbinder's function for the library only. Other callers get the original.
__attribute__((visibility("default"), noinline)) IPCThreadState* IPCThreadState::selfOrNull() {
    Dl_info caller = {};
    if (dladdr(__builtin_return_address(0), &caller) == 0 || caller.dli_fname == nullptr) {
        std::abort();
    }
    const std::string_view file = caller.dli_fname;
    if (file.find("libtavro-dov-client") != std::string_view::npos) return nullptr;
    using Function = IPCThreadState* (*)();
    static const auto next = reinterpret_cast<Function>(
            dlsym(RTLD_NEXT, "_ZN7android14IPCThreadState10selfOrNullEv"));
    return next();
}

}  // namespace android
