// The figure section that closes a figure file. Only what its material sections need is read so far
// (the figure they belong to, and the materials); welds, IK chains, conforming, subdivision and
// linked parameters are ignored.
#include "../OvPZ3Importer.h"

#include <OvMaterial.h>

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_figureKeywords[] = {
    {"root", 0, Short::Skip, nullptr, &OvPZ3Importer::figRoot},
    {"material", 2, Short::Stop, "No material name was specified", &OvPZ3Importer::figMaterial},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseFigureLine(char **argv, int argc) {
    return dispatchKeyword(s_figureKeywords, argv, argc);
}

// Names the figure this section belongs to, unless a figure is already current: looks up a figure
// of this import by its number, never makes one.
bool OvPZ3Importer::figRoot(char **argv, int argc) {
    if (m_curFigure)
        return true;
    QString name = tokenText(argv, 1, argc);
    m_curFigure = getSkeleton(stripFigureNumber(name), false);
    return true;
}

// The figure's shared material of that name; a name the figure does not have skips the section.
bool OvPZ3Importer::figMaterial(char **argv, int) {
    OvTSharedPointer<OvMaterial> material = resolveMaterial(m_curFigure, OvFileIO::decodeText(argv[1]));
    m_material = dynamic_cast<OvDefaultMaterial *>(material.get());
    m_parseMode = m_material ? ModeMaterial : ModeIgnore;
    return true;
}
