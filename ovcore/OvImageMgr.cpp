#include "OvImageMgr.h"

#include <QFileInfo>
#include <QImageReader>

OvTexture *OvImageMgr::getImage(const QString &path) {
    m_requests.append(path);
    QFileInfo info(path);
    if (!info.isFile())
        return nullptr;
    QString key = info.canonicalFilePath();
    auto it = m_images.constFind(key);
    if (it != m_images.constEnd())
        return it->get();
    // The header tells whether this is an image and its size; the pixels are the renderer's business.
    QImageReader reader(key);
    if (!reader.canRead())
        return nullptr;
    QSize size = reader.size();
    if (!size.isValid()) {
        QImage img = reader.read();
        if (img.isNull())
            return nullptr;
        size = img.size();
    }
    OvTSharedPointer<OvTexture> tex(new OvTexture(key, size.width(), size.height()));
    m_images.insert(key, tex);
    return tex.get();
}
