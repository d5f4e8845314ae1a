#include "sdk/method_table.h"

#include <cstddef>
#include <map>
#include <string>

namespace sdk {
namespace {

/// The numbers that automation gives to these two errors.
constexpr int noSuchMethod = 438;
constexpr int wrongNumberOfArguments = 450;

struct Method {
    std::size_t arguments;
    base::Variant (*call)(Extractor&, std::span<base::Variant>);
};

template <auto method>
Method withoutArguments() {
    return {0, [](Extractor& extractor, std::span<base::Variant>) -> base::Variant {
                return (extractor.*method)();
            }};
}

template <auto method>
Method withIndex() {
    return {1, [](Extractor& extractor, std::span<base::Variant> arguments) -> base::Variant {
                return (extractor.*method)(arguments[0].toInt16());
            }};
}

template <auto method>
Method withText() {
    return {1, [](Extractor& extractor, std::span<base::Variant> arguments) -> base::Variant {
                return (extractor.*method)(arguments[0].toText());
            }};
}

bool isNumber(const base::Variant& value) {
    return std::holds_alternative<std::int16_t>(value.value()) ||
           std::holds_alternative<std::int32_t>(value.value()) ||
           std::holds_alternative<double>(value.value());
}

/// A number is a document's key, not the path of a file with such a name.
Method openDocument() {
    return {1, [](Extractor& extractor, std::span<base::Variant> arguments) -> base::Variant {
                return isNumber(arguments[0]) ? extractor.openByKey(arguments[0].toInt32())
                                              : extractor.SetDocumentID(arguments[0].toText());
            }};
}

const std::map<std::string_view, Method>& methods() {
    static const std::map<std::string_view, Method> table = {
        {"SetDocumentID", openDocument()},
        {"GetLastErrorNumber", withoutArguments<&Extractor::GetLastErrorNumber>()},
        {"GetLastErrorString", withoutArguments<&Extractor::GetLastErrorString>()},
        {"GetDocumentProperty", withText<&Extractor::GetDocumentProperty>()},
        {"GetNumberOfSentences", withoutArguments<&Extractor::GetNumberOfSentences>()},
        {"MoreSentences", withoutArguments<&Extractor::MoreSentences>()},
        {"GetNextSentence", withoutArguments<&Extractor::GetNextSentence>()},
        {"GetSentenceText", withIndex<&Extractor::GetSentenceText>()},
        {"GetNumberofImportantText", withoutArguments<&Extractor::GetNumberofImportantText>()},
        {"GetImportantTextText", withIndex<&Extractor::GetImportantTextText>()},
        {"GetImportantTextType", withIndex<&Extractor::GetImportantTextType>()},
        {"GetNumberofAnnotations", withoutArguments<&Extractor::GetNumberofAnnotations>()},
        {"GetAnnotationType", withIndex<&Extractor::GetAnnotationType>()},
        {"GetAnnotationAnchor", withIndex<&Extractor::GetAnnotationAnchor>()},
        {"GetAnnotationText", withIndex<&Extractor::GetAnnotationText>()},
        {"GetNumberofMetaTags", withoutArguments<&Extractor::GetNumberofMetaTags>()},
        {"GetMetaTagText", withIndex<&Extractor::GetMetaTagText>()},
        {"GetMetaTagType", withIndex<&Extractor::GetMetaTagType>()},
        {"GetNumberofSubDocuments", withoutArguments<&Extractor::GetNumberofSubDocuments>()},
        {"GetSubDocumentTempPath", withIndex<&Extractor::GetSubDocumentTempPath>()},
        {"GetSubDocumentPath", withIndex<&Extractor::GetSubDocumentPath>()},
    };
    return table;
}

}  // namespace

base::Variant callByName(Extractor& extractor, std::string_view method, std::span<base::Variant> arguments) {
    const auto found = methods().find(method);
    if (found == methods().end()) {
        throw ExtractionError(noSuchMethod, "there is no method \"" + std::string(method) + "\"");
    }
    if (arguments.size() != found->second.arguments) {
        throw ExtractionError(wrongNumberOfArguments,
                              std::string(method) + " takes " + std::to_string(found->second.arguments) +
                                  " arguments, not " + std::to_string(arguments.size()));
    }
    return found->second.call(extractor, arguments);
}

}  // namespace sdk
