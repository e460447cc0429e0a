#include "PictureLoader.h"

#include "AlternateSignalStack.h"
#include "PictureFile.h"

#include <QMetaObject>

#include <utility>

PictureLoader::PictureLoader(QObject* parent)
    : QObject(parent)
{
    m_pool.setMaxThreadCount(1);
}

PictureLoader::~PictureLoader()
{
    cancel();
    m_pool.waitForDone();
    const std::lock_guard guard(m_mutex); // what the thread left behind is seen here
}

void PictureLoader::load(const QStringList& files, QSize within)
{
    {
        const std::lock_guard guard(m_mutex);
        ++m_latest;
        m_waiting = Request{m_latest, files, within};
        if (std::exchange(m_working, true)) {
            return;
        }
    }
    m_pool.start([this] { work(); });
}

void PictureLoader::cancel()
{
    const std::lock_guard guard(m_mutex);
    ++m_latest;
    m_waiting.reset();
}

void PictureLoader::work()
{
    const AlternateSignalStack signalStack;
    std::unique_lock lock(m_mutex);
    while (m_waiting.has_value()) {
        const Request request = *std::exchange(m_waiting, std::nullopt);
        lock.unlock();
        Answer answer = answerTo(request);
        lock.lock();
        m_answer = std::move(answer);
        QMetaObject::invokeMethod(this, "announce", Qt::QueuedConnection);
    }
    m_working = false;
}

PictureLoader::Answer PictureLoader::answerTo(const Request& request)
{
    QStringList reasons;
    for (const QString& file : request.files) {
        Result<QImage> image = PictureFile::read(file, request.within, PictureFile::Turn::AsTagged);
        if (image.ok()) {
            return {request.number, std::move(image).value(), {}};
        }
        reasons += image.error().message;
    }
    return {request.number, {}, reasons.join(QChar::LineFeed)};
}

void PictureLoader::announce()
{
    std::optional<Answer> answer;
    {
        const std::lock_guard guard(m_mutex);
        answer = std::exchange(m_answer, std::nullopt);
        if (!answer.has_value() || answer->number != m_latest) {
            return;
        }
    }
    if (answer->image.isNull()) {
        emit failed(answer->reasons);
    } else {
        emit loaded(answer->image);
    }
}
