#pragma once

#include "Journal.h"
#include "Scripting.h"

#include <QByteArray>
#include <QHash>
#include <QMap>
#include <QPair>

#include <functional>
#include <memory>
#include <mutex>

class FakePhoto;
class FakeAlbum;
class FakePhotoTurn;

/// What the fake library knows of a photo.
struct FakePhotoRecord {
    std::optional<QVariantMap> properties{};
    std::optional<QString> originalPath{};
    std::optional<QString> previewPath{};
    std::optional<QString> thumbnailPath{};
    int height{3000};
    double latitude{0.0};
    double longitude{0.0};
    std::optional<double> altitude{};
    QString comment{};
    PhotoDate date{0.0, QStringLiteral("GMT")};
    QString name{};
    int rating{0};
    QString title{};
    QStringList keywords{};
    PhotoEvidence evidence{};
    bool losesKeyword{false};
    bool inTrash{false};
};

struct FakeAlbumRecord {
    QString name;
    quint32 type{kRegularAlbumType};
    QList<qint64> photos;
};

/// One file that was imported, what it held, and what its turn had been told that it would.
struct FakeImport {
    QString path;
    QByteArray bytes;
    QByteArray expected;
};

/// A photo application in memory that records what is asked of it: the scripting surface's double
/// of the tests, with the state that a real library would have.
///
/// Every scripting call adds one line to the journal before it does anything, such as
///   application.selection                 photo 7.originalPath
///   photo 7.setRating 5                   photo 9.addTo album 12 "Corvane For iPhoto"
///   album 1.importFrom IMG_1.jpg YES album 1
/// (of an imported file its name only: its folder is a temporary one; imports() holds whole
/// paths). `evidence()`, `losesKeyword()`, `id()` and `scriptingClass()` are no calls. Turns are
/// listed apart, in turns(): "begin", "commit", "rollback"; a rollback brings the state of its
/// begin back.
///
/// Keywords that differ only in letter case are one: what is assigned is the spelling known first.
///
/// It is its own bridge. Threads: any, one call at a time. Handles live no longer than the fake.
class FakePhotoApplication final : public ScriptingBridge
{
public:
    /// `journal`: shared with other fakes, or nothing for one of its own.
    explicit FakePhotoApplication(std::shared_ptr<Journal> journal = nullptr);
    ~FakePhotoApplication() override;
    FakePhotoApplication(const FakePhotoApplication&) = delete;
    FakePhotoApplication& operator=(const FakePhotoApplication&) = delete;

    // ScriptingBridge
    [[nodiscard]] PhotoApplicationPtr
    applicationWithBundleIdentifier(const QString& identifier) override;
    [[nodiscard]] std::unique_ptr<PhotoTurn> beginPhotoTurn() override;

    // What the library holds
    /// Adds a photo and answers its id (1, 2, …).
    qint64 addPhoto(const FakePhotoRecord& record);
    /// As addPhoto() for a picture on disk: a property record with all keys, the file as image,
    /// original and evidence.
    qint64 addPhotoFile(const QString& path, int width = 4000, int height = 3000);
    /// Adds an album and answers its id (2, 3, …; 1 is the album of the whole library).
    qint64 addAlbum(const QString& name, quint32 type = kRegularAlbumType);
    [[nodiscard]] FakePhotoRecord& photo(qint64 id);
    [[nodiscard]] FakeAlbumRecord& album(qint64 id);
    [[nodiscard]] PhotoPtr photoHandle(qint64 id);
    [[nodiscard]] AlbumPtr albumHandle(qint64 id);

    [[nodiscard]] AlbumPtr libraryAlbum() { return albumHandle(kLibraryAlbumId); }

    /// Id of the first album of that name; 0 when there is none.
    [[nodiscard]] qint64 albumNamed(const QString& name) const;
    void setSelection(const QList<ScriptingObjectPtr>& selection);
    /// Selects these photos, in order.
    void selectPhotos(const QList<qint64>& ids);
    void setKeywords(const QStringList& names);

    [[nodiscard]] QStringList keywordNames() const { return m_state.keywords; }

    // How it behaves
    void setRunning(bool running) { m_running = running; }

    void setVersion(const QString& version) { m_version = version; }

    /// How many photos an import yields; 1 at first.
    void setPhotosPerImport(int count) { m_photosPerImport = count; }

    /// How often `importing` answers YES after each import; 0 at first.
    void setImportingAnswers(int count) { m_importingAnswers = count; }

    /// Importing a file of that name defines these keywords from the given time on (1 = the first).
    void
    setKeywordsOfImport(const QString& fileName, const QStringList& keywords, int fromTime = 1);

    /// Whether newAlbumName makes an album; YES at first.
    void setMakesAlbums(bool makes) { m_makesAlbums = makes; }

    /// The `time`-th call whose line starts with `call` raises, after it was recorded.
    void failOn(const QString& call, const ScriptingException& exception, int time = 1);
    /// Does `action` at every call whose line starts with `call`, after it was recorded.
    void whenCalled(const QString& call, std::function<void()> action);
    /// Committing the `time`-th turn raises, and undoes it.
    void failOnCommit(const ScriptingException& exception, int time = 1);

    // What happened
    [[nodiscard]] QStringList calls() const { return m_journal->lines(); }

    [[nodiscard]] Journal& journal() { return *m_journal; }

    [[nodiscard]] QStringList turns() const { return m_turns.lines(); }

    [[nodiscard]] const QStringList& identifiersAsked() const { return m_identifiersAsked; }

    [[nodiscard]] const QList<FakeImport>& imports() const { return m_imports; }

    /// Ids of the photos that the last import brought.
    [[nodiscard]] const QList<qint64>& lastImport() const { return m_state.lastImport; }

    static constexpr qint64 kLibraryAlbumId = 1;

private:
    friend class FakeApplication;
    friend class FakePhoto;
    friend class FakeAlbum;
    friend class FakePhotoTurn;

    struct State {
        QMap<qint64, FakePhotoRecord> photos;
        QMap<qint64, FakeAlbumRecord> albums;
        QStringList keywords;
        QList<QPair<ScriptingClass, qint64>> selection;
        QList<qint64> lastImport;
    };

    struct Failure {
        QString call;
        ScriptingException exception;
        int remaining{1};
    };

    /// Records a call, raises what was asked for, and holds the state for the call.
    [[nodiscard]] std::unique_lock<std::recursive_mutex> enter(const QString& call);
    void import(const QString& path);
    /// The keyword as the library, or one of its photos, spells it already; itself when none does.
    [[nodiscard]] QString knownKeyword(const QString& keyword) const;

    std::shared_ptr<Journal> m_journal;
    Journal m_turns;
    std::recursive_mutex m_mutex;
    State m_state;
    QList<Failure> m_failures;
    QList<QPair<QString, std::function<void()>>> m_actions;
    QList<Failure> m_commitFailures;
    QByteArray m_expected;
    QList<FakeImport> m_imports;
    QHash<QString, QPair<int, QStringList>> m_keywordsOfImport;
    QHash<QString, int> m_timesImported;
    QStringList m_identifiersAsked;
    QString m_version{QStringLiteral("9.6.1")};
    bool m_running{true};
    bool m_makesAlbums{true};
    int m_photosPerImport{1};
    int m_importingAnswers{0};
    int m_importingLeft{0};
    qint64 m_nextPhotoId{1};
    qint64 m_nextAlbumId{kLibraryAlbumId};
};
