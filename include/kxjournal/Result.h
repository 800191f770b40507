#pragma once

#include <QString>
#include <QtGlobal>
#include <utility>

namespace kx {

/// Why a call failed: a text for the user. A failure is always spelled out
/// as an Error, so that no value (false, 0, an empty text) can pass for one.
class Error
{
public:
    /// A failure that says \a message (an empty text becomes "未知错误").
    explicit Error(QString message)
        : m_message(message.isEmpty() ? QStringLiteral("未知错误") : std::move(message))
    {
    }
    /// The text that says why.
    const QString &message() const { return m_message; }

private:
    QString m_message;
};

/// The outcome of a fallible call: a value, or an Error that says why there
/// is none. Reading value() or takeValue() of a failure is a programming
/// error that stops the program in every build, saying which error was
/// ignored; valueOr() is the way to read a value that may be missing.
template <typename T>
class [[nodiscard]] Result
{
public:
    /// A success holding \a value.
    Result(T value) : m_value(std::move(value)) {} // NOLINT: a value is a success
    /// A failure.
    Result(Error error) : m_error(std::move(error).message()), m_failed(true) {} // NOLINT

    /// True when the call succeeded.
    bool ok() const { return !m_failed; }
    /// Same as ok().
    explicit operator bool() const { return ok(); }
    /// The value; the call must have succeeded.
    const T &value() const
    {
        if (m_failed)
            failedRead("value");
        return m_value;
    }
    /// Moves the value out; the call must have succeeded.
    T takeValue()
    {
        if (m_failed)
            failedRead("takeValue");
        return std::move(m_value);
    }
    /// The value, or \a fallback on failure.
    T valueOr(const T &fallback) const { return ok() ? m_value : fallback; }
    /// Why the call failed; empty on success.
    const QString &error() const { return m_error; }

private:
    [[noreturn]] void failedRead(const char *what) const
    {
        qFatal("kx::Result::%s() of a failed result (the error was not checked): %s", what,
               qUtf8Printable(m_error));
    }

    T m_value{};
    QString m_error;
    bool m_failed = false;
};

/// The outcome of a fallible call that has no value.
template <>
class [[nodiscard]] Result<void>
{
public:
    /// A success.
    Result() = default;
    /// A failure.
    Result(Error error) : m_error(std::move(error).message()), m_failed(true) {} // NOLINT

    /// True when the call succeeded.
    bool ok() const { return !m_failed; }
    /// Same as ok().
    explicit operator bool() const { return ok(); }
    /// Why the call failed; empty on success.
    const QString &error() const { return m_error; }

private:
    QString m_error;
    bool m_failed = false;
};

} // namespace kx
