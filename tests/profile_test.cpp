// The simulator's profiles: what is read from them, and what is said about bad ones.
#include "simulator/profile.h"

#include <android-base/file.h>
#include <android-base/strings.h>
#include <gtest/gtest.h>

#include "tests/support/data.h"

using simulator::Profile;

namespace {

// Reads a file with this text. `error` gets what follows the file's name.
std::optional<Profile> read(const std::string& text, std::string& error) {
    const TemporaryFile file;
    EXPECT_TRUE(android::base::WriteStringToFile(text, file.path));
    auto profile = Profile::read(file.path, &error);
    const std::string start = std::string(file.path) + ":";
    if (error.starts_with(start)) error.erase(0, start.size());
    return profile;
}

}  // namespace

TEST(ProfileTest, badProfileIsRefusedWithItsLineAndReason) {
    const auto with = [](const std::string& text) { return "<profile>\n" + text + "</profile>"; };
    const auto event = [&](const std::string& text) {
        return with("<event id='1'>\n" + text + "</event>");
    };
    const std::string set = "<resource opcode='1' value='2'/>";
    const auto policy = [&](const std::string& start) {
        return with("<" + start + ">" + set + "</" + start.substr(0, start.find(' ')) + ">");
    };
    const std::string neither = "3: <resource> needs either opcode=\"…\" or path=\"…\"";
    const std::vector<std::pair<std::string, std::string>> cases = {
            {"", "1: is not well-formed XML: empty document"},
            {with("<event>\n"), "2: is not well-formed XML: mismatched element"},
            {"<!-- nothing -->", "1: has no <profile>"},
            {"\n<profiles/>", "2: <profiles> is not <profile>"},
            {with("text"), "1: <profile> has text in it"},
            {"<profile names='x'/>", "1: <profile> has no attribute 'names'"},
            {with("<action/>"), "2: <action> is none of <event>, <scene> and <rule>"},
            {policy("event"), "2: <event> needs id=\"…\""},
            {policy("event id='x'"), "2: <event> id=\"x\" is not a 32-bit number"},
            {policy("scene id='1' status='1'"), "2: <scene> has no attribute 'status'"},
            {policy("rule id='1' status='0'"),
             "2: <rule> status=\"0\" ends a rule and can set nothing"},
            {with("<rule id='1'>" + set + "</rule>\n<rule id='0x1'>" + set + "</rule>"),
             "3: <rule> may appear only once"},
            {event(""), "2: <event> sets nothing"},
            {event("<setting/>"), "3: <setting> is not <resource>"},
            {event("<resource value='1'/>"), neither},
            {event("<resource opcode='1' path='/a' value='1'/>"), neither},
            {event("<resource path='' value='1'/>"), "3: <resource> has an empty path"},
            {event("<resource opcode='0' value='1'/>"),
             "3: <resource> opcode=\"0\" names no resource"},
            {event("<resource opcode='0x100000000' value='1'/>"),
             "3: <resource> opcode=\"0x100000000\" is not a 32-bit number"},
            {event(set + "\n<resource opcode='2' value=''/>"), "4: <resource> needs value=\"…\""},
            {event("<resource opcode='1' value='2'><more/></resource>"),
             "3: <more> does not belong here"},
    };
    std::string error;
    for (const auto& [text, reason] : cases) {
        error.clear();
        EXPECT_FALSE(read(text, error)) << text;
        EXPECT_EQ(error, reason) << text;
    }
}

TEST(ProfileTest, exampleOfTheDocumentMeansWhatItSays) {
    std::string example, error;
    ASSERT_TRUE(android::base::ReadFileToString(sourceFile("docs/profiles.md"), &example));
    example.erase(0, example.find("```xml\n") + 7);
    const auto profile = read(example.substr(0, example.find("```\n")), error);
    ASSERT_TRUE(profile) << error;
    EXPECT_EQ(
            android::base::Join(profile->describe(), '\n'),
            R"(event 0 ACTION_LAUNCH [{id=0x01010010 value="1500000"} {id=0x01010020 value="2000000"}]
scene 1 video playback [{id=0x010100c0 value="1200000"} {id=0 value="2048" path="/sys/block/sda/queue/read_ahead_kb"}]
rule 10 power saving [{id=0x010100a0 value="1200000"}]
rule 10 status 2 extreme power saving [{id=0x010100a0 value="800000"}])");
}
