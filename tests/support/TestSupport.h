#pragma once
// Helpers shared by the test suites: temporary files, gzip, a fresh host state.

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <ostream>

// Writes `data` to dir/name (creating folders) and returns the full path.
QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &data);
// Writes `data` gzip-compressed to dir/name and returns the full path.
QString writeGzipFile(const QTemporaryDir &dir, const QString &name, const QByteArray &data);
QByteArray gzipBytes(const QByteArray &data);
// Log lines joined by newlines, each prefixed "error: " or "info: ".
QString logText();

// Readable QStrings in test failure messages.
inline void PrintTo(const QString &s, std::ostream *os) {
    *os << '"' << s.toStdString() << '"';
}
