// A SentenceCollector cuts running text into the sentences of a document. The reader of a format adds text as
// it comes and says where a paragraph, a heading or a list item ends; the collector finds the sentences
// between. No character but white space is lost, however long the text is.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace shared {

class SentenceCollector {
  public:
    /// No sentence that is cut from the text has more bytes than this; longer ones are cut at a blank.
    static constexpr std::size_t longestSentence = 32000;

    /// At most `most` sentences come out: where there are more, neighbours are joined.
    explicit SentenceCollector(std::size_t most);
    SentenceCollector(const SentenceCollector&) = delete;
    SentenceCollector& operator=(const SentenceCollector&) = delete;
    ~SentenceCollector();

    /// Adds UTF-8 text to the paragraph. Runs of white space, line breaks among it, count as one blank.
    void add(std::string_view text);

    /// Ends the paragraph and the sentence in it.
    void endParagraph();

    /// The sentences that have ended since the last call, for a reader of a text that cannot have more than
    /// `most`: what has been taken is not joined.
    std::vector<std::string> takeEnded() { return std::exchange(sentences_, {}); }
    [[nodiscard]] std::size_t ended() const { return sentences_.size(); }

    /// What was collected, each sentence trimmed and none empty. The collector is empty afterwards.
    std::vector<std::string> take();

  private:
    class Breaker;

    void cutSentences(bool paragraphEnds);
    void emit(std::string_view sentence);
    void push(std::string_view sentence);
    void joinPairs();

    std::unique_ptr<Breaker> breaker_;
    std::size_t most_;
    std::string paragraph_;
    std::vector<std::string> sentences_;
    std::size_t perEntry_ = 1;  // how many sentences are joined in one entry
    std::size_t inLast_ = 0;    // how many the last entry holds
};

/// Adds a plain text: empty lines end paragraphs, list items and ruled lines end sentences.
void addPlainText(SentenceCollector& collector, std::string_view text);

/// Adds the lines of a plain text, which it takes off, until at least `enough` sentences have ended or all is
/// added. Many such pieces of a text make what addPlainText makes.
void addLines(SentenceCollector& collector, std::string_view& text, std::size_t enough);

/// Runs of white space become one blank, the ends are trimmed.
std::string foldWhiteSpace(std::string_view text);

/// The next line of `text` without its end, which is taken off with it.
std::string_view takeLine(std::string_view& text);

/// The length of a list item's marker with the blanks around it ("- ", " * ", "12. "); 0 where there is none.
std::size_t listMarkerLength(std::string_view line);

}  // namespace shared
