// Exits or unloads the library while all of it is in use: exit_program MODE
//
// Prints "ready" at the start and in the state that MODE names, "waiting" when it waits for the
// service and "died" when a binding is notified of its death. Continues on SIGUSR1.
#include <dlfcn.h>
#include <signal.h>

#include <cstdio>
#include <cstring>
#include <list>
#include <thread>

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <dov/dov.h>
#include <dov/halclient.h>

namespace {

using Resources = std::list<DovClient::Resource>;
using Callback = const std::shared_ptr<IClientCallback>&;

struct Listener : IClientCallback {
    void onCallback(Resources) override {}
};

// A function of a loaded library, whatever its type.
struct Symbol {
    void* address;

    template <typename Function>
    operator Function*() const {  // NOLINT(google-explicit-constructor)
        return reinterpret_cast<Function*>(address);
    }
};

// The library, loaded with dlopen so that it can be unloaded, and its functions.
struct Library {
    void* handle = dlopen(DOV_LIBRARY, RTLD_NOW);

    Symbol symbol(const char* name) const { return {dlsym(handle, name)}; }

    decltype(dovInit)* init = symbol("dovInit");
    decltype(DovEventAcquire)* acquire = symbol("DovEventAcquire");
    void (*clientInit)() = symbol("_ZN13mirxHalclient9mirx_initEv");
    int (*listen)(Resources&, int, Callback) = symbol(
            "_ZN13mirxHalclient24mirxResListeningRegisterERNSt3__14listIN9DovClient8Resource"
            "ENS0_9allocatorIS3_EEEEiRKNS0_10shared_ptrI15IClientCallbackEE");
    int (*request)(int, int, int, int, int, int, Callback) = symbol(
            "_ZN13mirxHalclient16mirxSACtlRequestEiiiiiiRKNSt3__110shared_ptrI15IClientCallba"
            "ckEE");
};

void print(const char* line) {
    std::puts(line);
    std::fflush(stdout);
}

void call(const Library& library) {
    for (int n = 1;; ++n) {
        library.acquire(1, "p", "i", 0, {});
        library.request(n, 0, 2, 0, 0, n, std::make_shared<Listener>());
    }
}

}  // namespace

// Overrides the platform's function. The library calls it with its lock held.
#pragma GCC visibility push(default)
extern "C" AIBinder* AServiceManager_waitForService(const char* instance) {
#pragma GCC visibility pop
    decltype(AServiceManager_waitForService)* const real =
            Symbol{dlsym(RTLD_NEXT, "AServiceManager_waitForService")};
    print("waiting");
    return real(instance);
}

int main(int argc, char** argv) {
    __android_log_set_logger([](const __android_log_message* line) {
        if (std::strcmp(line->message, "Mirx HAL Service died") == 0) print("died");
    });
    const char* const mode = argc > 1 ? argv[1] : "";
    const auto is = [mode](const char* name) { return std::strcmp(mode, name) == 0; };
    sigset_t go;
    sigemptyset(&go);
    sigaddset(&go, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &go, nullptr);
    ABinderProcess_startThreadPool();  // after blocking the signal, or its threads would receive it
    const auto waitForGo = [&go] {
        print("ready");
        int signal = 0;
        sigwait(&go, &signal);
    };

    const Library library;
    if (library.handle == nullptr) {
        std::puts(dlerror());
        return 1;
    }
    // Uses both bindings, a listener, and a callback that the service does not call yet.
    Resources resources = {{7, {}}};
    if (library.init() != 0 || library.listen(resources, 1, std::make_shared<Listener>()) == -1 ||
        library.request(-1, 0, 2, 0, 0, 1, std::make_shared<Listener>()) == -1) {
        return 1;
    }
    waitForGo();
    if (is("calling")) {
        for (int i = 0; i < 4; ++i) std::thread(call, library).detach();
        waitForGo();
    } else if (is("waiting")) {
        // One thread holds the lock and waits for the service; the others wait for the lock.
        for (int i = 0; i < 4; ++i) {
            std::thread([init = library.clientInit] {
                while (true) init();
            }).detach();
        }
        waitForGo();
    } else if (is("unloading")) {
        dlclose(library.handle);
        waitForGo();
    }
    return 0;
}
