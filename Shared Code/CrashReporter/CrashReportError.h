#pragma once

#include <QString>

/// Why a report was not accepted. `domain` tells whose number `code` is: "NSPOSIXErrorDomain" for
/// an answer that is not the one that was agreed, "QNetworkReply" for the transport.
struct CrashReportError {
    QString domain;
    int code{0};
    QString localizedDescription;
    friend bool operator==(const CrashReportError&, const CrashReportError&) = default;
};
