#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "sdk/extractor.h"
#include "sdk/plugin_server.h"

namespace sdk {
namespace {

/// Shell habit: the status of a program that was called in a wrong way.
constexpr int wrongUse = 2;

void check(bool succeeded, const char* what) {
    if (!succeeded) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    }
}

/// The two ends of the protocol, moved away from the standard streams.
struct Channel {
    int in;
    int out;
};

/// Takes the protocol's streams for itself: what anybody prints to standard output goes to standard error
/// from here on, and whoever reads standard input finds its end.
Channel takeStandardStreams() {
    constexpr int firstFree = 3;
    const Channel channel{fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, firstFree),
                          fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, firstFree)};
    check(channel.in >= 0 && channel.out >= 0, "cannot keep the standard streams");
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    check(nothing >= 0, "cannot open /dev/null");
    check(dup2(nothing, STDIN_FILENO) >= 0, "cannot replace standard input");
    check(dup2(STDERR_FILENO, STDOUT_FILENO) >= 0, "cannot replace standard output");
    close(nothing);
    return channel;
}

/// Reads lines from a file descriptor.
class LineReader {
  public:
    explicit LineReader(int file) : file_(file) {}

    /// False at the end of the input.
    bool next(std::string& line) {
        std::size_t searched = 0;
        for (;;) {
            const std::size_t end = buffer_.find('\n', searched);
            if (end != std::string::npos) {
                line.assign(buffer_, 0, end);
                buffer_.erase(0, end + 1);
                return true;
            }
            searched = buffer_.size();
            if (!fill()) {
                return false;
            }
        }
    }

  private:
    bool fill() {
        std::array<char, 65536> block;  // filled by the system
        for (;;) {
            const ssize_t count = read(file_, block.data(), block.size());
            if (count > 0) {
                buffer_.append(block.data(), static_cast<std::size_t>(count));
                return true;
            }
            if (count == 0) {
                return false;
            }
            check(errno == EINTR, "cannot read from the service");
        }
    }

    int file_;
    std::string buffer_;
};

void writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else {
            check(errno == EINTR, "cannot write to the service");
        }
    }
}

std::string_view fileName(std::string_view path) {
    return path.substr(path.find_last_of('/') + 1);
}

int explain(std::FILE* stream, std::string_view program, int status) {
    std::fprintf(stream,
                 "%.*s " TYINDEXER_VERSION
                 " is an extraction plug-in: tyindexer starts it and talks to it on standard input.\n",
                 static_cast<int>(program.size()), program.data());
    return status;
}

}  // namespace

int runPlugin(int argc, char** argv, const ExtractorFactory& factory) {
    const std::string_view program = argc > 0 ? fileName(argv[0]) : "plug-in";
    if (argc > 1) {
        const std::string_view option = argv[1];
        const bool known = option == "--help" || option == "--version";
        return known ? explain(stdout, program, 0) : explain(stderr, program, wrongUse);
    }
    if (isatty(STDIN_FILENO) == 1) {
        return explain(stderr, program, wrongUse);
    }
    try {
        const Channel channel = takeStandardStreams();
        PluginServer server(factory);
        LineReader lines(channel.in);
        std::string line;
        while (lines.next(line)) {
            writeAll(channel.out, server.answer(line));
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%.*s: %s\n", static_cast<int>(program.size()), program.data(), error.what());
        return 1;
    }
}

}  // namespace sdk
