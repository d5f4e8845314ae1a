#include "tyctl/console.h"

#include <unistd.h>

#include <iostream>

#include "base/text.h"

namespace tyctl {
namespace {

bool isControl(char character) {
    return (character >= '\0' && character < ' ') || character == '\x7f';
}

}  // namespace

std::string onOneLine(std::string_view text) {
    std::string line;
    for (const char character : text) {
        line += isControl(character) ? ' ' : character;
    }
    return line;
}

std::string printablePath(std::string_view path) {
    std::string printed;
    for (const char character : path) {
        if (character == '\n') {
            printed += "\\n";
        } else if (character == '\r') {
            printed += "\\r";
        } else {
            printed += isControl(character) ? '?' : character;
        }
    }
    return printed;
}

std::string counted(std::int64_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string highlighted(std::string_view text, const std::vector<TextRange>& ranges) {
    if (isatty(STDOUT_FILENO) == 0) {
        return std::string(text);
    }
    std::string marked;
    std::size_t position = 0;
    for (const TextRange& range : ranges) {
        marked += text.substr(position, range.begin - position);
        marked += "\x1b[1m";
        marked += text.substr(range.begin, range.end - range.begin);
        marked += "\x1b[0m";
        position = range.end;
    }
    marked += text.substr(position);
    return marked;
}

void note(std::string_view text) {
    std::cerr << "tyctl: " << text << '\n';
}

Progress::Progress() : onTerminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    clear();
}

void Progress::show(const std::string& text) {
    constexpr std::chrono::milliseconds pace{100};
    constexpr std::size_t widest = 78;
    const auto now = std::chrono::steady_clock::now();
    if (!onTerminal_ || now < next_) {
        return;
    }
    next_ = now + pace;
    shown_ = true;
    std::cerr << "\r\x1b[K" << base::left(text, widest) << std::flush;
}

void Progress::clear() {
    if (shown_) {
        std::cerr << "\r\x1b[K" << std::flush;
        shown_ = false;
    }
}

}  // namespace tyctl
