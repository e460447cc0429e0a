#pragma once

#include <QCache>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <mutex>

/// Small pictures of picture files, decoded on threads of its own and kept in memory up to a bound.
/// What is asked for is what a view shows now or soon; the rest waits for nobody.
///
/// Threads: lives on the main thread; all methods may be called on any thread and never wait for a
/// file. Signals are emitted on the main thread.
class ThumbnailStore final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ThumbnailStore)
public:
    static constexpr qint64 kDefaultCacheBytes = 96LL * 1024 * 1024;
    /// Pixels of the longest edge that is ever decoded; the library's thumbnails have 360.
    static constexpr int kMaximumEdge = 512;

    /// `cacheBytes`: of pixels kept.
    explicit ThumbnailStore(qint64 cacheBytes = kDefaultCacheBytes, QObject* parent = nullptr);
    /// Waits for the pictures being decoded, at most one a thread; starts no other.
    ~ThumbnailStore() override;

    /// The longest edge of pictures from now on, in device pixels, 1..kMaximumEdge. Pictures of
    /// another size serve until those of the new one are there.
    void setEdge(int pixels);
    /// The files whose pictures are wanted now, the most urgent first, in place of all that were
    /// wanted before: those not begun are dropped. Of a list whose pictures might not fit into
    /// memory together only the beginning counts.
    void setWanted(const QStringList& inOrderOfUrgency);
    /// Files that gave no picture are tried once more when they are wanted next.
    void retryFailures();

    /// Null where there is none (yet).
    [[nodiscard]] QImage thumbnail(const QString& path) const;
    /// Whether it is known that the file gives no picture; an empty path never does.
    [[nodiscard]] bool hasFailed(const QString& path) const;
    [[nodiscard]] qint64 cachedBytes() const;

signals:
    /// The picture is there, or it is known now that there is none.
    void thumbnailReady(const QString& path);

private slots:
    void announce();

private:
    struct Thumbnail {
        QImage image;
        int edge{0}; ///< what it was decoded for
    };

    void work();
    void keep(const QString& path, int edge, const QImage& image);
    [[nodiscard]] bool isUpToDate(const Thumbnail& thumbnail) const;
    [[nodiscard]] qint64 mostBytes() const;

    mutable std::mutex m_mutex; ///< guards everything below but the pool
    QCache<QString, Thumbnail> m_cache;
    QSet<QString> m_failed;
    QHash<QString, int> m_decoding; ///< the edge it is decoded for
    QStringList m_waiting;          ///< the most urgent last
    QStringList m_news;             ///< not yet announced
    int m_edge{kMaximumEdge};
    int m_workers{0};
    QThreadPool m_pool;
};
