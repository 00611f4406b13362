#include "TestSupport.h"

#include <OvApp.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <zlib.h>

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &data) {
    QString path = dir.filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write(data);
    return path;
}

QByteArray gzipBytes(const QByteArray &data) {
    z_stream zs{};
    deflateInit2(&zs, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    QByteArray out;
    out.resize(int(deflateBound(&zs, uLong(data.size()))) + 32);
    zs.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(data.constData()));
    zs.avail_in = uInt(data.size());
    zs.next_out = reinterpret_cast<Bytef *>(out.data());
    zs.avail_out = uInt(out.size());
    deflate(&zs, Z_FINISH);
    out.resize(int(zs.total_out));
    deflateEnd(&zs);
    return out;
}

QString writeGzipFile(const QTemporaryDir &dir, const QString &name, const QByteArray &data) {
    return writeFile(dir, name, gzipBytes(data));
}

QString logText() {
    QStringList lines;
    for (const OvApp::LogEntry &e : OvApp::log())
        lines << (e.level == OvApp::LogError ? QStringLiteral("error: ") : QStringLiteral("info: ")) + e.text;
    return lines.join(QLatin1Char('\n'));
}
