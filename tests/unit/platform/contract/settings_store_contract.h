// What every settings store must do. A test program instantiates the suite with a function that gives a fresh
// store, and with what the store may choose:
//   INSTANTIATE_TEST_SUITE_P(Memory, SettingsStoreContract, ::testing::Values(StoreKind{&memoryStore}));
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/settings_store.h"

namespace contract {

using platform::KeyHandle;
using platform::RootKey;
using platform::SettingsStatus;
using platform::SettingsStore;
using platform::ValueType;

/// Makes a store that keeps what it keeps, if anywhere, below the folder.
using StoreMaker = std::unique_ptr<SettingsStore> (*)(const fakes::TemporaryFolder& folder);

struct StoreKind {
    StoreMaker make;
    /// What the store puts behind a text that is not empty; it counts in the size.
    std::string textEnd{};
    enum class Order { asStored, ofItsOwn } order = Order::asStored;
};

class SettingsStoreContract : public ::testing::TestWithParam<StoreKind> {
  protected:
    /// A text as it comes back.
    static std::string ended(const std::string& text) { return text + GetParam().textEnd; }

    /// Names as they are listed.
    static std::vector<std::string> ordered(std::vector<std::string> all) {
        if (GetParam().order == StoreKind::Order::ofItsOwn) {
            std::sort(all.begin(), all.end());
        }
        return all;
    }

    KeyHandle make(const std::string& path) {
        KeyHandle key = KeyHandle::none;
        EXPECT_EQ(store->createKey(RootKey::currentUser, path, key), SettingsStatus::success);
        return key;
    }

    SettingsStatus open(const std::string& path) {
        KeyHandle key = KeyHandle::none;
        const SettingsStatus status = store->openKey(RootKey::currentUser, path, key);
        if (status == SettingsStatus::success) {
            store->closeKey(key);
        }
        return status;
    }

    SettingsStatus put(KeyHandle key, const std::string& name, const std::string& bytes,
                       ValueType type = ValueType::text) {
        return store->setValue(key, name, type, reinterpret_cast<const std::uint8_t*>(bytes.data()),
                               static_cast<std::uint32_t>(bytes.size()));
    }

    /// The bytes under a name, or "(status)".
    std::string get(KeyHandle key, const std::string& name) {
        ValueType type{};
        std::uint32_t size = 0;
        SettingsStatus status = store->queryValue(key, name, type, nullptr, size);
        if (status != SettingsStatus::success) {
            return "(" + std::to_string(static_cast<int>(status)) + ")";
        }
        std::string bytes(size, '?');
        status = store->queryValue(key, name, type, reinterpret_cast<std::uint8_t*>(bytes.data()), size);
        EXPECT_EQ(status, SettingsStatus::success);
        return bytes;
    }

    ValueType typeOf(KeyHandle key, const std::string& name) {
        ValueType type{};
        std::uint32_t size = 0;
        EXPECT_EQ(store->queryValue(key, name, type, nullptr, size), SettingsStatus::success);
        return type;
    }

    SettingsStatus enumerate(KeyHandle key, std::uint32_t index, std::string& name,
                             std::uint32_t nameRoom = 255, std::uint32_t dataRoom = 255) {
        std::string nameBuffer(nameRoom + 1, '?');
        std::string data(dataRoom + 1, '?');
        ValueType type{};
        const SettingsStatus status =
            store->enumValue(key, index, nameBuffer.data(), nameRoom, type,
                             reinterpret_cast<std::uint8_t*>(data.data()), dataRoom);
        if (status == SettingsStatus::success) {
            EXPECT_EQ(nameBuffer[nameRoom], '\0');
            name = nameBuffer.substr(0, nameRoom);
        }
        return status;
    }

    std::vector<std::string> names(KeyHandle key) {
        std::vector<std::string> all;
        std::string name;
        while (enumerate(key, static_cast<std::uint32_t>(all.size()), name) == SettingsStatus::success) {
            all.push_back(name);
        }
        return ordered(all);
    }

    fakes::TemporaryFolder folder;
    std::unique_ptr<SettingsStore> store = GetParam().make(folder);
};

TEST_P(SettingsStoreContract, DoesNotFindAKeyThatWasNeverMade) {
    EXPECT_EQ(open(R"(software\nowhere)"), SettingsStatus::notFound);
}

TEST_P(SettingsStoreContract, MakesEveryMissingKeyOfAPath) {
    make(R"(software\maker\product\part)");
    EXPECT_EQ(open("software"), SettingsStatus::success);
    EXPECT_EQ(open(R"(software\maker)"), SettingsStatus::success);
    EXPECT_EQ(open(R"(software\maker\product)"), SettingsStatus::success);
    EXPECT_EQ(open(R"(software\maker\product\part)"), SettingsStatus::success);
    EXPECT_EQ(open(R"(software\maker\product\other)"), SettingsStatus::notFound);
}

TEST_P(SettingsStoreContract, OpensAKeyThatIsThereWhenItIsMadeAgain) {
    const KeyHandle first = make(R"(a\b)");
    put(first, "name", "text");
    EXPECT_EQ(get(make(R"(A\B)"), "name"), ended("text"));
}

TEST_P(SettingsStoreContract, FindsKeysAndNamesWithoutRegardToCase) {
    put(make(store->encodeText(R"(Software\Größe)")), store->encodeText("Ärger"), "text");
    KeyHandle key = KeyHandle::none;
    ASSERT_EQ(store->openKey(RootKey::currentUser, store->encodeText(R"(SOFTWARE\GRÖßE)"), key),
              SettingsStatus::success);
    EXPECT_EQ(get(key, store->encodeText("äRGER")), ended("text"));
    EXPECT_EQ(get(key, "arger"), "(2)");
}

TEST_P(SettingsStoreContract, IgnoresASeparatorAtTheEndOfAPath) {
    put(make("types\\"), "name", "text");
    EXPECT_EQ(get(make("types"), "name"), ended("text"));
}

TEST_P(SettingsStoreContract, KeepsEveryTypeAsItIs) {
    const KeyHandle key = make("key");
    for (const std::uint32_t number : {0U, 1U, 2U, 3U, 4U, 7U, 11U, 4711U, 0xFFFF0012U}) {
        EXPECT_EQ(put(key, std::to_string(number), "data", ValueType{number}), SettingsStatus::success);
    }
    for (const std::uint32_t number : {0U, 1U, 2U, 3U, 4U, 7U, 11U, 4711U, 0xFFFF0012U}) {
        EXPECT_EQ(typeOf(key, std::to_string(number)), ValueType{number});
        const bool isText = number == 1 || number == 2 || number == 7;
        EXPECT_EQ(get(key, std::to_string(number)), isText ? ended("data") : "data");
    }
}

TEST_P(SettingsStoreContract, KeepsEveryByte) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    const KeyHandle key = make("key");
    put(key, "bytes", bytes, ValueType::binary);
    put(key, "text", std::string("before\0after", 12));
    EXPECT_EQ(get(key, "bytes"), bytes);
    EXPECT_EQ(get(key, "text"), ended(std::string("before\0after", 12)));
}

TEST_P(SettingsStoreContract, KeepsAValueWithoutAnyByte) {
    const KeyHandle key = make("key");
    EXPECT_EQ(put(key, "empty", ""), SettingsStatus::success);
    EXPECT_EQ(store->setValue(key, "null", ValueType::text, nullptr, 0), SettingsStatus::success);
    EXPECT_EQ(get(key, "empty"), "");
    EXPECT_EQ(get(key, "null"), "");
    EXPECT_EQ(typeOf(key, "empty"), ValueType::text);
}

TEST_P(SettingsStoreContract, KeepsTheUnnamedValue) {
    const KeyHandle key = make("key");
    put(key, "", "supervisor");
    EXPECT_EQ(get(key, ""), ended("supervisor"));
    EXPECT_EQ(names(key), std::vector<std::string>{""});
}

TEST_P(SettingsStoreContract, KeepsTheSameNameApartInDifferentKeys) {
    put(make("one"), "name", "1");
    put(make(R"(one\two)"), "name", "2");
    EXPECT_EQ(get(make("one"), "name"), ended("1"));
    EXPECT_EQ(get(make(R"(one\two)"), "name"), ended("2"));
}

TEST_P(SettingsStoreContract, ReplacesTypeAndBytes) {
    const KeyHandle key = make("key");
    put(key, "name", "a long text");
    put(key, "NAME", "1234", ValueType::number);
    EXPECT_EQ(get(key, "name"), "1234");
    EXPECT_EQ(typeOf(key, "name"), ValueType::number);
    EXPECT_EQ(put(key, "name", "1234", ValueType::number), SettingsStatus::success);
    EXPECT_EQ(get(key, "name"), "1234");
}

TEST_P(SettingsStoreContract, TellsTypeAndSizeWithoutData) {
    const KeyHandle key = make("key");
    put(key, "name", "12345", ValueType::expandableText);
    ValueType type{};
    std::uint32_t size = 0;
    EXPECT_EQ(store->queryValue(key, "name", type, nullptr, size), SettingsStatus::success);
    EXPECT_EQ(type, ValueType::expandableText);
    EXPECT_EQ(size, ended("12345").size());
}

TEST_P(SettingsStoreContract, CopiesNothingWhereTheRoomIsTooSmall) {
    const KeyHandle key = make("key");
    put(key, "name", "12345");
    ValueType type{};
    std::uint32_t size = 4;
    std::string room = "????";
    EXPECT_EQ(store->queryValue(key, "name", type, reinterpret_cast<std::uint8_t*>(room.data()), size),
              SettingsStatus::moreData);
    EXPECT_EQ(size, ended("12345").size());
    EXPECT_EQ(type, ValueType::text);
    EXPECT_EQ(room, "????");
}

TEST_P(SettingsStoreContract, WritesNoMoreThanTheValue) {
    const KeyHandle key = make("key");
    put(key, "name", "12", ValueType::binary);
    ValueType type{};
    std::uint32_t size = 4;
    std::string room = "????";
    EXPECT_EQ(store->queryValue(key, "name", type, reinterpret_cast<std::uint8_t*>(room.data()), size),
              SettingsStatus::success);
    EXPECT_EQ(size, 2U);
    EXPECT_EQ(room, "12??");
}

TEST_P(SettingsStoreContract, DoesNotFindAValueThatWasNeverStored) {
    EXPECT_EQ(get(make("key"), "name"), "(2)");
}

TEST_P(SettingsStoreContract, ListsValuesInTheOrderInWhichTheyWereFirstStored) {
    const KeyHandle key = make("key");
    const std::vector<std::string> all{"zebra", "Apple", "mango", store->encodeText("äpfel")};
    for (const std::string& name : all) {
        put(key, name, "1");
    }
    put(key, "apple", "changed");
    EXPECT_EQ(names(key), ordered(all));
}

TEST_P(SettingsStoreContract, KeepsTheOrderWhenAValueIsDeleted) {
    const KeyHandle key = make("key");
    for (const char* name : {"c", "a", "b"}) {
        put(key, name, "1");
    }
    EXPECT_EQ(store->deleteValue(key, "A"), SettingsStatus::success);
    EXPECT_EQ(names(key), ordered({"c", "b"}));
    put(key, "a", "1");
    EXPECT_EQ(names(key), ordered({"c", "b", "a"}));
}

TEST_P(SettingsStoreContract, TellsTheEndOfAList) {
    const KeyHandle key = make("key");
    std::string name = "untouched";
    EXPECT_EQ(enumerate(key, 0, name), SettingsStatus::noMoreItems);
    put(key, "one", "1");
    EXPECT_EQ(enumerate(key, 0, name), SettingsStatus::success);
    EXPECT_EQ(enumerate(key, 1, name), SettingsStatus::noMoreItems);
    EXPECT_EQ(name, "one");
}

TEST_P(SettingsStoreContract, ListsOnlyWhatFitsTheRooms) {
    const KeyHandle key = make("key");
    put(key, "four", "12345");
    std::string name;
    const auto size = static_cast<std::uint32_t>(ended("12345").size());
    EXPECT_EQ(enumerate(key, 0, name, 4, size), SettingsStatus::moreData);
    EXPECT_EQ(enumerate(key, 0, name, 5, size - 1), SettingsStatus::moreData);
    EXPECT_EQ(enumerate(key, 0, name, 5, size), SettingsStatus::success);
    EXPECT_EQ(name, "four");
}

TEST_P(SettingsStoreContract, KeepsAKeyWhoseLastValueIsDeleted) {
    const KeyHandle key = make("key");
    put(key, "name", "1");
    EXPECT_EQ(store->deleteValue(key, "name"), SettingsStatus::success);
    EXPECT_EQ(store->deleteValue(key, "name"), SettingsStatus::notFound);
    EXPECT_EQ(open("key"), SettingsStatus::success);
}

TEST_P(SettingsStoreContract, RefusesAHandleThatWasClosed) {
    const KeyHandle key = make("key");
    store->closeKey(key);
    std::string name;
    EXPECT_EQ(get(key, "name"), "(6)");
    EXPECT_EQ(put(key, "name", "1"), SettingsStatus::invalidHandle);
    EXPECT_EQ(store->deleteValue(key, "name"), SettingsStatus::invalidHandle);
    EXPECT_EQ(enumerate(key, 0, name), SettingsStatus::invalidHandle);
}

TEST_P(SettingsStoreContract, GivesTextBackAsItWasStored) {
    for (const std::string text : {"", "plain", "naïve"}) {
        EXPECT_EQ(store->decodeText(store->encodeText(text)), text);
    }
}

}  // namespace contract
