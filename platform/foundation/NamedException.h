#pragma once

#include <QString>

#include <exception>

/// What the exceptions of this program that carry a message have in common: a name to tell them
/// by and a reason that a person understands.
class NamedException : public std::exception
{
public:
    NamedException(QString name, QString reason);

    /// A short identifier, such as "ImportFailed".
    [[nodiscard]] const QString& name() const { return m_name; }

    /// A sentence.
    [[nodiscard]] const QString& reason() const { return m_reason; }

    /// "NAME: REASON".
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_name;
    QString m_reason;
    QByteArray m_what;
};

/// What is raised where a call cannot be answered at all and a message is owed to whoever set the
/// program up.
class GeneralException final : public NamedException
{
public:
    using NamedException::NamedException;
};
