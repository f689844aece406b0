#include "base/UnicodeText.h"

#include <codecvt>
#include <fstream>
#include <gtest/gtest.h>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace kestrelid::base {
namespace {

// Unicode's own examples, one a line: scalars in hexadecimal, with a sign for a break or for none
// before, between and behind them; a comment follows.
TEST(Characters, BreakWhereUnicodeSaysThatTheyBreak) {
    std::ifstream file("/usr/share/unicode/auxiliary/GraphemeBreakTest.txt");
    ASSERT_TRUE(file) << "missing: install the package unicode-data";
    std::wstring_convert<std::codecvt_utf8<char32_t>, char32_t> utf8;
    int examples = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string text;
        std::vector<std::string> clusters;
        for (std::string sign, scalar; words >> sign >> scalar;) {
            const std::string character =
                utf8.to_bytes(static_cast<char32_t>(std::stoul(scalar, nullptr, 16)));
            text += character;
            if (sign == "\u00F7")
                clusters.emplace_back();
            clusters.back() += character;
        }
        const auto found = characters(text);
        EXPECT_EQ(std::vector<std::string>(found.begin(), found.end()), clusters) << line;
        examples += !text.empty();
    }
    EXPECT_GT(examples, 600);
}

}  // namespace
}  // namespace kestrelid::base
