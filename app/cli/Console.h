#pragma once

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <optional>

class Interruption;
class QIODevice;

/// What the process is connected to.
struct TerminalFacts {
    bool canAsk{false};      ///< a person sees standard error and can answer on the input
    bool isTerminal{false};  ///< standard error is a terminal
    bool canRedraw{false};   ///< a line on it may be drawn again in place
    int columns{80};         ///< its width when it is no terminal that can be asked
    int inputDescriptor{-1}; ///< where answers are read
    int errorDescriptor{-1}; ///< which terminal is asked for its width

    /// Of standard input and standard error, the environment (NO_COLOR, TERM=dumb) considered.
    [[nodiscard]] static TerminalFacts ofThisProcess();
};

/// The two streams of a command line program and the one line of progress on a terminal, which
/// every other line erases and leaves free to be drawn anew.
/// Thread: any; lines of several threads do not mix.
class Console final
{
    Q_DISABLE_COPY_MOVE(Console)
public:
    /// The devices are open for writing and outlive the console.
    Console(QIODevice& output, QIODevice& error, const TerminalFacts& facts);

    /// A line, or lines, for people on standard output; control characters are left out.
    void print(const QString& text);
    /// A document, or the next piece of one, on standard output, byte for byte.
    void printDocument(const QByteArray& document);
    /// A line, or lines, for people on standard error.
    void say(const QString& text);

    /// Draws the line of progress; does nothing where lines cannot be drawn again.
    void showStatus(const QString& text);
    void clearStatus();

    /// A line of the terminal's input, asked for beforehand; nothing at its end, on a request to
    /// stop, or where there is nobody to ask.
    [[nodiscard]] std::optional<QString> readLine(const Interruption& interruption) const;

    /// Whether a person can be asked.
    [[nodiscard]] bool canAsk() const { return m_facts.canAsk; }

    [[nodiscard]] bool isTerminal() const { return m_facts.isTerminal; }

    [[nodiscard]] bool canRedraw() const { return m_facts.canRedraw; }

    /// The width of the terminal as it is now.
    [[nodiscard]] int columns() const;
    /// Whether something could not be written to standard output, though somebody reads it: a
    /// reader that has seen enough and closed its pipe is no failure.
    [[nodiscard]] bool hasFailed() const;

private:
    void writeOutput(const QByteArray& bytes);
    void eraseStatus();

    QIODevice& m_output;
    QIODevice& m_error;
    const TerminalFacts m_facts;
    mutable QMutex m_mutex;
    bool m_statusShown{false};
    bool m_failed{false};
    bool m_readerIsGone{false};
};
