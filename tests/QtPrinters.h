#pragma once

#include <QString>
#include <QVariant>
#include <ostream>

// Readable failure messages for Qt types.
QT_BEGIN_NAMESPACE
inline void PrintTo(const QString &s, std::ostream *os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QVariant &v, std::ostream *os) { *os << "QVariant(" << v.toString().toStdString() << ')'; }
QT_END_NAMESPACE
