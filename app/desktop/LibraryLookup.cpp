#include "LibraryLookup.h"

#include "AlternateSignalStack.h"

#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

/// Where threads leave what they found. It outlives the object that reads it.
struct LibraryLookup::Mailbox {
    std::mutex mutex;
    LibraryLookup* reader{nullptr}; ///< none any more once it is gone

    /// Any thread.
    void leave(qsizetype place, const QStringList& libraries)
    {
        const std::lock_guard guard(mutex);
        if (reader != nullptr) {
            QMetaObject::invokeMethod(
                reader,
                [to = reader, place, libraries] { to->take(place, libraries); },
                Qt::QueuedConnection);
        }
    }
};

LibraryLookup::LibraryLookup(Test isLibrary, QObject* parent)
    : QObject(parent)
    , m_isLibrary(std::move(isLibrary))
    , m_mailbox(std::make_shared<Mailbox>())
{
    m_mailbox->reader = this;
}

LibraryLookup::~LibraryLookup()
{
    const std::lock_guard guard(m_mailbox->mutex);
    m_mailbox->reader = nullptr;
}

void LibraryLookup::start(const QStringList& known, const QString& folder)
{
    for (const QString& path : known) {
        look([path, isLibrary = m_isLibrary] {
            return isLibrary(path) ? QStringList{path} : QStringList();
        });
    }
    look([folder] { return LibraryFinder::librariesIn(folder); });
}

/// Each task has a thread of its own, which is left alone: one that hangs holds up no other.
void LibraryLookup::look(std::function<QStringList()> task)
{
    const qsizetype place = m_found.size();
    m_found.append(QStringList());
    try {
        std::thread([place, task = std::move(task), mailbox = m_mailbox] {
            const AlternateSignalStack signalStack;
            mailbox->leave(place, task());
        }).detach();
    } catch (const std::system_error&) {
        // The system has no thread to give: then this is not offered, and can still be opened.
        return;
    }
}

void LibraryLookup::take(qsizetype place, const QStringList& libraries)
{
    if (libraries.isEmpty()) {
        return;
    }
    m_found[place] = libraries;
    QStringList all;
    for (const QStringList& some : std::as_const(m_found)) {
        all += some;
    }
    all.removeDuplicates();
    emit found(all);
}
