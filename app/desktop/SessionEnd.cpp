#include "SessionEnd.h"

#include "DesktopProgram.h"

#include <QGuiApplication>
#include <QSessionManager>

namespace
{

class DesktopSessionEnd final : public SessionEnd
{
public:
    explicit DesktopSessionEnd(QSessionManager& manager)
        : m_manager(manager)
    {
    }

    [[nodiscard]] bool allowsInteraction() override { return m_manager.allowsInteraction(); }

    void release() override { m_manager.release(); }

    void cancel() override { m_manager.cancel(); }

private:
    QSessionManager& m_manager;
};

} // namespace

void answerSessionEnd(DesktopProgram& program, SessionEnd& end)
{
    const bool mayAsk = program.controller().isScanning() && end.allowsInteraction();
    if (!program.mayEndSession(mayAsk)) {
        end.cancel();
    }
    if (mayAsk) {
        end.release();
    }
}

void followSessionEnd(DesktopProgram& program)
{
    // The manager counts for as long as the signal is handled.
    QObject::connect(
        qGuiApp,
        &QGuiApplication::commitDataRequest,
        &program,
        [&program](QSessionManager& manager) {
            DesktopSessionEnd end(manager);
            answerSessionEnd(program, end);
        },
        Qt::DirectConnection);
}
