// What tyctl prints: rows for people, safe on a terminal, and a progress line that only a terminal gets.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "tyctl/search_terms.h"

namespace tyctl {

/// The text on one line: control characters become blanks or, in a path, escapes such as "\n".
std::string onOneLine(std::string_view text);
std::string printablePath(std::string_view path);

/// "1 document", "2 documents".
std::string counted(std::int64_t count, std::string_view noun);

/// The text with the ranges in bold when the output is a terminal.
std::string highlighted(std::string_view text, const std::vector<TextRange>& ranges);

/// Writes a note to standard error, as "tyctl: text".
void note(std::string_view text);

/// One line on standard error that is written over again; nothing when that is no terminal.
class Progress {
  public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void show(const std::string& text);
    /// Takes the line away, so that something else can be printed.
    void clear();

  private:
    bool onTerminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace tyctl
