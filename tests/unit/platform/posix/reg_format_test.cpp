#include "platform/posix/reg_format.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/runtime_error.h"
#include "fakes/temporary_folder.h"

namespace {

using platform::SettingsStatus;
using platform::ValueType;
using platform::posix::exportRegistryText;
using platform::posix::importRegistryText;
using platform::posix::SettingsFile;
using platform::posix::SettingsValue;

const std::string header = "Windows Registry Editor Version 5.00\r\n";
const std::string keyLine = "\r\n[HKEY_CURRENT_USER\\Software\\Maker]\r\n";
constexpr const char* key = R"(software\maker)";

class RegistryText : public ::testing::Test {
  protected:
    /// Imports lines below the header and the key.
    void import(const std::string& lines) { importRegistryText(settings, header + keyLine + lines); }

    /// The description of the error that the lines raise; empty when they are understood.
    std::string faultOf(const std::string& lines) {
        try {
            import(lines);
        } catch (const base::RuntimeError& error) {
            return error.description();
        }
        return {};
    }

    SettingsValue value(const std::string& name) {
        std::vector<SettingsValue> values;
        EXPECT_EQ(settings.values(key, values), SettingsStatus::success);
        for (const SettingsValue& value : values) {
            if (value.name == name) {
                return value;
            }
        }
        return {"(none)", ValueType::none, "(none)"};
    }

    void expect(const std::string& name, ValueType type, const std::string& data) {
        EXPECT_EQ(value(name).type, type) << name;
        EXPECT_EQ(value(name).data, data) << name;
    }

    void store(const std::string& name, ValueType type, const std::string& data) {
        platform::KeyHandle handle{};
        ASSERT_EQ(settings.createKey(platform::RootKey::currentUser, R"(Software\Maker)", handle),
                  SettingsStatus::success);
        ASSERT_EQ(settings.setValue(handle, name, type, reinterpret_cast<const std::uint8_t*>(data.data()),
                                    static_cast<std::uint32_t>(data.size())),
                  SettingsStatus::success);
        settings.closeKey(handle);
    }

    fakes::TemporaryFolder folder;
    SettingsFile settings{folder / "settings.db"};
};

TEST_F(RegistryText, ImportsTextsAndNumbers) {
    import(
        "\"Path\"=\"C:\\\\docs\\\\\\\"a\\\"\"\r\n\"Seconds\"=dword:0000003C\r\n@=\"unnamed\"\r\n\"\"="
        "\"\"\r\n");
    expect("Path", ValueType::text, "C:\\docs\\\"a\"");
    expect("Seconds", ValueType::number, std::string("\x3C\0\0\0", 4));
    expect("", ValueType::text, "");
}

TEST_F(RegistryText, ImportsBytesOfEveryTypeOverSeveralLines) {
    import(
        "\"bytes\"=hex:01,02,\\\r\n  ff,\\\r\n\t00\r\n\"none\"=hex(0):\r\n\"list\"=hex(7):41,00,00,00\r\n"
        "\"odd\"=HEX(FFFF0012):0A\r\n\"wide\"=hex(4):01,02\r\n");
    expect("bytes", ValueType::binary, std::string("\x01\x02\xFF\0", 4));
    expect("none", ValueType::none, "");
    expect("list", ValueType{7}, std::string("A\0\0\0", 4));
    expect("odd", ValueType{0xFFFF0012U}, "\n");
    expect("wide", ValueType::number, "\x01\x02");
}

TEST_F(RegistryText, ImportsWideBytesOfATextWithoutItsEndingNul) {
    import("\"expand\"=hex(2):25,00,54,00,25,00,00,00\r\n\"text\"=hex(1):e9,00,3d,d8,00,de\r\n");
    expect("expand", ValueType::expandableText, "%T%");
    expect("text", ValueType::text, "é\xF0\x9F\x98\x80");
}

TEST_F(RegistryText, ImportsTheOldForm) {
    importRegistryText(settings,
                       "REGEDIT4\n\n[hkey_current_user\\software\\maker]\n\"a\"=hex(2):25,54,25,00\n");
    expect("a", ValueType::expandableText, "%T%");
}

TEST_F(RegistryText, ImportsTextWithByteOrderMarks) {
    importRegistryText(settings, "\xEF\xBB\xBF" + header + keyLine + "\"a\"=\"é\"");
    expect("a", ValueType::text, "é");
    std::string wide = "\xFF\xFE";
    for (const char byte : header + keyLine + "\"b\"=\"") {
        wide.append(1, byte).append(1, '\0');
    }
    wide += std::string("\xE9\0\x3D\xD8\x00\xDE\"\0\r\0\n\0", 12);
    importRegistryText(settings, wide);
    expect("b", ValueType::text, "é\xF0\x9F\x98\x80");
    EXPECT_THROW(importRegistryText(settings, wide + "x"), base::RuntimeError);
}

TEST_F(RegistryText, SkipsCommentsAndBlanks) {
    import(
        "; a comment\r\n\r\n  \"a\" = \"text\" ; another\r\n \"b\"= dword:1 ;one\r\n\"c\"=hex:01,\\ ;go "
        "on\r\n02\r\n");
    expect("a", ValueType::text, "text");
    expect("b", ValueType::number, std::string("\x01\0\0\0", 4));
    expect("c", ValueType::binary, "\x01\x02");
}

TEST_F(RegistryText, DeletesValuesAndKeys) {
    import("\"a\"=\"1\"\r\n\"b\"=\"2\"\r\n[HKCU\\Software\\Maker\\Part]\r\n\"c\"=\"3\"\r\n");
    import("\"A\"=-\r\n\"missing\"=-\r\n[-HKEY_CURRENT_USER\\software\\maker\\part]\r\n[-HKCU\\missing]\r\n");
    expect("a", ValueType::none, "(none)");
    expect("b", ValueType::text, "2");
    std::vector<std::string> names;
    EXPECT_EQ(settings.subKeys(key, names), SettingsStatus::success);
    EXPECT_TRUE(names.empty());
}

TEST_F(RegistryText, NamesTheLineThatItCannotUnderstand) {
    EXPECT_EQ(faultOf("\"a\"=\"1\"\r\nnonsense\r\n"), "line 5: this is neither a key nor a value");
    EXPECT_EQ(faultOf("\"a\"=\"1\r\n"), "line 4: the text has no closing quote");
    EXPECT_EQ(faultOf("\"a\"=\"C:\\temp\"\r\n"), "line 4: a backslash in a text must be doubled");
    EXPECT_EQ(faultOf("\"a\"=\"1\" 2\r\n"), "line 4: there is more behind the data: 2");
    EXPECT_EQ(faultOf("\"a\" \"1\"\r\n"), "line 4: there is no = behind the name of the value");
    EXPECT_EQ(faultOf("\"a\"=5\r\n"), "line 4: the data is none of \"text\", dword:, hex:, hex(n): and -");
    EXPECT_EQ(faultOf("\"a\"=dword:12345678g\r\n"), "line 4: dword: needs one to eight hexadecimal digits");
    EXPECT_EQ(faultOf("\"a\"=hex:01,\\\r\n0x\r\n"), "line 5: \"0x\" is not a byte of two hexadecimal digits");
    EXPECT_EQ(faultOf("\"a\"=hex:01,\\\r\n"), "line 4: the text ends in the middle of a value");
    EXPECT_EQ(faultOf("\"a\"=hex(g):01\r\n"), "line 4: the type in hex(g) is no hexadecimal number");
    EXPECT_EQ(faultOf("\"a\"=hex(2):01\r\n"),
              "line 4: the bytes of a text must be UTF-16, an even number of them");
    EXPECT_EQ(faultOf("[HKEY_CURRENT_USER\\a\r\n"), "line 4: the key has no closing ]");
    EXPECT_EQ(faultOf("[HKEY_LOCAL_MACHINE\\a]\r\n"),
              "line 4: settings are kept below HKEY_CURRENT_USER only, not below HKEY_LOCAL_MACHINE");
    EXPECT_EQ(faultOf("[-HKEY_CURRENT_USER]\r\n"), "line 4: all keys at once cannot be deleted");
    EXPECT_EQ(faultOf("[-HKCU\\a]\r\n\"b\"=\"1\"\r\n"),
              "line 5: a value must stand below the key that it belongs to");
}

TEST_F(RegistryText, ChangesNothingWhenALineCannotBeUnderstood) {
    EXPECT_NE(faultOf("\"a\"=\"1\"\r\nnonsense\r\n"), "");
    std::vector<SettingsValue> values;
    EXPECT_EQ(settings.values(key, values), SettingsStatus::notFound);
}

TEST_F(RegistryText, MustBeginWithAHeader) {
    for (const char* text : {"", "[HKEY_CURRENT_USER\\a]", "REGEDIT5\r\n"}) {
        EXPECT_THROW(importRegistryText(settings, text), base::RuntimeError) << text;
    }
}

TEST_F(RegistryText, ExportsAKeyWithEverythingBelowItInTheOrderInWhichItWasMade) {
    import(
        "\"Path\"=\"C:\\\\docs\\\\\\\"a\\\"\"\r\n@=\"unnamed\"\r\n\"Seconds\"=dword:0000003c\r\n"
        "[HKCU\\Software\\Maker\\Part]\r\n\"bytes\"=hex:01,ff\r\n[HKCU\\Software\\Other]\r\n");
    EXPECT_EQ(exportRegistryText(settings, "SOFTWARE\\MAKER"),
              header + keyLine +
                  "\"Path\"=\"C:\\\\docs\\\\\\\"a\\\"\"\r\n@=\"unnamed\"\r\n\"Seconds\"=dword:0000003c\r\n"
                  "\r\n[HKEY_CURRENT_USER\\Software\\Maker\\Part]\r\n\"bytes\"=hex:01,ff\r\n");
    const std::string all = exportRegistryText(settings, "");
    EXPECT_NE(all.find("[HKEY_CURRENT_USER\\Software]"), std::string::npos);
    EXPECT_NE(all.find("[HKEY_CURRENT_USER\\Software\\Other]"), std::string::npos);
}

TEST_F(RegistryText, ExportsTextsWithLineBreaksAsBytes) {
    store("a", ValueType::text, "x\r\n");
    store("b", ValueType::expandableText, "%T");
    EXPECT_EQ(
        exportRegistryText(settings, key),
        header + keyLine + "\"a\"=hex(1):78,00,0d,00,0a,00,00,00\r\n\"b\"=hex(2):25,00,54,00,00,00\r\n");
}

TEST_F(RegistryText, RaisesForAKeyWhoseNameHoldsALineBreak) {
    platform::KeyHandle handle{};
    ASSERT_EQ(settings.createKey(platform::RootKey::currentUser, "Software\\Maker\\two\nlines", handle),
              SettingsStatus::success);
    settings.closeKey(handle);
    try {
        static_cast<void>(exportRegistryText(settings, key));
        FAIL() << "the format has no form for it";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), 5);
        EXPECT_EQ(
            error.description(),
            "cannot export the key [Software\\Maker\\two\nlines], whose name holds a line break: delete "
            "it first");
    }
}

TEST_F(RegistryText, GivesBackEveryValueThatItExported) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    const std::vector<SettingsValue> all{
        {"", ValueType::text, "unnamed"},         {"größe \"q\" \\", ValueType::text, "é\t; \\ \""},
        {"breaks", ValueType::text, "a\r\nb\n"},  {"nul", ValueType::text, std::string("a\0b\0", 4)},
        {"stray", ValueType::text, "a\xFFz\xC3"}, {"smile", ValueType::expandableText, "\xF0\x9F\x98\x80"},
        {"empty", ValueType::expandableText, ""}, {"raw text", ValueType::text, bytes},
        {"bytes", ValueType::binary, bytes},      {"number", ValueType::number, "\xFF\xFF\xFF\xFF"},
        {"narrow", ValueType::number, "\x01"},    {"none", ValueType::none, ""},
        {"other", ValueType{0x80000001U}, bytes},
    };
    for (const SettingsValue& one : all) {
        store(one.name, one.type, one.data);
    }
    const std::string text = exportRegistryText(settings, "");
    SettingsFile copy(folder / "copy.db");
    importRegistryText(copy, text);
    std::vector<SettingsValue> values;
    ASSERT_EQ(copy.values(key, values), SettingsStatus::success);
    ASSERT_EQ(values.size(), all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(values.at(i).name, all.at(i).name);
        EXPECT_EQ(values.at(i).type, all.at(i).type) << all.at(i).name;
        EXPECT_EQ(values.at(i).data, all.at(i).data) << all.at(i).name;
    }
    EXPECT_EQ(exportRegistryText(copy, ""), text);
}

TEST_F(RegistryText, KeepsExportedLinesShort) {
    store("bytes", ValueType::binary, std::string(1000, '\xAB'));
    const std::string text = exportRegistryText(settings, key);
    std::size_t begin = 0;
    for (std::size_t end = text.find("\r\n"); end != std::string::npos; end = text.find("\r\n", begin)) {
        EXPECT_LE(end - begin, 80U);
        begin = end + 2;
    }
}

TEST_F(RegistryText, RaisesWhereAKeyCannotBeExported) {
    EXPECT_THROW(static_cast<void>(exportRegistryText(settings, key)), base::RuntimeError);
    store("line\nbreak", ValueType::text, "text");
    EXPECT_THROW(static_cast<void>(exportRegistryText(settings, key)), base::RuntimeError);
}

TEST_F(RegistryText, SaysWhichKeyADamagedFileRefuses) {
    SettingsFile damaged(folder.write("damaged.db", "garbage"));
    try {
        importRegistryText(damaged, header + keyLine + "\"a\"=\"1\"\r\n");
        FAIL() << "nothing was raised";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), 1009);
        EXPECT_NE(error.description().find("[Software\\Maker]"), std::string::npos);
        EXPECT_NE(error.description().find("damaged"), std::string::npos);
    }
}

}  // namespace
