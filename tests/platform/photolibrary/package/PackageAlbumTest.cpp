#include "PackageAlbum.h"

#include "Connection.h"
#include "Queries.h"
#include "WritableLibrary.h"

using namespace Qt::StringLiterals;

namespace
{

class PackageAlbumTest : public WritableLibrary
{
protected:
    /// Imports a picture into an event; the photo's id.
    qint64 importInto(PhotoLibrary& library, const QString& event, const QString& name)
    {
        ImportRequest request;
        request.sourcePath = makePicture(name);
        request.eventName = event;
        const Result<qint64> id = library.importPhoto(request);
        EXPECT_TRUE(id.ok());
        return id.ok() ? id.value() : 0;
    }

    void change(const char* sql)
    {
        auto opened = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(opened.ok());
        opened.value()->database().exec(sql);
    }
};

} // namespace

TEST_F(PackageAlbumTest, eventsThatBeginAtTheSameMomentAreNotMixed)
{
    std::unique_ptr<PhotoLibrary> library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    const qint64 one = importInto(*library, u"One"_s, u"1.jpg"_s);
    const qint64 other = importInto(*library, u"Other"_s, u"2.jpg"_s);
    const qint64 oneMore = importInto(*library, u"One"_s, u"3.jpg"_s);
    ASSERT_TRUE(library->close().ok());
    library.reset();
    change("UPDATE RKVersion SET imageDate = 1000 + modelId");
    change("UPDATE RKFolder SET minImageDate = 1000");

    library = open(Access::Read);
    ASSERT_NE(library, nullptr);
    QList<qint64> ids;
    for (const PhotoPtr& photo : application(*library)->photoLibraryAlbum()->photos()) {
        ids.append(photo->id());
    }
    EXPECT_EQ(ids, (QList<qint64>{one, oneMore, other}));
}
