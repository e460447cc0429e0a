#pragma once

#include "LibraryCommand.h"
#include "LibraryFacts.h"

/// Lists the library's trash, puts photos back, or empties it.
class TrashCommand final : public LibraryCommand
{
public:
    enum class Action : quint8 { List, Restore, Empty };

    struct Options {
        Action action{Action::List};
        bool json{false};
        bool yes{false};   ///< do not ask before deleting
        QList<qint64> ids; ///< to put back; without any, all of them
    };

    TrashCommand(LibraryOptions libraryOptions, Options options);

protected:
    [[nodiscard]] Access access() const override;
    [[nodiscard]] std::optional<int> prepare(const CommandServices& services) override;
    [[nodiscard]] int executeWithLibrary(PhotoLibrary& library,
                                         const CommandServices& services) override;

private:
    [[nodiscard]] int list(const QList<PhotoFacts>& trashed, const CommandServices& services) const;
    [[nodiscard]] int restore(PhotoLibrary& library,
                              const QList<PhotoFacts>& trashed,
                              const CommandServices& services) const;
    [[nodiscard]] int empty(PhotoLibrary& library,
                            const QList<PhotoFacts>& trashed,
                            const CommandServices& services) const;

    const Options m_options;
};
