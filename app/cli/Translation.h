#pragma once

#include <QCoreApplication>
#include <QString>

/// What the command line says, in the user's language; the English text is the key. Any thread.
namespace Translation
{

[[nodiscard]] inline QString translated(const char* english)
{
    return QCoreApplication::translate("CommandLine", english);
}

/// One text for a single thing, another one for none or many; "%1" stands for the number.
[[nodiscard]] inline QString counted(qint64 count, const char* one, const char* many)
{
    return translated(count == 1 ? one : many).arg(count);
}

} // namespace Translation
