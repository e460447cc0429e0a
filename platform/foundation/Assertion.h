#pragma once

#include <QString>

#include <exception>

/// A programming error that is raised, not aborted on: a parameter assertion or an
/// internal-consistency assertion. Carries its text, function, source file and line.
class AssertionFailure final : public std::exception
{
public:
    AssertionFailure(QString description, QString function, QString file, int line);

    /// The text, such as "Invalid parameter not satisfying: path != nil".
    [[nodiscard]] const QString& description() const { return m_description; }

    [[nodiscard]] const QString& function() const { return m_function; }

    /// The file as the program names it: folder and base name without suffix
    /// ("Shared Code/SBUtils-iPhoto").
    [[nodiscard]] const QString& file() const { return m_file; }

    [[nodiscard]] int line() const { return m_line; }

    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_description;
    QString m_function;
    QString m_file;
    int m_line;
    QByteArray m_what;
};

/// Raises AssertionFailure with "Invalid parameter not satisfying: CONDITION" unless it holds.
/// `file`: the source file as the program names it.
#define CORVANE_PARAMETER_ASSERT(condition, file)                                                  \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            throw AssertionFailure(QStringLiteral("Invalid parameter not satisfying: %1")          \
                                       .arg(QStringLiteral(#condition)),                           \
                                   QString::fromLatin1(static_cast<const char*>(__func__)),        \
                                   (file),                                                         \
                                   __LINE__);                                                      \
        }                                                                                          \
    } while (false)

/// Raises AssertionFailure with `text` unless the condition holds. `function`: the operation that
/// failed, and of which object, as a reader of the log knows them.
#define CORVANE_CONSISTENCY_ASSERT(condition, text, function, file)                                \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            throw AssertionFailure((text), (function), (file), __LINE__);                          \
        }                                                                                          \
    } while (false)
