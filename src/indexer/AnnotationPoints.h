// Annotation points say how richly a document is annotated, by the relevance rules of its data type.
#pragma once

#include <cstdint>
#include <string>

#include "infra/tysDataBase.h"

namespace indexer {

/// Computes the points, writes them to every share of the document and gives them. `density` is annotation
/// text per byte of the document. Raises when a statement fails, when there are no rules, and when the points
/// leave 16 bits.
std::int16_t ComputeAnnotationPoints(std::int32_t idDocument, const std::string& dataType, double density,
                                     infra::tysDataBase& database);

}  // namespace indexer
