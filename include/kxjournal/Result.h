#pragma once

#include <QString>
#include <utility>

namespace kx {

/// The outcome of a fallible call: a value, or an error text that says why
/// there is none. The value is default-constructed when the call failed.
template <typename T>
class Result
{
public:
    /// A successful result holding \a value.
    Result(T value) : m_value(std::move(value)) {} // NOLINT: implicit on purpose

    /// A failed result carrying \a error (must not be empty).
    static Result failure(const QString &error)
    {
        Result r{T{}};
        r.m_error = error.isEmpty() ? QStringLiteral("未知错误") : error;
        return r;
    }

    /// True when the call succeeded.
    bool ok() const { return m_error.isEmpty(); }
    /// Same as ok().
    explicit operator bool() const { return ok(); }
    /// The value (default-constructed on failure).
    const T &value() const { return m_value; }
    /// Moves the value out (for values that should not be copied).
    T takeValue() { return std::move(m_value); }
    /// The value, or \a fallback on failure.
    T valueOr(const T &fallback) const { return ok() ? m_value : fallback; }
    /// Why the call failed; empty on success.
    const QString &error() const { return m_error; }

private:
    T m_value;
    QString m_error;
};

/// A fallible call without a value.
using Status = Result<bool>;

} // namespace kx
