#include "mail/html_text.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "base/text.h"
#include "shared/charset.h"

namespace mail {
namespace {

/// Elements whose content is no text of the page.
constexpr auto hidden = std::to_array<std::string_view>({"head", "script", "style", "template", "title"});

/// Elements that stand within a line; all others begin and end one.
constexpr auto inlineElements = std::to_array<std::string_view>(
    {"a",     "abbr", "acronym", "b",      "bdo", "big",   "button", "cite", "code", "del", "dfn",
     "em",    "font", "i",       "ins",    "kbd", "label", "mark",   "o:p",  "q",    "s",   "samp",
     "small", "span", "strike",  "strong", "sub", "sup",   "time",   "tt",   "u",    "var"});

template <std::size_t count>
bool contains(const std::array<std::string_view, count>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string_view viewOf(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

/// Collects the text while the library's parser walks through the page.
class Collector {
  public:
    void startElement(std::string_view name, const xmlChar** attributes) {
        deepest_ = std::max(deepest_, ++depth_);
        hiddenDepth_ += contains(hidden, name) ? 1 : 0;
        if (hiddenDepth_ > 0) {
            return;
        }
        if (name == "br") {
            text_ += '\n';
        } else if (name == "td" || name == "th") {
            text_ += ' ';
        } else if (name == "img") {
            addAlternative(attributes);
        } else if (!contains(inlineElements, name)) {
            text_ += "\n\n";
        }
    }

    void endElement(std::string_view name) {
        --depth_;
        if (contains(hidden, name)) {
            hiddenDepth_ -= hiddenDepth_ > 0 ? 1 : 0;
        } else if (name == "td" || name == "th") {
            text_ += ' ';
        } else if (hiddenDepth_ == 0 && name != "br" && name != "img" && !contains(inlineElements, name)) {
            text_ += "\n\n";
        }
    }

    /// Line breaks of the source are blanks on the page.
    void characters(std::string_view text) {
        if (hiddenDepth_ > 0) {
            return;
        }
        const std::size_t start = text_.size();
        text_.append(text);
        std::replace_if(
            text_.begin() + static_cast<std::ptrdiff_t>(start), text_.end(),
            [](char c) { return c == '\n' || c == '\r'; }, ' ');
    }

    std::string take() { return std::move(text_); }

    [[nodiscard]] int deepest() const { return deepest_; }

  private:
    void addAlternative(const xmlChar** attributes) {
        for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
            if (viewOf(attributes[0]) == "alt" && attributes[1] != nullptr) {
                text_.append(" ").append(viewOf(attributes[1])).append(" ");
            }
        }
    }

    std::string text_;
    int hiddenDepth_ = 0;
    int depth_ = 0;
    int deepest_ = 0;
};

xmlSAXHandler handlers() {
    xmlSAXHandler sax{};
    sax.startElement = [](void* context, const xmlChar* name, const xmlChar** attributes) {
        static_cast<Collector*>(context)->startElement(viewOf(name), attributes);
    };
    sax.endElement = [](void* context, const xmlChar* name) {
        static_cast<Collector*>(context)->endElement(viewOf(name));
    };
    sax.characters = [](void* context, const xmlChar* text, int length) {
        static_cast<Collector*>(context)->characters(
            viewOf(text).substr(0, static_cast<std::size_t>(length)));
    };
    sax.ignorableWhitespace = sax.characters;
    return sax;
}

/// For pages that nest without end, on which the parser's time would grow with the square of their length.
std::string withoutTags(std::string_view html) {
    std::string text;
    while (!html.empty()) {
        const std::size_t open = std::min(html.find('<'), html.size());
        text.append(html.substr(0, open)).append(" ");
        const std::size_t close = html.find('>', open);
        html = close == std::string_view::npos ? std::string_view() : html.substr(close + 1);
    }
    return text;
}

}  // namespace

std::string htmlToPlainText(const std::string& html) {
    constexpr std::size_t pieceSize = std::size_t{1} << 16;
    constexpr int deepestNesting = 4096;
    Collector collector;
    xmlSAXHandler sax = handlers();
    const std::unique_ptr<htmlParserCtxt, decltype(&htmlFreeParserCtxt)> parser(
        htmlCreatePushParserCtxt(&sax, &collector, nullptr, 0, nullptr, XML_CHAR_ENCODING_UTF8),
        htmlFreeParserCtxt);
    if (parser == nullptr) {
        throw std::runtime_error("cannot start the HTML parser: out of memory");
    }
    htmlCtxtUseOptions(parser.get(), HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                                         HTML_PARSE_NONET | HTML_PARSE_IGNORE_ENC);
    for (std::size_t from = 0; from < html.size(); from += pieceSize) {
        const std::size_t size = std::min(pieceSize, html.size() - from);
        htmlParseChunk(parser.get(), html.data() + from, static_cast<int>(size), 0);
        if (collector.deepest() > deepestNesting) {
            return withoutTags(html);
        }
    }
    htmlParseChunk(parser.get(), nullptr, 0, 1);
    const std::string text = collector.take();
    return shared::isUtf8(text) ? text : shared::toUtf8(text, "UTF-8");
}

std::string htmlCharset(const std::string& html) {
    constexpr std::size_t headSize = 2048;
    constexpr std::string_view key = "charset=";
    const std::string head = base::toLower(std::string_view(html).substr(0, headSize));
    const std::size_t found = head.find(key);
    if (found == std::string::npos) {
        return {};
    }
    const std::size_t start = std::min(head.find_first_not_of("\"' ", found + key.size()), head.size());
    return head.substr(start, head.find_first_of("\"' ;/>\r\n", start) - start);
}

}  // namespace mail
