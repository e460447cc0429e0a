#pragma once

#include "LibraryFinder.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

/// Looks for libraries that can be offered. Nobody waits for it, not even its own end: a path may
/// lie on a machine that does not answer. Main thread.
class LibraryLookup final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LibraryLookup)
public:
    using Test = std::function<bool(const QString& path)>;

    /// `isLibrary`: asked on other threads, perhaps after the end of the object.
    explicit LibraryLookup(Test isLibrary = LibraryFinder::isLibrary, QObject* parent = nullptr);
    ~LibraryLookup() override;

    /// Looks which of the known paths are libraries, and which libraries the folder holds. Once.
    void start(const QStringList& known, const QString& folder);

signals:
    /// All that were found so far, each once: the known ones in their order, then the others. Told
    /// anew whenever there are more.
    void found(const QStringList& libraries);

private:
    struct Mailbox;
    void look(std::function<QStringList()> task);
    void take(qsizetype place, const QStringList& libraries);

    Test m_isLibrary;
    std::shared_ptr<Mailbox> m_mailbox;
    QList<QStringList> m_found; ///< by each task, in the order of the tasks
};
