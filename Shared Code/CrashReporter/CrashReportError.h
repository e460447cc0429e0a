#pragma once

#include "CrashReportTexts.h"

#include <QString>

/// Why a report was not accepted. `domain` tells whose number `code` is: "NSPOSIXErrorDomain" for
/// an answer that is not the one that was agreed, "QNetworkReply" for the transport.
struct CrashReportError {
    QString domain;
    int code{0};
    QString localizedDescription;

    /// The server answered, and not what is agreed.
    static CrashReportError unrecognizedResponse()
    {
        constexpr int kUnrecognized = 100;
        return {QStringLiteral("NSPOSIXErrorDomain"),
                kUnrecognized,
                CrashReportTexts::unrecognizedResponse()};
    }

    friend bool operator==(const CrashReportError&, const CrashReportError&) = default;
};
