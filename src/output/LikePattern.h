#pragma once

#include "kxjournal/Result.h"

#include <QString>
#include <QStringView>
#include <QVector>

namespace kx {

/// A text pattern of the kind bookkeepers type into a search box: "*" any
/// run of characters, "?" any one character, "#" any digit, "[…]" one
/// character of a set ("[a-c]" a range, "[!…]" any character but those);
/// everything else stands for itself, case counting. A character outside
/// the basic plane (written as two UTF-16 units) counts as one.
class LikePattern
{
public:
    /// A pattern that matches nothing.
    LikePattern() = default;

    /// The pattern \a pattern, or an error naming what is wrong with it (a
    /// "[" without its "]").
    static Result<LikePattern> compile(QStringView pattern);
    /// A pattern matching every text that contains \a keyword, the keyword's
    /// own pattern characters acting as in compile().
    static Result<LikePattern> containing(QStringView keyword);

    /// Whether the whole of \a text matches.
    bool matches(QStringView text) const;
    /// The characters that stand for themselves, each once, in order: every
    /// text the pattern matches holds all of them.
    QVector<char32_t> literals() const;

private:
    struct Token {
        enum Kind : unsigned char { Literal, AnyOne, Digit, Set, AnyRun } kind = Literal;
        bool negated = false;
        char32_t ch = 0;
        QVector<char32_t> set;  ///< pairs of (first, last) characters
    };
    bool tokenMatches(const Token &token, char32_t c) const;

    QVector<Token> m_tokens;
    // "*literal*" is by far the most common pattern: a plain substring search.
    QString m_literal;
    bool m_plain = false;
};

} // namespace kx
