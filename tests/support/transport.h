// How a test process and its service reach each other: over sockets, or over the kernel's binder
// driver.
#pragma once

#include <memory>
#include <string>

#include <android/binder_auto_utils.h>

inline constexpr char kServiceName[] = "vendor.tavro.hardware.mirx.IMirx/default";

// DOV_TEST_TRANSPORT chooses: "driver", or "sockets", which is also what is taken when it is not
// set. Tests are the same on both; one that cannot run on one says why and is reported as skipped.
class Transport {
  public:
    static Transport& chosen();
    virtual ~Transport() = default;

    // The folder of the VINTF fragments that say what is declared.
    virtual const std::string& folder() const = 0;
    // Makes an object of this process the service, in place of an earlier one. The library meets a
    // proxy of it, and real parcels.
    virtual void serve(const ndk::SpAIBinder& object) = 0;
    // The same for an object that is not the service it should be. Over the driver it is met as an
    // object of the own process: the relay would answer for itself what it is.
    virtual void serveAsItIs(const ndk::SpAIBinder& object) { serve(object); }
    // Ends that service as the death of its process would. Returns when nobody finds it any more;
    // notices may come later.
    virtual void stopServing() = 0;

    bool isDriver() const { return mIsDriver; }

  protected:
    explicit Transport(bool isDriver) : mIsDriver(isDriver) {}

  private:
    const bool mIsDriver;
};

// How many threads the driver may ask this process for, besides the one that it starts with.
inline constexpr int kDriverThreads = 4;

std::unique_ptr<Transport> makeSocketTransport();
std::unique_ptr<Transport> makeDriverTransport();

// Whether the tests run over the driver; those that are about sockets skip themselves then.
inline bool overDriver() {
    return Transport::chosen().isDriver();
}
