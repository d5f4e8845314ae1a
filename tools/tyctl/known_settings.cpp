#include "tyctl/known_settings.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/text.h"

namespace tyctl {
namespace {

using platform::ValueType;

constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();

constexpr std::string_view service = "service";
constexpr std::string_view indexer = R"(service\Indexer)";
constexpr std::string_view master = R"(service\Master)";
constexpr std::string_view temporaryFiles = R"(service\Indexer\Temp Files)";
constexpr std::string_view dataTypes = R"(DataTypes\)";

struct Number {
    std::string_view key;
    std::string_view name;
    std::int32_t lowest;
    std::int32_t highest;
};

// Outside these limits the service takes another value without a word, or it does what nobody can want: it
// does not start, or ends after each look at the queue.
constexpr std::array numbers{Number{service, "StoreContext", 0, 1},
                             Number{indexer, "LoggingOn", 0, 2},
                             Number{indexer, "PollInterval", 0, 65},
                             Number{indexer, "MaxDocsBeforeRestart", 0, most},
                             Number{indexer, "LogLevelCrashDetection", 0, 1},
                             Number{indexer, "LogLevelLogicPath", 0, 1},
                             Number{indexer, "LogLevelErrorReport", 0, 1},
                             Number{indexer, "LogLevelInterest", 0, 1},
                             Number{indexer, "LogLevelUIOutput", 0, 1},
                             Number{indexer, "IndexEmailAttachments", 0, 1},
                             Number{indexer, "PluginTimeoutSeconds", 1, 3600},
                             Number{indexer, "DeadMansSwitchSeconds", 0, most},
                             Number{indexer, "IndexingQueueNumber", least, most},
                             Number{master, "DocsIndexedSinceCompaction", 0, most}};

struct Text {
    std::string_view key;
    std::string_view name;
};

constexpr std::array texts{Text{service, "DataBasePath"}, Text{service, "DataBaseSecurityFile"},
                           Text{indexer, "Priority"},     Text{indexer, "LogFilePath"},
                           Text{indexer, "LastTouch"},    Text{indexer, "IndexingKey"},
                           Text{dataTypes, "IndexPlugin"}};

constexpr std::array priorities{"low", "normal", "high"};

bool isKey(std::string_view shortened, std::string_view known) {
    if (known == dataTypes) {
        return shortened.size() > known.size() &&
               base::equalsIgnoringCase(shortened.substr(0, known.size()), known);
    }
    return base::equalsIgnoringCase(shortened, known);
}

template <class Known>
const Known* findByName(const auto& table, const SettingName& setting) {
    const auto* const found = std::find_if(table.begin(), table.end(), [&](const Known& known) {
        return base::equalsIgnoringCase(setting.value, known.name);
    });
    return found == table.end() ? nullptr : found;
}

/// The setting of the table that the service reads at this very place, or null.
template <class Known>
const Known* findAt(const auto& table, const SettingName& setting) {
    const Known* found = findByName<Known>(table, setting);
    return found != nullptr && isKey(shortKey(setting.key), found->key) ? found : nullptr;
}

bool isTemporaryFile(const SettingName& setting) {
    return base::equalsIgnoringCase(shortKey(setting.key), temporaryFiles);
}

}  // namespace

std::optional<ValueType> knownTypeOf(const SettingName& setting) {
    if (!isProductKey(setting.key)) {
        return std::nullopt;
    }
    if (findByName<Number>(numbers, setting) != nullptr) {
        return ValueType::number;
    }
    if (findByName<Text>(texts, setting) != nullptr) {
        return ValueType::text;
    }
    return std::nullopt;
}

std::string objectionToNumber(const SettingName& setting, std::int32_t number) {
    const Number* known = findAt<Number>(numbers, setting);
    if (known != nullptr && (number < known->lowest || number > known->highest)) {
        return "takes a whole number from " + std::to_string(known->lowest) + " to " +
               std::to_string(known->highest) + ", not " + std::to_string(number);
    }
    if (isTemporaryFile(setting) || findAt<Text>(texts, setting) != nullptr) {
        return "takes a text, not a number; leave --number away";
    }
    return {};
}

std::string objectionToText(const SettingName& setting, std::string_view text) {
    if (findAt<Number>(numbers, setting) != nullptr) {
        return "takes a number, not a text; leave --text and --expand away";
    }
    // Start-up does not get past an entry without a path.
    if (isTemporaryFile(setting) && text.empty()) {
        return "takes the path of a file, not an empty text";
    }
    const Text* known = findAt<Text>(texts, setting);
    if (known != nullptr && known->name == "Priority" &&
        std::none_of(priorities.begin(), priorities.end(),
                     [&](const char* word) { return base::equalsIgnoringCase(text, word); })) {
        return "takes low, normal or high, not \"" + std::string(text) + "\"";
    }
    return {};
}

}  // namespace tyctl
