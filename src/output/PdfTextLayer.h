#pragma once

#include <QByteArray>
#include <QFont>

namespace kx {

/// Makes the text layer of a PDF the writer made read the characters that
/// were drawn. The writer names each glyph by the lowest code point the font
/// gives it, and CJK fonts give an ideograph's glyph to its radical as well
/// (页 and ⻚, 日 and ⽇), so a search or a copy of the page would meet
/// radicals. Each radical the glyph-to-text maps name becomes the ideograph
/// that shares its glyph in \a font; the maps are written uncompressed and
/// every code is rewritten in place at the same length, so no offset of the
/// file moves.
class PdfTextLayer
{
public:
    /// \a pdf with its glyph-to-text maps naming ideographs, not radicals.
    static QByteArray readable(QByteArray pdf, const QFont &font);
    /// The ideograph sharing its glyph with \a radical in \a font; 0 when none does.
    static char16_t ideographOf(char16_t radical, const QFont &font);
};

} // namespace kx
