#include "apps/cli/TerminalText.h"
#include "apps/cli/JsonLine.h"

#include <gtest/gtest.h>

#include <string>

namespace kestrelid::cli {
namespace {

TEST(TerminalTextTest, EscapesWhatATerminalWouldActOn) {
    using namespace std::string_literals;
    const std::pair<std::string, const char*> cases[] = {
        {"জন a\xCC\x81 \xF0\x9F\x98\x80", "জন a\xCC\x81 \xF0\x9F\x98\x80"},  // shown as it is
        {"\x1b[31mred", "\\x1b[31mred"},
        {"one\ntwo\r\t", "one\\ntwo\\r\\t"},
        {"a\0b\x7f"s, "a\\x00b\\x7f"},
        {"\xC2\x9B;m", "\\u{9b};m"},            // C1: the same as ESC [
        {"\xE2\x80\xAE.gpj", "\\u{202e}.gpj"},  // turns the direction of writing
        {"bad \xFF end", "bad \\xff end"},
        {"\xC0\x9B", "\\xc0\\x9b"},                    // longer form than needed
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},           // surrogate
        {"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},  // above U+10FFFF
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(terminalText(text), shown);
}

TEST(JsonLineTest, IsReadableJsonWithoutTerminalControls) {
    const std::string line = jsonLine({{"file", "\x1b[2J \xC2\x9B \xE2\x80\xAE জন \x7f \xFF"}});
    EXPECT_EQ(line, "{\"file\":\"\\u001b[2J \\u009b \\u202e জন \\u007f \xEF\xBF\xBD\"}\n");
}

}  // namespace
}  // namespace kestrelid::cli
