// A DocumentJob names one document to index and how. Queue entries and parent documents make them.
#pragma once

#include <cstdint>
#include <string>

#include "base/variant.h"

namespace indexer {

/// In the order of the arguments that IndexDocument has always had.
struct DocumentJob {
    std::string path;               // the location that is indexed, and what the plug-in opens
    bool createNew = false;         // an existing record at the location is not looked for
    base::Variant queued;           // when it was queued; only passed on to sub-documents
    std::string dataType;           // selects the plug-in; "eml" marks an e-mail
    std::int32_t idParent = -1;     // of a sub-document; -1 for a document of its own
    std::int32_t idUser = 0;        // owner of the share
    bool isTemporaryFile = false;   // the file is deleted when it has been indexed
    std::string parentPath;         // empty for a document of its own
    std::string subDocumentName;    // within the parent; empty for a document of its own
    bool useDefaultPlugin = false;  // the data type's own plug-in has failed
    int depth = 0;                  // documents around this one
};

/// The data type whose documents are messages: no path words, no second try with the default plug-in, and
/// attachments that can be switched off. Compared as it stands, capitals included.
inline constexpr const char* emailDataType = "eml";

}  // namespace indexer
