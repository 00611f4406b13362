#pragma once
#include "OvMaterial.h"
#include <QHash>
#include <QString>
#include <QStringList>

// Loads image files as textures: each file is decoded once, so a broken file is known as broken the
// first time (and only once) and a good one is never decoded again, however many maps name it.
class OvImageMgr {
public:
    // Decoded pixels of one image may take this much memory.
    static constexpr int MaxImageMegabytes = 1024;
    // The texture of an image file, or null when the path is not a readable image.
    OvTexture *getImage(const QString &path);
    // Why the last getImage of `path` gave null (empty when it did not).
    QString errorString(const QString &path) const;
    int numImages() const { return int(m_images.size()); }
    // Files decoded so far (loaded or refused); cache hits do not count.
    int numDecodes() const { return m_decodes; }
    // Paths asked for so far, in order (also the failed ones): lets tests see the search order.
    const QStringList &requests() const { return m_requests; }
    void clear() {
        m_images.clear();
        m_failed.clear();
        m_requests.clear();
        m_decodes = 0;
    }

private:
    QHash<QString, OvTSharedPointer<OvTexture>> m_images; // by canonical path
    QHash<QString, QString> m_failed;                     // path as asked -> reason
    QStringList m_requests;
    int m_decodes = 0;
};
