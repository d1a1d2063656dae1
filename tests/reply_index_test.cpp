// The index of a reply gives what a scan would.
#include "api/reply_index.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/data.h"

using aidl::vendor::tavro::hardware::mirx::MirxRequestData;

TEST(ReplyIndexTest, givesTheFirstElementWithAnId) {
    for (const int size : {0, 1, 2, 63, 64, 65, 1000}) {
        std::vector<MirxRequestData> reply;
        for (int i = 0; i < size; ++i) {
            // Far more elements than chains, each id several times, some negative.
            reply.push_back(element(0x01010010 + 0x10 * (i % 300) - (i % 7) * 0x10000000));
            reply.back().arg = i;  // what a service may leave in it
        }
        const std::vector<MirxRequestData> sent = reply;
        const dov::ReplyIndex index(reply);
        for (int i = 0; i < 310; ++i) {
            for (const int32_t id : {i, 0x01010010 + 0x10 * i, -i,
                                     sent.empty() ? 0 : sent[static_cast<size_t>(i % size)].id}) {
                const auto scanned =
                        std::find_if(sent.begin(), sent.end(),
                                     [id](const MirxRequestData& data) { return data.id == id; });
                const MirxRequestData* found = index.first(id);
                ASSERT_EQ(found == nullptr, scanned == sent.end()) << id;
                if (found == nullptr) continue;
                ASSERT_EQ(found - reply.data(), scanned - sent.begin()) << id;
            }
        }
    }
}
