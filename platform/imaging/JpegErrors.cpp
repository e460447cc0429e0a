#include "JpegErrors.h"

#include <jerror.h>

namespace
{

/// Warnings about headers alone; every pixel is still the file's own.
bool harmless(int code)
{
    return code == JWRN_JFIF_MAJOR || code == JWRN_ADOBE_XFORM || code == JWRN_NOT_SEQUENTIAL ||
           code == JWRN_BOGUS_ICC;
}

} // namespace

JpegErrors::JpegErrors()
{
    jpeg_std_error(&m_manager.base);
    m_manager.base.error_exit = onError;
    m_manager.base.emit_message = onMessage;
    m_manager.base.output_message = onOutput;
}

void JpegErrors::note(j_common_ptr codec)
{
    auto* const manager = reinterpret_cast<Manager*>(codec->err);
    if (manager->text.front() == '\0') {
        (*codec->err->format_message)(codec, manager->text.data());
    }
}

void JpegErrors::onError(j_common_ptr codec)
{
    auto* const manager = reinterpret_cast<Manager*>(codec->err);
    note(codec);
    if (codec->err->msg_code == JERR_OUT_OF_MEMORY) {
        manager->outOfMemory = true;
    } else {
        manager->damaged = true;
    }
    std::longjmp(manager->jump, 1); // NOLINT(cert-err52-cpp): libjpeg's way out
}

void JpegErrors::onMessage(j_common_ptr codec, int level)
{
    // Level -1 is a complaint about the data, the others are tracing.
    if (level >= 0 || harmless(codec->err->msg_code)) {
        return;
    }
    note(codec);
    ++codec->err->num_warnings;
    reinterpret_cast<Manager*>(codec->err)->damaged = true;
}

void JpegErrors::onOutput(j_common_ptr codec)
{
    note(codec);
}
