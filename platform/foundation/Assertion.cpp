#include "Assertion.h"

AssertionFailure::AssertionFailure(QString description, QString function, QString file, int line)
    : m_description(std::move(description))
    , m_function(std::move(function))
    , m_file(std::move(file))
    , m_line(line)
    , m_what(QStringLiteral("%1 (%2, %3:%4)")
                 .arg(m_description, m_function, m_file)
                 .arg(m_line)
                 .toUtf8())
{
}
