#include "CommandFixture.h"
#include "OrdinaryUser.h"

#include <QJsonArray>

#include <pty.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

class TrashCommandTest : public CommandFixture
{
protected:
    void SetUp() override
    {
        CommandFixture::SetUp();
        m_lake = photo(u"Lake.jpg"_s);
        ASSERT_EQ(run({u"scan"_s,
                       library(),
                       u"--trash"_s,
                       u"--no-tag"_s,
                       u"--id"_s,
                       QString::number(m_lake.id)}),
                  0)
            << m_err.toStdString();
    }

    [[nodiscard]] QByteArray size() const
    {
        return QByteArray::number(static_cast<double>(m_lake.bytes) / 1048576.0, 'f', 2) + " MB";
    }

    PhotoFacts m_lake;
};

} // namespace

TEST_F(TrashCommandTest, theTrashIsListedWithMegabytes)
{
    EXPECT_EQ(run({u"trash"_s, library()}), 0);
    EXPECT_EQ(m_out,
              QByteArray::number(m_lake.id) + "  Lake.jpg  " + size() + "\n1 photo in the trash, " +
                  size() + '\n');
    EXPECT_EQ(run({u"trash"_s, library(), u"--json"_s}), 0);
    EXPECT_EQ(document().value(u"bytes"_s).toInteger(), m_lake.bytes);
    EXPECT_EQ(document().value(u"photos"_s).toArray().first().toObject().value(u"id"_s).toInteger(),
              m_lake.id);
}

TEST_F(TrashCommandTest, photosArePutBack)
{
    EXPECT_EQ(run({u"trash"_s, library(), u"--restore"_s, u"--id"_s, u"99999"_s}), 0);
    EXPECT_EQ(m_out, "0 photos were put back.\n");
    EXPECT_EQ(m_err, "Photo 99999 is not in the trash.\n");
    EXPECT_EQ(run({u"trash"_s, library(), u"--restore"_s}), 0);
    EXPECT_EQ(m_out, "1 photo was put back.\n");
    EXPECT_EQ(photo(u"Lake.jpg"_s).id, m_lake.id);
    EXPECT_EQ(run({u"trash"_s, library()}), 0);
    EXPECT_EQ(m_out, "The trash is empty.\n");
}

TEST_F(TrashCommandTest, withNobodyToAskNothingIsDeletedWithoutYes)
{
    EXPECT_EQ(run({u"trash"_s, library(), u"--empty"_s}), 2);
    EXPECT_EQ(m_err,
              "Without a terminal to ask on, --empty needs --yes: it deletes photos for good.\n"
              "Run “corvane-cli trash --help” to see how it is used.\n");
    EXPECT_TRUE(QFile::exists(m_lake.originalPath));
}

TEST_F(TrashCommandTest, withYesPhotosAreDeletedForGood)
{
    EXPECT_EQ(run({u"trash"_s, library(), u"--empty"_s, u"--yes"_s}), 0) << m_err.toStdString();
    EXPECT_TRUE(m_out.startsWith("1 photo was deleted for good; ")) << m_out.toStdString();
    EXPECT_FALSE(QFile::exists(m_lake.originalPath));
}

TEST_F(TrashCommandTest, filesThatCannotBeRemovedAreNamedAndTheRunFails)
{
    const OrdinaryUser user({m_folder.path()});
    const WithPermissions closed(QFileInfo(m_lake.originalPath).path(), 0555);
    EXPECT_EQ(run({u"trash"_s, library(), u"--empty"_s, u"--yes"_s}), 3);
    EXPECT_EQ(m_out, "");
    EXPECT_TRUE(m_err.startsWith("1 photo was deleted from the library ")) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("/Lake.jpg: Permission denied\n")) << m_err.toStdString();
    EXPECT_TRUE(m_err.contains("tries again")) << m_err.toStdString();
    EXPECT_TRUE(QFile::exists(m_lake.originalPath));
}

TEST_F(TrashCommandTest, onATerminalOnlyYesDeletes)
{
    int far = -1;
    int near = -1;
    ASSERT_EQ(openpty(&far, &near, nullptr, nullptr, nullptr), 0);
    m_facts.canAsk = true;
    m_facts.inputDescriptor = near;
    ASSERT_EQ(write(far, "no\nyes\n", 7), 7);
    EXPECT_EQ(run({u"trash"_s, library(), u"--empty"_s}), 0);
    EXPECT_EQ(m_err,
              "1 photo (" + size() +
                  ") will be deleted for good. Have a copy of the whole library on another disk "
                  "first. Type yes to go on:\nNothing was deleted.\n");
    EXPECT_TRUE(QFile::exists(m_lake.originalPath));
    EXPECT_EQ(run({u"trash"_s, library(), u"--empty"_s}), 0);
    EXPECT_FALSE(QFile::exists(m_lake.originalPath));
    close(far);
    close(near);
}
