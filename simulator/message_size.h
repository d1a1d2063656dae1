// The size of answers.
#pragma once

#include <cstddef>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/MirxRequestData.h>

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;

// A message over sockets has 100,000 bytes at most. Over the driver all calls of a process share a
// megabyte, so an answer of this size fits there too.
inline constexpr size_t kLargestAnswer = 90'000;

// The bytes that a text takes in a message, at most: it is sent as UTF-16.
constexpr size_t bytesOf(size_t length) {
    return 2 * length + 12;
}

inline size_t bytesOf(const MirxRequestData& data) {
    size_t bytes = 16;  // the element's own size, and its numbers
    for (const auto* text : {&data.value, &data.path, &data.extra}) {
        bytes += bytesOf(*text ? (*text)->size() : 0);
    }
    return bytes;
}

// How many elements from the front of `data` fit one message.
inline size_t fitting(const std::vector<MirxRequestData>& data) {
    size_t bytes = 0;
    size_t count = 0;
    while (count < data.size() && (bytes += bytesOf(data[count])) <= kLargestAnswer) ++count;
    return count;
}

}  // namespace simulator
