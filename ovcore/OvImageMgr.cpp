#include "OvImageMgr.h"

#include <QFileInfo>
#include <QImage>
#include <QImageReader>

OvTexture *OvImageMgr::getImage(const QString &path) {
    m_requests.append(path);
    const QFileInfo info(path);
    QString reason;
    if (!info.exists())
        reason = QStringLiteral("no such file");
    else if (info.isDir())
        reason = QStringLiteral("a folder, not an image file");
    else if (!info.isFile())
        reason = QStringLiteral("not a regular file");
    else if (info.size() == 0)
        reason = QStringLiteral("the file is empty");
    if (!reason.isEmpty()) {
        m_failed.insert(path, reason);
        return nullptr;
    }
    const QString key = info.canonicalFilePath();
    if (auto it = m_images.constFind(key); it != m_images.constEnd()) {
        m_failed.remove(path);
        return it->get();
    }
    if (auto it = m_failed.constFind(key); it != m_failed.constEnd()) {
        m_failed.insert(path, *it);
        return nullptr;
    }
    // The whole image is decoded, not only its header: a file cut short is caught here rather than
    // by the renderer. The pixels themselves are the renderer's business and are not kept.
    ++m_decodes;
    // Maps of 8192 x 8192 pixels are common, and Qt's default limit would refuse them; an image
    // above the raised limit (16384 x 16384 in RGBA) is taken for a damaged or hostile file.
    if (QImageReader::allocationLimit() < MaxImageMegabytes)
        QImageReader::setAllocationLimit(MaxImageMegabytes);
    QImageReader reader(key);
    const QImage image = reader.read();
    if (image.isNull()) {
        reason = reader.errorString();
        m_failed.insert(key, reason);
        m_failed.insert(path, reason);
        return nullptr;
    }
    m_failed.remove(path);
    OvTSharedPointer<OvTexture> tex(new OvTexture(key, image.width(), image.height()));
    m_images.insert(key, tex);
    return tex.get();
}

QString OvImageMgr::errorString(const QString &path) const {
    return m_failed.value(path);
}
