// Material sections of figures and objects: Poser's colours, highlight, bump, reflection and
// transparency values become settings of the host's standard material, and map lines attach
// textures (Textures.cpp finds them).
#include "../OvPZ3Importer.h"

#include <OvMaterial.h>
#include <QColor>
#include <QtDebug>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <text/Numbers.h>

namespace {

const char kNoColor[] = "Insufficient material color values were specified";
const char kNoImage[] = "No image file specified";

} // namespace

// Every keyword but shaderTree needs a value; a missing one stops the import.
const OvPZ3Importer::KeywordRow OvPZ3Importer::s_materialKeywords[] = {
    {"KdColor", 5, Short::Stop, kNoColor, &OvPZ3Importer::matColor<&OvDefaultMaterial::setDiffuseColor>},
    {"KaColor", 5, Short::Stop, kNoColor, &OvPZ3Importer::matAmbientColor},
    {"KsColor", 5, Short::Stop, kNoColor, &OvPZ3Importer::matColor<&OvDefaultMaterial::setSpecularColor>},
    {"ReflectionColor", 5, Short::Stop, kNoColor,
     &OvPZ3Importer::matColor<&OvDefaultMaterial::setReflectionColor>},
    {"NsExponent", 2, Short::Stop, "Insufficient m_material shininess exponent values were specified",
     &OvPZ3Importer::matNsExponent},
    {"bumpStrength", 2, Short::Stop, "Insufficient bump strength values were specified",
     &OvPZ3Importer::matBumpStrength},
    {"reflectionStrength", 2, Short::Stop, "Insufficient reflection strength values were specified",
     &OvPZ3Importer::matReflectionStrength},
    {"tMax", 2, Short::Stop, "No transparency value specified", &OvPZ3Importer::matTMax},
    {"textureMap", 2, Short::Stop, kNoImage, &OvPZ3Importer::matMap<&OvDefaultMaterial::setColorMap>},
    {"bumpMap", 2, Short::Stop, kNoImage, &OvPZ3Importer::matMap<&OvDefaultMaterial::setBumpMap>},
    {"reflectionMap", 2, Short::Stop, kNoImage, &OvPZ3Importer::matMap<&OvDefaultMaterial::setReflectionMap>},
    {"transparencyMap", 2, Short::Stop, kNoImage, &OvPZ3Importer::matMap<&OvDefaultMaterial::setOpacityMap>},
    // The shader nodes that follow are the renderer's; the closing brace returns to this section.
    {"shaderTree", 0, Short::Skip, nullptr, &OvPZ3Importer::enterSection<ModeIgnore>},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseMaterialLine(char **argv, int argc) {
    return dispatchKeyword(s_materialKeywords, argv, argc);
}

// The material the section fills; null (with the trace) when the section has none.
OvDefaultMaterial *OvPZ3Importer::currentMaterial(const char *trace) {
    auto *material = dynamic_cast<OvDefaultMaterial *>(m_material);
    if (!material)
        qDebug("%s", trace);
    return material;
}

// A number that the host can store; anything else (a run of digits too long for a float) is
// reported and the setting keeps its value.
bool OvPZ3Importer::materialNumber(const char *token, float &value) {
    value = parsePoserFloat(token);
    if (std::isfinite(value))
        return true;
    reportInfo(tr("\"%1\" is not a usable number; the material setting is left as it was")
                   .arg(OvFileIO::decodeText(token)));
    return false;
}

// Red, green and blue from 0 to 1, scaled to 0..255 and truncated; the fourth value is not used.
// A channel outside that range would make no colour at all, so the colour is left as it was.
bool OvPZ3Importer::materialColor(char **argv, QColor &color) {
    int rgb[3];
    for (int i = 0; i < 3; ++i) {
        const double scaled = double(parsePoserFloat(argv[i + 1])) * 255.0;
        if (!(scaled > -1.0 && scaled < 256.0)) {
            reportInfo(tr("%1 values must lie between 0 and 1 (%2 %3 %4); the colour is left as it was")
                           .arg(OvFileIO::decodeText(argv[0]), OvFileIO::decodeText(argv[1]),
                                OvFileIO::decodeText(argv[2]), OvFileIO::decodeText(argv[3])));
            return false;
        }
        rgb[i] = int(scaled);
    }
    color.setRgb(rgb[0], rgb[1], rgb[2]);
    return true;
}

template <void (OvDefaultMaterial::*Set)(const QColor &)> bool OvPZ3Importer::matColor(char **argv, int) {
    QColor color;
    if (OvDefaultMaterial *material = currentMaterial("NULL material");
        material && materialColor(argv, color))
        (material->*Set)(color);
    return true;
}

bool OvPZ3Importer::matAmbientColor(char **argv, int) {
    QColor color;
    if (OvDefaultMaterial *material = currentMaterial("NULL material");
        material && materialColor(argv, color)) {
        material->setAmbientColor(color);
        material->setAmbientStrength(0.15f);
    }
    return true;
}

// Poser's highlight exponent as the host's glossiness: 0 gives 1.0, 100 and more give 0.5.
bool OvPZ3Importer::matNsExponent(char **argv, int) {
    float n = 0;
    if (OvDefaultMaterial *material = currentMaterial("NULL m_material");
        material && materialNumber(argv[1], n))
        material->setGlossinessStrength(n >= 100 ? 0.5f : float((100.0 - double(n)) / 200.0 + 0.5));
    return true;
}

bool OvPZ3Importer::matBumpStrength(char **argv, int) {
    float n = 0;
    if (OvDefaultMaterial *material = currentMaterial("NULL m_material");
        material && materialNumber(argv[1], n)) {
        material->setBumpStrength(n);
        material->setBumpMax(0.01f);
        material->setBumpMin(-0.01f);
    }
    return true;
}

// A strength without a reflection map would reflect nothing in Poser.
bool OvPZ3Importer::matReflectionStrength(char **argv, int) {
    float n = 0;
    if (OvDefaultMaterial *material = currentMaterial("NULL m_material");
        material && materialNumber(argv[1], n))
        material->setReflectionStrength(material->getReflectionMap() ? n : 0.0f);
    return true;
}

bool OvPZ3Importer::matTMax(char **argv, int) {
    float n = 0;
    if (OvDefaultMaterial *material = currentMaterial("NULL m_material");
        material && materialNumber(argv[1], n))
        material->setBaseOpacity(std::clamp(1.0f - n, 0.0f, 1.0f));
    return true;
}

// NO_MAP removes the map, and so does a map whose image cannot be found or read.
template <void (OvDefaultMaterial::*Set)(OvTexture *)> bool OvPZ3Importer::matMap(char **argv, int argc) {
    OvDefaultMaterial *material = currentMaterial("NULL m_material");
    if (!material)
        return true;
    OvTexture *texture = nullptr;
    if (std::strcmp(argv[1], "NO_MAP") != 0)
        texture = getPoserTexture(tokenText(argv, 1, argc));
    (material->*Set)(texture);
    return true;
}
