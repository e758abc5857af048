// SPDX-License-Identifier: MIT
// Which elements of a range can be read, asked of a controller that is a function.

#include "panel/scan/element_scan.h"

#include <gmock/gmock.h>

#include <set>

namespace
{

using plc::ReadAnswer;
using plc::Variable;
using testing::ElementsAre;
using testing::IsEmpty;

ReadAnswer refusedWith(int exception)
{
    return {ReadAnswer::Refused, QStringLiteral("exception %1").arg(exception), exception};
}

/// Scans, and keeps what was told as texts.
class Scanned
{
public:
    Scanned(const Variable& range, int most, const plc::ElementScan::Read& read)
        : m_scan(
              [this, read](const Variable& elements) {
                  asked.push_back(elements);
                  return read(elements);
              },
              most, [this](const plc::ScannedRun& run) { add(run); })
    {
        m_scan.scan(range);
    }

    const plc::ElementCounts& counts() const { return m_scan.counts(); }

    std::vector<std::string> runs; // "0-9 given"
    std::vector<Variable> asked;

private:
    void add(const plc::ScannedRun& run)
    {
        const QString words =
            run.answer.kind == ReadAnswer::Given ? QStringLiteral("given") : run.answer.words;
        runs.push_back(QStringLiteral("%1-%2 %3")
                           .arg(run.elements.element)
                           .arg(plc::endOf(run.elements) - 1)
                           .arg(words)
                           .toStdString());
    }

    plc::ElementScan m_scan;
};

bool holds(const Variable& elements, int element)
{
    return elements.element <= element && element < plc::endOf(elements);
}

const Variable hundred{9, 0, 100, 1};

TEST(ElementScan, ReadsWhatIsThereInWholeBlocks)
{
    const Scanned scanned(hundred, 40, [](const Variable&) { return ReadAnswer(); });
    EXPECT_THAT(scanned.runs, ElementsAre("0-99 given"));
    EXPECT_EQ(scanned.counts().reads, 3);
    EXPECT_EQ(scanned.counts().given, 100);
    EXPECT_EQ(scanned.counts().mostAtOnce, 40);
}

TEST(ElementScan, FindsTheEndsOfHoles)
{
    const auto read = [](const Variable& elements) {
        const bool hitsHole = elements.element < 50 && plc::endOf(elements) > 33;
        return hitsHole ? refusedWith(2) : ReadAnswer();
    };
    const Scanned scanned(hundred, 40, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-32 given", "33-49 exception 2", "50-99 given"));
    EXPECT_EQ(scanned.counts().given, 83);
    EXPECT_EQ(scanned.counts().refused, 17);
}

TEST(ElementScan, RefusesNoElementThatWasNotRefusedByItself)
{
    std::set<int> refusedAlone;
    const auto read = [&refusedAlone](const Variable& elements) {
        bool isRefused = false;
        for (const int hole : {3, 17, 18, 64, 99})
            isRefused = isRefused || holds(elements, hole);
        if (isRefused && elements.count == 1)
            refusedAlone.insert(elements.element);
        return isRefused ? refusedWith(2) : ReadAnswer();
    };
    const Scanned scanned(hundred, 125, read);
    EXPECT_EQ(scanned.counts().refused, 5);
    EXPECT_THAT(refusedAlone, ElementsAre(3, 17, 18, 64, 99));
}

TEST(ElementScan, TellsExceptionsApart)
{
    const auto read = [](const Variable& elements) {
        return holds(elements, 10) ? refusedWith(2) : holds(elements, 11) ? refusedWith(4) : ReadAnswer();
    };
    const Scanned scanned(hundred, 40, read);
    EXPECT_THAT(scanned.runs,
                ElementsAre("0-9 given", "10-10 exception 2", "11-11 exception 4", "12-99 given"));
}

TEST(ElementScan, AsksForFewerWhereTheControllerGivesOnlyFewer)
{
    const auto read = [](const Variable& elements) {
        return elements.count > 16 ? refusedWith(3) : ReadAnswer();
    };
    const Scanned scanned({9, 0, 1000, 1}, 125, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-999 given"));
    EXPECT_EQ(scanned.counts().mostAtOnce, 16);
    EXPECT_EQ(scanned.counts().tooMany, 31);
    EXPECT_LT(scanned.counts().reads, 100);
}

TEST(ElementScan, TellsWhatIsGivenInTwoButNotTogether)
{
    const auto read = [](const Variable& elements) {
        return holds(elements, 49) && holds(elements, 50) ? refusedWith(2) : ReadAnswer();
    };
    const Scanned scanned(hundred, 40, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-99 given"));
    EXPECT_EQ(scanned.counts().tooMany, 0);
    ASSERT_EQ(scanned.counts().notTogether.size(), 1u);
    const Variable& apart = scanned.counts().notTogether.front();
    EXPECT_TRUE(holds(apart, 49) && holds(apart, 50));
}

TEST(ElementScan, TakesNoNumberForTooManyOfWhichMoreWereGiven)
{
    int reads = 0;
    const auto read = [&reads](const Variable& elements) { // refuses now and then
        ++reads;
        return elements.element >= 40 && elements.count > 1 && elements.count < 40 ? refusedWith(4)
               : reads == 2                                                        ? refusedWith(4)
                                                                                   : ReadAnswer();
    };
    const Scanned scanned(hundred, 40, read);
    EXPECT_EQ(scanned.counts().mostAtOnce, 40);
    EXPECT_EQ(scanned.counts().tooMany, 0);
    EXPECT_EQ(scanned.counts().given, 100);
}

TEST(ElementScan, AsksNoFurtherWhereTheFunctionIsRefused)
{
    const Scanned scanned(hundred, 40, [](const Variable&) { return refusedWith(1); });
    EXPECT_THAT(scanned.runs, ElementsAre("0-99 exception 1 (three of them were asked for)"));
    EXPECT_EQ(scanned.counts().reads, 4);
}

TEST(ElementScan, GoesOnWhereAnIllegalFunctionIsAboutAddresses)
{
    const auto read = [](const Variable& elements) {
        return elements.element < 20 ? refusedWith(1) : ReadAnswer();
    };
    const Scanned scanned(hundred, 40, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-19 exception 1", "20-99 given"));
}

TEST(ElementScan, EndsWhereTwoRequestsInARowAreNotAnswered)
{
    const auto read = [](const Variable& elements) {
        return elements.element >= 40 ? ReadAnswer{ReadAnswer::Unanswered, QStringLiteral("no reply")}
                                      : ReadAnswer();
    };
    const Scanned scanned(hundred, 20, read);
    EXPECT_THAT(scanned.runs,
                ElementsAre("0-39 given", "40-79 no reply", "80-99 the 2 requests before were not answered"));
    EXPECT_EQ(scanned.counts().unknown, 60);
}

TEST(ElementScan, GoesOnBehindASingleRequestWithoutAnAnswer)
{
    const auto read = [](const Variable& elements) {
        return holds(elements, 25) ? ReadAnswer{ReadAnswer::Unanswered, QStringLiteral("no reply")}
                                   : ReadAnswer();
    };
    const Scanned scanned(hundred, 20, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-19 given", "20-39 no reply", "40-99 given"));
}

TEST(ElementScan, TellsWhatIsKnownWhenItIsEnded)
{
    int reads = 0;
    const auto read = [&reads](const Variable& elements) {
        if (++reads > 3)
            return ReadAnswer{ReadAnswer::Interrupted, QStringLiteral("ended before")};
        return holds(elements, 30) ? refusedWith(2) : ReadAnswer();
    };
    const Scanned scanned(hundred, 20, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-29 given", "30-99 ended before"));
    EXPECT_EQ(reads, 4);
    EXPECT_EQ(scanned.counts().reads, 3);
}

TEST(ElementScan, AsksForNothingWithoutAConnection)
{
    const auto read = [](const Variable&) {
        return ReadAnswer{ReadAnswer::NotConnected, QStringLiteral("no connection")};
    };
    const Scanned scanned(hundred, 20, read);
    EXPECT_THAT(scanned.runs, ElementsAre("0-99 no connection"));
    EXPECT_EQ(scanned.asked.size(), 1u);
}

} // namespace
