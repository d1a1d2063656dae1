// The numbers that the service gives out as handles.
#pragma once

#include <cstdint>
#include <random>

namespace simulator {

// Draws handles of nine digits: six random ones for every thousand handles, then a count. A client
// may keep a handle for longer than the service lives. Because of the random digits, such a handle
// names nothing in the service's next life.
class HandleSource {
  public:
    int32_t next() {
        if (mLast % kBlock == kBlock - 1) mLast = kBlock * drawBlock();
        return ++mLast;
    }

  private:
    static constexpr int32_t kBlock = 1000;

    static int32_t drawBlock() {
        std::random_device device;
        return std::uniform_int_distribution<int32_t>(100'000, 999'999)(device);
    }

    int32_t mLast = kBlock - 1;  // draws a block first
};

}  // namespace simulator
