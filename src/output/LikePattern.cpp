#include "output/LikePattern.h"

namespace kx {

Result<LikePattern> LikePattern::compile(QStringView pattern)
{
    LikePattern p;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const char16_t c = pattern[i].unicode();
        Token t;
        t.kind = Token::Literal;
        switch (c) {
        case u'*':
            // Runs of "*" mean one.
            if (!p.m_tokens.isEmpty() && p.m_tokens.constLast().kind == Token::AnyRun)
                continue;
            t.kind = Token::AnyRun;
            break;
        case u'?': t.kind = Token::AnyOne; break;
        case u'#': t.kind = Token::Digit; break;
        case u'[': {
            const qsizetype close = pattern.indexOf(u']', i + 1);
            if (close < 0)
                return Error(QStringLiteral("“%1”中的“[”没有配对的“]”。").arg(pattern.toString()));
            QStringView body = pattern.mid(i + 1, close - i - 1);
            t.kind = Token::Set;
            if (body.startsWith(u'!')) {
                t.negated = true;
                body = body.mid(1);
            }
            for (qsizetype k = 0; k < body.size(); ++k) {
                const QChar first = body[k];
                // "a-z" is a range; a "-" at either end stands for itself.
                if (k + 2 < body.size() && body[k + 1] == u'-') {
                    if (body[k + 2] < first)
                        return Error(QStringLiteral("“%1”中的范围“%2-%3”颠倒了。")
                                         .arg(pattern.toString(), QString(first), QString(body[k + 2])));
                    t.set += first;
                    t.set += body[k + 2];
                    k += 2;
                } else {
                    t.set += first;
                    t.set += first;
                }
            }
            i = close;
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
            p.m_literal += QChar(p.m_tokens[k].ch);
        }
    }
    return p;
}

Result<LikePattern> LikePattern::containing(QStringView keyword)
{
    return compile(QLatin1Char('*') + keyword.toString() + QLatin1Char('*'));
}

bool LikePattern::tokenMatches(const Token &token, char16_t c) const
{
    switch (token.kind) {
    case Token::Literal: return token.ch == c;
    case Token::AnyOne: return true;
    case Token::Digit: return c >= u'0' && c <= u'9';
    case Token::Set: {
        bool in = false;
        for (qsizetype k = 0; k + 1 < token.set.size() && !in; k += 2)
            in = c >= token.set[k].unicode() && c <= token.set[k + 1].unicode();
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
        if (t < n && m_tokens[t].kind == Token::AnyRun) {
            starToken = t++;
            starText = s;
        } else if (t < n && tokenMatches(m_tokens[t], text[s].unicode())) {
            ++t;
            ++s;
        } else if (starToken >= 0) {
            t = starToken + 1;
            s = ++starText;
        } else {
            return false;
        }
    }
    while (t < n && m_tokens[t].kind == Token::AnyRun)
        ++t;
    return t == n;
}

} // namespace kx
