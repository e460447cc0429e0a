#include "CommandFixture.h"

using namespace Qt::StringLiterals;

namespace
{

using InfoCommandTest = CommandFixture;

} // namespace

TEST_F(InfoCommandTest, theWordsSayWhatIsInTheLibrary)
{
    ASSERT_EQ(run({u"info"_s, library()}), 0);
    EXPECT_EQ(m_out.toStdString(),
              "Library:           " + library().toStdString() +
                  "\nVersion:           9.6.1\n"
                  "Photos:            3\n"
                  "Events:            2\n"
                  "Albums:            0\n"
                  "Keywords:          6\n"
                  "RAW photos:        0 (0.00 MB)\n"
                  "Converted copies:  0\n"
                  "In the trash:      0 (0.00 MB)\n"
                  "Missing masters:   0\n"
                  "Writable:          yes\n"
                  "Problems:          none\n");
}

TEST_F(InfoCommandTest, theDocumentHoldsTheSame)
{
    ASSERT_TRUE(QFile::remove(photo(u"Wood.jpg"_s).originalPath));
    ASSERT_EQ(run({u"info"_s, library(), u"--json"_s}), 0);
    const QJsonObject info = document();
    EXPECT_EQ(info.keys(),
              (QStringList{u"albums"_s,
                           u"keywords"_s,
                           u"library"_s,
                           u"missing"_s,
                           u"photos"_s,
                           u"problems"_s,
                           u"processed"_s,
                           u"raw"_s,
                           u"rolls"_s,
                           u"trash"_s,
                           u"version"_s,
                           u"writable"_s}));
    EXPECT_EQ(info.value(u"photos"_s).toInt(), 3);
    EXPECT_EQ(info.value(u"missing"_s).toInt(), 1);
}
