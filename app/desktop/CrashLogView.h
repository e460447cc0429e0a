#pragma once

#include <QStringDecoder>
#include <QWidget>

class QLabel;
class QPlainTextEdit;
class QPushButton;

/// Shows the text of a log to read. Of a long one its beginning, and more of it with each press of
/// a button: at no time more than 128 kilobytes are read, so that no log holds the window up. A
/// line of unreasonable length is shown in pieces for the same reason. Whatever is shown is the
/// file's content at the moment it was read.
class CrashLogView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CrashLogView)
public:
    /// How much is read at a time, and where a line is broken.
    static constexpr qint64 kBytesAtATime = 128 * qint64{1024};
    static constexpr qsizetype kLongestLine = 4096;

    explicit CrashLogView(QString path, QWidget* parent = nullptr);

private:
    void showMore();
    [[nodiscard]] QString inPieces(const QString& text);
    void tell(qint64 size);

    const QString m_path;
    QPlainTextEdit* m_text;
    QLabel* m_note;
    QPushButton* m_more;
    qint64 m_shownBytes{0};
    qsizetype m_lineLength{0}; ///< of the last line so far
    QStringDecoder m_decoder{QStringDecoder::Utf8};
};
