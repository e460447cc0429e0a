#include "Console.h"

#include "Interruption.h"
#include "TextLayout.h"

#include <QFileDevice>
#include <QMutexLocker>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

/// How long a request to stop may go unnoticed while a question waits for its answer.
constexpr int kPollMilliseconds = 100;
constexpr qsizetype kLongestAnswer = 4096;

/// A device that holds bytes back would show them too late, or after those of the other stream.
void flush(QIODevice& device)
{
    if (auto* const file = qobject_cast<QFileDevice*>(&device)) {
        file->flush();
    }
}

/// Waits for one byte. Nothing at the end of the input and on a request to stop.
std::optional<char> readByte(int descriptor, const Interruption& interruption)
{
    while (!interruption.isRequested()) {
        pollfd waiting{descriptor, POLLIN, 0};
        const int ready = poll(&waiting, 1, kPollMilliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) {
            continue;
        }
        char byte = 0;
        const ssize_t count = ready < 0 ? -1 : read(descriptor, &byte, 1);
        if (count == 1) {
            return byte;
        }
        if (count == 0 || errno != EINTR) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace

TerminalFacts TerminalFacts::ofThisProcess()
{
    TerminalFacts facts;
    facts.inputDescriptor = STDIN_FILENO;
    facts.errorDescriptor = STDERR_FILENO;
    facts.isTerminal = isatty(STDERR_FILENO) == 1;
    facts.canAsk = facts.isTerminal && isatty(STDIN_FILENO) == 1;
    facts.canRedraw =
        facts.isTerminal && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
    return facts;
}

Console::Console(QIODevice& output, QIODevice& error, const TerminalFacts& facts)
    : m_output(output)
    , m_error(error)
    , m_facts(facts)
{
}

void Console::print(const QString& text)
{
    const QString line = TextLayout::printableLines(text);
    writeOutput((line.endsWith(u'\n') ? line : line + u'\n').toUtf8());
}

void Console::printDocument(const QByteArray& document)
{
    writeOutput(document);
}

void Console::say(const QString& text)
{
    const QMutexLocker locker(&m_mutex);
    eraseStatus();
    m_error.write((TextLayout::printableLines(text) + u'\n').toUtf8());
    flush(m_error);
}

void Console::showStatus(const QString& text)
{
    if (!m_facts.canRedraw) {
        return;
    }
    const QMutexLocker locker(&m_mutex);
    eraseStatus();
    m_error.write(TextLayout::printable(text).toUtf8());
    flush(m_error);
    m_statusShown = true;
}

void Console::clearStatus()
{
    const QMutexLocker locker(&m_mutex);
    eraseStatus();
    flush(m_error);
}

std::optional<QString> Console::readLine(const Interruption& interruption) const
{
    if (!m_facts.canAsk) {
        return std::nullopt;
    }
    QByteArray line;
    while (line.size() < kLongestAnswer) {
        const std::optional<char> byte = readByte(m_facts.inputDescriptor, interruption);
        if (!byte) {
            return std::nullopt;
        }
        if (*byte == '\n') {
            break;
        }
        line += *byte;
    }
    return QString::fromUtf8(line).trimmed();
}

int Console::columns() const
{
    winsize size{};
    if (m_facts.errorDescriptor >= 0 && ioctl(m_facts.errorDescriptor, TIOCGWINSZ, &size) == 0 &&
        size.ws_col > 0) {
        return size.ws_col;
    }
    return m_facts.columns;
}

bool Console::hasFailed() const
{
    const QMutexLocker locker(&m_mutex);
    return m_failed;
}

void Console::writeOutput(const QByteArray& bytes)
{
    const QMutexLocker locker(&m_mutex);
    eraseStatus();
    flush(m_error);
    if (m_readerIsGone) {
        return;
    }
    bool isWritten = m_output.write(bytes) == bytes.size();
    if (auto* const file = qobject_cast<QFileDevice*>(&m_output)) {
        isWritten = file->flush() && isWritten;
    }
    // The device tells the reason as a text only.
    m_readerIsGone = !isWritten && m_output.errorString() == qt_error_string(EPIPE);
    m_failed = m_failed || (!isWritten && !m_readerIsGone);
}

void Console::eraseStatus()
{
    if (m_statusShown) {
        m_error.write("\r\x1b[K");
        m_statusShown = false;
    }
}
