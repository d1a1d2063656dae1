// A service that does not depend on the transport and answers nothing: plain_service [DESCRIPTOR]
#include <cstdio>

#include <android/binder_manager.h>
#include <android/binder_process.h>

int main(int argc, char** argv) {
    AIBinder_Class* const plain = AIBinder_Class_define(
            argc > 1 ? argv[1] : "IPlain", [](void* args) { return args; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_OK;
            });
    AIBinder* const service = AIBinder_new(plain, nullptr);
    ABinderProcess_startThreadPool();
    if (AServiceManager_addService(service, "vendor.tavro.hardware.mirx.IMirx/default") !=
        STATUS_OK) {
        return 1;
    }
    std::puts("serving");
    std::fflush(stdout);
    ABinderProcess_joinThreadPool();
    return 0;
}
