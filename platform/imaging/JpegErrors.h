#pragma once

#include <QString>

#include <jpeglib.h>

#include <array>
#include <csetjmp>
#include <cstdio>

/// libjpeg's reporting, turned into a return value and the first complaint about the data.
/// One object serves one compressor or decompressor and must outlive it.
class JpegErrors final
{
public:
    JpegErrors();
    JpegErrors(const JpegErrors&) = delete;
    JpegErrors& operator=(const JpegErrors&) = delete;

    /// What goes into the `err` of the compressor or decompressor.
    [[nodiscard]] jpeg_error_mgr* manager() { return &m_manager.base; }

    /// Runs `call`; false where libjpeg gave up in it. libjpeg leaves by longjmp, so `call` and
    /// what it calls hold no object that a destructor must clean up.
    template <typename Callable>
    [[nodiscard]] bool run(const Callable& call)
    {
        if (setjmp(m_manager.jump) != 0) { // NOLINT(cert-err52-cpp): libjpeg's way out
            return false;
        }
        call();
        return true;
    }

    /// Whether libjpeg gave up for want of memory.
    [[nodiscard]] bool outOfMemory() const { return m_manager.outOfMemory; }

    /// Whether the data are damaged: libjpeg gave up or had to invent what was missing.
    [[nodiscard]] bool damaged() const { return m_manager.damaged; }

    /// libjpeg's first complaint, "Premature end of JPEG file" say.
    [[nodiscard]] QString text() const { return QString::fromLatin1(m_manager.text.data()); }

private:
    struct Manager {
        jpeg_error_mgr base{}; // first, so that libjpeg's pointer leads here
        std::jmp_buf jump{};
        bool damaged{false};
        bool outOfMemory{false};
        std::array<char, JMSG_LENGTH_MAX> text{};
    };

    static void note(j_common_ptr codec);
    static void onError(j_common_ptr codec);
    static void onMessage(j_common_ptr codec, int level);
    static void onOutput(j_common_ptr codec);

    Manager m_manager;
};
