// The simulator's profiles: what is read from them, and what is said about bad ones.
#include "simulator/profile.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/support/data.h"

using simulator::Profile;

namespace {

class ProfileTest : public testing::Test {
  protected:
    ~ProfileTest() override { std::filesystem::remove(mFile); }

    std::optional<Profile> read(const std::string& text) {
        std::ofstream(mFile) << text;
        auto profile = Profile::read(mFile, &error);
        // Compares the text after the file's name.
        if (error.starts_with(mFile + ":")) error.erase(0, mFile.size() + 1);
        return profile;
    }

    std::string error;

  private:
    const std::string mFile = std::filesystem::temp_directory_path() /
                              ("profile-test-" + std::to_string(getpid()) + ".xml");
};

}  // namespace

TEST_F(ProfileTest, badProfileIsRefusedWithItsLineAndReason) {
    struct Case {
        std::string text, error;
    };
    const auto inEvent = [](const std::string& content) {
        return "<profile>\n<event id=\"1\">\n" + content + "\n</event>\n</profile>\n";
    };
    const std::string resource = "<resource opcode=\"1\" value=\"2\"/>";
    const std::vector<Case> cases = {
            {"", "1: is not well-formed XML: empty document"},
            {"<profile>\n<event>\n</profile>", "2: is not well-formed XML: mismatched element"},
            {"<!-- nothing -->", "1: has no <profile>"},
            {"\n<profiles/>", "2: <profiles> is not <profile>"},
            {"<profile>\ntext</profile>", "1: <profile> has text in it"},
            {"<profile names=\"x\"/>", "1: <profile> has no attribute 'names'"},
            {"<profile>\n<action/></profile>",
             "2: <action> is none of <event>, <scene> and <rule>"},
            {"<profile><event>" + resource + "</event></profile>", "1: <event> needs id=\"…\""},
            {"<profile><event id=\"x\">" + resource + "</event></profile>",
             "1: <event> id=\"x\" is not a 32-bit number"},
            {"<profile><scene id=\"1\" status=\"1\">" + resource + "</scene></profile>",
             "1: <scene> has no attribute 'status'"},
            {"<profile><rule id=\"1\" status=\"0\">" + resource + "</rule></profile>",
             "1: <rule> status=\"0\" ends a rule and can set nothing"},
            {"<profile>\n<rule id=\"1\">" + resource + "</rule>\n<rule id=\"0x1\">" + resource +
                     "</rule></profile>",
             "3: <rule> may appear only once"},
            {inEvent(""), "2: <event> sets nothing"},
            {inEvent("<setting/>"), "3: <setting> is not <resource>"},
            {inEvent("<resource value=\"1\"/>"),
             "3: <resource> needs either opcode=\"…\" or path=\"…\""},
            {inEvent("<resource opcode=\"1\" path=\"/a\" value=\"1\"/>"),
             "3: <resource> needs either opcode=\"…\" or path=\"…\""},
            {inEvent("<resource path=\"\" value=\"1\"/>"), "3: <resource> has an empty path"},
            {inEvent("<resource opcode=\"0\" value=\"1\"/>"),
             "3: <resource> opcode=\"0\" names no resource"},
            {inEvent("<resource opcode=\"0x100000000\" value=\"1\"/>"),
             "3: <resource> opcode=\"0x100000000\" is not a 32-bit number"},
            {inEvent("<resource opcode=\"1\"/>"), "3: <resource> needs value=\"…\""},
            {inEvent(resource + "\n<resource opcode=\"2\" value=\"\"/>"),
             "4: <resource> needs value=\"…\""},
            {inEvent("<resource opcode=\"1\" value=\"2\"><more/></resource>"),
             "3: <more> does not belong here"},
    };
    for (const Case& c : cases) {
        error.clear();
        EXPECT_FALSE(read(c.text)) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
    EXPECT_FALSE(Profile::read("/proc/none/such", &error));
    EXPECT_EQ(error, "/proc/none/such: No such file or directory");
}

TEST_F(ProfileTest, exampleOfTheDocumentMeansWhatItSays) {
    std::stringstream document;
    document << std::ifstream(sourceFile("docs/profiles.md")).rdbuf();
    std::string example = document.str();
    example.erase(0, example.find("```xml\n") + 7);
    example.erase(example.find("```\n"));
    const auto profile = read(example);
    ASSERT_TRUE(profile) << error;
    EXPECT_THAT(
            profile->describe(),
            testing::ElementsAre(
                    "event 0 ACTION_LAUNCH [{id=0x01010010 value=\"1500000\"} {id=0x01010020 "
                    "value=\"2000000\"}]",
                    "scene 1 video playback [{id=0x010100c0 value=\"1200000\"} {id=0 "
                    "value=\"2048\" path=\"/sys/block/sda/queue/read_ahead_kb\"}]",
                    "rule 10 power saving [{id=0x010100a0 value=\"1200000\"}]",
                    "rule 10 status 2 extreme power saving [{id=0x010100a0 value=\"800000\"}]"));
}
