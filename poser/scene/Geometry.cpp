// Geometry files read once per importer and shared by every shape cut from them; the geometry
// keywords of object sections and the alternate-geometry section.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"
#include "SceneHelpers.h"

#include <OvApp.h>
#include <OvFileIO.h>
#include <OvNode.h>
#include <OvPolyMesh.h>
#include <OvSettings.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <memory>
#include <new>
#include <text/ObjGeometry.h>
#include <text/ObjOptions.h>
#include <text/Paths.h>

using poser::isDeformer;
using poser::make;

namespace {

const QString kGeomSourceData = QStringLiteral("GeomSourceFileData");

// Poser geometry is always read the same way, whatever the user last chose for OBJ imports:
// Poser units, Y up, groups and texture coordinates kept, no material library.
OvFileIOSettings geometrySettings() {
    OvFileIOSettings settings;
    settings.setFloatValue(ObjOption::Scale, POSER_UNIT_CM);
    settings.setBoolValue(ObjOption::SwapYZ, false);
    settings.setBoolValue(ObjOption::IncludeG, true);
    settings.setBoolValue(ObjOption::IncludeVT, true);
    settings.setBoolValue(ObjOption::IncludeUsemtl, true);
    settings.setBoolValue(ObjOption::IncludeMtllib, false);
    return settings;
}

OvObject *objectOf(OvNode *node) {
    OvObject *object = node->getObject();
    if (!object) {
        object = make<OvObject>();
        node->setObject(object);
    }
    return object;
}

int vertexCount(const OvShape *shape) {
    auto *mesh = shape ? dynamic_cast<const OvPolyMesh *>(shape->getGeometry()) : nullptr;
    return mesh ? mesh->getNumVertices() : 0;
}

void recordSource(OvShape *shape, const QString &path, const QString &group) {
    if (auto *data = dynamic_cast<OvGeomSourceFileData *>(shape->findDataItem(kGeomSourceData))) {
        data->setSourceFilePath(path);
        data->setGroupName(group);
        return;
    }
    auto *data = new (std::nothrow) OvGeomSourceFileData(path, group);
    if (!data)
        throw QString("Out of Memory");
    shape->addDataItem(data);
}

// The figure's (or prop's) material of that name, made on first use, so that every shape of one
// figure shares one material per name.
OvMaterial *sharedMaterial(OvPz3SceneItem *item, const QString &name) {
    OvTSharedPointer<OvMaterial> material = item->findMaterial(name);
    if (!material) {
        auto *made = make<OvDefaultMaterial>();
        made->setName(name);
        material = made;
        item->materials.append(material);
    }
    return material.get(); // the item's list keeps it alive
}

// Poser paths use ':' as separator unless they are Windows paths.
QString withSlashes(const QString &path) {
    return text::withSlashes(path, text::ColonsUnlessBackslash | text::Backslashes);
}

} // namespace

// ---- cache entries ----

OvPz3GeomItem::~OvPz3GeomItem() {
    delete shape;
}

void OvPz3GeomItem::loadGeometry(const QString &resolvedPath) {
    path = resolvedPath;
    OvShape *read = readObjGeometryFile(resolvedPath, geometrySettings());

    auto *poly = dynamic_cast<OvPolyShape *>(read);
    if (!poly) {
        delete read;
        return;
    }
    delete shape;
    shape = poly;
    if (poly->getPolyMesh()) {
        QString name = OvFileIO::getShortFileName(resolvedPath);
        const int dot = name.lastIndexOf(QLatin1Char('.'));
        if (dot > 0)
            name.truncate(dot);
        poly->setName(QStringLiteral("%1_%2").arg(name).arg(vertexCount(poly)));
    }
}

void OvPz3GeomItem::addShapeTo(OvNode *node, OvPz3SceneItem *sceneItem, const QString &label) {
    if (!node || !sceneItem || !shape)
        return;
    std::unique_ptr<OvPolyShape> made(make<OvPolyShape>());
    made->setPolyMesh(shape->getPolyMesh());
    made->setLabel(label);
    made->setName(shape->getName());
    recordSource(made.get(), path, QStringLiteral("")); // the whole file
    // Same order as the cached shape, so the shared mesh's face material indices stay right.
    for (int i = 0; i < shape->getNumMaterials(); ++i)
        made->addMaterial(sharedMaterial(sceneItem, shape->getMaterial(i)->getName()));

    OvObject *object = objectOf(node);
    object->addShape(made.release(), -1);
    OvEnumProperty *geometrySwitch = object->getGeometryControl();
    geometrySwitch->setValue(geometrySwitch->getNumItems() - 1);
}

void OvPz3GeomItem::addGroupShapeTo(OvNode *node, const QString &group, OvPz3SceneItem *sceneItem) {
    if (!node || !sceneItem)
        return;
    std::unique_ptr<OvPolyShape> made(make<OvPolyShape>());
    if (shape)
        made->setName(QStringLiteral("%1_%2").arg(shape->getName(), group));
    made->setLabel(group);
    recordSource(made.get(), path, group);
    OvPolyShape *part = made.get();
    objectOf(node)->addShape(made.release(), -1);

    const OvPolyMesh *whole = shape ? shape->getPolyMesh() : nullptr;
    if (!whole || whole->findFaceGroup(group) < 0)
        return;
    std::vector<int> used;
    OvPolyMesh *mesh = whole->createMeshFromGroup(group, &used);
    if (!mesh)
        return;
    part->setPolyMesh(mesh);
    // The cut mesh numbers its face materials by position in `used`.
    for (int index : used) {
        const QString name = index >= 0 && index < shape->getNumMaterials()
                                 ? shape->getMaterial(index)->getName()
                                 : QStringLiteral("default");
        part->addMaterial(sharedMaterial(sceneItem, name));
    }
}

// ---- the cache ----

bool OvPZ3Importer::locateGeometry(const QString &path, QString &found, bool ask) {
    if (findContentFile(path, found, false))
        return true;
    // Geometry is often shipped compressed under the same name.
    if (findContentFile(OvFileIO::changeFileExtension(path, QStringLiteral("obz")), found, false))
        return true;
    if (ask)
        return locateFile(withSlashes(path), found, false);
    return false;
}

OvPz3GeomItem *OvPZ3Importer::getGeometry(const QString &path) {
    QString found;
    if (!locateGeometry(path, found, true))
        return nullptr;
    // A figure or scene names thousands of files: the cache is looked up by path, not scanned.
    if (OvPz3GeomItem *cached = m_geomByPath.value(found))
        return cached;

    OvApp::startProgress(tr("Importing %1 ...").arg(m_fileName), 0, false, false);
    m_geomItems.emplace_back(make<OvPz3GeomItem>());
    OvPz3GeomItem *entry = m_geomItems.back().get();
    m_geomByPath.insert(found, entry);
    try {
        entry->loadGeometry(found);
    } catch (...) {
        // The entry stays without a shape, so the file is not tried again.
        qDebug("Error in OvPZ3Importer::getGeometry()");
    }
    OvApp::finishProgress();
    return entry;
}

// ---- object-section keywords ----

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_geometryKeywords[] = {
    {"geomCustom", 0, Short::Skip, nullptr, &OvPZ3Importer::geomCustom, Needs::Node},
    {"geomHandlerGeom", 3, Short::Stop, "Insufficient arguments", &OvPZ3Importer::geomHandlerGeom,
     Needs::Figure},
    {"alternateGeom", 0, Short::Skip, nullptr, &OvPZ3Importer::geomAlternate},
    {"objFileGeom", 4, Short::Stop, "No filename was specified", &OvPZ3Importer::geomObjFile, Needs::Figure},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::geomCustom(char **, int) {
    OvPz3SceneItem *item = findSceneItem(m_curFigure);
    OvObject *object = objectOf(m_curNode);
    // The block's braces are read by the OBJ reader too ('{' is no OBJ keyword, '}' ends the
    // read), so the section stack never sees them.
    OvShape *shape = readObjGeometryInline(*m_file, m_file->m_lineNumber, geometrySettings());
    if (!shape)
        return false;
    const QString nodeName = m_curNode->getName();
    if (shape->getGeometry()) {
        const QString name = QStringLiteral("%1_%2").arg(nodeName).arg(vertexCount(shape));
        shape->setName(name);
        object->setName(name);
    }
    if (item)
        for (int i = 0; i < shape->getNumMaterials(); ++i)
            item->materials.append(shape->getMaterial(i));
    shape->setLabel(nodeName);
    object->addShape(shape, -1);
    return true;
}

bool OvPZ3Importer::geomHandlerGeom(char **argv, int) {
    if (!m_curNode || !m_curGeom)
        return true;
    OvPz3SceneItem *item = findSceneItem(m_curFigure);
    if (!item) {
        OvFileIO::error(tr("No item found for geomHandlerGeom."));
        return false;
    }
    m_curGeom->addGroupShapeTo(m_curNode, OvFileIO::decodeText(argv[2]), item);
    return true;
}

bool OvPZ3Importer::geomAlternate(char **, int) {
    if (!m_curFigure)
        qDebug("NULL object for alternateGeom");
    m_altGeomName.clear();
    m_parseMode = ModeAltGeom;
    return true;
}

bool OvPZ3Importer::geomObjFile(char **argv, int argc) {
    if (!m_curNode)
        return true;
    const QString path = tokenText(argv, 3, argc);
    QString found;
    if (!locateGeometry(path, found, true))
        found = path;
    // A prop's own record names no group; the figure's and its body parts' name theirs.
    if (!m_curNode->findDataItem(kGeomSourceData)) {
        auto *data = new (std::nothrow) OvGeomSourceFileData(found, QString());
        if (!data)
            throw QString("Out of Memory");
        m_curNode->addDataItem(data);
    }
    // Deformer props keep the record of their geometry but show none.
    if (isDeformer(m_curNode))
        return true;
    OvPz3SceneItem *item = findSceneItem(m_curFigure);
    if (!item) {
        OvFileIO::error(tr("No item found for objFileGeom."));
        return false;
    }
    OvPz3GeomItem *entry = getGeometry(path);
    if (!entry)
        return true;
    entry->addShapeTo(m_curNode, item, m_curNode->getName());
    if (!m_curNode->inherits("OvBone") && entry->shape)
        objectOf(m_curNode)->setName(QStringLiteral("%1_%2")
                                         .arg(OvFileIO::getBaseFileName(withSlashes(path)))
                                         .arg(vertexCount(entry->shape)));
    return true;
}

// ---- alternateGeom sections ----

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_altGeomKeywords[] = {
    {"name", 2, Short::Stop, "No name was specified for altGeom", &OvPZ3Importer::altGeomName},
    {"objFile", 3, Short::Stop, "No OBJ file was specified for altGeom", &OvPZ3Importer::altGeomObjFile},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseAltGeom(char **argv, int argc) {
    if (!m_curNode)
        qDebug("NULL m_curNode for parseAltGeom");
    return dispatchKeyword(s_altGeomKeywords, argv, argc);
}

bool OvPZ3Importer::altGeomName(char **argv, int argc) {
    m_altGeomName = tokenText(argv, 1, argc);
    return true;
}

bool OvPZ3Importer::altGeomObjFile(char **argv, int argc) {
    if (!m_curNode)
        return true;
    OvPz3SceneItem *item = findSceneItem(m_curFigure);
    m_curGeom = getGeometry(tokenText(argv, 2, argc));
    if (m_curGeom)
        m_curGeom->addShapeTo(m_curNode, item, m_altGeomName);
    // Switching the body part to "Genitals Off" also switches the genital bone to an empty shape.
    if (m_altGeomName == QLatin1String("Genitals Off"))
        linkGenitalsOff();
    return true;
}

void OvPZ3Importer::linkGenitalsOff() {
    OvSkeleton *skeleton = m_curNode->getSkeleton();
    OvBone *genital = skeleton ? skeleton->findBone(QStringLiteral("genital")) : nullptr;
    if (!genital)
        return;
    // The genital's own alternate, or a switch that already follows the genital's, would make the
    // switches drive each other.
    OvEnumProperty *source = objectOf(m_curNode)->getGeometryControl();
    OvEnumProperty *genitalSwitch = objectOf(genital)->getGeometryControl();
    if (wouldCreateCycle(source, genitalSwitch)) {
        reportInfo(tr("The Genitals Off switch of %1 would follow itself; it is not linked")
                       .arg(m_curNode->getName()));
        return;
    }
    OvPolyShape *placeholder = make<OvPolyShape>();
    placeholder->setName(QStringLiteral("genital_0"));
    placeholder->setLabel(QStringLiteral("Genitals Off"));
    objectOf(genital)->addShape(placeholder, -1);

    auto *link = new (std::nothrow) OvERCLink(source, 1.0, 0.0);
    if (!link)
        throw QString("Out of Memory");
    link->setName(QStringLiteral("Genitals Off Link"));
    genitalSwitch->insertController(link, -1);
    genitalSwitch->setHidden(true);
}
