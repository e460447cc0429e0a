#pragma once

#include "ForecastSelection.h"
#include "TargetSize.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

/// The settings as a scan would take them now.
struct ForecastSettings {
    bool albumEnabled{false};
    bool libraryKnown{false}; ///< a library was picked for an earlier scan and is still held
    bool tagEnabled{false};
    bool trashEnabled{false};
    bool processingOption{true}; ///< whether the original files are converted
    OutputSize outputSize;
    double quality{0.8}; ///< 0..1
};

/// Says in words what the next press of the scan button will do. Pure; any thread.
class PressForecast final
{
    Q_DECLARE_TR_FUNCTIONS(PressForecast)
public:
    enum class Severity : quint8 {
        Information,
        Warning, ///< it does what a person may not expect
        Blocked, ///< nothing good comes of pressing before this is mended
    };

    struct Line {
        Severity severity{Severity::Information};
        QString text;
        friend bool operator==(const Line&, const Line&) = default;
    };

    struct Facts {
        ForecastSelection selection;
        ForecastSettings settings;
        bool scanning{false};
    };

    /// One sentence or two a line, at least one line. What blocks the press stands alone; so does
    /// what is to be said while a scan runs.
    [[nodiscard]] static QList<Line> lines(const Facts& facts);

private:
    using Lines = QList<Line>;

    static Lines whileScanning(const ForecastSettings& settings);
    static void addBlocks(Lines& lines, const Facts& facts);
    static void addLibraryBlocks(Lines& lines, const Facts& facts);
    static void addSizeBlocks(Lines& lines, const OutputSize& size);
    static void addPhotos(Lines& lines, const ForecastSources& sources);
    static void addSkipped(Lines& lines, const ForecastSources& sources);
    static void addSource(Lines& lines, const Facts& facts);
    static void addPicture(Lines& lines, const ForecastSettings& settings);
    static void addFiling(Lines& lines, const ForecastSettings& settings);
    static void addOriginals(Lines& lines, const ForecastSettings& settings);
    static void addMissing(Lines& lines, const ForecastSources& sources);

    [[nodiscard]] static QString sizeInWords(const OutputSize& size);
    /// One text for a single thing, another one for none or many; "%1" stands for the number.
    [[nodiscard]] static QString counted(int count, const char* one, const char* many);
};
