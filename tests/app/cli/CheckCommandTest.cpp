#include "CommandFixture.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace
{

using CheckCommandTest = CommandFixture;

} // namespace

TEST_F(CheckCommandTest, soundPhotosPass)
{
    EXPECT_EQ(run({u"check"_s, library()}), 0);
    EXPECT_EQ(m_out, "3 photos checked, nothing wrong.\n");
    EXPECT_EQ(m_err, QByteArray());
}

TEST_F(CheckCommandTest, whereNothingIsSelectedItIsSaid)
{
    EXPECT_EQ(run({u"check"_s, library(), u"--raw"_s}), 0);
    EXPECT_EQ(m_out, "0 photos checked, nothing wrong.\n");
    EXPECT_EQ(m_err, "No photo matches the selection.\n");
}

TEST_F(CheckCommandTest, missingAndCutOffMastersAreNamedWithTheirProblems)
{
    const PhotoFacts missing = photo(u"Wood.jpg"_s);
    const PhotoFacts cut = photo(u"Garden.jpg"_s);
    ASSERT_TRUE(QFile::remove(missing.originalPath));
    ASSERT_TRUE(QFile::resize(cut.originalPath, cut.bytes / 2));
    EXPECT_EQ(run({u"check"_s, library()}), 1);
    EXPECT_TRUE(m_out.contains(u"Wood.jpg (photo %1): The file %2 is missing.\n"_s.arg(missing.id)
                                   .arg(missing.originalPath)
                                   .toUtf8()))
        << m_out.toStdString();
    EXPECT_TRUE(m_out.endsWith("3 photos checked, something is wrong with 2.\n"));

    EXPECT_EQ(run({u"check"_s, library(), u"--json"_s, u"--id"_s, QString::number(cut.id)}), 1);
    EXPECT_EQ(document().value(u"checked"_s).toInt(), 1);
    const QJsonObject bad = document().value(u"bad"_s).toArray().first().toObject();
    EXPECT_EQ(bad.keys(), (QStringList{u"filename"_s, u"id"_s, u"path"_s, u"problem"_s}));
    EXPECT_EQ(bad.value(u"id"_s).toInteger(), cut.id);
}
