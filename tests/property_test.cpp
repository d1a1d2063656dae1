// Tests of reading and writing the service's properties.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::ElementsAre;

class PropertyTest : public ClientTest {
  protected:
    static std::string get(const std::string& key) {
        const std::unique_ptr<char[]> buffer(mirxPropertyGet(key));
        return buffer.get();
    }
};

TEST_F(PropertyTest, valueEndsAtTheFirstZeroCharacter) {
    const std::pair<std::string, std::string> cases[] = {
            {"", ""},
            {"value", "value"},
            {std::string(255, 'x'), std::string(255, 'x')},
            {std::string("head\0tail", 9), "head"},
            {"head" + std::string(1, '\0') + std::string(300, 'x'), "head"},
    };
    for (const auto& [value, text] : cases) {
        service->property = value;
        EXPECT_EQ(get("a key"), text);
        const RecordedCall call = theCall();
        EXPECT_EQ(call.operation, "propertyGet");
        EXPECT_THAT(call.texts, ElementsAre("a key"));
        EXPECT_THAT(log.take(), ElementsAre(info("mirx client mirxPropertyGet"),
                                            info("mirxPropertyGet " + text + " ")));
    }
}

TEST_F(PropertyTest, valueOver255CharactersAbortsTheProcess) {
    service->property = std::string(256, 'x');
    EXPECT_DEATH(mirxPropertyGet("key"), "a value of 256 characters does not fit into 255");
}

TEST_F(PropertyTest, failedReadReturnsAnEmptyText) {
    service->property = "never seen";
    service->failing = true;
    EXPECT_EQ(get("key"), "");
    EXPECT_THAT(log.take(), ElementsAre(info("mirx client mirxPropertyGet"),
                                        failed("mirxPropertyGet"), info("mirxPropertyGet  ")));
    undeclare();
    EXPECT_EQ(get("key"), "");
    EXPECT_THAT(log.take(), ElementsAre(info("mirx client mirxPropertyGet"),
                                        error("Mirx is not declared, AServiceManager_isDeclared:0"),
                                        info("mirxPropertyGet  ")));
}

TEST_F(PropertyTest, writeReturnsTheServicesAnswer) {
    service->answer = -3;
    EXPECT_EQ(mirxPropertySet("key", ""), -3);
    const RecordedCall call = theCall();
    EXPECT_EQ(call.operation, "propertySet");
    EXPECT_THAT(call.texts, ElementsAre("key", ""));
}
