// tysDocument creates the two records that make a document known to the library: the document and a user's
// share of it.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/date_time.h"
#include "base/variant.h"
#include "infra/tysDataBase.h"

namespace relevance {

/// Creates a document record and gives its key, or an empty value when that failed (the error is logged).
/// The title is cut to 250 characters and the data type to 3. A zero `documentDate` becomes the present
/// moment, for the caller too.
base::Variant createDocument(std::string_view sourceUrl, std::string_view title, base::DateTime& documentDate,
                             std::string_view dataType, std::string_view savedLocation, std::int32_t dataSize,
                             bool snapshot, std::int32_t idParent, std::int32_t idOwningUser,
                             infra::tysDataBase& database);

/// Creates a user's share of a document. A failing insert raises its error.
void createDocumentShare(std::int32_t idDocument, std::int32_t idUser, std::int32_t idPrv,
                         infra::tysDataBase& database);

}  // namespace relevance
