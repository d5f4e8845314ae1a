#include "platform/windows/command_line.h"

#include <gtest/gtest.h>

namespace {

using platform::windows::argumentsOf;
using Arguments = std::vector<std::string>;

TEST(CommandLine, KeepsEveryCharacter) {
    EXPECT_EQ(
        argumentsOf(L"tyIndexer.exe --trace-sql C:\\\u65E5\u672C\\\u03B1\u00E9.sql"),
        (Arguments{"tyIndexer.exe", "--trace-sql", "C:\\\xE6\x97\xA5\xE6\x9C\xAC\\\xCE\xB1\xC3\xA9.sql"}));
}

TEST(CommandLine, IsSplitAtBlanksOutsideQuotationMarks) {
    EXPECT_EQ(argumentsOf(L"\"C:\\Program Files\\tyIndexer.exe\"  --trace-sql \"C:\\my traces\\a.sql\" \"\""),
              (Arguments{"C:\\Program Files\\tyIndexer.exe", "--trace-sql", "C:\\my traces\\a.sql", ""}));
}

TEST(CommandLine, KeepsPatternsAsTheyAre) {
    EXPECT_EQ(argumentsOf(L"tyIndexer.exe --trace-sql *.*"),
              (Arguments{"tyIndexer.exe", "--trace-sql", "*.*"}));
}

TEST(CommandLine, OfThisProgramBeginsWithItsName) {
    const Arguments own = platform::windows::commandLine();
    ASSERT_FALSE(own.empty());
    EXPECT_NE(own.front().find("platform_windows_test"), std::string::npos) << own.front();
}

}  // namespace
