#include "output/LikePattern.h"

namespace kx {

namespace {

// The character at \a i of \a text, and how many UTF-16 units it takes.
char32_t codePointAt(QStringView text, qsizetype i, qsizetype &width)
{
    const QChar c = text[i];
    if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
        width = 2;
        return QChar::surrogateToUcs4(c, text[i + 1]);
    }
    width = 1;
    return c.unicode();
}

} // namespace

Result<LikePattern> LikePattern::compile(QStringView pattern)
{
    LikePattern p;
    qsizetype width = 1;
    for (qsizetype i = 0; i < pattern.size(); i += width) {
        const char32_t c = codePointAt(pattern, i, width);
        Token t;
        switch (c) {
        case U'*':
            // Runs of "*" mean one.
            if (!p.m_tokens.isEmpty() && p.m_tokens.constLast().kind == Token::AnyRun)
                continue;
            t.kind = Token::AnyRun;
            break;
        case U'?': t.kind = Token::AnyOne; break;
        case U'#': t.kind = Token::Digit; break;
        case U'[': {
            const qsizetype close = pattern.indexOf(u']', i + 1);
            if (close < 0)
                return Error(QStringLiteral("“%1”中的“[”没有配对的“]”。").arg(pattern.toString()));
            QVector<char32_t> chars;
            const QStringView body = pattern.mid(i + 1, close - i - 1);
            for (qsizetype k = 0, w = 1; k < body.size(); k += w)
                chars.append(codePointAt(body, k, w));
            t.kind = Token::Set;
            qsizetype k = 0;
            if (!chars.isEmpty() && chars.first() == U'!') {
                t.negated = true;
                k = 1;
            }
            for (; k < chars.size(); ++k) {
                // "a-z" is a range; a "-" at either end stands for itself.
                if (k + 2 < chars.size() && chars[k + 1] == U'-') {
                    if (chars[k + 2] < chars[k])
                        return Error(QStringLiteral("“%1”中的范围“%2-%3”颠倒了。")
                                         .arg(pattern.toString(), QString::fromUcs4(&chars[k], 1),
                                              QString::fromUcs4(&chars[k + 2], 1)));
                    t.set << chars[k] << chars[k + 2];
                    k += 2;
                } else {
                    t.set << chars[k] << chars[k];
                }
            }
            width = close + 1 - i;
            break;
        }
        default: t.ch = c; break;
        }
        p.m_tokens.append(t);
    }
    // "*abc*" with plain characters in between is a substring test.
    const int n = int(p.m_tokens.size());
    if (n >= 2 && p.m_tokens.first().kind == Token::AnyRun && p.m_tokens.last().kind == Token::AnyRun) {
        p.m_plain = true;
        for (int k = 1; k + 1 < n && p.m_plain; ++k) {
            p.m_plain = p.m_tokens[k].kind == Token::Literal;
            p.m_literal += QString::fromUcs4(&p.m_tokens[k].ch, 1);
        }
    }
    return p;
}

Result<LikePattern> LikePattern::containing(QStringView keyword)
{
    return compile(QLatin1Char('*') + keyword.toString() + QLatin1Char('*'));
}

QVector<char32_t> LikePattern::literals() const
{
    QVector<char32_t> chars;
    for (const Token &t : m_tokens)
        if (t.kind == Token::Literal && !chars.contains(t.ch))
            chars.append(t.ch);
    return chars;
}

bool LikePattern::tokenMatches(const Token &token, char32_t c) const
{
    switch (token.kind) {
    case Token::Literal: return token.ch == c;
    case Token::AnyOne: return true;
    case Token::Digit: return c >= U'0' && c <= U'9';
    case Token::Set: {
        bool in = false;
        for (qsizetype k = 0; k + 1 < token.set.size() && !in; k += 2)
            in = c >= token.set[k] && c <= token.set[k + 1];
        return in != token.negated;
    }
    case Token::AnyRun: break;
    }
    return false;
}

bool LikePattern::matches(QStringView text) const
{
    if (m_plain)
        return text.contains(m_literal, Qt::CaseSensitive);
    // Greedy walk that backs up to the latest "*": every other token takes
    // exactly one character, so this finds a match whenever there is one.
    const qsizetype n = m_tokens.size();
    qsizetype t = 0, s = 0, starToken = -1, starText = 0;
    while (s < text.size()) {
        qsizetype width = 1;
        const char32_t c = codePointAt(text, s, width);
        if (t < n && m_tokens[t].kind == Token::AnyRun) {
            starToken = t++;
            starText = s;
        } else if (t < n && tokenMatches(m_tokens[t], c)) {
            ++t;
            s += width;
        } else if (starToken >= 0) {
            t = starToken + 1;
            qsizetype skipped = 1;
            codePointAt(text, starText, skipped);
            starText += skipped;
            s = starText;
        } else {
            return false;
        }
    }
    while (t < n && m_tokens[t].kind == Token::AnyRun)
        ++t;
    return t == n;
}

} // namespace kx
