#include "windows/plugin/text_plugin.h"

#include <utility>

namespace test_plugin {
namespace {

using com_server::Call;
using com_server::ServerError;

constexpr HRESULT subscriptOutOfRange = static_cast<HRESULT>(0x800A0009);
constexpr HRESULT ownError = static_cast<HRESULT>(0x800A0E78);
constexpr LONG fileNotFound = 53;
constexpr std::wstring_view unreadable = L"! ";

/// "2002-03-05 09:07:04" as automation counts days.
DATE dateOf(const std::wstring& text) {
    SYSTEMTIME time{};
    DATE date = 0;
    if (std::swscanf(text.c_str(), L"%hu-%hu-%hu %hu:%hu:%hu", &time.wYear, &time.wMonth, &time.wDay,
                     &time.wHour, &time.wMinute, &time.wSecond) != 6 ||
        ::SystemTimeToVariantTime(&time, &date) == FALSE) {
        throw ServerError{DISP_E_TYPEMISMATCH, L"\"" + text + L"\" is no date"};
    }
    return date;
}

}  // namespace

TextPlugin::TextPlugin(Sentences kind) {
    method(L"SetDocumentID", {{VT_BYREF | VT_BSTR}}, [this](Call& call) { open(call); });
    method(L"GetLastErrorNumber", {}, [this](Call& call) { call.give(lastError_); });
    method(L"GetLastErrorString", {}, [this](Call& call) { call.give(lastErrorText_); });
    method(L"GetDocumentProperty", {{VT_BSTR}}, [this](Call& call) { giveProperty(call); });
    sentences(kind);
    items();
}

void TextPlugin::open(Call& call) {
    const std::wstring path = call.text(0);
    const bool isRead = readDocument(path, document_);
    lastError_ = isRead ? 0 : fileNotFound;
    lastErrorText_ = isRead ? L"" : L"File not found: " + path;
    call.give(isRead);
}

void TextPlugin::giveProperty(Call& call) const {
    const std::wstring name = call.text(0);
    if (name == L"title") {
        call.give(document_.title);
    } else if (name == L"data_size") {
        call.give(LONG{document_.size});
    } else if (name == L"source_url" || name == L"document_path") {
        call.give(document_.path);
    } else if (name == L"last_time_modified" && !document_.modified.empty() && call.result != nullptr) {
        V_DATE(call.result) = dateOf(document_.modified);
        V_VT(call.result) = VT_DATE;
    }
}

void TextPlugin::sentences(Sentences kind) {
    method(L"GetNumberOfSentences", {}, [this, kind](Call& call) {
        call.give(kind == Sentences::streamed ? SHORT{-1} : static_cast<SHORT>(document_.sentences.size()));
    });
    if (kind == Sentences::counted) {
        item(L"GetSentenceText", [this](std::size_t index) { return sentence(index); });
        return;
    }
    method(L"MoreSentences", {},
           [this](Call& call) { call.give(nextSentence_ < document_.sentences.size()); });
    method(L"GetNextSentence", {}, [this](Call& call) { call.give(sentence(nextSentence_++)); });
}

const std::wstring& TextPlugin::sentence(std::size_t index) const {
    const std::wstring& text = document_.sentences.at(index);
    if (text.starts_with(unreadable)) {
        throw ServerError{ownError, text.substr(unreadable.size())};
    }
    return text;
}

void TextPlugin::items() {
    count(L"GetNumberofImportantText", [this] { return document_.headings.size(); });
    item(L"GetImportantTextText", [this](std::size_t index) { return document_.headings.at(index).text; });
    item(L"GetImportantTextType", [this](std::size_t index) { return document_.headings.at(index).type; });
    count(L"GetNumberofAnnotations", [this] { return document_.comments.size(); });
    item(L"GetAnnotationType", [](std::size_t) { return L"Comment"; });
    item(L"GetAnnotationAnchor", [this](std::size_t index) { return document_.comments.at(index).type; });
    item(L"GetAnnotationText", [this](std::size_t index) { return document_.comments.at(index).text; });
    count(L"GetNumberofMetaTags", [this] { return document_.tags.size(); });
    item(L"GetMetaTagText", [this](std::size_t index) { return document_.tags.at(index).text; });
    item(L"GetMetaTagType", [this](std::size_t index) { return document_.tags.at(index).type; });
    method(L"GetNumberofSubDocuments", {},
           [this](Call& call) { call.give(static_cast<SHORT>(document_.files.size())); });
    item(L"GetSubDocumentTempPath", [this](std::size_t index) { return document_.files.at(index); });
    item(L"GetSubDocumentPath", [](std::size_t) { return std::wstring(); });
}

void TextPlugin::item(const wchar_t* name, std::function<std::wstring(std::size_t index)> text) {
    method(name, {{VT_BYREF | VT_I2}}, [text = std::move(text)](Call& call) {
        const LONG index = call.number(0, 0);
        if (index < 1) {
            throw ServerError{subscriptOutOfRange, L"There is no item " + std::to_wstring(index)};
        }
        call.give(text(static_cast<std::size_t>(index) - 1));
    });
}

void TextPlugin::count(const wchar_t* name, std::function<std::size_t()> count) {
    method(name, {}, [count = std::move(count)](Call& call) { call.give(static_cast<LONG>(count())); });
}

}  // namespace test_plugin
