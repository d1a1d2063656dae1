// The transport between a test and its service: sockets or the kernel's binder driver.
#pragma once

#include <memory>
#include <string>

#include <android/binder_auto_utils.h>

inline constexpr char kServiceName[] = "vendor.tavro.hardware.mirx.IMirx/default";

// The environment variable DOV_TEST_TRANSPORT chooses "driver" or "sockets" (the default). The
// tests are the same for both. A test that cannot run on one of them skips itself with the reason.
class Transport {
  public:
    static Transport& chosen();
    virtual ~Transport() = default;

    // The folder of the VINTF fragments, which declare services.
    virtual const std::string& folder() const = 0;
    // Makes an object of this process the service, in place of the previous one. The library gets a
    // proxy for it, and calls use real parcels.
    virtual void serve(const ndk::SpAIBinder& object) = 0;
    // Like serve(), for an object of another interface. Over the driver the library gets the local
    // object, because a relay would report its own interface.
    virtual void serveAsItIs(const ndk::SpAIBinder& object) { serve(object); }
    // Ends the service as the death of its process would. Returns when look-ups no longer find the
    // service; death notices may arrive later.
    virtual void stopServing() = 0;

    bool isDriver() const { return mIsDriver; }

  protected:
    explicit Transport(bool isDriver) : mIsDriver(isDriver) {}

  private:
    const bool mIsDriver;
};

// How many binder threads the driver may request, in addition to the first one.
inline constexpr int kDriverThreads = 4;

std::unique_ptr<Transport> makeSocketTransport();
std::unique_ptr<Transport> makeDriverTransport();

// Whether the tests run over the driver. Tests of the sockets skip themselves then.
inline bool overDriver() {
    return Transport::chosen().isDriver();
}
