#pragma once

class DesktopProgram;

/// The end of the person's session on the machine, as the desktop announces it to a program: what
/// can be asked and told. Main thread.
class SessionEnd
{
public:
    SessionEnd() = default;
    virtual ~SessionEnd() = default;
    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;

    /// Whether the person may be asked now; if so, the end waits until it is released.
    [[nodiscard]] virtual bool allowsInteraction() = 0;
    /// Nobody is asked any more.
    virtual void release() = 0;
    /// The session is to go on.
    virtual void cancel() = 0;
};

/// Lets the session end when nothing is under way, or has come to its end in order; a person whose
/// scan runs is asked first where the desktop allows that, and may keep the session.
void answerSessionEnd(DesktopProgram& program, SessionEnd& end);

/// Answers from now on whenever the desktop announces the end of the session.
void followSessionEnd(DesktopProgram& program);
