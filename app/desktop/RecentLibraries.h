#pragma once

#include <QString>
#include <QStringList>

class UserDefaults;

/// The libraries that were opened before, the last one first, kept in the settings. Main thread.
class RecentLibraries final
{
public:
    static constexpr qsizetype kMost = 8;

    /// `defaults` outlives it.
    explicit RecentLibraries(UserDefaults& defaults);

    /// Absolute paths, whether or not they still exist.
    [[nodiscard]] QStringList paths() const;
    void add(const QString& path);
    void clear();

private:
    UserDefaults& m_defaults;
};
