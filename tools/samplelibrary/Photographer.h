#pragma once

#include "PhotoRenderer.h"
#include "SamplePlan.h"

#include <QList>

#include <deque>
#include <future>

/// Takes the photos of a plan ahead of time, on threads of its own, and hands them out in order.
/// Destruction waits for those that are under way. Any one thread at a time.
class Photographer final
{
public:
    /// Borrows `photos`. As many are under way at a time as there are to be `threads`, 1 or more.
    Photographer(const QList<PlannedPhoto>& photos, int threads);

    /// The next photo; called at most as often as there are photos. A JPEG photo stands in the
    /// place of the RAW one, and there is no rendering of it. Errors: OutOfSpace (memory).
    [[nodiscard]] Result<PhotoRenderer::RawPhoto> next();

private:
    void start();

    const QList<PlannedPhoto>& m_photos;
    qsizetype m_started{0};
    std::deque<std::future<Result<PhotoRenderer::RawPhoto>>> m_underWay{};
};
