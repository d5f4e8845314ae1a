// Document setup: one valid record stands for a document's location and source, and nothing of an earlier
// indexing is left behind it.
#pragma once

#include <cstdint>
#include <string>

#include "indexer/DocumentJob.h"
#include "indexer/Plugin.h"
#include "infra/tysDataBase.h"

namespace indexer {

struct DocumentRecord {
    std::string
        savedLocation;  // the key of the record: the path, or the parent's with the number of the attachment
    std::string sourceUrl;
    std::string title;          // as it is indexed
    std::int32_t dataSize = 0;  // bytes
    std::int32_t id = -1;       // of document_object; -1 until it is set up
};

/// Gives a sub-document a title of its own where it has none, and puts the parent's title before it.
void makeSubDocumentTitle(DocumentRecord& record, const DocumentJob& job, infra::tysDataBase& database);

/// Finds and refreshes the document's record or creates it with its relevance value and share, in one
/// transaction, and sets the record's id. An error rises with the transaction still open.
void setUpDocumentRecord(DocumentRecord& record, const DocumentJob& job, Plugin& plugin,
                         infra::tysDataBase& database);

}  // namespace indexer
