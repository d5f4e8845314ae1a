// NewRootWords keeps the root words that were added outside any transaction until the library is written or
// read anyway. A document brings hundreds of new words, each by a statement of its own; a transaction for
// each would cost more than all of the document's other rows. Every handle owns one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform::sqlite {

class Handle;

class NewRootWords {
  public:
    explicit NewRootWords(Handle& handle) : handle_(handle) {}

    /// Keeps the word when the statement is the service's insert of one, and tells the key that it has from
    /// now on; 0 when the statement has to run as it is. Raises a RuntimeError when the library cannot take
    /// the word.
    std::int32_t keep(std::string_view statement);

    /// Whether the statement asks for the key that was given last, and that is the key of a word kept here.
    [[nodiscard]] bool answers(std::string_view statement, std::int32_t identity) const;

    /// Whether the statement neither reads words nor refers to any, so that they need not be written before
    /// it.
    [[nodiscard]] static bool canWaitFor(std::string_view statement);

    /// Writes the words, in a transaction of its own where none is open. When it raises a RuntimeError they
    /// stay kept.
    void write();

    /// The transaction that the words were written in has ended.
    void committed();
    void rolledBack() { written_ = 0; }

    /// Gives the keys back that no word has got.
    void giveBackKeys();

    [[nodiscard]] bool areWritten();

    /// Whether there are words to write or keys to give back.
    [[nodiscard]] bool isInUse() { return !areWritten() || keys_.next <= keys_.last; }

    /// The tables may have changed: whether words can be kept has to be looked up anew.
    void forgetTables() { canKeep_ = Answer::unknown; }

  private:
    struct Word {
        std::int32_t id = 0;
        std::string text;
    };
    struct Keys {
        std::int32_t next = 1;
        std::int32_t last = 0;
    };
    enum class Answer { unknown, yes, no };

    [[nodiscard]] bool canKeep();
    [[nodiscard]] bool readCanKeep();
    void reserveKeys(std::string_view insert);
    std::int32_t advanceSequence();
    void insertWords();
    void insertRows(std::size_t first, std::size_t count);
    void run(std::string_view statement);

    Handle& handle_;
    std::vector<Word> words_;
    std::size_t written_ = 0;  // of words_, in the open transaction
    std::string insert_;       // reused from statement to statement
    Keys keys_;                // reserved and not yet given to a word
    Answer canKeep_ = Answer::unknown;
};

}  // namespace platform::sqlite
