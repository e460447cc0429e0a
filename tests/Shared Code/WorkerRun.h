#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>

#include <functional>
#include <memory>

/// Runs the callable on a thread of its own and the main event loop meanwhile, as a scan runs;
/// everything that it queued for the main thread has run when this returns.
inline void runOnWorker(std::function<void()> callable)
{
    const std::unique_ptr<QThread> worker(QThread::create(std::move(callable)));
    QEventLoop loop;
    QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    loop.exec();
    worker->wait();
    QCoreApplication::processEvents();
}
