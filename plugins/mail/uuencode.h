// Files that old mailers put into the text of a message, between "begin <mode> <name>" and "end".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mail {

struct EncodedFile {
    std::string_view before;  // the text up to the file
    std::string name;
    std::string bytes;
    std::string_view after;  // the text behind it
};

/// The first such file in the text; nothing where there is none or it is not ended.
std::optional<EncodedFile> findEncodedFile(std::string_view text);

}  // namespace mail
