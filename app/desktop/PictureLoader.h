#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <mutex>
#include <optional>

/// Reads one picture at a time on a thread of its own; of requests that wait only the last counts.
/// Threads: lives on the main thread, which also calls it and gets its signals.
class PictureLoader final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PictureLoader)
public:
    explicit PictureLoader(QObject* parent = nullptr);
    ~PictureLoader() override; ///< waits for the picture being read

    /// Reads the first of the files that gives a picture, fitted into `within` (device pixels), and
    /// ends with loaded() or failed(), unless another request or cancel() comes first.
    void load(const QStringList& files, QSize within);
    /// Nothing is wanted any more; no signal comes for what was.
    void cancel();

signals:
    void loaded(const QImage& image);
    /// Why no file gave a picture, a line each.
    void failed(const QString& reasons);

private slots:
    void announce();

private:
    struct Request {
        int number{0};
        QStringList files;
        QSize within;
    };

    struct Answer {
        int number{0};
        QImage image;
        QString reasons;
    };

    void work();
    [[nodiscard]] static Answer answerTo(const Request& request);

    std::mutex m_mutex; ///< guards everything below but the pool
    std::optional<Request> m_waiting;
    std::optional<Answer> m_answer;
    int m_latest{0}; ///< number of the last request
    bool m_working{false};
    QThreadPool m_pool;
};
