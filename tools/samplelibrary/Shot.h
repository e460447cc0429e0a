#pragma once

#include "Scene.h"

#include <QDateTime>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

/// Where a photo was taken: degrees, north and east positive; metres above the sea.
struct Place {
    double latitude{0.0};
    double longitude{0.0};
    double altitude{0.0};
};

/// What the camera notes about a photo.
struct ShotFacts {
    QDateTime taken{}; ///< as the camera's clock shows it; the zone plays no part
    int iso{100};
    double exposureSeconds{1.0 / 125.0};
    double aperture{8.0};     ///< f-number
    double focalLength{50.0}; ///< millimetres
    Orientation orientation{Orientation::Upright};
    std::optional<Place> position{}; ///< written into the file
    QString description{};           ///< empty: none
    QStringList keywords{};          ///< JPEG files only
};

/// A photo to be taken.
struct Shot {
    SceneMaker scene{nullptr};
    quint32 seed{0};
    QSize picture{}; ///< pixels as they lie on the sensor; even sides
    ShotFacts facts{};
};
