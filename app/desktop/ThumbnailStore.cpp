#include "ThumbnailStore.h"

#include "AlternateSignalStack.h"
#include "PictureFile.h"

#include <QMetaObject>
#include <QThread>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kThreads = 2;
constexpr qint64 kBytesPerPixel = 4;

/// The library's thumbnails are upright already; previews and masters are as their tag says.
PictureFile::Turn turnOf(const QString& path)
{
    const qsizetype thumbnails = path.lastIndexOf("/Thumbnails/"_L1);
    const qsizetype others =
        std::max(path.lastIndexOf("/Previews/"_L1), path.lastIndexOf("/Masters/"_L1));
    return thumbnails > others ? PictureFile::Turn::AsStored : PictureFile::Turn::AsTagged;
}

} // namespace

ThumbnailStore::ThumbnailStore(qint64 cacheBytes, QObject* parent)
    : QObject(parent)
    , m_cache(cacheBytes)
{
    m_pool.setMaxThreadCount(kThreads);
    m_pool.setThreadPriority(QThread::LowPriority);
}

ThumbnailStore::~ThumbnailStore()
{
    {
        const std::lock_guard guard(m_mutex);
        m_waiting.clear();
    }
    m_pool.waitForDone();
    const std::lock_guard guard(m_mutex); // what they left behind is seen here
}

void ThumbnailStore::setEdge(int pixels)
{
    const std::lock_guard guard(m_mutex);
    m_edge = std::clamp(pixels, 1, kMaximumEdge);
}

void ThumbnailStore::setWanted(const QStringList& inOrderOfUrgency)
{
    int starting = 0;
    {
        const std::lock_guard guard(m_mutex);
        // Pictures under way may come on top of those wanted.
        qint64 room = m_cache.maxCost() - kThreads * mostBytes();
        QStringList missing;
        QSet<QString> seen;
        for (const QString& path : inOrderOfUrgency) {
            if (path.isEmpty() || m_failed.contains(path) || seen.contains(path)) {
                continue;
            }
            seen.insert(path);
            // Looking a picture up makes it the last to be given up.
            const Thumbnail* known = m_cache.object(path);
            const bool upToDate = known != nullptr && isUpToDate(*known);
            room -= upToDate ? known->image.sizeInBytes() : mostBytes();
            if (room < 0) {
                break;
            }
            if (!upToDate && m_decoding.value(path) != m_edge) {
                missing.append(path);
            }
        }
        std::ranges::reverse(missing);
        m_waiting = missing;
        starting = std::max(0, std::min(kThreads, static_cast<int>(missing.size())) - m_workers);
        m_workers += starting;
    }
    for (int i = 0; i < starting; ++i) {
        m_pool.start([this] { work(); });
    }
}

void ThumbnailStore::retryFailures()
{
    const std::lock_guard guard(m_mutex);
    m_failed.clear();
}

QImage ThumbnailStore::thumbnail(const QString& path) const
{
    const std::lock_guard guard(m_mutex);
    const Thumbnail* known = m_cache.object(path);
    return known == nullptr ? QImage() : known->image;
}

bool ThumbnailStore::hasFailed(const QString& path) const
{
    const std::lock_guard guard(m_mutex);
    return path.isEmpty() || m_failed.contains(path);
}

qint64 ThumbnailStore::cachedBytes() const
{
    const std::lock_guard guard(m_mutex);
    return m_cache.totalCost();
}

void ThumbnailStore::work()
{
    const AlternateSignalStack signalStack;
    std::unique_lock lock(m_mutex);
    while (!m_waiting.isEmpty()) {
        const QString path = m_waiting.takeLast();
        const int edge = m_edge;
        m_decoding.insert(path, edge);
        lock.unlock();
        const Result<QImage> picture = PictureFile::read(path, QSize(edge, edge), turnOf(path));
        lock.lock();
        m_decoding.remove(path);
        keep(path, edge, picture.ok() ? picture.value() : QImage());
    }
    --m_workers;
}

/// The mutex is held.
void ThumbnailStore::keep(const QString& path, int edge, const QImage& image)
{
    if (image.isNull()) {
        m_failed.insert(path);
        m_cache.remove(path);
    } else if (const Thumbnail* known = m_cache.object(path);
               known == nullptr || !isUpToDate(*known)) {
        auto thumbnail = std::make_unique<Thumbnail>(Thumbnail{image, edge});
        m_cache.insert(path, thumbnail.release(), image.sizeInBytes());
    }
    const bool announced = !m_news.isEmpty();
    m_news.append(path);
    if (!announced) {
        QMetaObject::invokeMethod(this, "announce", Qt::QueuedConnection);
    }
}

void ThumbnailStore::announce()
{
    QStringList news;
    {
        const std::lock_guard guard(m_mutex);
        news.swap(m_news);
    }
    for (const QString& path : std::as_const(news)) {
        emit thumbnailReady(path);
    }
}

/// A picture that is smaller than was asked for is all that its file has.
bool ThumbnailStore::isUpToDate(const Thumbnail& thumbnail) const
{
    const int longest = std::max(thumbnail.image.width(), thumbnail.image.height());
    return thumbnail.edge == m_edge || (longest < thumbnail.edge && longest <= m_edge);
}

qint64 ThumbnailStore::mostBytes() const
{
    return kBytesPerPixel * m_edge * m_edge;
}
