#include "BridgeFixture.h"

#include <chrono>
#include <functional>

using namespace Qt::StringLiterals;

// What the bridge tells the controller while it loads, on which thread, and what it waits for.

namespace
{

class ProgressTest : public BridgeFixture
{
protected:
    ProgressTest()
    {
        addRecord(completeRecord());
        addRecord(completeRecord());
    }
};

TEST_F(ProgressTest, progressIsToldInNumbersOfTheirOwnKinds)
{
    ASSERT_TRUE(load({1, 2}));
    QList<int> types;
    for (const QVariant& number : m_delegate.progressNumbers) {
        types.append(number.typeId());
    }
    EXPECT_EQ(types,
              (QList<int>{QMetaType::Int, QMetaType::Double, QMetaType::UInt, QMetaType::UInt}));
    EXPECT_EQ(m_delegate.progressNumbers, (QVariantList{2, 0.0, 1U, 2U}));
}

TEST_F(ProgressTest, theWarningAndTheQuestionForCancellingComeFromTheWorkerItself)
{
    QThread* worker = nullptr;
    runOnWorker([&] {
        worker = QThread::currentThread();
        EXPECT_TRUE(m_bridge.loadData(photos({1, 2})));
    });
    EXPECT_NE(worker, QThread::currentThread());
    EXPECT_EQ(m_delegate.infoTextThreads, QList<QThread*>{worker});
    EXPECT_EQ(m_delegate.pollThreads, QList<QThread*>(2, worker));
}

/// A call on the main thread, and what shows that the worker is past it.
struct ProgressCall {
    const char* line;
    bool isWaitedFor;
    std::function<bool(const FakeDelegate&)> isFurther;
};

void PrintTo(const ProgressCall& call, std::ostream* stream)
{
    *stream << call.line;
}

class ProgressWaitsTest : public ProgressTest, public testing::WithParamInterface<ProgressCall>
{
};

TEST_P(ProgressWaitsTest, theWorkerWaitsForTheBarsShapeAndNotForItsValue)
{
    using namespace std::chrono_literals;
    const ProgressCall& call = GetParam();
    m_delegate.holdMainThreadAt(
        QString::fromLatin1(call.line),
        [&] { return call.isFurther(m_delegate); },
        call.isWaitedFor ? 100ms : 5000ms);
    ASSERT_TRUE(load({1, 2}));
    EXPECT_EQ(m_delegate.wentOn(), !call.isWaitedFor);
}

/// Whether the worker has asked that often whether it is to stop.
std::function<bool(const FakeDelegate&)> hasPolled(int times)
{
    return [times](const FakeDelegate& delegate) { return delegate.polls() >= times; };
}

std::function<bool(const FakeDelegate&)> hasTold(const QString& start)
{
    return [start](const FakeDelegate& delegate) { return !delegate.linesOf(start).isEmpty(); };
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall,
    ProgressWaitsTest,
    testing::Values(
        ProgressCall{"cfgProgressBarDeterminate", true, hasTold(u"cfgProgressBarMaxValue"_s)},
        ProgressCall{"cfgProgressBarMaxValue 2", true, hasTold(u"cfgProgressBarCurrentValue"_s)},
        ProgressCall{"cfgProgressBarCurrentValue 0", false, hasPolled(1)},
        ProgressCall{"cfgProgressBarCurrentValue 1", false, hasPolled(1)},
        ProgressCall{"cfgProgressBarCurrentValue 2", false, hasPolled(2)}));

} // namespace
