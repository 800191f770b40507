#pragma once

#include <QString>

/// `kxjournal check`: the book check on a book, without a screen.
namespace CheckTool {

/// Checks book \a code of \a url as the 检查账簿 item does. Prints the
/// finding with its row and returns 1, or says the book is in order and
/// returns 0.
int check(const QString &url, const QString &code);

} // namespace CheckTool
