#include "CrashLogView.h"

#include "SmallText.h"

#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextCursor>

#include <utility>

using namespace Qt::StringLiterals;

CrashLogView::CrashLogView(QString path, QWidget* parent)
    : QWidget(parent)
    , m_path(std::move(path))
    , m_text(new QPlainTextEdit(this))
    , m_note(SmallText::label({}, this))
    , m_more(new QPushButton(tr("Show &More"), this))
{
    m_text->setObjectName(u"crashLogText"_s);
    m_text->setAccessibleName(tr("Crash log"));
    m_text->setReadOnly(true);
    m_text->setUndoRedoEnabled(false);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setMinimumHeight(m_text->fontMetrics().lineSpacing() * 5);
    m_note->setObjectName(u"crashLogNote"_s);
    m_note->setWordWrap(true);
    m_more->setObjectName(u"showMoreOfCrashLog"_s);
    m_more->setAccessibleName(tr("Show more of the crash log"));
    connect(m_more, &QPushButton::clicked, this, &CrashLogView::showMore);

    auto* const row = new QHBoxLayout;
    row->addWidget(m_note, 1);
    row->addWidget(m_more);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_text, 1);
    layout->addLayout(row);
    showMore();
}

void CrashLogView::showMore()
{
    QFile file(m_path);
    // Only a file has an end; a pipe would be waited for.
    if (!QFileInfo(m_path).isFile() || !file.open(QIODevice::ReadOnly) ||
        !file.seek(m_shownBytes)) {
        m_more->hide();
        m_note->setText(tr("The crash log cannot be read."));
        m_note->show();
        return;
    }
    const QByteArray bytes = file.read(kBytesAtATime);
    m_shownBytes += bytes.size();
    const QString text = m_decoder.decode(bytes);
    QTextCursor end(m_text->document());
    end.movePosition(QTextCursor::End);
    end.insertText(inPieces(text));
    tell(bytes.isEmpty() ? m_shownBytes : file.size());
}

QString CrashLogView::inPieces(const QString& text)
{
    QString pieces;
    pieces.reserve(text.size());
    for (const QChar letter : text) {
        const bool isEnd = letter == u'\n';
        if (!isEnd && m_lineLength >= kLongestLine && !letter.isLowSurrogate()) {
            pieces += u'\n';
            m_lineLength = 0;
        }
        pieces += letter;
        m_lineLength = isEnd ? 0 : m_lineLength + 1;
    }
    return pieces;
}

void CrashLogView::tell(qint64 size)
{
    const bool isWhole = m_shownBytes >= size;
    m_more->setVisible(!isWhole);
    m_note->setVisible(!isWhole);
    const auto shown = [](qint64 bytes) { return QLocale().formattedDataSize(bytes, 1); };
    m_note->setText(tr("The first %1 of %2 are shown. A report holds the whole log.")
                        .arg(shown(m_shownBytes), shown(size)));
}
