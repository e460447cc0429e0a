#pragma once

#include "Result.h"

#include <QString>

#include <SQLiteCpp/SQLiteCpp.h>

#include <type_traits>
#include <utility>

/// Where SQLite's exceptions become errors, and errors the exceptions of the scripting surface.
namespace LibraryErrors
{

/// What SQLite raised on the library at `package`, in words for people that name the path and the
/// remedy. `file`: name of the database in question, where that is known.
[[nodiscard]] Error fromSqlite(const SQLite::Exception& exception,
                               const QString& package,
                               const QString& file = QString());

/// The message with a full stop, so that another sentence may follow.
[[nodiscard]] QString asSentence(const QString& message);

/// The error of a file that could not be written, with what to do about it.
[[nodiscard]] Error withRemedy(const Error& error);

/// Whether sidecars or catalogues did not follow the databases because something was left alone for
/// good, a damaged catalogue or what a link leads out of the package: no later run can do more.
[[nodiscard]] bool isLeftAlone(const Result<void>& followed);

/// Raises ScriptingException with the error's message.
[[noreturn]] void raise(const Error& error);

/// Runs `step`, which returns a Result; SQLite::Exception becomes its error.
template <typename Step>
[[nodiscard]] auto caught(const QString& package, Step&& step) -> std::invoke_result_t<Step>
{
    try {
        return std::forward<Step>(step)();
    } catch (const SQLite::Exception& exception) {
        return fromSqlite(exception, package);
    }
}

} // namespace LibraryErrors
