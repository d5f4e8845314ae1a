// Root words are kept back until the library is written or read anyway. Nobody may notice but by the speed.
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include <filesystem>

#include "unit/platform/sqlite/library_fixture.h"

namespace {

class NewRootWordsTest : public LibraryTest {
  protected:
    int add(platform::Connection& to, const std::string& word) {
        to.execute("INSERT INTO root_word ( word ) VALUES( '" + word + "')");
        auto key = engine_.createRecordset();
        key->open("SELECT @@IDENTITY AS id_root_word FROM root_word", to, platform::CursorType::fixed,
                  platform::LockType::optimistic);
        return key->field("id_root_word").toInt32();
    }
    int add(const std::string& word) { return add(connection(), word); }

    /// The words as another program finds them, with their keys.
    std::vector<std::string> seen() {
        platform::SqliteEngine other{{std::chrono::milliseconds(50), 2048}};
        const auto looking = other.open({path(), {}, {}, {}});
        std::vector<std::string> found;
        for (const auto rows = looking->query("SELECT id, word FROM root_word ORDER BY id"); !rows->eof();
             rows->moveNext()) {
            found.push_back(rows->field("id").toText() + " " + rows->field("word").toText());
        }
        return found;
    }

    void exec(const std::string& statement) {
        platform::SqliteEngine other{{std::chrono::milliseconds(50), 2048}};
        other.open({path(), {}, {}, {}})->execute(statement);
    }

    using Seen = std::vector<std::string>;
};

TEST_F(NewRootWordsTest, AreTakenIntoTheLibraryByTheNextTransaction) {
    EXPECT_EQ(add("river"), 1);
    EXPECT_EQ(add("boat"), 2);
    EXPECT_EQ(seen(), Seen{});
    connection().beginTrans();
    connection().commitTrans();
    EXPECT_EQ(seen(), (Seen{"1 river", "2 boat"}));
    EXPECT_EQ(add("pier"), 3);
}

TEST_F(NewRootWordsTest, AreThereForEveryOtherStatementOfTheConnection) {
    add("river");
    EXPECT_EQ(texts("SELECT word FROM root_word", "word"), Seen{"river"});
    add("boat");
    run("UPDATE root_word SET word = 'ship' WHERE word = 'boat'");
    EXPECT_EQ(seen(), (Seen{"1 river", "2 ship"}));
    add("pier");
    run("INSERT INTO root_word (word) VALUES ('quay')");
    EXPECT_EQ(value("SELECT @@IDENTITY AS id FROM root_word", "id").toInt32(), 257);
    EXPECT_EQ(seen(), (Seen{"1 river", "2 ship", "3 pier", "257 quay"}));
}

TEST_F(NewRootWordsTest, WaitForAStatementThatHasNothingToDoWithWords) {
    add("river");
    run("INSERT INTO important_text (id_document, type) SELECT 1, search_weight.type FROM search_weight");
    EXPECT_EQ(seen(), Seen{});
    EXPECT_EQ(add("boat"), 2);
    connection().beginTrans();
    connection().commitTrans();
    EXPECT_EQ(seen(), (Seen{"1 river", "2 boat"}));
}

TEST_F(NewRootWordsTest, AreWrittenWhenTheConnectionClosesOrEnds) {
    add("river");
    connection().close();
    EXPECT_EQ(seen(), Seen{"1 river"});
    connection_.reset();
    add("boat");
    connection_.reset();
    EXPECT_EQ(seen(), (Seen{"1 river", "2 boat"}));
}

TEST_F(NewRootWordsTest, SurviveTheRollbackOfTheTransactionThatTookThem) {
    add("river");
    connection().beginTrans();
    run("INSERT INTO prv (last_prv) VALUES (1)");
    connection().rollbackTrans();
    EXPECT_EQ(add("boat"), 2);
    connection().beginTrans();
    connection_.reset();
    EXPECT_EQ(seen(), (Seen{"1 river", "2 boat"}));
    EXPECT_TRUE(texts("SELECT id FROM prv", "id").empty());
}

TEST_F(NewRootWordsTest, GetKeysThatNoOtherProgramGets) {
    add("river");
    exec("INSERT INTO root_word (word) VALUES ('boat')");
    EXPECT_EQ(add("pier"), 2);
    EXPECT_EQ(texts("SELECT word FROM root_word ORDER BY id", "word"), (Seen{"river", "pier", "boat"}));
    EXPECT_EQ(add("quay"), 3);
}

TEST_F(NewRootWordsTest, GetAsManyKeysAsThereAreWords) {
    for (int i = 1; i <= 600; ++i) {
        ASSERT_EQ(add("word" + std::to_string(i)), i);
    }
    EXPECT_EQ(texts("SELECT id FROM root_word", "id").size(), 600U);
    exec("INSERT INTO root_word (word) VALUES ('river')");
    EXPECT_EQ(seen().back(), "769 river");
}

TEST_F(NewRootWordsTest, LeaveTheKeysThatTheyDidNotNeedToOthers) {
    {
        platform::SqliteEngine other;
        add(*other.open({path(), {}, {}, {}}), "river");
    }
    EXPECT_EQ(add("boat"), 2);
}

TEST_F(NewRootWordsTest, NeverGetAKeyThatADeletedWordHad) {
    run("INSERT INTO root_word (id, word) VALUES (40, 'river')");
    run("DELETE * FROM root_word WHERE id = 40");
    EXPECT_EQ(add("boat"), 41);
}

TEST_F(NewRootWordsTest, GetTheirKeyOfALibraryWhoseKeysWereNeverCounted) {
    run("INSERT INTO root_word (id, word) VALUES (7, 'river')");
    run("DELETE FROM sqlite_sequence");
    EXPECT_EQ(add("boat"), 8);
    EXPECT_EQ(texts("SELECT id FROM root_word", "id"), (Seen{"7", "8"}));
}

TEST_F(NewRootWordsTest, RaiseWhereTheirInsertWouldHaveRaised) {
    const auto other = connect();
    other->beginTrans();
    EXPECT_NE(errorOf([this] { add("river"); }).find("locked"), std::string::npos);
    other->rollbackTrans();
    EXPECT_EQ(add("river"), 1);
    std::filesystem::rename(path(), folder_ / "away.db");
    EXPECT_NE(errorOf([this] { add("boat"); }).find("does not exist"), std::string::npos);
    std::filesystem::rename(folder_ / "away.db", path());
    EXPECT_EQ(add("boat"), 2);
    EXPECT_EQ(texts("SELECT word FROM root_word ORDER BY id", "word"), (Seen{"river", "boat"}));
}

TEST_F(NewRootWordsTest, AreNotLostToALockThatOutlastsTheConnection) {
    add("river");
    platform::SqliteEngine other{{std::chrono::milliseconds(50), 2048}};
    const auto holder = other.open({path(), {}, {}, {}});
    holder->beginTrans();
    EXPECT_FALSE(errorOf([this] { connection().beginTrans(); }).empty());
    EXPECT_FALSE(errorOf([this] { openFixed("SELECT id FROM root_word"); }).empty());
    connection_.reset();
    holder->rollbackTrans();
    EXPECT_EQ(texts("SELECT word FROM root_word", "word"), Seen{"river"});
}

TEST_F(NewRootWordsTest, AreWrittenOneByOneWhereATriggerMayRefuseThem) {
    exec("CREATE TRIGGER refuse BEFORE INSERT ON root_word BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_NE(errorOf([this] { add("river"); }).find("refused"), std::string::npos);
    exec("DROP TRIGGER refuse");
    EXPECT_EQ(add("river"), 1);
    EXPECT_EQ(seen(), Seen{"1 river"});
}

TEST_F(NewRootWordsTest, AreWrittenOneByOneWhereAWordMayStandOnlyOnce) {
    exec("CREATE UNIQUE INDEX once ON root_word (word)");
    add("river");
    EXPECT_FALSE(errorOf([this] { add("river"); }).empty());
}

TEST_F(NewRootWordsTest, AreWrittenOneByOneWhereAnotherProgramChecksThem) {
    exec(
        "ALTER TABLE root_word ADD COLUMN language TEXT DEFAULT 'en' CHECK (length(language) = 2 AND "
        "length(word) < 6)");
    EXPECT_EQ(add("river"), 1);
    EXPECT_EQ(seen(), Seen{"1 river"});
    EXPECT_NE(errorOf([this] { add("lantern"); }).find("CHECK"), std::string::npos);
    EXPECT_EQ(add("boat"), 2);
    EXPECT_EQ(seen(), (Seen{"1 river", "2 boat"}));
}

TEST_F(NewRootWordsTest, AreRefusedAtOnceWhereAFurtherColumnMustNotBeNull) {
    exec("DROP TABLE root_word");
    exec("CREATE TABLE root_word (id INTEGER PRIMARY KEY AUTOINCREMENT, word TEXT, language TEXT NOT NULL)");
    EXPECT_NE(errorOf([this] { add("river"); }).find("NOT NULL"), std::string::npos);
    exec("DROP TABLE root_word");
    exec(
        "CREATE TABLE root_word (id INTEGER PRIMARY KEY AUTOINCREMENT, word TEXT NOT NULL, language TEXT NOT "
        "NULL DEFAULT 'en')");
    connection_.reset();
    EXPECT_EQ(add("river"), 1);
    EXPECT_EQ(seen(), Seen{});
}

TEST_F(NewRootWordsTest, AreKeptWhenTheirWritingFailsAndWrittenOnceItSucceeds) {
    add("river");
    exec("CREATE TRIGGER refuse BEFORE INSERT ON root_word BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_NE(errorOf([this] { connection().beginTrans(); }).find("refused"), std::string::npos);
    EXPECT_NE(errorOf([this] { run("UPDATE prv SET last_prv = 1"); }).find("refused"), std::string::npos);
    exec("DROP TRIGGER refuse");
    connection().beginTrans();
    connection().commitTrans();
    EXPECT_EQ(seen(), Seen{"1 river"});
}

TEST_F(NewRootWordsTest, AreWrittenAfterATransactionThatRanOutOfSpace) {
    run("PRAGMA max_page_count = 1");  // as many as there are
    const int key = add("river");
    connection().beginTrans();
    EXPECT_NE(errorOf([this] {
                  run("INSERT INTO ascii_sentences (id_document_object, content) VALUES (1, '" +
                      std::string(200000, 'x') + "')");
              }).find("full"),
              std::string::npos);
    connection().beginTrans();  // SQLite has rolled the first one back by itself
    connection().commitTrans();
    EXPECT_EQ(seen(), Seen{std::to_string(key) + " river"});
}

/// While it lives, no file can be made larger than the file at a path is now.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(const std::string& path) : formerHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former_);
        rlimit limit = former_;
        limit.rlim_cur = std::filesystem::file_size(path);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, formerHandler_);
    }

  private:
    rlimit former_{};
    void (*formerHandler_)(int);
};

TEST_F(NewRootWordsTest, OutliveAConnectionWhoseWritesTheSystemRefused) {
    add("river");
    {
        const FileSizeLimit limit(path() + "-wal");
        EXPECT_FALSE(errorOf([this] {
                         connection().beginTrans();
                         connection().commitTrans();
                     }).empty());
        connection_.reset();
    }
    EXPECT_EQ(texts("SELECT word FROM root_word", "word"), Seen{"river"});
}

/// While it lives, one read of a whole page from any file fails, and no other.
class OneFailingRead {
  public:
    OneFailingRead() {
        left_ = 1;
        for (const char* name : names) {
            vfs()->xSetSystemCall(vfs(), name, reinterpret_cast<sqlite3_syscall_ptr>(&read));
        }
    }
    OneFailingRead(const OneFailingRead&) = delete;
    OneFailingRead& operator=(const OneFailingRead&) = delete;
    ~OneFailingRead() {
        for (const char* name : names) {
            vfs()->xSetSystemCall(vfs(), name, nullptr);
        }
    }
    [[nodiscard]] static bool hasFailed() { return left_ == 0; }

  private:
    static constexpr std::array names{"pread", "pread64"};

    static sqlite3_vfs* vfs() { return sqlite3_vfs_find(nullptr); }

    static ssize_t read(int file, void* room, std::size_t size, off_t offset) {
        constexpr std::size_t headerSize = 100;
        if (size > headerSize && left_ > 0) {
            --left_;
            errno = ETIMEDOUT;  // as of a network file system; SQLite takes EIO for damage
            return -1;
        }
        return ::pread(file, room, size, offset);
    }

    static inline int left_ = 0;
};

TEST_F(NewRootWordsTest, AreWrittenWhenTheHandleIsGivenUpAfterAReadThatFailed) {
    add("river");
    platform::SqliteEngine other{{std::chrono::milliseconds(50), 2048}};
    const auto holder = other.open({path(), {}, {}, {}});
    holder->beginTrans();
    connection_.reset();                                       // the word stays with the handle
    holder->execute("INSERT INTO prv (last_prv) VALUES (1)");  // what the handle has read is out of date
    holder->commitTrans();
    {
        const OneFailingRead failing;
        static_cast<void>(connection());
        EXPECT_TRUE(failing.hasFailed());
    }
    EXPECT_EQ(texts("SELECT word FROM root_word", "word"), Seen{"river"});
}

/// A process that indexes documents and ends without a word at one of its statements.
class KilledNewRootWords : public NewRootWordsTest {
  protected:
    void indexDocuments(platform::SqliteEngine& engine) {
        const auto job = engine.open({path(), {}, {}, {}});
        for (int document = 1; document <= 4; ++document) {
            std::vector<int> keys;
            for (int word = 0; word < 5; ++word) {
                keys.push_back(add(*job, "d" + std::to_string(document) + "w" + std::to_string(word)));
            }
            job->beginTrans();
            for (const int key : keys) {
                job->execute(
                    "INSERT INTO word_index ( id_document_object, hit_count, comp_type, type, id_root_word, "
                    "first_matching_sentence ) VALUES( " +
                    std::to_string(document) + ", 1 , 2, 1, " + std::to_string(key) + ", 1 )");
            }
            job->commitTrans();
        }
    }

    /// Runs that in a process of its own up to the numbered statement.
    void indexUpTo(int statement) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            platform::SqliteEngine engine;
            engine.setTrace([&statement](std::string_view) {
                if (--statement == 0) {
                    ::_exit(0);
                }
            });
            indexDocuments(engine);
            ::_exit(1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "statement " << statement;
    }
};

TEST_F(KilledNewRootWords, NeverLeaveAHitWithoutItsWord) {
    constexpr int statementsOfADocument = 5 * 2 + 1 + 5 + 1;
    for (int kill = 1; kill <= 50; ++kill) {
        indexUpTo(kill);
        const int documents = (kill - 1) / statementsOfADocument;
        EXPECT_EQ(texts("PRAGMA integrity_check", "integrity_check"), Seen{"ok"});
        EXPECT_EQ(texts("SELECT id_root_word FROM word_index", "id_root_word").size(), 5U * documents)
            << kill;
        EXPECT_TRUE(texts("SELECT id_root_word FROM word_index WHERE id_root_word NOT IN (SELECT id FROM "
                          "root_word)",
                          "id_root_word")
                        .empty())
            << kill;
        EXPECT_EQ(texts("SELECT DISTINCT word FROM root_word", "word").size(), 5U * documents) << kill;
        run("DELETE * FROM word_index WHERE id_document_object > 0");
        run("DELETE * FROM root_word WHERE id > 0");
        connection_.reset();
    }
}

}  // namespace
