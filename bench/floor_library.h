// A FloorLibrary is a library file to which the yardstick writes the rows of the index in the cheapest way
// there is: one statement per table, prepared once, and one transaction per document. The yardstick's main
// owns it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

struct sqlite3;
struct sqlite3_stmt;

namespace bench {

/// A statement, prepared for as long as it lives.
class Prepared {
  public:
    Prepared(sqlite3* database, const char* sql);

    /// Binds the values in their order and runs the statement; it must give no rows.
    template <class... Values>
    void run(const Values&... values) {
        int position = 0;
        (bind(++position, values), ...);
        finish();
    }

  private:
    struct Closer {
        void operator()(sqlite3_stmt* statement) const;
    };
    void bind(int position, std::int64_t value);
    void bind(int position, std::string_view value);
    void finish();

    sqlite3* database_;
    std::unique_ptr<sqlite3_stmt, Closer> statement_;
};

/// What the library's first rows say about words.
struct WordRules {
    std::unordered_set<std::string> noise;
    std::map<std::pair<int, std::string>, int> types;  // by component and description

    /// The type of a description in a component: its own, else the component's default one.
    [[nodiscard]] int typeOf(int component, std::string_view description) const;
    /// The type that an important text of the description is recorded under.
    [[nodiscard]] int importantTextType(int component, std::string_view description) const;
};

class FloorLibrary {
  public:
    /// Makes the file, which must not exist.
    explicit FloorLibrary(const std::string& path);

    [[nodiscard]] std::int64_t lastKey() const;

  private:
    struct Closer {
        void operator()(sqlite3* database) const;
    };
    std::unique_ptr<sqlite3, Closer> database_;

  public:
    WordRules rules;
    Prepared begin;
    Prepared commit;
    Prepared document;   // source, saved, title, data type, location, size, time stamp, user
    Prepared relevance;  // value, last usage
    Prepared history;    // relevance key, time stamp, description, value
    Prepared share;      // document, user, relevance key
    Prepared important;  // document, type
    Prepared rootWord;   // word
    Prepared word;       // document, hits, component, type, root word, sentence
    Prepared sentence;   // document, length, text, number
};

}  // namespace bench
