// Geometry files read once and shared, shapes cut by face group, the object-section geometry
// keywords and alternate geometry.
#include "support/SceneInvariants.h"
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <poser/OvPZ3Importer.h>
#include <vector>

namespace {

// Reaches the importer state the geometry code reads and writes.
class GeomImporter : public OvPZ3Importer {
public:
    using OvPZ3Importer::m_altGeomName;
    using OvPZ3Importer::m_curFigure;
    using OvPZ3Importer::m_curGeom;
    using OvPZ3Importer::m_curNode;
    using OvPZ3Importer::m_fileName;
    using OvPZ3Importer::m_parseMode;
    using OvPZ3Importer::parseAltGeom;
    bool parseGeometryKeyword(char **argv, int argc, bool &handled) {
        const KeywordRow *row = findKeyword(s_geometryKeywords, argv[0]);
        handled = row != nullptr;
        return row ? runKeyword(*row, argv, argc) : true;
    }

    OvPz3SceneItem *item(const OvNode *node) { return findSceneItem(node); }
};

// Materials by first use: skin 0, Preview 1, cloth 2, eyes 3, lips 4, nails 5. The chest's faces
// use nails, then cloth (5, then 2); hip and abdomen both use skin.
const QByteArray kFigureObj =
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\nvt 0 0\n"
    "g hip\nusemtl skin\nf 1 2 3\nusemtl Preview\nf 1 3 4\n"
    "g abdomen\nusemtl cloth\nusemtl eyes\nusemtl lips\nusemtl nails\nusemtl skin\nf 2 3 4\n"
    "g chest\nusemtl nails\nf 5 6 7\nusemtl cloth\nf 5 7 8\n"
    "g genital\nf 1 5 6\n";
const QByteArray kBoxObj = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nusemtl red\nf 1 2 3 4\n";

class PoserGeometry : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        ASSERT_TRUE(dir.isValid());
        OvApp::getContentMgr()->addPoserDirectory(dir.path());
        importer.m_fileName = QStringLiteral("scene.pz3");
    }

    QString geometry(const QString &name, const QByteArray &text) {
        return writeFile(dir, QStringLiteral("Runtime/Geometries/") + name, text);
    }

    // Runs one line through the geometry keywords (or, with altGeom, the alternate-geometry handler).
    bool line(const char *text, bool *handled = nullptr, bool altGeom = false) {
        // One buffer, as the line reader leaves it: tokens rejoin into names with blanks.
        QByteArray buffer(text);
        std::vector<char *> argv{buffer.data()};
        for (char *c = buffer.data(); *c; ++c)
            if (*c == ' ') {
                *c = '\0';
                argv.push_back(c + 1);
            }
        if (altGeom)
            return importer.parseAltGeom(argv.data(), int(argv.size()));
        bool h = false;
        bool result = importer.parseGeometryKeyword(argv.data(), int(argv.size()), h);
        if (handled)
            *handled = h;
        return result;
    }
    bool altLine(const char *text) { return line(text, nullptr, true); }

    // A figure with the figure geometry as current entry; returns the skeleton.
    OvSkeleton *figure() {
        geometry(QStringLiteral("figure.obj"), kFigureObj);
        importer.m_curGeom = importer.getGeometry(QStringLiteral(":Runtime:Geometries:figure.obj"));
        auto *skeleton = qobject_cast<OvSkeleton *>(importer.getSkeleton(1, true));
        importer.m_curFigure = skeleton;
        return skeleton;
    }
    OvNode *bodyPart(OvSkeleton *skeleton, const char *name) {
        importer.m_curNode = importer.getNode(skeleton, QString::fromLatin1(name));
        return importer.m_curNode;
    }
    OvNode *prop(const char *name, int kind = PropPlain) {
        importer.m_curNode = importer.m_curFigure = importer.getPropNode(QString::fromLatin1(name), kind);
        return importer.m_curNode;
    }

    static const OvGeomSourceFileData *source(const OvShape *shape) {
        return dynamic_cast<const OvGeomSourceFileData *>(
            shape->findDataItem(QStringLiteral("GeomSourceFileData")));
    }
    static const OvGeomSourceFileData *source(const OvNode *node) {
        return dynamic_cast<const OvGeomSourceFileData *>(
            node->findDataItem(QStringLiteral("GeomSourceFileData")));
    }
    static QStringList materialNames(const OvShape *shape) {
        QStringList names;
        for (int i = 0; i < shape->getNumMaterials(); ++i)
            names << shape->getMaterial(i)->getName();
        return names;
    }

    QTemporaryDir dir;
    GeomImporter importer;
};

TEST_F(PoserGeometry, EachResolvedFileIsReadOnce) {
    const QString path = geometry(QStringLiteral("box.obj"), kBoxObj);
    OvPz3GeomItem *a = importer.getGeometry(QStringLiteral(":Runtime:Geometries:box.obj"));
    OvPz3GeomItem *b = importer.getGeometry(QStringLiteral("Runtime\\Geometries\\box.obj"));
    ASSERT_TRUE(a);
    EXPECT_EQ(a, b);
    EXPECT_EQ(importer.numGeometryItems(), 1);
    EXPECT_EQ(OvApp::progressStarts(), 1) << "the second path must not read the file again";
    EXPECT_EQ(OvApp::progressDepth(), 0);
    EXPECT_EQ(OvApp::progressText(), QStringLiteral("Importing scene.pz3 ..."));
    EXPECT_EQ(a->path, path);
    ASSERT_TRUE(a->shape && a->shape->getPolyMesh());
    EXPECT_EQ(a->shape->getName(), QStringLiteral("box_4"));
    EXPECT_FLOAT_EQ(a->shape->getPolyMesh()->getVertex(1)[0], 243.84f) << "Poser units";
    EXPECT_EQ(materialNames(a->shape), QStringList{QStringLiteral("red")});

    // The compressed twin of a missing file.
    const QString twin = writeGzipFile(dir, QStringLiteral("Runtime/Geometries/twin.obz"), kBoxObj);
    OvPz3GeomItem *c = importer.getGeometry(QStringLiteral(":Runtime:Geometries:twin.obj"));
    ASSERT_TRUE(c && c->shape);
    EXPECT_EQ(c->path, twin);
    EXPECT_EQ(c->shape->getName(), QStringLiteral("twin_4"));

    // Not found anywhere (and nobody to ask): no entry at all.
    EXPECT_EQ(importer.getGeometry(QStringLiteral(":Runtime:Geometries:none.obj")), nullptr);
    EXPECT_EQ(importer.numGeometryItems(), 2);

    // Found but unreadable: the entry stays, without a shape, and is not read again.
    ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("Runtime/Geometries/broken.obj")));
    OvPz3GeomItem *d = importer.getGeometry(QStringLiteral(":Runtime:Geometries:broken.obj"));
    ASSERT_TRUE(d);
    EXPECT_EQ(d->shape, nullptr);
    EXPECT_EQ(importer.getGeometry(QStringLiteral(":Runtime:Geometries:broken.obj")), d);
    EXPECT_EQ(OvApp::progressStarts(), 3);
}

TEST_F(PoserGeometry, BodyPartsAreCutByGroupAndShareMaterialsByName) {
    OvSkeleton *skeleton = figure();
    ASSERT_TRUE(skeleton && importer.m_curGeom && importer.m_curGeom->shape);
    OvPz3SceneItem *item = importer.item(skeleton);
    ASSERT_TRUE(item);
    auto *registeredDefault = new OvDefaultMaterial;
    registeredDefault->setName(QStringLiteral("default"));
    item->materials.append(OvTSharedPointer<OvMaterial>(registeredDefault));

    OvNode *hip = bodyPart(skeleton, "hip");
    ASSERT_TRUE(line("geomHandlerGeom 13 hip"));
    OvNode *abdomen = bodyPart(skeleton, "abdomen");
    ASSERT_TRUE(line("geomHandlerGeom 13 abdomen"));
    OvNode *chest = bodyPart(skeleton, "chest");
    ASSERT_TRUE(line("geomHandlerGeom 13 chest"));

    const OvShape *hipShape = hip->getObject()->getShape(hip->getObject()->getNumShapes() - 1);
    EXPECT_EQ(hipShape->getName(), QStringLiteral("figure_8_hip"));
    EXPECT_EQ(hipShape->getLabel(), QStringLiteral("hip"));
    ASSERT_TRUE(source(hipShape));
    EXPECT_EQ(source(hipShape)->getSourceFilePath(), importer.m_curGeom->path);
    EXPECT_EQ(source(hipShape)->getGroupName(), QStringLiteral("hip"));
    ASSERT_EQ(hipShape->getNumMaterials(), 2);
    EXPECT_EQ(hipShape->getMaterial(1), registeredDefault) << "Preview falls back to the figure's default";

    const OvShape *abdomenShape = abdomen->getObject()->getShape(abdomen->getObject()->getNumShapes() - 1);
    ASSERT_EQ(abdomenShape->getNumMaterials(), 1);
    EXPECT_EQ(abdomenShape->getMaterial(0), hipShape->getMaterial(0)) << "one skin for the whole figure";
    EXPECT_NE(abdomenShape->getMaterial(0), importer.m_curGeom->shape->getMaterial(0));
    EXPECT_EQ(item->findMaterial(QStringLiteral("skin")).get(), hipShape->getMaterial(0));

    // The chest uses materials 2 and 5 of the file; its faces must still show nails, then cloth.
    const OvShape *chestShape = chest->getObject()->getShape(chest->getObject()->getNumShapes() - 1);
    EXPECT_EQ(materialNames(chestShape), (QStringList{QStringLiteral("cloth"), QStringLiteral("nails")}));
    const OvPolyMesh *mesh =
        chestShape->getGeometry() ? dynamic_cast<const OvPolyMesh *>(chestShape->getGeometry()) : nullptr;
    ASSERT_TRUE(mesh);
    ASSERT_EQ(mesh->getNumFaces(), 2);
    EXPECT_EQ(chestShape->getMaterial(mesh->getFaceMaterial(0))->getName(), QStringLiteral("nails"));
    EXPECT_EQ(chestShape->getMaterial(mesh->getFaceMaterial(1))->getName(), QStringLiteral("cloth"));
    EXPECT_EQ(checkShapeInvariants(*chestShape), QStringList());
    EXPECT_NE(mesh, importer.m_curGeom->shape->getGeometry());

    // A group the geometry does not have: the shape is there, without a mesh.
    OvNode *head = bodyPart(skeleton, "head");
    ASSERT_TRUE(line("geomHandlerGeom 13 head"));
    const OvShape *headShape = head->getObject()->getShape(head->getObject()->getNumShapes() - 1);
    EXPECT_EQ(headShape->getLabel(), QStringLiteral("head"));
    EXPECT_EQ(headShape->getGeometry(), nullptr);
    ASSERT_TRUE(source(headShape));
    EXPECT_EQ(source(headShape)->getGroupName(), QStringLiteral("head"));
    EXPECT_EQ(logText(), QString());
}

TEST_F(PoserGeometry, PropGeometrySharesTheCachedMeshAndIsShown) {
    const QString path = geometry(QStringLiteral("box.obj"), kBoxObj);
    OvNode *box = prop("box");
    ASSERT_TRUE(box);
    // An earlier shape: the new one must become the shown one.
    box->setObject(new OvObject);
    box->getObject()->addShape(new OvPolyShape);
    ASSERT_TRUE(line("objFileGeom 0 0 :Runtime:Geometries:box.obj"));
    OvNode *other = prop("other");
    ASSERT_TRUE(line("objFileGeom 0 0 Runtime\\Geometries\\box.obj"));

    ASSERT_EQ(importer.numGeometryItems(), 1);
    const OvPz3GeomItem *entry = importer.geometryItem(0);
    ASSERT_TRUE(entry->shape);
    OvObject *object = box->getObject();
    ASSERT_EQ(object->getNumShapes(), 2);
    const OvShape *shape = object->getShape(1);
    EXPECT_EQ(shape->getGeometry(), entry->shape->getGeometry()) << "shared, not copied";
    EXPECT_EQ(other->getObject()->getShape(0)->getGeometry(), entry->shape->getGeometry());
    EXPECT_EQ(object->getGeometryControl()->getValue(), 1);
    EXPECT_EQ(shape->getName(), QStringLiteral("box_4"));
    EXPECT_EQ(shape->getLabel(), QStringLiteral("box"));
    EXPECT_EQ(object->getName(), QStringLiteral("box_4"));
    ASSERT_TRUE(source(shape) && source(box));
    EXPECT_EQ(source(shape)->getSourceFilePath(), path);
    EXPECT_TRUE(source(shape)->getGroupName().isEmpty());
    EXPECT_EQ(source(box)->getSourceFilePath(), path);
    EXPECT_TRUE(source(box)->getGroupName().isNull());
    EXPECT_EQ(shape->getMaterial(0), importer.item(box)->findMaterial(QStringLiteral("red")).get());
    EXPECT_NE(shape->getMaterial(0), other->getObject()->getShape(0)->getMaterial(0))
        << "each prop has its own";

    // A node that already has a source record keeps it; a missing file adds no shape.
    ASSERT_TRUE(line("objFileGeom 0 0 :Runtime:Geometries:elsewhere.obj"));
    EXPECT_EQ(source(box)->getSourceFilePath(), path);
    EXPECT_EQ(object->getNumShapes(), 2);
    OvNode *lost = prop("lost");
    ASSERT_TRUE(line("objFileGeom 0 0 :Runtime:Geometries:elsewhere.obj"));
    ASSERT_TRUE(source(lost));
    EXPECT_EQ(source(lost)->getSourceFilePath(), QStringLiteral(":Runtime:Geometries:elsewhere.obj"));
    EXPECT_EQ(lost->getObject(), nullptr);

    // Deformer props only record their geometry.
    OvNode *magnet = prop("magnet", PropDForm);
    ASSERT_TRUE(magnet && magnet->inherits("OvDForm"));
    ASSERT_TRUE(line("objFileGeom 0 0 :Runtime:Geometries:box.obj"));
    ASSERT_TRUE(source(magnet));
    EXPECT_EQ(source(magnet)->getSourceFilePath(), path);
    EXPECT_EQ(magnet->getObject(), nullptr);
    EXPECT_EQ(logText(), QString());
}

TEST_F(PoserGeometry, ObjFileGeomOnABoneKeepsTheObjectName) {
    geometry(QStringLiteral("box.obj"), kBoxObj);
    OvSkeleton *skeleton = figure();
    OvNode *hip = bodyPart(skeleton, "hip");
    const QString objectName = hip->getObject()->getName();
    ASSERT_TRUE(line("objFileGeom 0 0 :Runtime:Geometries:box.obj"));
    EXPECT_EQ(hip->getObject()->getName(), objectName);
    EXPECT_EQ(hip->getObject()->getShape(hip->getObject()->getNumShapes() - 1)->getLabel(),
              QStringLiteral("hip"));
}

TEST_F(PoserGeometry, GenitalsOffLinksTheGenitalBoneToTheBodyPart) {
    geometry(QStringLiteral("hipless.obj"), kBoxObj);
    OvSkeleton *skeleton = figure();
    OvNode *genital = bodyPart(skeleton, "genital");
    ASSERT_TRUE(line("geomHandlerGeom 13 genital"));
    OvNode *hip = bodyPart(skeleton, "hip");
    ASSERT_TRUE(line("geomHandlerGeom 13 hip"));
    importer.m_altGeomName = QStringLiteral("stale");
    bool handled = false;
    ASSERT_TRUE(line("alternateGeom hip_1", &handled));
    EXPECT_TRUE(handled);
    EXPECT_EQ(importer.m_parseMode, Pz3ReadState::ModeAltGeom);
    EXPECT_TRUE(importer.m_altGeomName.isEmpty());
    ASSERT_TRUE(altLine("name Genitals Off"));
    ASSERT_TRUE(altLine("objFile 1 :Runtime:Geometries:hipless.obj"));

    OvObject *hipObject = hip->getObject();
    const int hipShapes = hipObject->getNumShapes();
    EXPECT_EQ(hipObject->getShape(hipShapes - 1)->getLabel(), QStringLiteral("Genitals Off"));
    EXPECT_EQ(hipObject->getShape(hipShapes - 1)->getName(), QStringLiteral("hipless_4"));
    EXPECT_EQ(hipObject->getGeometryControl()->getValue(), hipShapes - 1);
    ASSERT_TRUE(importer.m_curGeom);
    EXPECT_EQ(importer.m_curGeom->shape->getName(), QStringLiteral("hipless_4"))
        << "the alternate is current";

    OvObject *genitalObject = genital->getObject();
    const OvShape *placeholder = genitalObject->getShape(genitalObject->getNumShapes() - 1);
    EXPECT_EQ(placeholder->getName(), QStringLiteral("genital_0"));
    EXPECT_EQ(placeholder->getLabel(), QStringLiteral("Genitals Off"));
    EXPECT_EQ(placeholder->getGeometry(), nullptr);
    OvEnumProperty *genitalSwitch = genitalObject->getGeometryControl();
    EXPECT_TRUE(genitalSwitch->isHidden());
    EXPECT_EQ(genitalSwitch->getValue(), 0) << "the genital bone still shows its own geometry";
    ASSERT_EQ(genitalSwitch->getNumControllers(), 1);
    auto *link = dynamic_cast<const OvERCLink *>(genitalSwitch->getController(0));
    ASSERT_TRUE(link);
    EXPECT_EQ(link->getName(), QStringLiteral("Genitals Off Link"));
    EXPECT_EQ(link->getSource(), hipObject->getGeometryControl());
    EXPECT_EQ(link->getA(), 1.0);
    EXPECT_EQ(link->getB(), 0.0);

    // Another alternate name, or a figure without a genital bone: only the alternate shape.
    OvNode *chest = bodyPart(skeleton, "chest");
    ASSERT_TRUE(altLine("name Other"));
    ASSERT_TRUE(altLine("objFile 1 :Runtime:Geometries:hipless.obj"));
    EXPECT_EQ(chest->getObject()->getShape(chest->getObject()->getNumShapes() - 1)->getLabel(),
              QStringLiteral("Other"));
    EXPECT_EQ(genitalObject->getNumShapes(), 2);
    EXPECT_EQ(genitalSwitch->getNumControllers(), 1);
    EXPECT_EQ(importer.numGeometryItems(), 2);
    EXPECT_EQ(logText(), QString());
}

TEST_F(PoserGeometry, MissingArgumentsAndMissingItems) {
    bool handled = true;
    EXPECT_TRUE(line("origin 0 0 0", &handled));
    EXPECT_FALSE(handled) << "other keywords belong to the object section";

    // Nothing to attach to: ignored.
    EXPECT_TRUE(line("geomHandlerGeom 13"));
    EXPECT_TRUE(line("objFileGeom 0"));
    EXPECT_EQ(logText(), QString());

    OvSkeleton *skeleton = figure();
    bodyPart(skeleton, "hip");
    EXPECT_FALSE(line("geomHandlerGeom 13"));
    EXPECT_FALSE(line("objFileGeom 0 0"));
    EXPECT_FALSE(altLine("name"));
    EXPECT_FALSE(altLine("objFile 1"));
    EXPECT_TRUE(altLine("unknownKeyword 1 2"));
    EXPECT_EQ(logText(),
              QStringLiteral("error: Insufficient arguments while importing Poser File\n"
                             "error: No filename was specified while importing Poser File\n"
                             "error: No name was specified for altGeom while importing Poser File\n"
                             "error: No OBJ file was specified for altGeom while importing Poser File"));

    // A figure the registry does not know.
    OvApp::clearLog();
    OvNode stranger;
    importer.m_curFigure = &stranger;
    EXPECT_FALSE(line("geomHandlerGeom 13 hip"));
    geometry(QStringLiteral("box.obj"), kBoxObj);
    EXPECT_FALSE(line("objFileGeom 0 0 :Runtime:Geometries:box.obj"));
    EXPECT_EQ(logText(), QStringLiteral("error: No item found for geomHandlerGeom.\n"
                                        "error: No item found for objFileGeom."));
}

// Inline geometry is read from the Poser file itself, braces included; the sections around it
// must carry on as if the block were one line.
TEST_F(PoserGeometry, GeomCustomReadsItsBlockAndTheFileCarriesOn) {
    const QString path = writeFile(dir, QStringLiteral("props.pp2"),
                                   "{\nprop box\n{\ngeomCustom\n{\nnumbVerts 3\nv 0 0 0\nv 1 0 0\nv 0 1 0\n"
                                   "usemtl red\nf 1 2 3\n}\non\n}\nprop ball\n{\ngeomHandlerGeom 1\n}\n}\n");
    EXPECT_EQ(importer.read(path, OvFileIOSettings()), OvImporter::ResultStopped);
    // The error on line 17 proves the lines were counted through the block and that the ball's
    // section was read as an object section again.
    EXPECT_EQ(logText(), QStringLiteral("error: Insufficient arguments on line 17 in ") + path);

    OvScene *scene = OvApp::getScene();
    OvNode *box = scene->findNodeByLabel(QStringLiteral("box"));
    ASSERT_TRUE(box && box->getObject());
    ASSERT_EQ(box->getObject()->getNumShapes(), 1);
    const OvShape *shape = box->getObject()->getShape(0);
    EXPECT_EQ(shape->getName(), QStringLiteral("box_3"));
    EXPECT_EQ(shape->getLabel(), QStringLiteral("box"));
    EXPECT_EQ(box->getObject()->getName(), QStringLiteral("box_3"));
    auto *mesh = dynamic_cast<const OvPolyMesh *>(shape->getGeometry());
    ASSERT_TRUE(mesh);
    EXPECT_EQ(mesh->getNumFaces(), 1);
    EXPECT_FLOAT_EQ(mesh->getVertex(2)[1], 243.84f);
    EXPECT_EQ(checkShapeInvariants(*shape), QStringList());
    const OvPz3SceneItem *item = importer.item(box);
    ASSERT_TRUE(item);
    ASSERT_EQ(item->materials.size(), 1);
    EXPECT_EQ(item->materials[0].get(), shape->getMaterial(0));
    EXPECT_TRUE(scene->findNodeByLabel(QStringLiteral("ball")));
    EXPECT_EQ(importer.numGeometryItems(), 0) << "inline geometry is not cached";
}

// The alternateGeom keyword and the ModeAltGeom handler through the read driver; a figure file
// read twice reads its geometry once.
TEST_F(PoserGeometry, AlternateGeomSectionThroughAFigureFile) {
    geometry(QStringLiteral("figure.obj"), kFigureObj);
    geometry(QStringLiteral("alt.obj"), kBoxObj);
    const QString path = writeFile(dir, QStringLiteral("fig.cr2"),
                                   "{\nfigureResFile :Runtime:Geometries:figure.obj\n"
                                   "actor genital:1\n{\ngeomHandlerGeom 13 genital\n}\n"
                                   "actor hip:1\n{\ngeomHandlerGeom 13 hip\nalternateGeom hip_1\n{\n"
                                   "name Genitals Off\nobjFile 1 :Runtime:Geometries:alt.obj\n}\n}\n}\n");
    ASSERT_EQ(importer.read(path, OvFileIOSettings()), 0u) << logText().toStdString();
    EXPECT_EQ(importer.numGeometryItems(), 2);
    OvSkeleton *skeleton = nullptr;
    for (int i = 0; i < importer.sceneItems().size() && !skeleton; ++i)
        skeleton = qobject_cast<OvSkeleton *>(importer.sceneItems()[i].node);
    ASSERT_TRUE(skeleton);
    OvBone *hip = skeleton->findBone(QStringLiteral("hip"));
    OvBone *genital = skeleton->findBone(QStringLiteral("genital"));
    ASSERT_TRUE(hip && genital);
    ASSERT_EQ(hip->getObject()->getNumShapes(), 2);
    EXPECT_EQ(hip->getObject()->getShape(1)->getLabel(), QStringLiteral("Genitals Off"));
    ASSERT_EQ(genital->getObject()->getNumShapes(), 2);
    EXPECT_EQ(genital->getObject()->getGeometryControl()->getNumControllers(), 1);
    EXPECT_EQ(importer.parseMode(), Pz3ReadState::ModeFile);
    EXPECT_EQ(checkSceneInvariants(*OvApp::getScene()), QStringList());

    const int starts = OvApp::progressStarts();
    ASSERT_EQ(importer.read(path, OvFileIOSettings()), 0u);
    EXPECT_EQ(importer.numGeometryItems(), 2);
    EXPECT_EQ(OvApp::progressStarts(), starts) << "a second import of the figure reads nothing again";
}

} // namespace
