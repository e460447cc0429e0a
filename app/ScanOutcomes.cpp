#include "ScanOutcomes.h"

#include "CorvaneAppDelegate.h"

ScanOutcomes::ScanOutcomes(CorvaneAppDelegate& controller, QObject* parent)
    : QObject(parent)
{
    using Controller = CorvaneAppDelegate;
    connect(&controller, &Controller::scanStarted, this, [this] { m_photos.clear(); });
    connect(&controller,
            &Controller::selectionTaken,
            this,
            [this](const QList<PhotoOutcome>& photos) { m_photos = photos; });
    connect(&controller, &Controller::photoDone, this, [this](const PhotoOutcome& outcome) {
        if (outcome.selectionIndex < m_photos.size()) {
            m_photos[outcome.selectionIndex] = outcome;
        }
    });
}
