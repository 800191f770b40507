#pragma once

#include "kxjournal/Result.h"
#include "kxjournal/Voucher.h"
#include "kxjournal/kxjournal_export.h"

#include <QByteArray>
#include <QString>

namespace kx {

/// The voucher exchange file (".kxe"): one element per line, CR LF line
/// ends, in a code page (GBK unless the host chooses another).
///
/// A line opens an element ("<Voucher>", "<Row>"), closes one ("</Row>"),
/// or holds a value ("<DocNo>12</DocNo>"). The file is "<Voucher>", the
/// eleven head elements, one "<Row>" … "</Row>" block of thirty elements per
/// line, and "</Voucher>". Values are trimmed and written as they stand (no
/// escaping); dates are yyyy-MM-dd, numbers in their shortest decimal form
/// with a point ("1250.5", "0", "-40"). A value's line breaks become blanks,
/// since a value ends with its line.
class KXJOURNAL_EXPORT VoucherFile
{
public:
    /// \a voucher as the file's bytes in \a codec. Fails, naming the element,
    /// when a text holds a character the code page cannot hold (it is never
    /// written as "?"), or when the code page is unknown.
    static Result<QByteArray> encode(const Voucher &voucher, const QString &codec = QStringLiteral("GBK"));
    /// The voucher held by \a bytes in \a codec. A malformed file fails with
    /// a message that names its line ("第12行：…").
    static Result<Voucher> decode(const QByteArray &bytes, const QString &codec = QStringLiteral("GBK"));
    /// The largest voucher file read (64 MB): far beyond any voucher, so a
    /// larger file is something else and is refused unread.
    static constexpr qint64 MaxFileBytes = qint64(64) * 1024 * 1024;

    /// Reads the voucher file at \a path. Only a regular file (or a link to
    /// one) of at most MaxFileBytes is read; a folder, a device or a pipe is
    /// refused before it is opened, so the call never waits for a writer.
    static Result<Voucher> read(const QString &path, const QString &codec = QStringLiteral("GBK"));
    /// The first character of \a text that code page \a codec cannot hold;
    /// empty when it holds them all (or the code page is unknown).
    static QString unencodable(const QString &text, const QString &codec);
    /// True when \a codec names a code page this system can write.
    static bool isKnownCodec(const QString &codec);
};

} // namespace kx
