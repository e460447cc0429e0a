#include "ScanFixture.h"

using namespace Qt::StringLiterals;

// The exact sequence of calls into the photo application, for every way to scan.

namespace
{

struct Way {
    bool byRoll{false};
    bool tags{false};
    bool removes{false};
};

void PrintTo(const Way& way, std::ostream* stream)
{
    *stream << (way.byRoll ? "by roll" : "one album") << (way.tags ? ", tags" : "")
            << (way.removes ? ", removes" : "");
}

class SequenceTest : public ScanFixture, public testing::WithParamInterface<Way>
{
protected:
    void addPhotosOfTwoRolls()
    {
        addPicture(u"a.jpg"_s);
        addPicture(u"b.jpg"_s);
        m_library.photo(1).previewPath = u"/l/Previews/guidA/a.jpg"_s;
        m_library.photo(2).previewPath = u"/l/Previews/guidB/b.jpg"_s;
        m_library.photo(1).keywords = QStringList{u"Sea"_s};
        QFile file(m_folder.filePath(u"AlbumData.xml"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                   "<key>Master Image List</key><dict>"
                   "<key>1</key><dict><key>GUID</key><string>guidA</string>"
                   "<key>Roll</key><integer>1</integer></dict>"
                   "<key>2</key><dict><key>GUID</key><string>guidB</string>"
                   "<key>Roll</key><integer>2</integer></dict></dict>"
                   "<key>List of Rolls</key><array>"
                   "<dict><key>RollID</key><integer>1</integer>"
                   "<key>RollName</key><string>Beach</string></dict>"
                   "<dict><key>RollID</key><integer>2</integer>"
                   "<key>RollName</key><string>Snow</string></dict>"
                   "</array></dict></plist>");
    }

    [[nodiscard]] static QStringList preparation(const Way& way)
    {
        QStringList calls{u"application.version"_s, u"application.selection"_s};
        if (way.tags) {
            calls += u"application.keywords"_s;
        }
        calls += {u"photo 1.properties"_s,
                  u"photo 2.properties"_s,
                  u"application.albums"_s,
                  u"application.photoLibraryAlbum"_s};
        if (way.byRoll) {
            return calls + QStringList{u"photo 1.previewPath"_s, u"photo 2.previewPath"_s};
        }
        return calls + QStringList{u"application.newAlbumName Corvane For iPhoto"_s,
                                   u"application.albums"_s,
                                   u"album 2.name"_s,
                                   u"album 2.type"_s};
    }

    [[nodiscard]] static QStringList conversion(const QString& photo, const QString& file)
    {
        return {photo + u".originalPath"_s,
                photo + u".height"_s,
                photo + u".latitude"_s,
                photo + u".longitude"_s,
                u"album 1.importFrom "_s + file + u" YES album 1"_s,
                u"application.importing"_s,
                u"application.lastImportAlbum"_s,
                u"lastImportAlbum.photos"_s};
    }

    [[nodiscard]] static QStringList filingOfFirst(const Way& way)
    {
        if (!way.byRoll) {
            return {u"photo 3.addTo album 2 \"Corvane For iPhoto\""_s};
        }
        return {u"application.newAlbumName Beach"_s,
                u"application.albums"_s,
                u"album 2.name"_s,
                u"album 2.type"_s,
                u"photo 3.addTo album 2 \"Beach\""_s};
    }

    [[nodiscard]] static QStringList filingOfSecond(const Way& way)
    {
        if (!way.byRoll) {
            return {u"photo 4.addTo album 2 \"Corvane For iPhoto\""_s};
        }
        return {u"album 2.name"_s,
                u"application.newAlbumName Snow"_s,
                u"application.albums"_s,
                u"album 2.name"_s,
                u"album 3.name"_s,
                u"album 3.type"_s,
                u"photo 4.addTo album 3 \"Snow\""_s};
    }

    [[nodiscard]] static QStringList
    end(const Way& way, const QString& original, const QString& copy)
    {
        QStringList calls;
        if (way.tags) {
            calls += {copy + u".keywords"_s,
                      copy + u".select"_s,
                      u"application.assignKeywordString Corvane Processed"_s,
                      original + u".keywords"_s,
                      original + u".select"_s,
                      u"application.assignKeywordString Corvane Original"_s};
        }
        if (way.removes) {
            calls += original + u".removeFrom album 1 \"Photos\""_s;
        }
        return calls;
    }
};

TEST_P(SequenceTest, twoPhotosAreScannedByExactlyTheseCalls)
{
    const Way way = GetParam();
    addPhotosOfTwoRolls();
    set(u"TagEnabled"_s, way.tags);
    set(u"TrashEnabled"_s, way.removes);
    if (way.byRoll) {
        m_delegate.library = m_folder.path();
    }
    scan({1, 2});

    const QStringList expected =
        preparation(way) + conversion(u"photo 1"_s, u"a.jpg"_s) + filingOfFirst(way) +
        propagation(u"photo 1"_s, u"photo 3"_s, u"a"_s) +
        QStringList{u"photo 3.select"_s, u"application.assignKeywordString Sea"_s} +
        end(way, u"photo 1"_s, u"photo 3"_s) + conversion(u"photo 2"_s, u"b.jpg"_s) +
        filingOfSecond(way) + propagation(u"photo 2"_s, u"photo 4"_s, u"b"_s) +
        end(way, u"photo 2"_s, u"photo 4"_s);
    EXPECT_EQ(m_library.calls(), expected);
    EXPECT_EQ(m_library.turns(), (QStringList{u"begin"_s, u"commit"_s, u"begin"_s, u"commit"_s}));
    EXPECT_EQ(m_library.photo(1).inTrash, way.removes);
    EXPECT_EQ(m_library.photo(3).keywords.contains(u"Corvane Processed"_s), way.tags);
    expectNoTemporaryFile();
}

INSTANTIATE_TEST_SUITE_P(EveryWay,
                         SequenceTest,
                         testing::Values(Way{false, false, false},
                                         Way{false, false, true},
                                         Way{false, true, false},
                                         Way{false, true, true},
                                         Way{true, false, false},
                                         Way{true, false, true},
                                         Way{true, true, false},
                                         Way{true, true, true}));

} // namespace
