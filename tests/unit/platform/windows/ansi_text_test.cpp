#include "platform/windows/ansi_text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstddef>

#include "base/runtime_error.h"
#include "base/text.h"

namespace {

using platform::windows::fromCodePage;
using platform::windows::toCodePage;

/// A code page of a Windows somewhere.
struct CodePage {
    unsigned number;
    const char* own;      // a text in it
    const char* bytes;    // the same in its bytes
    const char* foreign;  // a character that it does not have
};

std::ostream& operator<<(std::ostream& out, const CodePage& page) {
    return out << page.number;
}

class AnsiText : public testing::TestWithParam<CodePage> {};

TEST_P(AnsiText, KeepsTheCharactersOfTheCodePage) {
    EXPECT_EQ(toCodePage(GetParam().own, GetParam().number), GetParam().bytes);
    EXPECT_EQ(fromCodePage(GetParam().bytes, GetParam().number), GetParam().own);
}

TEST_P(AnsiText, RefusesACharacterThatTheCodePageDoesNotHave) {
    try {
        static_cast<void>(toCodePage(GetParam().foreign, GetParam().number));
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.description(), std::string("\"") + GetParam().foreign +
                                           "\" has a character that is not in the system's code page " +
                                           std::to_string(GetParam().number));
    }
}

/// A look-alike would name another key or file: a wide A an A, an alpha an a.
TEST_P(AnsiText, TakesNoLookAlike) {
    std::size_t lookAlikes = 0;
    const auto expectItselfOrNothing = [&](char32_t character) {
        std::string text;
        base::appendCodePoint(text, character);
        try {
            EXPECT_EQ(fromCodePage(toCodePage(text, GetParam().number), GetParam().number), text) << text;
        } catch (const base::RuntimeError&) {
            ++lookAlikes;  // it would be one, or a question mark
        }
    };
    for (char32_t character = 0x80; character < 0x500; ++character) {
        expectItselfOrNothing(character);
    }
    for (char32_t character = 0xFF01; character < 0xFFF0; ++character) {
        expectItselfOrNothing(character);
    }
    EXPECT_EQ(lookAlikes == 0, GetParam().number == CP_UTF8);
}

// Western, Cyrillic, Greek and Japanese systems, one that is set to UTF-8, which lacks only halves of pairs,
// and the one that the tests run on.
INSTANTIATE_TEST_SUITE_P(
    CodePages, AnsiText,
    testing::Values(CodePage{1252, "na\xC3\xAFve", "na\xEFve", "\xCE\xB1"},
                    CodePage{1251, "\xD0\x96\xD1\x83\xD0\xBA", "\xC6\xF3\xEA", "\xC3\xAF"},
                    CodePage{1253, "\xCE\xB1\xCE\xB2", "\xE1\xE2", "\xC3\xAF"},
                    CodePage{932, "\xE6\x97\xA5\xE6\x9C\xAC", "\x93\xFA\x96\x7B", "\xC3\xAF"},
                    CodePage{CP_UTF8, "na\xC3\xAFve \xE6\x97\xA5", "na\xC3\xAFve \xE6\x97\xA5",
                             "\xED\xA0\xBC"},
                    CodePage{::GetACP(), "plain", "plain", "\xED\xA0\xBC"}));

TEST(AnsiTextOfNothing, IsEmpty) {
    EXPECT_EQ(platform::windows::toAnsi(""), "");
    EXPECT_EQ(platform::windows::fromAnsi(""), "");
}

TEST(AnsiTextOfTheSystem, IsInItsCodePage) {
    EXPECT_EQ(platform::windows::toAnsi("a key"), toCodePage("a key", ::GetACP()));
    EXPECT_THROW(static_cast<void>(platform::windows::toAnsi("\xED\xA0\xBC")), base::RuntimeError);
}

TEST(AnsiTextOfBytes, ThatAreNoTextInTheCodePageIsRefused) {
    EXPECT_THROW(static_cast<void>(fromCodePage("\x81", 932)), base::RuntimeError);  // the first of two
    EXPECT_THROW(static_cast<void>(fromCodePage("\xC3", CP_UTF8)), base::RuntimeError);
}

}  // namespace
