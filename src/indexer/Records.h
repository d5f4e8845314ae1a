// Records of classified text: meta tags, annotation sections and important text. Each is classified by the
// word type of a component type and a description, or by the component type's row of type 0 when it has no
// such description. A failing statement raises to the caller, except in IsNewMetaTag.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "infra/tysDataBase.h"

namespace indexer {

/// One tag row per share of the document, and the tag's words.
void AddMetaTag(std::int32_t idDocument, std::int16_t compType, std::string_view description,
                std::string_view metaText, infra::tysDataBase& database);

/// The known words of the tag that was inserted last on the connection, numbered from 1.
void AddMetaTagEntries(std::string_view metaText, infra::tysDataBase& database);

/// One section row per share of the document.
void AddAnnotationSection(std::int32_t idDocument, std::int16_t compType, std::string_view description,
                          std::int16_t sequence, infra::tysDataBase& database);

/// One row of important text for the document.
void AddImportantText(std::int32_t idDocument, std::int16_t compType, std::string_view description,
                      infra::tysDataBase& database);

/// True when no meta tag of the user's share of the document has this text, as its stored words read. An
/// error is logged and gives what was known until then.
bool IsNewMetaTag(std::int32_t idDocument, std::string_view metaText, infra::tysDataBase& database,
                  std::int32_t idUser);

}  // namespace indexer
