#include "Materials.h"

#include <OvMaterial.h>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QUrl>
#include <algorithm>
#include <cmath>

namespace {

std::vector<double> colour(const QColor &c, double alpha) {
    return {c.redF(), c.greenF(), c.blueF(), alpha};
}

QByteArray pngBytes(const QImage &image) {
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    image.save(&out, "PNG");
    return bytes;
}

// The colour map's colours (white without one) with the opacity map's grey as alpha.
QImage withAlpha(const QImage &colourMap, const QImage &opacity) {
    QImage out = colourMap.isNull() ? QImage(opacity.size(), QImage::Format_ARGB32)
                                    : colourMap.convertToFormat(QImage::Format_ARGB32);
    if (colourMap.isNull())
        out.fill(Qt::white);
    const QImage alpha = opacity.scaled(out.size()).convertToFormat(QImage::Format_Grayscale8);
    for (int y = 0; y < out.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(out.scanLine(y));
        const uchar *a = alpha.constScanLine(y);
        for (int x = 0; x < out.width(); ++x)
            row[x] = qRgba(qRed(row[x]), qGreen(row[x]), qBlue(row[x]), a[x]);
    }
    return out;
}

} // namespace

QImage normalMapFromHeight(const QImage &height, float depth) {
    const QImage grey = height.convertToFormat(QImage::Format_Grayscale8);
    const int w = grey.width(), h = grey.height();
    QImage out(w, h, QImage::Format_RGB32);
    auto at = [&](int x, int y) { return grey.constScanLine((y + h) % h)[(x + w) % w] / 255.0f; };
    for (int y = 0; y < h; ++y) {
        auto *row = reinterpret_cast<QRgb *>(out.scanLine(y));
        for (int x = 0; x < w; ++x) {
            // Image rows run down while v runs up: the y slope changes sign.
            const float dx = (at(x + 1, y) - at(x - 1, y)) * 0.5f * depth;
            const float dy = (at(x, y - 1) - at(x, y + 1)) * 0.5f * depth;
            const float len = std::sqrt(dx * dx + dy * dy + 1.0f);
            auto channel = [](float n) { return int(std::lround((n * 0.5f + 0.5f) * 255.0f)); };
            row[x] = qRgb(channel(-dx / len), channel(-dy / len), channel(1.0f / len));
        }
    }
    return out;
}

MaterialWriter::MaterialWriter(GltfBuffer &buffer, const QString &outFile, bool embed)
    : m_buffer(buffer), m_outFile(outFile), m_embed(embed) {}

int MaterialWriter::material(const OvMaterial *host) {
    if (auto it = m_materials.constFind(host); it != m_materials.constEnd())
        return *it;
    tinygltf::Material m;
    m.name = host ? host->getName().toStdString() : "default";
    m.doubleSided = true; // host surfaces show both sides
    m.pbrMetallicRoughness.metallicFactor = 0.0;
    m.pbrMetallicRoughness.baseColorFactor = {0.8, 0.8, 0.8, 1.0};
    m.pbrMetallicRoughness.roughnessFactor = 0.7;
    if (auto *d = dynamic_cast<const OvDefaultMaterial *>(host)) {
        const double opacity = std::clamp(double(d->getBaseOpacity()), 0.0, 1.0);
        m.pbrMetallicRoughness.baseColorFactor = colour(d->getDiffuseColor(), opacity);
        m.pbrMetallicRoughness.roughnessFactor =
            std::clamp(1.0 - double(d->getGlossinessStrength()), 0.0, 1.0);
        const OvTexture *map = d->getColorMap(), *opacityMap = d->getOpacityMap(), *bump = d->getBumpMap();
        if (opacityMap) {
            const QImage alpha(opacityMap->getPath());
            const QImage base = map ? QImage(map->getPath()) : QImage();
            const QString key =
                QStringLiteral("alpha:%1|%2").arg(map ? map->getPath() : QString(), opacityMap->getPath());
            if (!alpha.isNull()) {
                const QImage made = withAlpha(base, alpha);
                m.pbrMetallicRoughness.baseColorTexture.index = texture(key, QString(), &made);
            } else {
                m_notes << QStringLiteral("cannot read the opacity map %1").arg(opacityMap->getPath());
            }
        }
        if (map && m.pbrMetallicRoughness.baseColorTexture.index < 0)
            m.pbrMetallicRoughness.baseColorTexture.index = texture(map->getPath(), map->getPath(), nullptr);
        if (opacity < 1.0 || opacityMap)
            m.alphaMode = "BLEND";
        if (bump) {
            const QImage height(bump->getPath());
            if (!height.isNull()) {
                const QImage made = normalMapFromHeight(height, 4.0f);
                m.normalTexture.index =
                    texture(QStringLiteral("normal:") + bump->getPath(), QString(), &made);
            } else {
                m_notes << QStringLiteral("cannot read the bump map %1").arg(bump->getPath());
            }
        }
    }
    m_buffer.model().materials.push_back(m);
    const int index = int(m_buffer.model().materials.size()) - 1;
    m_materials.insert(host, index);
    return index;
}

int MaterialWriter::texture(const QString &key, const QString &sourcePath, const QImage *made) {
    if (auto it = m_textures.constFind(key); it != m_textures.constEnd())
        return *it;
    tinygltf::Model &model = m_buffer.model();
    const int source = image(sourcePath, made);
    int index = -1;
    if (source >= 0) {
        if (m_sampler < 0) {
            tinygltf::Sampler s;
            s.magFilter = TINYGLTF_TEXTURE_FILTER_LINEAR;
            s.minFilter = TINYGLTF_TEXTURE_FILTER_LINEAR_MIPMAP_LINEAR;
            model.samplers.push_back(s);
            m_sampler = int(model.samplers.size()) - 1;
        }
        tinygltf::Texture t;
        t.source = source;
        t.sampler = m_sampler;
        model.textures.push_back(t);
        index = int(model.textures.size()) - 1;
    }
    m_textures.insert(key, index);
    return index;
}

// An image from a file (PNG and JPEG as they are, anything else as PNG) or made here.
int MaterialWriter::image(const QString &sourcePath, const QImage *made) {
    tinygltf::Model &model = m_buffer.model();
    QByteArray bytes;
    QString mime = QStringLiteral("image/png");
    const QString suffix = QFileInfo(sourcePath).suffix().toLower();
    const bool asIs = !made && (suffix == QLatin1String("png") || suffix == QLatin1String("jpg") ||
                                suffix == QLatin1String("jpeg"));
    if (asIs) {
        QFile f(sourcePath);
        if (f.open(QIODevice::ReadOnly))
            bytes = f.readAll();
        if (suffix != QLatin1String("png"))
            mime = QStringLiteral("image/jpeg");
    } else {
        const QImage decoded = made ? *made : QImage(sourcePath);
        if (!decoded.isNull())
            bytes = pngBytes(decoded);
    }
    if (bytes.isEmpty()) {
        m_notes << QStringLiteral("cannot read the image %1").arg(sourcePath);
        return -1;
    }
    tinygltf::Image img;
    img.mimeType = mime.toStdString();
    if (m_embed) {
        img.bufferView = m_buffer.addView(bytes.constData(), size_t(bytes.size()));
    } else {
        const QFileInfo out(m_outFile);
        QString file = sourcePath;
        if (!asIs) { // made here or converted: a file of its own beside the .gltf
            file = out.absolutePath() +
                   QStringLiteral("/%1_image%2.png").arg(out.completeBaseName()).arg(model.images.size());
            QFile f(file);
            if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size()) {
                m_notes << QStringLiteral("cannot write the image %1").arg(file);
                return -1;
            }
            m_sideFiles << file;
        }
        const QString relative = out.absoluteDir().relativeFilePath(QFileInfo(file).absoluteFilePath());
        img.uri = QString::fromLatin1(QUrl::toPercentEncoding(relative, "/")).toStdString();
    }
    model.images.push_back(img);
    return int(model.images.size()) - 1;
}
