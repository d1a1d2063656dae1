// Finds the elements of a reply by their id.
#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "common/service.h"

namespace dov {

// A hash table whose chains run through the elements themselves, so that it allocates nothing and
// the search does not get longer with the reply. The elements' `arg`, which no reply uses, holds
// the chains: the place of the next element, counted from 1. The reply must outlive it unchanged.
class ReplyIndex {
  public:
    explicit ReplyIndex(std::vector<dovcommon::MirxRequestData>& reply) : mReply(reply) {
        // From the end, so that a chain has its elements in their order.
        for (size_t place = reply.size(); place > 0; --place) {
            dovcommon::MirxRequestData& element = reply[place - 1];
            element.arg = std::exchange(mFirst[chainOf(element.id)], static_cast<int32_t>(place));
        }
    }

    // The first element with this id; null when there is none.
    const dovcommon::MirxRequestData* first(int32_t id) const {
        for (int32_t place = mFirst[chainOf(id)]; place != 0;) {
            const dovcommon::MirxRequestData& element = mReply[static_cast<size_t>(place) - 1];
            if (element.id == id) return &element;
            place = element.arg;
        }
        return nullptr;
    }

  private:
    static constexpr int kChainBits = 6;

    static size_t chainOf(int32_t id) {
        return (static_cast<uint32_t>(id) * 0x9e3779b1u) >> (32 - kChainBits);
    }

    const std::vector<dovcommon::MirxRequestData>& mReply;
    std::array<int32_t, size_t{1} << kChainBits> mFirst{};
};

}  // namespace dov
