// The top level of a Poser file: each keyword names the section that follows or sets file-wide
// context (the figure geometry, the binary morph file).
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"

#include <OvLight.h>
#include <OvPolyMesh.h>
#include <OvSkeleton.h>
#include <OvShape.h>
#include <cstring>
#include <text/Paths.h>

namespace {

bool is(const char *token, const char *keyword) { return std::strcmp(token, keyword) == 0; }

} // namespace

bool OvPZ3Importer::parseFileLine(char **argv, int argc) {
    const char *key = argv[0];

    // Object sections: find or make the node, then read the section in ModeObject.
    auto objectSection = [&](OvNode *node) {
        m_curNode = node;
        if (m_curNode)
            m_parseMode = ModeObject;
        return true;
    };
    auto deformerProp = [&](int kind, const char *nodeClass, const QString &missing) {
        if (argc < 2) {
            reportError(missing);
            return false;
        }
        QString name = tokenText(argv, 1, argc);
        stripFigureNumber(name);
        m_curFigure = getPropNode(name, kind);
        return objectSection(m_curFigure && m_curFigure->inherits(nodeClass) ? m_curFigure : nullptr);
    };

    if (is(key, "figureResFile")) {
        if (argc < 2) {
            reportError(tr("No filename was specified"));
            return false;
        }
        if (QString::fromLatin1(argv[1]).toLower() == QLatin1String("none")) {
            OvFileIO::info(tr("Null object found"));
            m_figureResName = QStringLiteral("NULL");
            m_figureVertexCount = 0;
            return true;
        }
        const QString name = tokenText(argv, 1, argc);
        m_curGeom = getGeometry(name);
        m_figureResName = OvFileIO::getBaseFileName(
            text::withSlashes(name, text::ColonsUnlessBackslash | text::Backslashes));
        OvGeometry *geometry = m_curGeom && m_curGeom->shape ? m_curGeom->shape->getGeometry() : nullptr;
        if (!geometry) {
            reportError(tr("Error loading figureResFile"));
            return false;
        }
        auto *mesh = dynamic_cast<OvPolyMesh *>(geometry);
        m_figureVertexCount = mesh ? mesh->getNumVertices() : 0;
        return true;
    }
    if (is(key, "morphBinaryFile")) {
        if (argc < 2) {
            reportError(tr("No filename was specified"));
            return false;
        }
        if (QString::fromLatin1(argv[1]).toLower() == QLatin1String("none"))
            return true;
        // Binary morph deltas are read with the morph targets; here the file only has to be found.
        QString found;
        if (!findContentFile(tokenText(argv, 1, argc), found, true)) {
            reportError(tr("Error loading morphBinaryFile"));
            return false;
        }
        m_binMorphFilePath = found;
        return true;
    }
    if (is(key, "actor")) {
        if (argc < 2) {
            reportError(tr("No actor part was specified"));
            return false;
        }
        QString name = tokenText(argv, 1, argc);
        const int figureNumber = stripFigureNumber(name);
        if (name == QLatin1String("UNIVERSE"))
            return true;
        m_curFigure = m_applyToSelection ? static_cast<OvNode *>(getSelectedSkeleton()) : getSkeleton(figureNumber, true);
        if (m_curFigure)
            return objectSection(getNode(m_curFigure, name));
        m_curFigure = getPropNode(name, PropPlain);
        return objectSection(m_curFigure);
    }
    if (is(key, "prop")) {
        if (argc < 2) {
            reportError(tr("No prop name was specified"));
            return false;
        }
        QString name = tokenText(argv, 1, argc);
        stripFigureNumber(name);
        if (name.toLower() == QLatin1String("figurehair"))
            name = OvFileIO::getBaseFileName(m_fileName);
        m_curFigure = getPropNode(name, PropPlain);
        return objectSection(m_curFigure);
    }
    if (is(key, "baseProp"))
        return deformerProp(PropDFormBase, "OvDFormBase", tr("No dform base prop name was specified"));
    if (is(key, "magnetDeformerProp"))
        return deformerProp(PropDForm, "OvDForm", tr("No dform deformer prop name was specified"));
    if (is(key, "sphereZoneProp"))
        return deformerProp(PropDFormZone, "OvDFormZone", tr("No sphere zone name was specified"));
    if (is(key, "light") || is(key, "camera")) {
        if (argc < 2) {
            reportError(tr("No light or camera name was specified"));
            return false;
        }
        m_curFigure = nullptr;
        const QString name = tokenText(argv, 1, argc);
        return objectSection(is(key, "light") ? static_cast<OvNode *>(getLight(name)) : getCamera(name));
    }
    if (is(key, "figure")) {
        m_curFigure = m_applyToSelection ? getSelectedSkeleton() : nullptr;
        m_curNode = nullptr;
        m_parseMode = ModeFigure;
    } else if (is(key, "movieInfo")) {
        m_parseMode = ModeMovieInfo;
    } else if (is(key, "doc")) {
        m_parseMode = ModeDoc;
    } else if (is(key, "version")) {
        m_parseMode = ModeVersion;
    }
    return true;
}
