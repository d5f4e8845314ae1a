// A Plugin is one document's extraction plug-in, called by the names of the extraction contract.
// The pipeline owns it for the length of one document; destroying it releases the plug-in.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/variant.h"
#include "platform/automation.h"

namespace indexer {

/// Every call raises a base::RuntimeError when the plug-in does, or when its answer has not the expected
/// type. The capitals of the names differ as the contract spells them. Indices run from 1.
class Plugin {
  public:
    explicit Plugin(std::unique_ptr<platform::AutomationObject> object) : object_(std::move(object)) {}

    /// False (0) when the document could not be opened. The argument is its path, or its key when it has
    /// moved.
    bool SetDocumentID(const base::Variant& document);
    std::int32_t GetLastErrorNumber();
    std::string GetLastErrorString();
    base::Variant GetDocumentProperty(std::string_view name);
    /// -1 when the plug-in does not know.
    std::int16_t GetNumberOfSentences();
    bool MoreSentences();
    std::string GetNextSentence();
    std::string GetSentenceText(std::int16_t index);
    std::int32_t GetNumberofImportantText();
    std::string GetImportantTextText(std::int16_t index);
    std::string GetImportantTextType(std::int16_t index);
    std::int32_t GetNumberofAnnotations();
    std::string GetAnnotationType(std::int16_t index);
    std::string GetAnnotationAnchor(std::int16_t index);
    std::string GetAnnotationText(std::int16_t index);
    std::int32_t GetNumberofMetaTags();
    std::string GetMetaTagText(std::int16_t index);
    std::string GetMetaTagType(std::int16_t index);
    std::int16_t GetNumberofSubDocuments();
    std::string GetSubDocumentTempPath(std::int16_t index);
    std::string GetSubDocumentPath(std::int16_t index);

  private:
    std::string textAt(std::string_view method, std::int16_t index);

    std::unique_ptr<platform::AutomationObject> object_;
};

/// The text of a property; what the plug-in leaves empty or null is an empty text.
std::string propertyText(const base::Variant& value);

}  // namespace indexer
