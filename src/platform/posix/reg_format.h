// Settings as .reg text, the exchange format of registries: exported for a backup or another machine,
// imported from there. Tools use it.
//
// Text is UTF-8; an import also takes UTF-16LE with a byte order mark. In hex(1) and hex(2) data the bytes
// are those of UTF-16LE text with an ending NUL, as registries write them; under the header REGEDIT4 they are
// the text's own bytes. All other types carry their bytes as they are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/settings_file.h"

namespace platform::posix {

/// One thing that a .reg text tells to do.
struct RegistryEdit {
    enum class Kind { makeKey, deleteKey, setValue, deleteValue };

    Kind kind = Kind::makeKey;
    std::string key;      // below the root
    SettingsValue value;  // the name alone for deleteValue
};

/// Raises a RuntimeError that names the line which cannot be understood.
[[nodiscard]] std::vector<RegistryEdit> parseRegistryText(std::string_view bytes);

/// Carries the edits out in their order; what is to be deleted may be missing. Raises a RuntimeError that
/// names the key at the first one that the file refuses.
void applyRegistryEdits(SettingsFile& settings, const std::vector<RegistryEdit>& edits);

/// A text that cannot be understood to its end changes nothing.
void importRegistryText(SettingsFile& settings, std::string_view bytes);

/// A key with everything below it; an empty path stands for all keys. Raises a RuntimeError when there is no
/// such key, when the file cannot be read, and for a name that the format has no form for.
[[nodiscard]] std::string exportRegistryText(SettingsFile& settings, std::string_view path);

}  // namespace platform::posix
