#pragma once

#include <QString>

#include <utility>
#include <variant>

/// Why an expected failure happened; what was concerned is in the message.
enum class ErrorCode : quint8 {
    NotFound,    ///< no such file, photo, album
    Unreadable,  ///< exists but cannot be read
    NotWritable, ///< cannot be written, or only read access
    LeadsOut,    ///< is not written: a link leads to what belongs to somebody else
    OutOfSpace,  ///< the disk or quota is full
    Damaged,     ///< content that contradicts itself or ends early
    Unsupported, ///< content of a kind or version that is not handled
    InUse,       ///< another program holds it
    NotClosed,   ///< left open by a program that ended without closing it
    Interrupted, ///< the user or the system asked to stop
    Internal,    ///< a library refused something that should have worked
};

/// An expected failure. `message` is one English sentence or clause that names the file or thing
/// concerned and can be shown to a person.
struct Error {
    ErrorCode code{ErrorCode::Internal};
    QString message;
};

/// Either a value or an Error. Ask `ok()` first; `value()` of a failure and `error()` of a success
/// are programming errors (asserted).
template <typename T>
class [[nodiscard]] Result final
{
public:
    // A function says "return value" or "return error".
    Result(T value) // NOLINT(google-explicit-constructor)
        : m_content(std::move(value))
    {
    }

    Result(Error error) // NOLINT(google-explicit-constructor)
        : m_content(std::move(error))
    {
    }

    [[nodiscard]] bool ok() const { return m_content.index() == 0; }

    explicit operator bool() const { return ok(); }

    [[nodiscard]] const T& value() const&
    {
        Q_ASSERT(ok());
        return *std::get_if<T>(&m_content);
    }

    [[nodiscard]] T& value() &
    {
        Q_ASSERT(ok());
        return *std::get_if<T>(&m_content);
    }

    [[nodiscard]] T&& value() &&
    {
        Q_ASSERT(ok());
        return std::move(*std::get_if<T>(&m_content));
    }

    [[nodiscard]] const Error& error() const
    {
        Q_ASSERT(!ok());
        return *std::get_if<Error>(&m_content);
    }

private:
    std::variant<T, Error> m_content;
};

/// Success without a value, or an Error.
template <>
class [[nodiscard]] Result<void> final
{
public:
    Result() = default;

    Result(Error error) // NOLINT(google-explicit-constructor)
        : m_error(std::move(error))
        , m_failed(true)
    {
    }

    [[nodiscard]] bool ok() const { return !m_failed; }

    explicit operator bool() const { return ok(); }

    [[nodiscard]] const Error& error() const
    {
        Q_ASSERT(m_failed);
        return m_error;
    }

private:
    Error m_error;
    bool m_failed{false};
};
