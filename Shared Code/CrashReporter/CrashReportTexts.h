#pragma once

#include <QCoreApplication>
#include <QString>

/// Every sentence of the crash reporter that is the same whatever shows it. English is the key of
/// the translation and what is shown without one. Any thread.
namespace CrashReportTexts
{

inline QString translated(const char* english)
{
    return QCoreApplication::translate("ZTBCrashReporter", english);
}

/// Title of the window.
inline QString title(const QString& applicationName)
{
    return translated("Crash Reporter: %1").arg(applicationName);
}

inline QString title(const QString& applicationName, const QString& shortVersion)
{
    return translated("Crash Reporter: %1 (%2)").arg(applicationName, shortVersion);
}

inline QString commentsPlaceholder()
{
    return translated("Please enter a description of the actions leading up to the crash.");
}

// Sheets
inline QString submitted()
{
    return translated("The crash report was successfully submitted.");
}

inline QString thanks(const QString& applicationName)
{
    return translated("Thank you for taking the time to help improve %1!").arg(applicationName);
}

inline QString notSubmitted()
{
    return translated("An error occurred while submitting the crash report.");
}

inline QString theErrorWas(const QString& description)
{
    return translated("The error was: %1").arg(description);
}

// Errors
inline QString unrecognizedResponse()
{
    return translated("Unrecognized response from the server");
}

inline QString timedOut()
{
    return translated("The request timed out.");
}

inline QString connectionLost()
{
    return translated("The network connection was lost.");
}

inline QString redirectedToUnsafeAddress()
{
    return translated("The server redirected the report to an address that is not safe to use.");
}

inline QString redirectedToAnotherServer(const QString& server)
{
    return translated("The server redirected the report to another server, %1, and it was not "
                      "sent there.")
        .arg(server);
}

inline QString tooManyRedirects()
{
    return translated("The server redirected the report too many times.");
}

} // namespace CrashReportTexts
