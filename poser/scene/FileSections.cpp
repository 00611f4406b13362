// The top level of a Poser file: each keyword names the section that follows or sets file-wide
// context (the figure geometry, the binary morph file).
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"

#include <OvLight.h>
#include <OvPolyMesh.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <text/Paths.h>

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_fileKeywords[] = {
    {"figureResFile", 2, Short::Stop, "No filename was specified", &OvPZ3Importer::fileFigureResFile},
    {"morphBinaryFile", 2, Short::Stop, "No filename was specified", &OvPZ3Importer::openBinMorphFile},
    {"actor", 2, Short::Stop, "No actor part was specified", &OvPZ3Importer::fileActor},
    {"prop", 2, Short::Stop, "No prop name was specified", &OvPZ3Importer::fileProp},
    {"baseProp", 2, Short::Stop, "No dform base prop name was specified", &OvPZ3Importer::fileBaseProp},
    {"magnetDeformerProp", 2, Short::Stop, "No dform deformer prop name was specified",
     &OvPZ3Importer::fileMagnetDeformerProp},
    {"sphereZoneProp", 2, Short::Stop, "No sphere zone name was specified",
     &OvPZ3Importer::fileSphereZoneProp},
    {"light", 2, Short::Stop, "No light or camera name was specified", &OvPZ3Importer::fileLight},
    {"camera", 2, Short::Stop, "No light or camera name was specified", &OvPZ3Importer::fileCamera},
    {"figure", 0, Short::Skip, nullptr, &OvPZ3Importer::fileFigure},
    {"movieInfo", 0, Short::Skip, nullptr, &OvPZ3Importer::enterSection<ModeMovieInfo>},
    {"doc", 0, Short::Skip, nullptr, &OvPZ3Importer::enterSection<ModeDoc>},
    {"version", 0, Short::Skip, nullptr, &OvPZ3Importer::enterSection<ModeVersion>},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseFileLine(char **argv, int argc) {
    return dispatchKeyword(s_fileKeywords, argv, argc);
}

// An object section is read in ModeObject when its node was found or made; without one its lines
// fall back to the top level.
bool OvPZ3Importer::openObjectSection(OvNode *node) {
    m_curNode = node;
    if (m_curNode)
        m_parseMode = ModeObject;
    return true;
}

bool OvPZ3Importer::fileFigureResFile(char **argv, int argc) {
    if (QString::fromLatin1(argv[1]).toLower() == QLatin1String("none")) {
        OvFileIO::info(tr("Null object found"));
        m_figureResName = QStringLiteral("NULL");
        m_figureVertexCount = 0;
        return true;
    }
    const QString name = tokenText(argv, 1, argc);
    m_curGeom = getGeometry(name);
    m_figureResName =
        OvFileIO::getBaseFileName(text::withSlashes(name, text::ColonsUnlessBackslash | text::Backslashes));
    OvGeometry *geometry = m_curGeom && m_curGeom->shape ? m_curGeom->shape->getGeometry() : nullptr;
    if (!geometry) {
        reportError(tr("Error loading figureResFile %1").arg(name));
        return false;
    }
    auto *mesh = dynamic_cast<OvPolyMesh *>(geometry);
    m_figureVertexCount = mesh ? mesh->getNumVertices() : 0;
    return true;
}

bool OvPZ3Importer::openBinMorphFile(char **argv, int argc) {
    if (QString::fromLatin1(argv[1]).toLower() == QLatin1String("none"))
        return true;
    // Only found here: the file is opened when a morph first asks for its deltas.
    m_curBinMorphFile = openBinMorphFile(tokenText(argv, 1, argc));
    if (!m_curBinMorphFile) {
        reportError(tr("Error loading morphBinaryFile"));
        return false;
    }
    return true;
}

bool OvPZ3Importer::fileActor(char **argv, int argc) {
    QString name = tokenText(argv, 1, argc);
    const int figureNumber = stripFigureNumber(name);
    if (name == QLatin1String("UNIVERSE"))
        return true;
    m_curFigure =
        m_applyToSelection ? static_cast<OvNode *>(getSelectedSkeleton()) : getSkeleton(figureNumber, true);
    if (m_curFigure) {
        OvNode *node = getNode(m_curFigure, name);
        // A pose adds no body parts; what the figure lacks is skipped, and said.
        if (!node && m_applyToSelection)
            reportInfo(tr("The selected figure %1 has no actor \"%2\"; its section is skipped")
                           .arg(m_curFigure->getLabel(), name));
        return openObjectSection(node);
    }
    m_curFigure = getPropNode(name, PropPlain);
    return openObjectSection(m_curFigure);
}

bool OvPZ3Importer::fileProp(char **argv, int argc) {
    QString name = tokenText(argv, 1, argc);
    stripFigureNumber(name);
    if (name.toLower() == QLatin1String("figurehair"))
        name = OvFileIO::getBaseFileName(m_fileName);
    m_curFigure = getPropNode(name, PropPlain);
    return openObjectSection(m_curFigure);
}

// A deformer prop whose name is taken by a node of another kind is skipped.
bool OvPZ3Importer::openDeformerProp(char **argv, int argc, int kind, const char *nodeClass) {
    QString name = tokenText(argv, 1, argc);
    stripFigureNumber(name);
    m_curFigure = getPropNode(name, kind);
    return openObjectSection(m_curFigure && m_curFigure->inherits(nodeClass) ? m_curFigure : nullptr);
}

bool OvPZ3Importer::fileBaseProp(char **argv, int argc) {
    return openDeformerProp(argv, argc, PropDFormBase, "OvDFormBase");
}

bool OvPZ3Importer::fileMagnetDeformerProp(char **argv, int argc) {
    return openDeformerProp(argv, argc, PropDForm, "OvDForm");
}

bool OvPZ3Importer::fileSphereZoneProp(char **argv, int argc) {
    return openDeformerProp(argv, argc, PropDFormZone, "OvDFormZone");
}

bool OvPZ3Importer::fileLight(char **argv, int argc) {
    m_curFigure = nullptr;
    return openObjectSection(getLight(tokenText(argv, 1, argc)));
}

bool OvPZ3Importer::fileCamera(char **argv, int argc) {
    m_curFigure = nullptr;
    return openObjectSection(getCamera(tokenText(argv, 1, argc)));
}

bool OvPZ3Importer::fileFigure(char **, int) {
    m_curFigure = m_applyToSelection ? getSelectedSkeleton() : nullptr;
    m_curNode = nullptr;
    m_parseMode = ModeFigure;
    return true;
}
