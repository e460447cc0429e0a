#include "SamplePlan.h"

#include "PhotoRenderer.h"

#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// Rounds through the subjects that share their events; then new events begin.
constexpr int kRoundsOfAnEvent = 6;
/// Days between an event and the next one of its kind.
constexpr int kDaysBetween = 37;
constexpr int kSecondsBetween = 127;

constexpr double kSensorAspect = 1.5;
constexpr double kCompactAspect = 4.0 / 3.0;

QDateTime moment(QDate day, QTime time)
{
    return {day, time, Qt::UTC};
}

PlannedPhoto aboveTheValley()
{
    return {.shot = {.scene = Scenes::hills,
                     .seed = 101,
                     .picture = {},
                     .facts = {.taken = moment({2011, 5, 14}, {8, 42, 17, 310}),
                               .iso = 100,
                               .exposureSeconds = 1.0 / 400,
                               .aperture = 8.0,
                               .focalLength = 24.0}},
            .event = u"Hill Country"_s,
            .name = u"Above the Valley"_s,
            .comment = u"First morning of the walk. We had the path to ourselves."_s,
            .rating = 4,
            .keywords = {u"Landscape"_s, u"Vacation"_s},
            .albums = {u"Best of the Year"_s, u"Out of Doors"_s}};
}

PlannedPhoto portraitInTheGarden()
{
    return {.shot = {.scene = Scenes::portrait,
                     .seed = 102,
                     .picture = {},
                     .facts = {.taken = moment({2011, 5, 20}, {17, 31, 2, 770}),
                               .iso = 200,
                               .exposureSeconds = 1.0 / 250,
                               .aperture = 2.8,
                               .focalLength = 85.0,
                               .orientation = Orientation::TurnClockwise}},
            .event = u"At Home"_s,
            .name = u"Portrait in the Garden"_s,
            .comment = u"Für Oma und Opa – 祖父母へ, με αγάπη 🌻"_s,
            .rating = 5,
            .keywords = {u"Family"_s, u"Porträt"_s},
            .albums = {u"Best of the Year"_s, u"Für die Großeltern"_s}};
}

PlannedPhoto eveningAtTheLake()
{
    return {.shot = {.scene = Scenes::lake,
                     .seed = 103,
                     .picture = {},
                     .facts = {.taken = moment({2011, 5, 14}, {20, 56, 33, 150}),
                               .iso = 100,
                               .exposureSeconds = 1.0 / 1000,
                               .aperture = 11.0,
                               .focalLength = 35.0}},
            .event = u"Hill Country"_s,
            .name = u"Evening at the Lake"_s,
            .comment = u"The water was far too cold for a swim.\nWe went in all the same."_s,
            .rating = 5,
            .keywords = {u"Landscape"_s, u"Sunset"_s, u"Vacation"_s},
            .albums = {u"Best of the Year"_s, u"Out of Doors"_s},
            .place = Place{46.6863, 7.8632, 567.0}};
}

PlannedPhoto fruitByTheWindow()
{
    return {.shot = {.scene = Scenes::stillLife,
                     .seed = 104,
                     .picture = {},
                     .facts = {.taken = moment({2011, 5, 20}, {16, 5, 48, 20}),
                               .iso = 400,
                               .exposureSeconds = 1.0 / 60,
                               .aperture = 4.0,
                               .focalLength = 50.0}},
            .event = u"At Home"_s,
            .name = u"Fruit by the Window"_s,
            .rating = 3,
            .keywords = {u"Kitchen"_s},
            .albums = {u"Für die Großeltern"_s}};
}

PlannedPhoto greenWindow()
{
    return {.shot = {.scene = Scenes::brickWall,
                     .seed = 105,
                     .picture = {},
                     .facts = {.taken = moment({2011, 6, 3}, {11, 20, 9, 480}),
                               .iso = 100,
                               .exposureSeconds = 1.0 / 320,
                               .aperture = 5.6,
                               .focalLength = 40.0}},
            .event = u"Old Town"_s,
            .name = u"Green Window"_s,
            .keywords = {u"Architecture"_s},
            .albums = {u"Out of Doors"_s},
            .place = Place{53.8655, 10.6866, 13.5}};
}

PlannedPhoto whatCameUp()
{
    return {.shot = {.scene = Scenes::flowers,
                     .seed = 106,
                     .picture = {},
                     .facts = {.taken = moment({2011, 5, 20}, {15, 12, 55, 0}),
                               .iso = 200,
                               .exposureSeconds = 1.0 / 500,
                               .aperture = 5.6,
                               .focalLength = 60.0}},
            .event = u"At Home"_s,
            .name = u"What Came Up This Summer"_s,
            .comment = u"Mit lieben Grüßen aus dem Garten"_s,
            .rating = 4,
            .keywords = {u"Flowers"_s, u"Kids"_s},
            .albums = {u"Out of Doors"_s, u"Für die Großeltern"_s}};
}

PlannedPhoto afterTheRain()
{
    return {.shot = {.scene = Scenes::nightStreet,
                     .seed = 107,
                     .picture = {},
                     .facts = {.taken = moment({2011, 6, 3}, {22, 48, 40, 930}),
                               .iso = 1600,
                               .exposureSeconds = 1.0 / 30,
                               .aperture = 2.8,
                               .focalLength = 28.0}},
            .event = u"Old Town"_s,
            .name = u"After the Rain"_s,
            .rating = 2,
            .keywords = {u"Architecture"_s, u"Night"_s},
            .place = Place{53.8667, 10.6842, 11.0}};
}

PlannedPhoto testChart()
{
    return {.shot = {.scene = Scenes::chart,
                     .seed = 108,
                     .picture = {},
                     .facts = {.taken = moment({2011, 6, 14}, {13, 0, 30, 560}),
                               .iso = 100,
                               .exposureSeconds = 1.0 / 8,
                               .aperture = 8.0,
                               .focalLength = 50.0}},
            .event = u"Camera Tests"_s,
            .comment = u"Tripod, self-timer, two lamps at 45°."_s,
            .rating = 1};
}

/// A JPEG photo of a subject, some minutes after the RAW one.
PlannedPhoto jpegOf(const PlannedPhoto& subject, int number)
{
    PlannedPhoto photo = subject;
    photo.raw = false;
    photo.fileName = u"IMG_%1.jpg"_s.arg(2000 + number);
    photo.shot.seed += 900;
    photo.shot.facts.taken = photo.shot.facts.taken.addSecs(qint64{15} * 60);
    photo.name.clear();
    photo.comment.clear();
    photo.keywords.clear();
    photo.albums.clear();
    photo.place.reset();
    return photo;
}

QList<PlannedPhoto> jpegPhotos()
{
    PlannedPhoto bed = jpegOf(whatCameUp(), 1);
    bed.rating = 0;
    bed.shot.facts.description = u"Ein Beet voller Überraschungen"_s;
    bed.shot.facts.keywords = {u"Flowers"_s, u"Garten"_s};
    bed.albums = {u"Für die Großeltern"_s};

    PlannedPhoto evening = jpegOf(eveningAtTheLake(), 2);
    evening.rating = 1;
    evening.albums = {u"Out of Doors"_s};

    PlannedPhoto wall = jpegOf(greenWindow(), 3);
    wall.rating = 2;
    wall.keywords = {u"Architecture"_s};
    wall.place = Place{53.8689, 10.6873, 12.0};
    return {bed, evening, wall};
}

/// The same subject another time: `round` 0 is the first.
PlannedPhoto again(PlannedPhoto photo, int round)
{
    if (const int series = round / kRoundsOfAnEvent; series > 0) {
        photo.event += u" %1"_s.arg(series + 1);
        photo.shot.facts.taken = photo.shot.facts.taken.addDays(qint64{kDaysBetween} * series);
    }
    if (round > 0 && !photo.name.isEmpty()) {
        photo.name += u" %1"_s.arg(round + 1);
    }
    if (round > 0) {
        // The camera was turned once; a girl can be photographed either way.
        photo.shot.facts.orientation = Orientation::Upright;
    }
    photo.shot.seed += static_cast<quint32>(round) * 1000;
    const qint64 seconds = qint64{kSecondsBetween} * (round % kRoundsOfAnEvent);
    photo.shot.facts.taken = photo.shot.facts.taken.addSecs(seconds);
    return photo;
}

} // namespace

QList<PlannedPhoto> SamplePlan::photos(const SampleOptions& options)
{
    // The first few differ most: a small library shows all that a large one does.
    static constexpr std::array<PlannedPhoto (*)(), 8> kSubjects{aboveTheValley,
                                                                 portraitInTheGarden,
                                                                 eveningAtTheLake,
                                                                 fruitByTheWindow,
                                                                 greenWindow,
                                                                 whatCameUp,
                                                                 afterTheRain,
                                                                 testChart};
    QList<PlannedPhoto> planned;
    for (int i = 0; i < options.photos; ++i) {
        const size_t subject = static_cast<size_t>(i) % kSubjects.size();
        PlannedPhoto photo = again(kSubjects[subject](), i / static_cast<int>(kSubjects.size()));
        photo.fileName = u"DSC_%1.dng"_s.arg(101 + i, 4, 10, QLatin1Char('0'));
        photo.shot.picture = PhotoRenderer::pictureSize(options.megapixels, kSensorAspect);
        planned.append(photo);
    }
    // One receiver of positions was along, on one morning.
    planned.first().shot.facts.position = Place{46.7271, 7.7892, 1421.5};
    for (PlannedPhoto photo : jpegPhotos()) {
        photo.shot.picture = PhotoRenderer::pictureSize(options.megapixels / 2.0, kCompactAspect);
        planned.append(photo);
    }
    return planned;
}

QStringList SamplePlan::albums()
{
    return {u"Best of the Year"_s, u"Out of Doors"_s, u"Für die Großeltern"_s};
}
