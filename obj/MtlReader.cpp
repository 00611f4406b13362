// The MTL library reader: surface values and texture maps of the materials an OBJ selected.
#include "OvObjImporter.h"

#include <OvApp.h>
#include <OvImageMgr.h>
#include <OvShape.h>
#include <OvTextInputFile.h>
#include <QColor>
#include <cstring>
#include <memory>
#include <text/Numbers.h>
#include <text/Paths.h>

namespace {

// Colour channel: the number times 255, truncated toward zero and clamped to 0..255 (a channel
// outside the range would leave the whole colour invalid).
int channel(const char *token) {
    const double v = double(parsePoserFloat(token)) * 255.0;
    if (!(v > 0.0)) // also NaN
        return 0;
    return v >= 255.0 ? 255 : int(v);
}

QColor colour(char **argv) {
    return QColor(channel(argv[1]), channel(argv[2]), channel(argv[3]));
}

bool is(const char *token, const char *keyword) {
    return std::strcmp(token, keyword) == 0;
}
bool isNoCase(const char *token, const char *keyword) {
    return qstricmp(token, keyword) == 0;
}

} // namespace

OvTexture *OvObjImporter::loadMapTexture(const QString &path, const QString &folder) {
    // Drive letters too: "C:\maps\a.jpg" becomes "C//maps/a.jpg", then tried inside the folder.
    const QString p = text::withSlashes(path, text::Colons | text::Backslashes);
    OvImageMgr *images = OvApp::getImageMgr();
    OvTexture *texture = images->getImage(p);
    if (!texture)
        texture =
            images->getImage(p.startsWith(QLatin1Char('/')) ? folder + p : folder + QLatin1Char('/') + p);
    return texture;
}

unsigned int OvObjImporter::readMtl(OvShape *shape, const QString &mtlPath) {
    OvTextInputFile file(mtlPath, false, true);
    if (!file.open())
        return ResultCannotOpen;
    const QString folder = OvFileIO::getFilePath(mtlPath);
    OvApp::statusLine(tr("Reading %1").arg(mtlPath.mid(mtlPath.lastIndexOf(QLatin1Char('/')) + 1)), true);
    std::unique_ptr<char *[]> tokens(new char *[OvTextInputFile::MaxTokens]);
    char **av = tokens.get();
    OvDefaultMaterial *m = nullptr;

    try {
        while (!file.atEnd()) {
            int argc = 0;
            if (!file.getLine(av, argc) || argc == 0)
                continue;
            const char *key = av[0];
            auto map = [&](int token) { return loadMapTexture(OvFileIO::decodeText(av[token]), folder); };
            switch (key[0]) {
            case 'n':
                if (argc >= 2 && is(key, "newmtl"))
                    m = shape ? dynamic_cast<OvDefaultMaterial *>(
                                    shape->findMaterial(OvFileIO::decodeText(av[1])))
                              : nullptr;
                break;
            case 'N':
                if (m && argc == 2 && key[1] == 'i')
                    m->setIndexOfRefraction(parsePoserFloat(av[1]));
                else if (m && argc == 2 && key[1] == 's')
                    m->setGlossinessStrength(parsePoserFloat(av[1]));
                break;
            case 'K':
                if (m && argc == 4 && key[1] == 'a')
                    m->setAmbientColor(colour(av));
                else if (m && argc == 4 && key[1] == 'd')
                    m->setDiffuseColor(colour(av));
                else if (m && argc == 4 && key[1] == 's')
                    m->setSpecularColor(colour(av));
                else if (m && argc == 2 && key[1] == 'm')
                    m->setBumpStrength(parsePoserFloat(av[1]));
                break;
            case 'd':
                if (m && argc == 2 && key[1] == '\0') // "disp", "decal" and the like are no opacity
                    m->setBaseOpacity(parsePoserFloat(av[1]));
                break;
            case 'T':
                if (m && argc == 2 && key[1] == 'r')
                    m->setBaseOpacity(parsePoserFloat(av[1]));
                break;
            case 'm': {
                if (!m || argc < 2)
                    break;
                OvTexture *t = nullptr;
                if (is(key, "map_Ka")) {
                    if ((t = map(1)))
                        m->setAmbientColorMap(t);
                } else if (is(key, "map_Kd")) {
                    if ((t = map(1)))
                        m->setColorMap(t);
                } else if (is(key, "map_Ks")) {
                    if ((t = map(1)))
                        m->setSpecularColorMap(t);
                } else if (isNoCase(key, "map_bump")) {
                    // Options such as "-bm 0.5" may stand between keyword and file.
                    if ((t = map(argc > 2 ? argc - 1 : 1)))
                        m->setBumpMap(t);
                } else if (isNoCase(key, "map_d")) {
                    if ((t = map(1)))
                        m->setOpacityMap(t);
                } else if (is(key, "map_refl")) {
                    if ((t = map(1)))
                        m->setReflectionMap(t);
                }
                break;
            }
            default:
                break;
            }
        }
    } catch (...) {
        file.close();
        return ResultMaterialLibraryFailed;
    }
    file.close();
    return ResultOk;
}
