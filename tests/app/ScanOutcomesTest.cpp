#include "ScanOutcomes.h"

#include "ControllerFixture.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using Kind = PhotoOutcome::Kind;

namespace
{

/// What the controller tells is remembered.
class ScanOutcomesTest : public ControllerFixture
{
protected:
    void SetUp() override
    {
        wake();
        m_outcomes = std::make_unique<ScanOutcomes>(*m_controller);
        PhotoOutcome first;
        first.photoId = 3;
        PhotoOutcome second;
        second.photoId = 7;
        second.selectionIndex = 1;
        emit m_controller->selectionTaken({first, second});
    }

    void finish(int selectionIndex, Kind kind)
    {
        PhotoOutcome outcome;
        outcome.selectionIndex = selectionIndex;
        outcome.kind = kind;
        emit m_controller->photoDone(outcome);
    }

    [[nodiscard]] QList<Kind> kinds() const
    {
        QList<Kind> kinds;
        for (const PhotoOutcome& outcome : m_outcomes->photos()) {
            kinds += outcome.kind;
        }
        return kinds;
    }

    std::unique_ptr<ScanOutcomes> m_outcomes;
};

} // namespace

TEST_F(ScanOutcomesTest, aPhotoWithoutATurnWasNotReached)
{
    finish(1, Kind::Failed);
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::NotReached, Kind::Failed}));
    finish(0, Kind::Converted);
    EXPECT_EQ(kinds(), (QList<Kind>{Kind::Converted, Kind::Failed}));
}

TEST_F(ScanOutcomesTest, aScanThatTakesNoPhotosLeavesNothingOfTheOneBefore)
{
    finish(0, Kind::Failed);
    emit m_controller->scanStarted();
    EXPECT_EQ(kinds(), QList<Kind>());
    finish(1, Kind::Failed);
    EXPECT_EQ(kinds(), QList<Kind>()) << "of photos that were not taken";
}
