#include "LibraryLookup.h"

#include "LibraryCreator.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <future>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{

class LibraryLookupTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(path(u"Pictures"_s));
        ASSERT_TRUE(LibraryCreator::create(path(u"Pictures/A.photolibrary"_s)).ok());
        ASSERT_TRUE(LibraryCreator::create(path(u"Pictures/B.photolibrary"_s)).ok());
        ASSERT_TRUE(LibraryCreator::create(path(u"Elsewhere.photolibrary"_s)).ok());
    }

    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    /// Starts the lookup; what it tells last goes into m_found.
    void start(LibraryLookup& lookup, const QStringList& known)
    {
        QObject::connect(&lookup, &LibraryLookup::found, &lookup, [this](const QStringList& found) {
            m_found = found;
        });
        lookup.start(known, path(u"Pictures"_s));
    }

    [[nodiscard]] bool waitFor(const QStringList& wanted)
    {
        return QTest::qWaitFor([this, &wanted] { return m_found == wanted; }, 30000);
    }

    QTemporaryDir m_folder;
    QStringList m_found;
};

TEST_F(LibraryLookupTest, theKnownOnesComeFirstInTheirOrderAndEachIsToldOnce)
{
    LibraryLookup lookup;
    start(lookup,
          {path(u"gone.photolibrary"_s),
           path(u"Pictures/B.photolibrary"_s),
           path(u"Elsewhere.photolibrary"_s)});
    EXPECT_TRUE(m_found.isEmpty()) << "nobody waits for it";
    EXPECT_TRUE(waitFor({path(u"Pictures/B.photolibrary"_s),
                         path(u"Elsewhere.photolibrary"_s),
                         path(u"Pictures/A.photolibrary"_s)}))
        << m_found.join(u' ').toStdString();
}

TEST_F(LibraryLookupTest, aPathThatDoesNotAnswerHoldsUpNeitherTheOthersNorTheEnd)
{
    const auto gate = std::make_shared<std::promise<void>>();
    const auto over = std::make_shared<std::promise<void>>();
    const auto isLibrary = [gate, over, opening = gate->get_future().share()](const QString& path) {
        if (!path.contains(u"stalled"_s)) {
            return LibraryFinder::isLibrary(path);
        }
        opening.wait();
        over->set_value();
        return true;
    };
    {
        LibraryLookup lookup(isLibrary);
        start(lookup, {path(u"stalled"_s), path(u"Elsewhere.photolibrary"_s)});
        EXPECT_TRUE(waitFor({path(u"Elsewhere.photolibrary"_s),
                             path(u"Pictures/A.photolibrary"_s),
                             path(u"Pictures/B.photolibrary"_s)}));
    }
    const QStringList before = m_found;
    gate->set_value();
    over->get_future().wait();
    QTest::qWait(20);
    EXPECT_EQ(m_found, before) << "what comes too late is told to nobody";
}

} // namespace
