#include "platform/posix/plugins/plugin_object.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "platform/plugin_protocol.h"

namespace platform::posix {
namespace {

using nlohmann::json;
namespace protocol = plugin_protocol;

/// The items that the engine asks for in order. An annotation's text is not among them: it is asked for some
/// types only. Nor are sub-documents, because a plug-in may have to write a file for each.
std::vector<RangeReader> rangeReaders(PluginTarget target) {
    std::vector<RangeReader> readers;
    readers.emplace_back(target, "GetNumberOfSentences", std::vector<std::string_view>{"GetSentenceText"});
    readers.emplace_back(target, "GetNumberofImportantText",
                         std::vector<std::string_view>{"GetImportantTextText", "GetImportantTextType"});
    readers.emplace_back(target, "GetNumberofAnnotations",
                         std::vector<std::string_view>{"GetAnnotationType", "GetAnnotationAnchor"});
    readers.emplace_back(target, "GetNumberofMetaTags",
                         std::vector<std::string_view>{"GetMetaTagText", "GetMetaTagType"});
    return readers;
}

PluginAnswer withoutItems() {
    PluginAnswer answer;
    answer.results.emplace();
    return answer;
}

constexpr std::string_view setDocument = "SetDocumentID";
constexpr std::string_view sentenceCount = "GetNumberOfSentences";

// The engine's order of calls is part of the contract. What it does between two calls decides how they are
// grouped: a process that breaks over a later phase must not take from the engine what an earlier phase has.

constexpr std::array properties{ExpectedCall{"GetDocumentProperty", "source_url"},
                                ExpectedCall{.method = "GetLastErrorNumber", .expected = 0},
                                ExpectedCall{"GetDocumentProperty", "data_size"},
                                ExpectedCall{"GetDocumentProperty", "title"}};
constexpr std::array modification{ExpectedCall{"GetDocumentProperty", "last_time_modified"}};
/// The first sentences come with their number: to count them a plug-in has to have cut them, or it cuts them
/// one after the other. They are one phase, so a process that breaks over one of these sentences may take
/// their number with it.
constexpr std::array sentences{ExpectedCall{sentenceCount}};
constexpr ExpectedItems firstSentences{
    .method = "GetSentenceText", .more = "MoreSentences", .next = "GetNextSentence", .most = 64};
/// The engine passes over what there is none of.
constexpr std::array counts{ExpectedCall{.method = "GetNumberofImportantText", .expected = 0},
                            ExpectedCall{.method = "GetLastErrorNumber", .expected = 0},
                            ExpectedCall{.method = "GetNumberofAnnotations", .expected = 0},
                            ExpectedCall{.method = "GetLastErrorNumber", .expected = 0},
                            ExpectedCall{.method = "GetNumberofMetaTags", .expected = 0},
                            ExpectedCall{.method = "GetLastErrorNumber", .expected = 0}};
constexpr auto countsFromAnnotations = std::span(counts).subspan(2);
/// Before this the engine writes what it has, which is the longest piece of its work.
constexpr std::array subDocuments{ExpectedCall{"GetNumberofSubDocuments"}};

const std::array afterOpening{ExpectedSequence{properties}, ExpectedSequence{modification},
                              ExpectedSequence{sentences, &firstSentences}};
const std::array afterSentences{ExpectedSequence{counts}, ExpectedSequence{subDocuments}};
const std::array afterImportantText{ExpectedSequence{countsFromAnnotations}, ExpectedSequence{subDocuments}};
const std::array afterMetaTags{ExpectedSequence{subDocuments}};

}  // namespace

PluginObject::PluginObject(std::shared_ptr<PluginProcess> process, std::int64_t object,
                           PluginProcess::Milliseconds limit)
    : process_(std::move(process)),
      limit_(limit),
      object_(object),
      ranges_(rangeReaders({*process_, object_, limit})),
      while_({*process_, object_, limit}),
      expected_({*process_, object_, limit}) {}

PluginObject::~PluginObject() {
    try {
        forgetReadAhead();
        process_->releaseObject(object_);  // leaves when the process is given back, just below
    } catch (const std::exception&) {      // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
    }
}

base::Variant PluginObject::call(std::string_view method, std::span<base::Variant> arguments) {
    process_->raiseIfGone(method);
    if (auto item = serve(method, arguments)) {
        expectWhatFollowsItems();
        return std::move(*item);
    }
    if (method == setDocument) {
        forgetReadAhead();  // what was read belongs to another document
    }
    auto expected = expected_.serve(method, arguments);
    // The arguments may change in the call.
    const bool opensByPath = method == setDocument && arguments.size() == 1 &&
                             std::holds_alternative<std::string>(arguments[0].value());
    base::Variant result = expected ? std::move(*expected) : callPlainly(method, arguments);
    learn(method, result);
    if (opensByPath && result == base::Variant(true)) {
        expected_.ask(afterOpening);
    }
    return result;
}

std::optional<base::Variant> PluginObject::serve(std::string_view method,
                                                 std::span<const base::Variant> arguments) {
    if (auto item = while_.serve(method, arguments)) {  // takes two calls for an item, so it goes first
        return item;
    }
    for (RangeReader& range : ranges_) {
        if (auto item = range.serve(method, arguments)) {
            return item;
        }
    }
    return std::nullopt;
}

base::Variant PluginObject::callPlainly(std::string_view method, std::span<base::Variant> arguments) {
    json values = json::array();
    for (const base::Variant& argument : arguments) {
        values.push_back(protocol::valueToJson<json>(argument));
    }
    const json params = {{"object", object_}, {"method", method}, {"arguments", std::move(values)}};
    // Bytes that are no UTF-8 (a path may hold any) become U+FFFD, because JSON cannot carry them.
    const auto request =
        process_->post(protocol::callMethod, params.dump(-1, ' ', false, json::error_handler_t::replace));
    PluginAnswer answer = process_->awaitResult(request, method, limit_);
    if (!answer.result) {
        process_->fault(method, "the plug-in answered without a result");
    }
    if (answer.arguments) {
        if (answer.arguments->size() != arguments.size()) {
            process_->fault(method, "the plug-in answered with another number of arguments");
        }
        std::move(answer.arguments->begin(), answer.arguments->end(), arguments.begin());
    }
    return std::move(*answer.result);
}

void PluginObject::learn(std::string_view method, const base::Variant& result) {
    for (RangeReader& range : ranges_) {
        range.learn(method, result);
    }
    while_.learn(method, result);
    if (method == sentenceCount) {
        startSentences(result);
    }
}

void PluginObject::startSentences(const base::Variant& count) {
    PluginAnswer arrived = expected_.takeItems().value_or(withoutItems());
    RangeReader& bodySentences = ranges_.front();
    if (!bodySentences.hasItems() && !while_.isReading() && !arrived.results->empty()) {
        process_->fault(sentenceCount, "the plug-in answered more calls than it was asked for");
    }
    bodySentences.start(sentenceCount, arrived, firstSentences.most);
    while_.start(sentenceCount, arrived, firstSentences.most);
    if (count == base::Variant(std::int32_t{0}) || while_.takeEnd() || bodySentences.takeEnd()) {
        expected_.ask(afterSentences);
    }
}

void PluginObject::expectWhatFollowsItems() {
    RangeReader& bodySentences = ranges_[0];
    RangeReader& importantText = ranges_[1];
    RangeReader& metaTags = ranges_[3];
    if (bodySentences.takeEnd() || while_.takeEnd()) {
        expected_.ask(afterSentences);
    }
    if (importantText.takeEnd()) {
        expected_.ask(afterImportantText);
    }
    if (metaTags.takeEnd()) {
        expected_.ask(afterMetaTags);
    }
}

void PluginObject::forgetReadAhead() {
    for (RangeReader& range : ranges_) {
        range.reset();
    }
    while_.reset();
    expected_.reset();
}

}  // namespace platform::posix
