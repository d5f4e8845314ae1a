// What a look at the queue costs the database, told in the steps of its machine.
#include <sqlite3.h>

#include "unit/app/window_fixture.h"

namespace {

/// Counts the steps of every statement on the connections that are opened while it lives.
class StepCounter {
  public:
    StepCounter() {
        steps = 0;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch));
    }
    StepCounter(const StepCounter&) = delete;
    StepCounter& operator=(const StepCounter&) = delete;
    ~StepCounter() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(watch)); }

    static std::int64_t taken() { return std::exchange(steps, 0); }

  private:
    static int watch(sqlite3* database, const char** /*error*/, const sqlite3_api_routines* /*routines*/) {
        return sqlite3_trace_v2(database, SQLITE_TRACE_PROFILE, count, nullptr);
    }
    static int count(unsigned /*event*/, void* /*context*/, void* statement, void* /*time*/) {
        steps += sqlite3_stmt_status(static_cast<sqlite3_stmt*>(statement), SQLITE_STMTSTATUS_VM_STEP, 1);
        return 0;
    }

    static inline std::int64_t steps = 0;
};

class PollingCost : public Window {
  protected:
    PollingCost() {
        job = [this](std::int32_t id) {
            library.run("DELETE FROM file_index_queue WHERE id = " + std::to_string(id));
            return true;
        };
    }

    void queueMany(int entries) const {
        library.run("WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i + 1 FROM n WHERE i < " +
                    std::to_string(entries) +
                    ") INSERT INTO file_index_queue (doc_path, index_type, data_type, user_id) SELECT "
                    "printf('/documents/%08d.txt', i), 2, 'txt', 7 FROM n");
    }

    /// Steps of a tick that claims an entry and whose job takes it out of the queue.
    std::int64_t stepsOfATick() {
        counter.taken();
        tick();
        return counter.taken();
    }

    StepCounter counter;
};

// The toolkit has no part in what a look at the queue costs.
INSTANTIATE_TEST_SUITE_P(Toolkits, PollingCost, testing::Values(headlessToolkit), toolkitName);

TEST_P(PollingCost, IsThatOfTenEntriesWithAMillion) {
    queueMany(10);
    start();
    tick();  // the first one also drops what an earlier run had claimed
    const std::int64_t ofTen = stepsOfATick();
    EXPECT_GT(ofTen, 10);
    queueMany(1000000);
    EXPECT_EQ(stepsOfATick(), ofTen);
    EXPECT_EQ(stepsOfATick(), ofTen);
    EXPECT_EQ(jobs.size(), 4U);
}

TEST_P(PollingCost, OfTheFirstLookIsThatOfTheEntriesToBeDroppedAlone) {
    library.queue(1, true);
    queueMany(10);
    start();
    const std::int64_t ofTen = stepsOfATick();
    window.reset();
    library.queue(1, true);
    queueMany(100000);
    start();
    EXPECT_EQ(stepsOfATick(), ofTen);
}

}  // namespace
