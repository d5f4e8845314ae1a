#include "indexer/Plugin.h"

namespace indexer {

bool Plugin::SetDocumentID(const base::Variant& document) {
    base::Variant argument = document;
    return object_->call("SetDocumentID", {&argument, 1}).toBool();
}

std::int32_t Plugin::GetLastErrorNumber() {
    return object_->call("GetLastErrorNumber").toInt32();
}

std::string Plugin::GetLastErrorString() {
    return object_->call("GetLastErrorString").toText();
}

base::Variant Plugin::GetDocumentProperty(std::string_view name) {
    const base::Variant argument{std::string(name)};
    return object_->callByValue("GetDocumentProperty", {&argument, 1});
}

std::int16_t Plugin::GetNumberOfSentences() {
    return object_->call("GetNumberOfSentences").toInt16();
}

bool Plugin::MoreSentences() {
    return object_->call("MoreSentences").toBool();
}

std::string Plugin::GetNextSentence() {
    return object_->call("GetNextSentence").toText();
}

std::string Plugin::GetSentenceText(std::int16_t index) {
    return textAt("GetSentenceText", index);
}

std::int32_t Plugin::GetNumberofImportantText() {
    return object_->call("GetNumberofImportantText").toInt32();
}

std::string Plugin::GetImportantTextText(std::int16_t index) {
    return textAt("GetImportantTextText", index);
}

std::string Plugin::GetImportantTextType(std::int16_t index) {
    return textAt("GetImportantTextType", index);
}

std::int32_t Plugin::GetNumberofAnnotations() {
    return object_->call("GetNumberofAnnotations").toInt32();
}

std::string Plugin::GetAnnotationType(std::int16_t index) {
    return textAt("GetAnnotationType", index);
}

std::string Plugin::GetAnnotationAnchor(std::int16_t index) {
    return textAt("GetAnnotationAnchor", index);
}

std::string Plugin::GetAnnotationText(std::int16_t index) {
    return textAt("GetAnnotationText", index);
}

std::int32_t Plugin::GetNumberofMetaTags() {
    return object_->call("GetNumberofMetaTags").toInt32();
}

std::string Plugin::GetMetaTagText(std::int16_t index) {
    return textAt("GetMetaTagText", index);
}

std::string Plugin::GetMetaTagType(std::int16_t index) {
    return textAt("GetMetaTagType", index);
}

std::int16_t Plugin::GetNumberofSubDocuments() {
    return object_->call("GetNumberofSubDocuments").toInt16();
}

std::string Plugin::GetSubDocumentTempPath(std::int16_t index) {
    return textAt("GetSubDocumentTempPath", index);
}

std::string Plugin::GetSubDocumentPath(std::int16_t index) {
    return textAt("GetSubDocumentPath", index);
}

std::string Plugin::textAt(std::string_view method, std::int16_t index) {
    // Indices go by reference, in a variable that the plug-in may change without harm to the caller's count.
    base::Variant argument{index};
    return object_->call(method, {&argument, 1}).toText();
}

std::string propertyText(const base::Variant& value) {
    return value.isNull() ? std::string() : value.toText();
}

}  // namespace indexer
