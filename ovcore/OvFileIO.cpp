#include "OvFileIO.h"
#include "OvApp.h"

#include <QStringDecoder>
#include <cstring>

static int lastSlash(const QString &path) {
    return path.lastIndexOf(QLatin1Char('/'));
}

QString OvFileIO::getShortFileName(const QString &path) {
    return path.mid(lastSlash(path) + 1);
}

QString OvFileIO::getFilePath(const QString &path) {
    int s = lastSlash(path);
    if (s < 0)
        return QString();
    return s == 0 ? QStringLiteral("/") : path.left(s);
}

QString OvFileIO::getBaseFileName(const QString &path) {
    QString name = getShortFileName(path);
    int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.left(dot) : name;
}

QString OvFileIO::getFileExtension(const QString &path) {
    QString name = getShortFileName(path);
    int dot = name.lastIndexOf(QLatin1Char('.'));
    return dot >= 0 ? name.mid(dot + 1) : QString();
}

QString OvFileIO::changeFileExtension(const QString &path, const QString &ext) {
    int s = lastSlash(path);
    int dot = path.lastIndexOf(QLatin1Char('.'));
    QString stem = dot > s ? path.left(dot) : path;
    return stem + QLatin1Char('.') + ext;
}

void OvFileIO::error(const QString &text) {
    OvApp::addLog(OvApp::LogError, text);
}

void OvFileIO::info(const QString &text) {
    OvApp::addLog(OvApp::LogInfo, text);
}

QString OvFileIO::decodeText(const char *bytes, qsizetype length) {
    if (!bytes)
        return QString();
    if (length < 0)
        length = qsizetype(std::strlen(bytes));
    bool ascii = true;
    for (qsizetype i = 0; i < length && ascii; ++i)
        ascii = static_cast<unsigned char>(bytes[i]) < 0x80;
    if (ascii)
        return QString::fromLatin1(bytes, length);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(QByteArrayView(bytes, length));
    return utf8.hasError() ? QString::fromLatin1(bytes, length) : text;
}
