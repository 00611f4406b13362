#pragma once
#include "OvMaterial.h"
#include <QHash>
#include <QString>

// Loads image files as textures, once per file.
class OvImageMgr {
public:
    // The texture of an image file, or null when the path is not a readable image.
    OvTexture *getImage(const QString &path);
    int numImages() const { return int(m_images.size()); }
    // Paths asked for so far, in order (also the failed ones): lets tests see the search order.
    const QStringList &requests() const { return m_requests; }
    void clear() {
        m_images.clear();
        m_requests.clear();
    }

private:
    QHash<QString, OvTSharedPointer<OvTexture>> m_images;
    QStringList m_requests;
};
