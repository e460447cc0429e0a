#include "FakePhotoApplication.h"

#include "ProvedJpeg.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <utility>

namespace
{

QString yesOrNo(bool value)
{
    return value ? QStringLiteral("YES") : QStringLiteral("NO");
}

QString numberOrNone(std::optional<double> number)
{
    return number ? QString::number(*number) : QStringLiteral("none");
}

QList<Keyword> keywordsNamed(const QStringList& names)
{
    QList<Keyword> keywords;
    for (const QString& name : names) {
        keywords.append(Keyword{name});
    }
    return keywords;
}

} // namespace

class FakePhoto final : public Photo
{
public:
    FakePhoto(FakePhotoApplication& library, qint64 id)
        : m_library(library)
        , m_id(id)
    {
    }

    [[nodiscard]] qint64 id() const override { return m_id; }

    std::optional<QVariantMap> properties() override
    {
        return read(u"properties", &FakePhotoRecord::properties);
    }

    std::optional<QString> originalPath() override
    {
        return read(u"originalPath", &FakePhotoRecord::originalPath);
    }

    std::optional<QString> previewPath() override
    {
        return read(u"previewPath", &FakePhotoRecord::previewPath);
    }

    std::optional<QString> thumbnailPath() override
    {
        return read(u"thumbnailPath", &FakePhotoRecord::thumbnailPath);
    }

    int height() override { return read(u"height", &FakePhotoRecord::height); }

    double latitude() override { return read(u"latitude", &FakePhotoRecord::latitude); }

    double longitude() override { return read(u"longitude", &FakePhotoRecord::longitude); }

    std::optional<double> altitude() override
    {
        return read(u"altitude", &FakePhotoRecord::altitude);
    }

    QString comment() override { return read(u"comment", &FakePhotoRecord::comment); }

    PhotoDate date() override { return read(u"date", &FakePhotoRecord::date); }

    QString name() override { return read(u"name", &FakePhotoRecord::name); }

    int rating() override { return read(u"rating", &FakePhotoRecord::rating); }

    QString title() override { return read(u"title", &FakePhotoRecord::title); }

    void setAltitude(std::optional<double> metres) override
    {
        write(QStringLiteral("setAltitude ") + numberOrNone(metres),
              &FakePhotoRecord::altitude,
              metres);
    }

    void setComment(const QString& comment) override
    {
        write(QStringLiteral("setComment ") + comment, &FakePhotoRecord::comment, comment);
    }

    void setDate(const PhotoDate& date) override
    {
        write(QStringLiteral("setDate %1 %2")
                  .arg(date.secondsSince2001, 0, 'f', QLocale::FloatingPointShortest)
                  .arg(date.zoneName),
              &FakePhotoRecord::date,
              date);
    }

    void setName(const QString& name) override
    {
        write(QStringLiteral("setName ") + name, &FakePhotoRecord::name, name);
    }

    void setRating(int rating) override
    {
        write(QStringLiteral("setRating %1").arg(rating), &FakePhotoRecord::rating, rating);
    }

    void setTitle(const QString& title) override
    {
        write(QStringLiteral("setTitle ") + title, &FakePhotoRecord::title, title);
    }

    QList<Keyword> keywords() override
    {
        return keywordsNamed(read(u"keywords", &FakePhotoRecord::keywords));
    }

    void select() override
    {
        const auto lock = m_library.enter(call(u"select"));
        m_library.m_state.selection = {{ScriptingClass::Photo, m_id}};
    }

    void addTo(const AlbumPtr& album) override
    {
        const auto lock = m_library.enter(call(u"addTo ") + described(album));
        if (!album) {
            return;
        }
        QList<qint64>& members = m_library.m_state.albums[album->id()].photos;
        if (!members.contains(m_id)) {
            members.append(m_id);
        }
    }

    void removeFrom(const AlbumPtr& album) override
    {
        const auto lock = m_library.enter(call(u"removeFrom ") + described(album));
        if (!album) {
            return;
        }
        m_library.m_state.albums[album->id()].photos.removeAll(m_id);
        if (album->id() == FakePhotoApplication::kLibraryAlbumId) {
            m_library.m_state.photos[m_id].inTrash = true;
        }
    }

    PhotoEvidence evidence() override { return m_library.photo(m_id).evidence; }

    bool losesKeyword() override { return m_library.photo(m_id).losesKeyword; }

private:
    [[nodiscard]] QString call(QStringView text) const
    {
        return QStringLiteral("photo %1.%2").arg(m_id).arg(text);
    }

    [[nodiscard]] QString described(const AlbumPtr& album) const
    {
        return album ? QStringLiteral("album %1 \"%2\"")
                           .arg(album->id())
                           .arg(m_library.album(album->id()).name)
                     : QStringLiteral("nothing");
    }

    template <typename Value>
    [[nodiscard]] Value read(QStringView name, Value FakePhotoRecord::*member)
    {
        const auto lock = m_library.enter(call(name));
        return m_library.photo(m_id).*member;
    }

    template <typename Value>
    void write(const QString& text, Value FakePhotoRecord::*member, const Value& value)
    {
        const auto lock = m_library.enter(call(text));
        m_library.photo(m_id).*member = value;
    }

    FakePhotoApplication& m_library;
    qint64 m_id;
};

class FakeAlbum final : public Album
{
public:
    /// `isLastImport`: the album of the last import, which has no record of its own.
    FakeAlbum(FakePhotoApplication& library, qint64 id, bool isLastImport)
        : m_library(library)
        , m_id(id)
        , m_isLastImport(isLastImport)
    {
    }

    [[nodiscard]] qint64 id() const override { return m_id; }

    QString name() override
    {
        const auto lock = m_library.enter(call(u"name"));
        return m_library.album(m_id).name;
    }

    quint32 type() override
    {
        const auto lock = m_library.enter(call(u"type"));
        return m_library.album(m_id).type;
    }

    QList<PhotoPtr> photos() override
    {
        const auto lock = m_library.enter(call(u"photos"));
        QList<PhotoPtr> photos;
        for (const qint64 photoId :
             m_isLastImport ? m_library.m_state.lastImport : m_library.album(m_id).photos) {
            photos.append(m_library.photoHandle(photoId));
        }
        return photos;
    }

    void importFrom(const QString& path, bool forceCopy, const AlbumPtr& target) override
    {
        const auto lock = m_library.enter(call(u"importFrom ") +
                                          QStringLiteral("%1 %2 album %3")
                                              .arg(QFileInfo(path).fileName(), yesOrNo(forceCopy))
                                              .arg(target ? target->id() : 0));
        m_library.import(path);
    }

private:
    [[nodiscard]] QString call(QStringView text) const
    {
        return m_isLastImport ? QStringLiteral("lastImportAlbum.%1").arg(text)
                              : QStringLiteral("album %1.%2").arg(m_id).arg(text);
    }

    FakePhotoApplication& m_library;
    qint64 m_id;
    bool m_isLastImport;
};

class FakeApplication final : public PhotoApplication
{
public:
    explicit FakeApplication(FakePhotoApplication& library)
        : m_library(library)
    {
    }

    bool isRunning() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.isRunning"));
        return m_library.m_running;
    }

    QString version() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.version"));
        return m_library.m_version;
    }

    QList<ScriptingObjectPtr> selection() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.selection"));
        QList<ScriptingObjectPtr> selection;
        for (const auto& [kind, id] : std::as_const(m_library.m_state.selection)) {
            if (kind == ScriptingClass::Photo) {
                selection.append(m_library.photoHandle(id));
            } else {
                selection.append(m_library.albumHandle(id));
            }
        }
        return selection;
    }

    QList<Keyword> keywords() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.keywords"));
        return keywordsNamed(m_library.m_state.keywords);
    }

    QList<AlbumPtr> albums() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.albums"));
        QList<AlbumPtr> albums;
        for (const qint64 id : m_library.m_state.albums.keys()) {
            if (id != FakePhotoApplication::kLibraryAlbumId) {
                albums.append(m_library.albumHandle(id));
            }
        }
        return albums;
    }

    AlbumPtr photoLibraryAlbum() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.photoLibraryAlbum"));
        return m_library.libraryAlbum();
    }

    AlbumPtr lastImportAlbum() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.lastImportAlbum"));
        return std::make_shared<FakeAlbum>(m_library, 0, true);
    }

    bool importing() override
    {
        const auto lock = m_library.enter(QStringLiteral("application.importing"));
        if (m_library.m_importingLeft > 0) {
            --m_library.m_importingLeft;
            return true;
        }
        return false;
    }

    void assignKeywordString(const QString& keyword) override
    {
        const auto lock =
            m_library.enter(QStringLiteral("application.assignKeywordString ") + keyword);
        const QString known = m_library.knownKeyword(keyword);
        for (const auto& [kind, id] : std::as_const(m_library.m_state.selection)) {
            QStringList& names = m_library.m_state.photos[id].keywords;
            if (kind == ScriptingClass::Photo && !names.contains(known)) {
                names.append(known);
            }
        }
    }

    void newAlbumName(const QString& name) override
    {
        const auto lock = m_library.enter(QStringLiteral("application.newAlbumName ") + name);
        if (m_library.m_makesAlbums) {
            m_library.addAlbum(name);
        }
    }

private:
    FakePhotoApplication& m_library;
};

class FakePhotoTurn final : public PhotoTurn
{
public:
    explicit FakePhotoTurn(FakePhotoApplication& library)
        : m_library(library)
        , m_before(library.m_state)
    {
        m_library.m_turns.add(QStringLiteral("begin"));
    }

    ~FakePhotoTurn() override
    {
        if (!m_committed) {
            const std::lock_guard lock(m_library.m_mutex);
            m_library.m_state = m_before;
            m_library.m_turns.add(QStringLiteral("rollback"));
        }
    }

    FakePhotoTurn(const FakePhotoTurn&) = delete;
    FakePhotoTurn& operator=(const FakePhotoTurn&) = delete;

    void expect(const ProvedJpeg& jpeg) override { m_library.m_expected = jpeg.bytes; }

    void commit() override
    {
        for (auto& failure : m_library.m_commitFailures) {
            if (--failure.remaining == 0) {
                throw ScriptingException(failure.exception);
            }
        }
        m_library.m_turns.add(QStringLiteral("commit"));
        m_committed = true;
    }

private:
    FakePhotoApplication& m_library;
    FakePhotoApplication::State m_before;
    bool m_committed{false};
};

FakePhotoApplication::FakePhotoApplication(std::shared_ptr<Journal> journal)
    : m_journal(journal ? std::move(journal) : std::make_shared<Journal>())
{
    addAlbum(QStringLiteral("Photos"), 0);
}

FakePhotoApplication::~FakePhotoApplication() = default;

PhotoApplicationPtr FakePhotoApplication::applicationWithBundleIdentifier(const QString& identifier)
{
    const std::lock_guard lock(m_mutex);
    m_identifiersAsked.append(identifier);
    return std::make_shared<FakeApplication>(*this);
}

std::unique_ptr<PhotoTurn> FakePhotoApplication::beginPhotoTurn()
{
    const std::lock_guard lock(m_mutex);
    return std::make_unique<FakePhotoTurn>(*this);
}

qint64 FakePhotoApplication::addPhoto(const FakePhotoRecord& record)
{
    const qint64 id = m_nextPhotoId++;
    m_state.photos.insert(id, record);
    m_state.albums[kLibraryAlbumId].photos.append(id);
    return id;
}

qint64 FakePhotoApplication::addPhotoFile(const QString& path, int width, int height)
{
    const QString fileName = QFileInfo(path).fileName();
    FakePhotoRecord record;
    record.originalPath = path;
    record.height = height;
    record.name = QFileInfo(path).completeBaseName();
    record.title = record.name;
    record.evidence.files = QStringList{path};
    record.properties = QVariantMap{{QStringLiteral("imageFilename"), fileName},
                                    {QStringLiteral("imagePath"), path},
                                    {QStringLiteral("originalPath"), path},
                                    {QStringLiteral("date"), QVariant::fromValue(record.date)},
                                    {QStringLiteral("id"), m_nextPhotoId},
                                    {QStringLiteral("width"), width},
                                    {QStringLiteral("height"), height}};
    return addPhoto(record);
}

qint64 FakePhotoApplication::addAlbum(const QString& name, quint32 type)
{
    const qint64 id = m_nextAlbumId++;
    m_state.albums.insert(id, FakeAlbumRecord{name, type, {}});
    return id;
}

FakePhotoRecord& FakePhotoApplication::photo(qint64 id)
{
    Q_ASSERT_X(m_state.photos.contains(id), "FakePhotoApplication", "no such photo");
    return m_state.photos[id];
}

FakeAlbumRecord& FakePhotoApplication::album(qint64 id)
{
    Q_ASSERT_X(m_state.albums.contains(id), "FakePhotoApplication", "no such album");
    return m_state.albums[id];
}

PhotoPtr FakePhotoApplication::photoHandle(qint64 id)
{
    return std::make_shared<FakePhoto>(*this, id);
}

AlbumPtr FakePhotoApplication::albumHandle(qint64 id)
{
    return std::make_shared<FakeAlbum>(*this, id, false);
}

qint64 FakePhotoApplication::albumNamed(const QString& name) const
{
    for (auto album = m_state.albums.cbegin(); album != m_state.albums.cend(); ++album) {
        if (album->name == name) {
            return album.key();
        }
    }
    return 0;
}

void FakePhotoApplication::setSelection(const QList<ScriptingObjectPtr>& selection)
{
    m_state.selection.clear();
    for (const ScriptingObjectPtr& object : selection) {
        m_state.selection.append({object->scriptingClass(), object->id()});
    }
}

void FakePhotoApplication::selectPhotos(const QList<qint64>& ids)
{
    m_state.selection.clear();
    for (const qint64 id : ids) {
        m_state.selection.append({ScriptingClass::Photo, id});
    }
}

void FakePhotoApplication::setKeywords(const QStringList& names)
{
    m_state.keywords = names;
}

void FakePhotoApplication::setKeywordsOfImport(const QString& fileName,
                                               const QStringList& keywords,
                                               int fromTime)
{
    m_keywordsOfImport.insert(fileName, {fromTime, keywords});
}

void FakePhotoApplication::failOn(const QString& call,
                                  const ScriptingException& exception,
                                  int time)
{
    m_failures.append(Failure{call, exception, time});
}

void FakePhotoApplication::whenCalled(const QString& call, std::function<void()> action)
{
    m_actions.append({call, std::move(action)});
}

void FakePhotoApplication::failOnCommit(const ScriptingException& exception, int time)
{
    m_commitFailures.append(Failure{QString(), exception, time});
}

std::unique_lock<std::recursive_mutex> FakePhotoApplication::enter(const QString& call)
{
    std::unique_lock lock(m_mutex);
    m_journal->add(call);
    for (const auto& [start, action] : std::as_const(m_actions)) {
        if (call.startsWith(start)) {
            action();
        }
    }
    for (Failure& failure : m_failures) {
        if (call.startsWith(failure.call) && --failure.remaining == 0) {
            throw ScriptingException(failure.exception);
        }
    }
    return lock;
}

QString FakePhotoApplication::knownKeyword(const QString& keyword) const
{
    QStringList names = m_state.keywords;
    for (const FakePhotoRecord& photo : m_state.photos) {
        names += photo.keywords;
    }
    const auto known = std::ranges::find_if(names, [&keyword](const QString& name) {
        return name.compare(keyword, Qt::CaseInsensitive) == 0;
    });
    return known == names.end() ? keyword : *known;
}

void FakePhotoApplication::import(const QString& path)
{
    QFile file(path);
    m_imports.append(FakeImport{
        path, file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(), m_expected});
    m_importingLeft = m_importingAnswers;
    const QString fileName = QFileInfo(path).fileName();
    const auto [fromTime, keywords] = m_keywordsOfImport.value(fileName, {0, {}});
    if (++m_timesImported[fileName] >= fromTime) {
        m_state.keywords.append(keywords);
    }
    m_state.lastImport.clear();
    for (int count = 0; count < m_photosPerImport; ++count) {
        m_state.lastImport.append(addPhotoFile(path));
    }
}
