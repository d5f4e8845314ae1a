#include "platform/posix/reg_format.h"

#include <array>
#include <cstdint>
#include <cstdio>

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/posix/reg_text.h"

namespace platform::posix {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::size_t longestLine = 77;
constexpr std::size_t numberSize = 4;
constexpr char32_t firstStrayByte = 0xDC80;
constexpr char32_t lastStrayByte = 0xDCFF;

void expectSuccess(SettingsStatus status, const std::string& what) {
    if (status != SettingsStatus::success) {
        throw base::RuntimeError(static_cast<int>(status), "cannot " + what + ": " + describe(status));
    }
}

bool isWithout(std::string_view text, std::string_view characters) {
    return text.find_first_of(characters) == std::string_view::npos;
}

bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const char32_t point = base::codePointAt(text, i, i);
        if (point >= firstStrayByte && point <= lastStrayByte) {
            return false;
        }
    }
    return true;
}

std::string quoted(std::string_view text) {
    return '"' + base::replaceAll(base::replaceAll(text, "\\", "\\\\"), "\"", "\\\"") + '"';
}

bool fitsOnALine(std::string_view text) {
    return isWithout(text, std::string_view("\r\n\0", 3));
}

std::string nameText(const SettingsValue& value, const std::string& key) {
    if (!fitsOnALine(value.name)) {
        throw base::RuntimeError(base::ErrorNumber::invalidProcedureCall,
                                 "cannot export a value in [" + key +
                                     "] whose name holds a line break: delete or rename it first");
    }
    return value.name.empty() ? "@" : quoted(value.name);
}

std::string hexNumber(std::uint32_t number, const char* format) {
    std::array<char, 16> buffer{};
    static_cast<void>(std::snprintf(buffer.data(), buffer.size(), format, number));
    return buffer.data();
}

std::string dwordText(std::string_view bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = numberSize; i-- > 0;) {
        number = number << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return "dword:" + hexNumber(number, "%08x");
}

/// Bytes in lines that end in a comma and a backslash wherever they go on.
std::string hexText(const std::string& begin, std::string_view bytes) {
    std::string text = begin;
    std::size_t lineLength = begin.size();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (lineLength > longestLine - 3) {
            text.append("\\").append(lineEnd).append("  ");
            lineLength = 2;
        }
        text += hexNumber(static_cast<unsigned char>(bytes[i]), "%02x");
        text += i + 1 < bytes.size() ? "," : "";
        lineLength += 3;
    }
    return text;
}

std::string valueText(const SettingsValue& value, const std::string& key) {
    const std::string begin = nameText(value, key) + "=";
    const bool isText = value.type == ValueType::text || value.type == ValueType::expandableText;
    if (value.type == ValueType::text && fitsOnALine(value.data) && isUtf8(value.data)) {
        return begin + quoted(value.data);
    }
    if (value.type == ValueType::number && value.data.size() == numberSize) {
        return begin + dwordText(value.data);
    }
    if (value.type == ValueType::binary) {
        return hexText(begin + "hex:", value.data);
    }
    const std::string type = hexNumber(static_cast<std::uint32_t>(value.type), "hex(%x):");
    return hexText(begin + type, isText ? utf16OfText(value.data + '\0') : value.data);
}

/// The path as it was first spelled.
std::string spelledPath(SettingsFile& settings, std::string_view path) {
    std::string spelled;
    for (const std::string_view part : base::split(path, '\\')) {
        if (part.empty()) {
            continue;
        }
        std::vector<std::string> names;
        expectSuccess(settings.subKeys(spelled, names), "read the keys below [" + spelled + "]");
        std::string found;
        for (const std::string& name : names) {
            if (base::equalsIgnoringCase(name, part)) {
                found = name;
            }
        }
        if (found.empty()) {
            throw base::RuntimeError(static_cast<int>(SettingsStatus::notFound),
                                     "cannot export [" + std::string(path) + "]: there is no such key");
        }
        spelled += (spelled.empty() ? "" : "\\") + found;
    }
    return spelled;
}

void exportKey(SettingsFile& settings, const std::string& path, std::string& text) {
    if (!fitsOnALine(path)) {
        throw base::RuntimeError(
            base::ErrorNumber::invalidProcedureCall,
            "cannot export the key [" + path + "], whose name holds a line break: delete it first");
    }
    if (!path.empty()) {
        std::vector<SettingsValue> values;
        expectSuccess(settings.values(path, values), "read the values of [" + path + "]");
        text.append(lineEnd).append("[").append(registryRoot).append("\\").append(path).append("]");
        text.append(lineEnd);
        for (const SettingsValue& value : values) {
            text.append(valueText(value, path)).append(lineEnd);
        }
    }
    std::vector<std::string> names;
    expectSuccess(settings.subKeys(path, names), "read the keys below [" + path + "]");
    const std::string begin = path.empty() ? path : path + "\\";
    for (const std::string& name : names) {
        exportKey(settings, begin + name, text);
    }
}

void applyToValue(SettingsFile& settings, const RegistryEdit& edit) {
    const bool stores = edit.kind == RegistryEdit::Kind::setValue;
    KeyHandle key = KeyHandle::none;
    const SettingsStatus opened = edit.kind == RegistryEdit::Kind::deleteValue
                                      ? settings.openKey(RootKey::currentUser, edit.key, key)
                                      : settings.createKey(RootKey::currentUser, edit.key, key);
    if (opened == SettingsStatus::notFound) {
        return;
    }
    expectSuccess(opened, "make the key [" + edit.key + "]");
    SettingsStatus status = SettingsStatus::success;
    if (stores) {
        status = settings.setValue(key, edit.value.name, edit.value.type,
                                   reinterpret_cast<const std::uint8_t*>(edit.value.data.data()),
                                   static_cast<std::uint32_t>(edit.value.data.size()));
    } else if (edit.kind == RegistryEdit::Kind::deleteValue) {
        status = settings.deleteValue(key, edit.value.name);
    }
    settings.closeKey(key);
    if (stores || status != SettingsStatus::notFound) {
        expectSuccess(status, "change the value \"" + edit.value.name + "\" of [" + edit.key + "]");
    }
}

}  // namespace

void applyRegistryEdits(SettingsFile& settings, const std::vector<RegistryEdit>& edits) {
    for (const RegistryEdit& edit : edits) {
        if (edit.kind != RegistryEdit::Kind::deleteKey) {
            applyToValue(settings, edit);
            continue;
        }
        const SettingsStatus status = settings.deleteKey(edit.key);
        if (status != SettingsStatus::notFound) {
            expectSuccess(status, "delete the key [" + edit.key + "]");
        }
    }
}

void importRegistryText(SettingsFile& settings, std::string_view bytes) {
    applyRegistryEdits(settings, parseRegistryText(bytes));
}

std::string exportRegistryText(SettingsFile& settings, std::string_view path) {
    std::string text(registryHeader);
    text += lineEnd;
    exportKey(settings, spelledPath(settings, path), text);
    return text;
}

}  // namespace platform::posix
