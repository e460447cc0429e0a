#pragma once

#include <QString>

#include <exception>

/// What is raised where a call cannot be answered at all and a message is owed to whoever set the
/// program up: a name to tell it by and a reason that a person understands.
class GeneralException final : public std::exception
{
public:
    GeneralException(QString name, QString reason);

    [[nodiscard]] const QString& name() const { return m_name; }

    [[nodiscard]] const QString& reason() const { return m_reason; }

    /// "NAME: REASON".
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_name;
    QString m_reason;
    QByteArray m_what;
};
