#include "Photographer.h"

#include "AlternateSignalStack.h"

#include <new>

using namespace Qt::StringLiterals;

namespace
{

using Taken = Result<PhotoRenderer::RawPhoto>;

Taken take(const PlannedPhoto& planned)
{
    try {
        if (planned.raw) {
            return PhotoRenderer::takeRaw(planned.shot);
        }
        const auto jpeg = PhotoRenderer::takeJpeg(planned.shot);
        return jpeg.ok() ? Taken(PhotoRenderer::RawPhoto{jpeg.value(), {}}) : Taken(jpeg.error());
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     u"There is not enough memory for \"%1\""_s.arg(planned.fileName)};
    }
}

} // namespace

Photographer::Photographer(const QList<PlannedPhoto>& photos, int threads)
    : m_photos(photos)
{
    for (int i = 0; i < threads; ++i) {
        start();
    }
}

Taken Photographer::next()
{
    Taken photo = m_underWay.front().get();
    m_underWay.pop_front();
    start();
    return photo;
}

void Photographer::start()
{
    if (m_started < m_photos.size()) {
        const PlannedPhoto& photo = m_photos.at(m_started++);
        m_underWay.push_back(std::async(std::launch::async, [&photo] {
            const AlternateSignalStack signalStack;
            return take(photo);
        }));
    }
}
