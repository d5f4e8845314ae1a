// Steady-state speeds of the two inner loops: words out of sentences that are known already, and statements
// whose shape is known already.
#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "indexer/Indexer.h"
#include "indexer/NormaliseText.h"
#include "infra/Services.h"
#include "infra/tysDataBase.h"
#include "platform/automation.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/jet/lexer.h"
#include "platform/posix/no_drives.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_process.h"
#include "platform/posix/settings_file.h"
#include "platform/posix/signal_waiter.h"
#include "platform/posix/system_clock.h"
#include "platform/sqlite/handle.h"
#include "platform/sqlite/library_schema.h"
#include "platform/sqlite/sqlite_engine.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int32_t wordsPerSentence = 20;
constexpr std::int32_t sentencesPerDocument = 250;

/// A folder of its own for a library and its settings.
class Folder {
  public:
    Folder() : path_(fs::temp_directory_path() / ("tyindexer-benchmark-" + std::to_string(::getpid()))) {
        fs::create_directory(path_);
        platform::createLibrary(library());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(path_); }

    [[nodiscard]] std::string library() const { return (path_ / "library.db").string(); }
    [[nodiscard]] std::string settings() const { return (path_ / "settings.db").string(); }

  private:
    fs::path path_;
};

/// A text of made-up words: few that come often and many that come rarely, as in any language.
class TextMaker {
  public:
    std::string sentence() {
        std::string text;
        for (int i = 0; i < wordsPerSentence; ++i) {
            text += word() + (i % 7 == 6 ? ", " : " ");
        }
        text.back() = '.';
        return text;
    }

  private:
    std::string word() {
        const double draw = static_cast<double>(next() % 100000 + 1) / 100000.0;
        auto rank = static_cast<std::uint32_t>(3.0 / (draw * draw));
        std::string text;
        do {
            text += "bdfgklmnprstvz"[rank % 14];
            text += "aeiou"[rank / 14 % 5];
            rank /= 70;
        } while (rank > 0);
        return text + (next() % 9 == 0 ? "'s" : "n");
    }

    /// The minimal standard generator: the same text in every run.
    std::uint32_t next() {
        state_ = state_ * 48271 % 2147483647;
        return static_cast<std::uint32_t>(state_);
    }

    std::uint64_t state_ = 20021105;
};

const std::vector<std::string>& document() {
    static const std::vector<std::string> sentences = [] {
        TextMaker maker;
        std::vector<std::string> made;
        made.reserve(sentencesPerDocument);
        for (int i = 0; i < sentencesPerDocument; ++i) {
            made.push_back(maker.sentence());
        }
        return made;
    }();
    return sentences;
}

std::int64_t countWords(const benchmark::State& state) {
    return static_cast<std::int64_t>(state.iterations()) * sentencesPerDocument * wordsPerSentence;
}

class NoAutomation : public platform::AutomationFactory {
  public:
    std::unique_ptr<platform::AutomationObject> create(std::string_view progId) override {
        throw base::RuntimeError(base::ErrorNumber::cannotCreateObject, std::string(progId));
    }
};

/// An indexer with an open library.
class Bench {
  public:
    Bench() {
        services_.registry.SaveSettingString(platform::RootKey::currentUser, infra::serviceKey,
                                             "DataBasePath", folder_.library());
        database_.initialise();
        indexer_.LoadCaches(database_);
    }

    void indexDocument() {
        std::int16_t number = 0;
        for (const std::string& sentence : document()) {
            indexer_.indexSentence(sentence, 1, ++number, indexer::bodyComponent, "", true, database_);
        }
        indexer_.ForgetPending();
    }

  private:
    Folder folder_;
    platform::posix::SettingsFile settings_{folder_.settings()};
    platform::posix::PosixProcess process_;
    platform::posix::PosixFiles files_;
    platform::posix::NoDrives drives_;
    platform::posix::SystemClock clock_;
    platform::SqliteEngine engine_;
    NoAutomation automation_;
    platform::posix::SignalWaiter waiter_;
    platform::headless::HeadlessToolkit toolkit_{waiter_};
    infra::Services services_{
        platform::System{settings_, engine_, automation_, toolkit_, files_, process_, drives_, clock_}};
    infra::tysDataBase database_{services_};
    indexer::Indexer indexer_{services_};
};

void normaliseText(benchmark::State& state) {
    std::string words;
    for (auto _ : state) {
        for (const std::string& sentence : document()) {
            indexer::NormaliseText(sentence, words);
            benchmark::DoNotOptimize(words.data());
        }
    }
    state.SetItemsProcessed(countWords(state));
    state.SetLabel("words");
}
BENCHMARK(normaliseText);

void indexSentence(benchmark::State& state) {
    Bench bench;
    bench.indexDocument();  // every word is known from here on
    for (auto _ : state) {
        bench.indexDocument();
    }
    state.SetItemsProcessed(countWords(state));
    state.SetLabel("words");
}
BENCHMARK(indexSentence);

/// What is kept of the settings beside a document: reads and writes of values that mostly do not change.
void settings(benchmark::State& state) {
    const Folder folder;
    platform::posix::SettingsFile store(folder.settings());
    platform::posix::PosixFiles files;
    infra::tysRegistry registry(store, files, [](const std::string&, infra::LogLevel) {});
    constexpr auto root = platform::RootKey::currentUser;
    registry.SaveSettingString(root, infra::indexerKey, "LastTouch", "16 Nov 2026 01:47:03");
    std::int32_t number = 0;
    for (auto _ : state) {
        if (state.range(0) == 0) {
            benchmark::DoNotOptimize(registry.GetSettingString(root, infra::indexerKey, "LastTouch"));
        } else if (state.range(0) == 1) {
            registry.SaveSettingString(root, infra::indexerKey, "LastTouch", "16 Nov 2026 01:47:03");
        } else {
            registry.SaveSettingLong(root, infra::indexerKey, "IndexingQueueNumber", ++number);
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
    constexpr std::array labels = {"reads", "writes of what is there", "writes of what is new"};
    state.SetLabel(labels.at(static_cast<std::size_t>(state.range(0))));
}
BENCHMARK(settings)->DenseRange(0, 2);

std::string wordStatement(std::int64_t number) {
    return "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
           "first_matching_sentence ) VALUES( 17, " +
           std::to_string(number % 90) + " , 2, 1, " + std::to_string(number % 70000) + ", " +
           std::to_string(number % 300) + " )";
}

void makeStatement(benchmark::State& state) {
    std::int64_t number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(wordStatement(++number));
    }
    state.SetItemsProcessed(number);
    state.SetLabel("statements");
}
BENCHMARK(makeStatement);

void lexStatement(benchmark::State& state) {
    platform::jet::LexedStatement lexed;
    const std::string statement = wordStatement(123456);
    for (auto _ : state) {
        lexed.read(statement);
        benchmark::DoNotOptimize(lexed.shape().data());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
    state.SetLabel("statements");
}
BENCHMARK(lexStatement);

/// Lexing, finding the shape and binding, without running.
void prepareKnownShape(benchmark::State& state) {
    const Folder folder;
    std::atomic<std::size_t> prepared = 0;
    platform::sqlite::Checkpointer checkpointer;
    platform::sqlite::Handle handle(folder.library(), {}, prepared, checkpointer);
    const std::string statement = wordStatement(123456);
    for (auto _ : state) {
        benchmark::DoNotOptimize(handle.prepare(statement, 0, platform::sqlite::Texts::stay));
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
    state.SetLabel("statements");
}
BENCHMARK(prepareKnownShape);

}  // namespace

BENCHMARK_MAIN();
