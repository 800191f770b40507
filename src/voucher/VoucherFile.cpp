#include "kxjournal/VoucherFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QStringEncoder>
#include <variant>

namespace kx {

namespace {

// How an element's value is read and written.
enum class Kind { Text, Amount, Number, Date, ShortNumber };

template <typename Owner>
struct Element {
    const char *name;
    Kind kind;
    std::variant<QString Owner::*, Currency Owner::*, int Owner::*, QDate Owner::*> member;
};

using Head = Element<Voucher>;
using Body = Element<Voucher::Line>;

// The head, in the file's order.
const Head HeadElements[] = {
    {"DocDate", Kind::Date, &Voucher::docDate},      {"DocType", Kind::Text, &Voucher::docType},
    {"DocNo", Kind::ShortNumber, &Voucher::docNo},   {"AddQty", Kind::Number, &Voucher::addQty},
    {"Inputor", Kind::Text, &Voucher::inputor},      {"InputDate", Kind::Text, &Voucher::inputDate},
    {"Audit", Kind::Text, &Voucher::audit},          {"AuditDate", Kind::Text, &Voucher::auditDate},
    {"Director", Kind::Text, &Voucher::director},    {"Cashier", Kind::Text, &Voucher::cashier},
    {"Payee", Kind::Text, &Voucher::payee},
};

// A line's thirty elements, in the file's order.
const Body LineElements[] = {
    {"Explain", Kind::Text, &Voucher::Line::explain},
    {"AccName", Kind::Text, &Voucher::Line::accName},
    {"AccCode", Kind::Text, &Voucher::Line::accCode},
    {"Debit", Kind::Amount, &Voucher::Line::debit},
    {"Credit", Kind::Amount, &Voucher::Line::credit},
    {"Rate", Kind::Amount, &Voucher::Line::rate},
    {"Forex", Kind::Amount, &Voucher::Line::forex},
    {"Price", Kind::Amount, &Voucher::Line::price},
    {"Quantity", Kind::Amount, &Voucher::Line::quantity},
    {"Branch", Kind::Text, &Voucher::Line::branch},
    {"Organization", Kind::Text, &Voucher::Line::organization},
    {"Field1", Kind::Text, &Voucher::Line::field1},
    {"Field2", Kind::Text, &Voucher::Line::field2},
    {"Field3", Kind::Text, &Voucher::Line::field3},
    {"Field4", Kind::Text, &Voucher::Line::field4},
    {"brID", Kind::Number, &Voucher::Line::brId},
    {"pjID", Kind::Number, &Voucher::Line::pjId},
    {"AccID", Kind::Text, &Voucher::Line::accId},
    {"RecID", Kind::Number, &Voucher::Line::recId},
    {"DocID", Kind::Number, &Voucher::Line::docId},
    {"Row", Kind::Number, &Voucher::Line::row},
    {"BookFmt", Kind::Text, &Voucher::Line::bookFmt},
    {"Fld1Name", Kind::Text, &Voucher::Line::fld1Name},
    {"Fld2Name", Kind::Text, &Voucher::Line::fld2Name},
    {"Fld3Name", Kind::Text, &Voucher::Line::fld3Name},
    {"Fld4Name", Kind::Text, &Voucher::Line::fld4Name},
    {"ForexName", Kind::Text, &Voucher::Line::forexName},
    {"Measure", Kind::Text, &Voucher::Line::measure},
    {"DocLvl", Kind::Text, &Voucher::Line::docLvl},
    {"tRecID", Kind::Text, &Voucher::Line::tRecId},
};

// A value ends with its line, so a line break inside one becomes a blank.
QString oneLine(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String(" "));
    text.replace(QLatin1Char('\r'), QLatin1Char(' '));
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text.trimmed();
}

template <typename Owner>
QString valueText(const Element<Owner> &e, const Owner &owner)
{
    return std::visit(
        [&](auto member) -> QString {
            const auto &v = owner.*member;
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, QString>)
                return oneLine(v);
            else if constexpr (std::is_same_v<T, Currency>)
                return v.toString();
            else if constexpr (std::is_same_v<T, int>)
                return QString::number(v);
            else
                return v.toString(Qt::ISODate);
        },
        e.member);
}

// Reads \a text into the element's member; an error text when it is no value of its kind.
template <typename Owner>
QString setValue(const Element<Owner> &e, Owner &owner, const QString &text)
{
    // Plain digits with an optional sign, and for amounts up to four decimals:
    // the one form the writer makes.
    const auto plain = [&](int maxDecimals) {
        QStringView t(text);
        if (t.startsWith(QLatin1Char('-')))
            t = t.mid(1);
        const qsizetype point = t.indexOf(QLatin1Char('.'));
        const QStringView whole = point < 0 ? t : t.left(point);
        const QStringView fraction = point < 0 ? QStringView() : t.mid(point + 1);
        const auto digits = [](QStringView s) {
            for (QChar c : s)
                if (c < QLatin1Char('0') || c > QLatin1Char('9'))
                    return false;
            return true;
        };
        return !whole.isEmpty() && whole.size() <= 15 && digits(whole) &&
               (point < 0 || (!fraction.isEmpty() && fraction.size() <= maxDecimals && digits(fraction)));
    };
    const QString name = QString::fromLatin1(e.name);
    switch (e.kind) {
    case Kind::Text:
        owner.*std::get<QString Owner::*>(e.member) = text;
        return {};
    case Kind::Amount: {
        const Result<Currency> value = plain(4) ? Currency::fromStoredText(text) : Result<Currency>(Error(QString()));
        if (!value.ok())
            return QStringLiteral("%1 的值“%2”不是数字").arg(name, text);
        owner.*std::get<Currency Owner::*>(e.member) = value.value();
        return {};
    }
    case Kind::Number:
    case Kind::ShortNumber: {
        bool ok = false;
        const qlonglong n = plain(0) ? text.toLongLong(&ok) : 0;
        const qlonglong low = e.kind == Kind::ShortNumber ? -32768 : std::numeric_limits<int>::min();
        const qlonglong high = e.kind == Kind::ShortNumber ? 32767 : std::numeric_limits<int>::max();
        if (!ok || n < low || n > high)
            return QStringLiteral("%1 的值“%2”不是 %3 到 %4 之间的整数").arg(name, text, QString::number(low), QString::number(high));
        owner.*std::get<int Owner::*>(e.member) = int(n);
        return {};
    }
    case Kind::Date: {
        const bool iso = text.size() == 10 && text.at(4) == QLatin1Char('-') && text.at(7) == QLatin1Char('-');
        const QDate d = iso ? QDate::fromString(text, Qt::ISODate) : QDate();
        if (!d.isValid())
            return QStringLiteral("%1 的值“%2”不是 yyyy-MM-dd 形式的日期").arg(name, text);
        owner.*std::get<QDate Owner::*>(e.member) = d;
        return {};
    }
    }
    return {};
}

// One line of the file, split into its parts.
struct Tag {
    enum Form { Open, Close, Value, Bad } form = Bad;
    QString name;
    QString value;
};

// The length of the element name at the start of \a text (0: none).
qsizetype nameLength(QStringView text)
{
    qsizetype n = 0;
    while (n < text.size() && text[n].unicode() < 128 &&
           (text[n].isLetter() || (n > 0 && text[n].isDigit())))
        ++n;
    return n;
}

Tag parseLine(const QString &line)
{
    const QStringView v(line);
    if (!v.startsWith(QLatin1Char('<')))
        return {};
    const bool closing = v.startsWith(QLatin1String("</"));
    const QStringView rest = v.mid(closing ? 2 : 1);
    const qsizetype n = nameLength(rest);
    if (n == 0 || rest.size() <= n || rest[n] != QLatin1Char('>'))
        return {};
    const QString name = rest.left(n).toString();
    if (rest.size() == n + 1)
        return {closing ? Tag::Close : Tag::Open, name, {}};
    if (closing)
        return {};
    // The value runs to the closing tag at the end of the line, so a value
    // that itself holds "</Name>" still reads back whole.
    const QString end = QStringLiteral("</") + name + QLatin1Char('>');
    const QStringView value = rest.mid(n + 1);
    if (!value.endsWith(end))
        return {};
    return {Tag::Value, name, value.chopped(end.size()).toString()};
}

class Reader
{
public:
    explicit Reader(const QStringList &lines) : m_lines(lines) {}

    Result<Voucher> run()
    {
        Voucher v;
        if (!expect(Tag::Open, QStringLiteral("Voucher")))
            return fail();
        for (const Head &e : HeadElements)
            if (!element(e, v))
                return fail();
        for (;;) {
            const Tag t = next();
            if (t.form == Tag::Close && t.name == QLatin1String("Voucher"))
                break;
            if (t.form != Tag::Open || t.name != QLatin1String("Row")) {
                m_error = QStringLiteral("应为“<Row>”或“</Voucher>”，却是“%1”").arg(current());
                return fail();
            }
            Voucher::Line line;
            for (const Body &e : LineElements)
                if (!element(e, line))
                    return fail();
            if (!expect(Tag::Close, QStringLiteral("Row")))
                return fail();
            v.lines << line;
        }
        // Nothing may follow but the last line end.
        while (m_at < m_lines.size()) {
            if (!m_lines.at(m_at++).isEmpty()) {
                m_error = QStringLiteral("“</Voucher>”之后还有内容");
                return fail();
            }
        }
        return v;
    }

private:
    Tag next()
    {
        if (m_at >= m_lines.size()) {
            m_at = int(m_lines.size()) + 1;
            return {};
        }
        return parseLine(m_lines.at(m_at++));
    }
    QString current() const { return m_at <= m_lines.size() ? m_lines.at(m_at - 1) : QStringLiteral("文件结尾"); }
    bool expect(Tag::Form form, const QString &name)
    {
        const Tag t = next();
        if (t.form == form && t.name == name)
            return true;
        m_error = QStringLiteral("应为“%1%2>”，却是“%3”").arg(form == Tag::Open ? QStringLiteral("<") : QStringLiteral("</"),
                                                            name, current());
        return false;
    }
    template <typename Owner>
    bool element(const Element<Owner> &e, Owner &owner)
    {
        const Tag t = next();
        const QString name = QString::fromLatin1(e.name);
        if (t.form != Tag::Value || t.name != name) {
            m_error = QStringLiteral("应为“<%1>…</%1>”，却是“%2”").arg(name, current());
            return false;
        }
        m_error = setValue(e, owner, t.value);
        return m_error.isEmpty();
    }
    Result<Voucher> fail() const
    {
        return Error(QStringLiteral("第%1行：%2。").arg(QString::number(std::max<qsizetype>(1, std::min<qsizetype>(m_at, m_lines.size()))), m_error));
    }

    const QStringList &m_lines;
    int m_at = 0;
    QString m_error;
};

void writeLine(QString &out, const QString &name, const QString &value, bool complete)
{
    out += QLatin1Char('<') + name + QLatin1Char('>');
    if (complete)
        out += value + QStringLiteral("</") + name + QLatin1Char('>');
    out += QLatin1String("\r\n");
}

} // namespace

bool Voucher::Line::operator==(const Line &o) const
{
    for (const Body &e : LineElements)
        if (valueText(e, *this) != valueText(e, o))
            return false;
    return true;
}

Currency Voucher::debitTotal() const
{
    Currency sum;
    for (const Line &l : lines)
        sum = sum + l.debit;
    return sum;
}

Currency Voucher::creditTotal() const
{
    Currency sum;
    for (const Line &l : lines)
        sum = sum + l.credit;
    return sum;
}

bool Voucher::operator==(const Voucher &o) const
{
    for (const Head &e : HeadElements)
        if (valueText(e, *this) != valueText(e, o))
            return false;
    return lines == o.lines;
}

bool VoucherFile::isKnownCodec(const QString &codec)
{
    return QStringEncoder(codec.toLatin1().constData()).isValid();
}

QString VoucherFile::unencodable(const QString &text, const QString &codec)
{
    const QByteArray name = codec.toLatin1();
    // Stateless: a half of a surrogate pair at the end is an error, not
    // something kept back for text that never comes.
    QStringEncoder whole(name.constData(), QStringConverter::Flag::Stateless);
    if (!whole.isValid())
        return {};
    // The encoder works when its result is taken, so it is taken.
    const QByteArray all = whole.encode(text);
    if (!whole.hasError())
        return {};
    // Find the culprit one character (a surrogate pair counts as one) at a time.
    for (qsizetype i = 0; i < text.size();) {
        const qsizetype n = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate() ? 2 : 1;
        QStringEncoder one(name.constData(), QStringConverter::Flag::Stateless);
        const QByteArray bytes = one.encode(QStringView(text).mid(i, n));
        if (one.hasError())
            return text.mid(i, n);
        i += n;
    }
    return {};
}

Result<QByteArray> VoucherFile::encode(const Voucher &voucher, const QString &codec)
{
    if (!isKnownCodec(codec))
        return Error(QStringLiteral("不认识的编码“%1”。").arg(codec));
    QString out;
    QString bad;
    const auto put = [&](const char *name, const QString &value, bool complete) {
        if (bad.isEmpty()) {
            if (const QString c = unencodable(value, codec); !c.isEmpty())
                bad = QStringLiteral("%1 的值“%2”含有 %3 编码不能表示的字符“%4”。").arg(QString::fromLatin1(name), value, codec, c);
        }
        writeLine(out, QString::fromLatin1(name), value, complete);
    };
    put("Voucher", {}, false);
    for (const Head &e : HeadElements)
        put(e.name, valueText(e, voucher), true);
    for (const Voucher::Line &line : voucher.lines) {
        put("Row", {}, false);
        for (const Body &e : LineElements)
            put(e.name, valueText(e, line), true);
        put("/Row", {}, false);
    }
    put("/Voucher", {}, false);
    if (!voucher.docDate.isValid())
        bad = QStringLiteral("凭证日期无效。");
    if (!voucher.debitTotal().isValid() || !voucher.creditTotal().isValid())
        bad = QStringLiteral("凭证的金额超出了能表示的范围。");
    if (!bad.isEmpty())
        return Error(bad);
    QStringEncoder encoder(codec.toLatin1().constData(), QStringConverter::Flag::Stateless);
    const QByteArray bytes = encoder.encode(out);
    if (encoder.hasError())
        return Error(QStringLiteral("凭证含有 %1 编码不能表示的字符。").arg(codec));
    return bytes;
}

Result<Voucher> VoucherFile::decode(const QByteArray &bytes, const QString &codec)
{
    const QByteArray name = codec.toLatin1();
    if (!isKnownCodec(codec))
        return Error(QStringLiteral("不认识的编码“%1”。").arg(codec));
    // A byte-order mark some editors put before UTF-8 text is no part of the voucher.
    const bool utf8 = QStringConverter::encodingForName(name.constData()) == QStringConverter::Utf8;
    const QByteArray body = utf8 && bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes;
    QStringDecoder decoder(name.constData(), QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(body);
    // The decoder passes some bad bytes over quietly; text that does not
    // come back byte for byte was not written in this code page.
    QStringEncoder check(name.constData());
    if (decoder.hasError() || QByteArray(check.encode(text)) != body) {
        const QList<QByteArray> raw = body.split('\n');
        for (qsizetype i = 0; i < raw.size(); ++i) {
            QStringDecoder one(name.constData());
            QStringEncoder back(name.constData());
            const QString line = one.decode(raw.at(i));
            if (one.hasError() || QByteArray(back.encode(line)) != raw.at(i))
                return Error(QStringLiteral("第%1行：不是 %2 编码的文本。").arg(QString::number(i + 1), codec));
        }
        return Error(QStringLiteral("第1行：不是 %1 编码的文本。").arg(codec));
    }
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
    return Reader(lines).run();
}

Result<Voucher> VoucherFile::read(const QString &path, const QString &codec)
{
    // Looked at before it is opened: opening a pipe waits for its writer,
    // and a device may never end.
    const QFileInfo info(path);
    if (!info.exists())
        return Error(QStringLiteral("不能打开凭证文件“%1”：文件不存在。").arg(path));
    if (!info.isFile())
        return Error(QStringLiteral("不能读凭证文件“%1”：它不是普通文件（是文件夹、设备或管道）。").arg(path));
    const QString limit = QStringLiteral("%1 MB").arg(MaxFileBytes / (1024 * 1024));
    const auto tooLarge = [&] {
        return Error(QStringLiteral("不能读凭证文件“%1”：它大于 %2，凭证文件不会这么大。").arg(path, limit));
    };
    if (info.size() > MaxFileBytes)
        return tooLarge();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error(QStringLiteral("不能打开凭证文件“%1”：%2").arg(path, file.errorString()));
    // The file may have grown since it was looked at: never more than the limit is read.
    const QByteArray bytes = file.read(MaxFileBytes + 1);
    if (bytes.size() > MaxFileBytes)
        return tooLarge();
    const Result<Voucher> v = decode(bytes, codec);
    if (!v.ok())
        return Error(QStringLiteral("凭证文件“%1”%2").arg(path, v.error()));
    return v;
}

} // namespace kx
