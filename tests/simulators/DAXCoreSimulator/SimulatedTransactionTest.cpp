#include "DAXCoreSimulator/SimulatedTransaction.h"

#include <gtest/gtest.h>

#include "support/RecordEquality.h"
#include "support/SampleRecords.h"

using namespace DAX;
using namespace DAX::Tests;
using namespace DAXCoreSimulator;
using Core::TransactionProgress;
using StepName = SimulatedTransaction::StepName;

namespace {

class SimulatedTransactionTest : public testing::Test {
protected:
    SimulatedTransactionTest() {
        m_scenario.search.seconds = 10;
        m_scenario.installation.seconds = 0;
    }

    SimulatedTransaction& transaction() {
        if (!m_transaction) {
            m_transaction.emplace("Proxy-1", m_scenario, [this] { return m_now; });
        }
        return *m_transaction;
    }
    void pass(double seconds) {
        m_now +=
            std::chrono::duration_cast<SimulatedTransaction::Clock::duration>(std::chrono::duration<double>(seconds));
    }
    void expectProgress(StepName step, int result, int percent, boost::optional<float> detail) {
        EXPECT_TRUE(sampleProgress<TransactionProgress>(result, percent, detail) == transaction().progress(step))
            << transaction().progress(step).result << " " << transaction().progress(step).progressPercent;
    }

    Scenario m_scenario;

private:
    SimulatedTransaction::Clock::time_point m_now;
    boost::optional<SimulatedTransaction> m_transaction;
};

TEST_F(SimulatedTransactionTest, HasNoProgressBeforeAStepWasStarted) {
    expectProgress(StepName::SEARCH, Core::TRANSACTION_UNDEFINED, 0, boost::none);
}

TEST_F(SimulatedTransactionTest, IsInProgressForTheTimeOfTheStep) {
    transaction().start(StepName::SEARCH);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_IN_PROGRESS, 0, 0.0F);
    pass(2.5);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_IN_PROGRESS, 25, 2.5F);
    pass(7.25);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_IN_PROGRESS, 97, 9.75F);
}

TEST_F(SimulatedTransactionTest, EndsWithTheTimeOfTheStep) {
    transaction().start(StepName::SEARCH);
    pass(10);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_SUCCESS, 100, 10.0F);
}

TEST_F(SimulatedTransactionTest, EndsAtOnceWhenTheStepTakesNoTime) {
    transaction().start(StepName::INSTALLATION);
    expectProgress(StepName::INSTALLATION, Core::TRANSACTION_SUCCESS, 100, 0.0F);
}

TEST_F(SimulatedTransactionTest, EndsInFailureWhenTheScenarioSaysSo) {
    m_scenario.search.succeeds = false;
    transaction().start(StepName::SEARCH);
    pass(11);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_FAILED, 100, 10.0F);
}

TEST_F(SimulatedTransactionTest, BeginsAStepAnewWhenItIsStartedAgain) {
    transaction().start(StepName::SEARCH);
    pass(10);
    transaction().start(StepName::SEARCH);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_IN_PROGRESS, 0, 0.0F);
}

TEST_F(SimulatedTransactionTest, KeepsItsStepsApart) {
    transaction().start(StepName::INSTALLATION);
    expectProgress(StepName::SEARCH, Core::TRANSACTION_UNDEFINED, 0, boost::none);
    expectProgress(StepName::FINALIZATION, Core::TRANSACTION_UNDEFINED, 0, boost::none);
}

TEST_F(SimulatedTransactionTest, TellsWhatWasFoundOnceTheSearchHasSucceeded) {
    m_scenario.found = sampleSearchResult();
    Core::SearchResult pending;
    pending.result = Core::TRANSACTION_IN_PROGRESS;
    transaction().start(StepName::SEARCH);
    EXPECT_TRUE(pending == transaction().searchResult());
    pass(10);
    EXPECT_TRUE(sampleSearchResult() == transaction().searchResult());
}

TEST_F(SimulatedTransactionTest, FindsNothingWhenTheSearchFails) {
    m_scenario.search.succeeds = false;
    transaction().start(StepName::SEARCH);
    pass(10);
    Core::SearchResult nothing;
    nothing.result = Core::TRANSACTION_FAILED;
    EXPECT_TRUE(nothing == transaction().searchResult());
}

TEST_F(SimulatedTransactionTest, BelongsToTheConnectionThatSaidHelloLast) {
    EXPECT_FALSE(transaction().isOwnedBy(":1.1"));
    EXPECT_FALSE(transaction().isOwnedBy(""));
    transaction().bind(":1.1");
    EXPECT_TRUE(transaction().isOwnedBy(":1.1"));
    transaction().bind(":1.2");
    EXPECT_FALSE(transaction().isOwnedBy(":1.1"));
}

} // namespace
