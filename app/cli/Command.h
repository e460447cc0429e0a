#pragma once

class Bundle;
class Clock;
class Console;
class Interruption;
class PowerManagement;
class UserNotificationCenter;
class Workspace;

/// What a command is given; everything outlives it.
struct CommandServices {
    Console& console;
    Interruption& interruption;
    const Bundle& bundle;
    Workspace& workspace;
    PowerManagement& power;
    UserNotificationCenter& notifications;
    Clock& clock;
};

/// One command of the program with the options it was given.
class Command
{
public:
    virtual ~Command() = default;
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// Does it and answers the exit status (ExitStatus.h). Thread: main.
    [[nodiscard]] virtual int execute(const CommandServices& services) = 0;
};
