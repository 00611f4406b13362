// Geometry files read once per importer and shared, body parts cut by face group, inline and
// alternate geometry, through real files.
#include "PoserTest.h"
#include "support/SceneInvariants.h"

#include <OvPolyMesh.h>
#include <QDir>

namespace {

using PoserGeometry = PoserTest;

// Materials by first use: default 0, Preview 1, skin 2, cloth 3, nails 4. The chest's faces use
// nails, cloth, then skin.
const QByteArray kFigureObj =
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\nvt 0 0\n"
    "g hip\nusemtl default\nf 1 2 3\nusemtl Preview\nf 1 3 4\n"
    "g abdomen\nusemtl skin\nusemtl cloth\nusemtl nails\nusemtl skin\nf 2 3 4\n"
    "g chest\nusemtl nails\nf 5 6 7\nusemtl cloth\nf 5 7 8\nusemtl skin\nf 1 2 5\n"
    "g genital\nf 1 5 6\n";
const QByteArray kBoxObj = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nusemtl red\nf 1 2 3 4\n";

// Body parts cut by face group, one material per name and figure; an alternate geometry becomes
// the current one, and "Genitals Off" switches the genital bone to an empty shape with the hip.
// The genital's own Genitals Off alternate would make its switch follow itself.
TEST_F(PoserGeometry, TheGenitalIsNotLinkedToItself) {
    geometry("figure.obj", kFigureObj);
    geometry("hipless.obj", kBoxObj);
    ASSERT_TRUE(readOk("g.cr2", "figureResFile :Runtime:Geometries:figure.obj\nactor genital:1\n{\n"
                                "geomHandlerGeom 13 genital\nalternateGeom g_1\n{\nname Genitals Off\n"
                                "objFile 1 :Runtime:Geometries:hipless.obj\n}\n}\n"));
    EXPECT_TRUE(logText().startsWith(
        "info: The Genitals Off switch of genital would follow itself; it is not linked"))
        << logText().toStdString();
    EXPECT_EQ(skeleton("g")->findBone("genital")->getObject()->getGeometryControl()->getNumControllers(), 0);
}

TEST_F(PoserGeometry, BodyPartsAlternatesAndTheGenitalsOffLink) {
    const QString figurePath = geometry("figure.obj", kFigureObj);
    geometry("box.obj", kBoxObj);
    geometry("hipless.obj", kBoxObj);
    const QByteArray text =
        "figureResFile :Runtime:Geometries:figure.obj\nactor genital:1\n{\ngeomHandlerGeom 13 genital\n}\n"
        "actor abdomen:1\n{\ngeomHandlerGeom 13 abdomen\n}\nactor chest:1\n{\ngeomHandlerGeom 13 chest\n}\n"
        "actor hip:2\n{\ngeomHandlerGeom 13 hip\n}\nactor hip:1\n{\ngeomHandlerGeom 13 hip\n"
        "objFileGeom 0 0 :Runtime:Geometries:box.obj\nalternateGeom hip_1\n{\nname Genitals Off\n"
        "objFile 1 :Runtime:Geometries:hipless.obj\n}\n}\nactor chest:1\n{\nalternateGeom chest_1\n{\n"
        "objFile 1 :Runtime:Geometries:hipless.obj\n}\ngeomHandlerGeom 13 chest\n}\n";
    ASSERT_TRUE(readOk("fig.cr2", text));
    EXPECT_EQ(logText(), QString());
    OvSkeleton *figure = skeleton("fig");
    ASSERT_TRUE(figure);
    EXPECT_EQ(source(figure).getSourceFilePath(), figurePath);
    EXPECT_TRUE(source(figure).getGroupName().isEmpty() && !source(figure).getGroupName().isNull());

    OvObject *hip = figure->findBone("hip")->getObject();
    ASSERT_EQ(hip->getNumShapes(), 3);
    const OvShape *hipShape = hip->getShape(0);
    EXPECT_EQ(source(hipShape).getSourceFilePath(), figurePath);
    EXPECT_EQ(source(hipShape).getGroupName(), QStringLiteral("hip"));
    ASSERT_EQ(hipShape->getNumMaterials(), 2);
    EXPECT_EQ(hipShape->getMaterial(1), hipShape->getMaterial(0))
        << "Preview falls back to the figure's default";
    EXPECT_EQ(hip->getName(), QStringLiteral("hip")) << "objFileGeom on a bone keeps its object's name";
    EXPECT_EQ(hip->getShape(1)->getLabel(), QStringLiteral("hip"));
    EXPECT_EQ(hip->getShape(2)->getLabel(), QStringLiteral("Genitals Off"));
    EXPECT_EQ(hip->getGeometryControl()->getValue(), 2);

    // The chest uses materials 2 to 4 of the file; its faces must still show nails, cloth, skin.
    OvObject *chestObject = figure->findBone("chest")->getObject();
    ASSERT_EQ(chestObject->getNumShapes(), 3);
    const OvShape *chest = chestObject->getShape(0);
    auto *mesh = dynamic_cast<const OvPolyMesh *>(chest->getGeometry());
    ASSERT_TRUE(mesh && mesh->getNumFaces() == 3);
    const char *faceMaterials[] = {"nails", "cloth", "skin"};
    for (int f = 0; f < 3; ++f)
        EXPECT_EQ(chest->getMaterial(mesh->getFaceMaterial(f))->getName(), QString(faceMaterials[f]));
    EXPECT_EQ(checkShapeInvariants(*chest), QStringList());
    EXPECT_EQ(lastShape(figure->findBone("abdomen"))->getMaterial(0), chest->getMaterial(0)) << "one skin";
    const OvShape *otherHip = lastShape(skeleton("figure")->findBone("hip"));
    EXPECT_NE(otherHip->getMaterial(0), hipShape->getMaterial(0)) << "each figure has its own materials";
    EXPECT_TRUE(chestObject->getShape(1)->getLabel().isEmpty())
        << "a new alternateGeom forgets the last name";
    EXPECT_EQ(chestObject->getShape(2)->getGeometry(), nullptr) << "cut from hipless.obj, which has no chest";

    OvObject *genital = figure->findBone("genital")->getObject();
    ASSERT_EQ(genital->getNumShapes(), 2) << "the chest's nameless alternate adds no second placeholder";
    EXPECT_EQ(genital->getShape(1)->getName(), QStringLiteral("genital_0"));
    ASSERT_EQ(genital->getGeometryControl()->getNumControllers(), 1);
    auto *link = dynamic_cast<const OvERCLink *>(genital->getGeometryControl()->getController(0));
    EXPECT_TRUE(link && link->getProperty() == hip->getGeometryControl());

    const int starts = OvApp::progressStarts();
    ASSERT_TRUE(readOk("fig.cr2", text));
    EXPECT_EQ(importer.numGeometryItems(), 3);
    EXPECT_EQ(OvApp::progressStarts(), starts) << "a second import of the figure reads nothing again";
}

TEST_F(PoserGeometry, PropGeometryIsReadOnceSharedAndShown) {
    const QString box = geometry("box.obj", kBoxObj);
    ASSERT_TRUE(QDir(dir.path()).mkpath("content/Runtime/Geometries/broken.obj"));
    ASSERT_EQ(read("props.pp2", "prop box\n{\nobjFileGeom 0 0 :Runtime:Geometries:box.obj\n"
                                "objFileGeom 0 0 :Runtime:Geometries:elsewhere.obj\n}\n"
                                "prop other\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\n"
                                "objFileGeom 0 0 Runtime\\Geometries\\box.obj\n}\n"
                                "prop lost\n{\nobjFileGeom 0 0 :Runtime:Geometries:lost.obj\n}\n"
                                "prop broken\n{\nobjFileGeom 0 0 :Runtime:Geometries:broken.obj\n}\n"
                                "prop broken2\n{\nobjFileGeom 0 0 :Runtime:Geometries:broken.obj\n}\n"
                                "magnetDeformerProp mag\n{\nobjFileGeom 0 0 :Runtime:Geometries:box.obj\n}\n"
                                "prop ball\n{\ngeomHandlerGeom 1\n}\n"),
              OvImporter::ResultStopped);
    // Line 35: the lines of the inline block were counted, and the ball's section was read as an
    // object section again after it.
    // The unreadable geometry is a folder: refused, and read once only.
    // Each missing file is logged once, though objFileGeom looks for it twice.
    const QString missing =
        "info: Could not find \"/Runtime/Geometries/%1.obj\" (looked in: " + dir.filePath("content") +
        "); continuing without it\n";
    EXPECT_EQ(logText(), missing.arg("elsewhere") + missing.arg("lost") + "error: \"" +
                             dir.filePath("content/Runtime/Geometries/broken.obj") +
                             "\" is a folder: it is not read\nerror: Insufficient arguments on line 35 in " +
                             path);
    EXPECT_EQ(importer.numGeometryItems(), 2) << "box and the unreadable one";
    EXPECT_EQ(OvApp::progressStarts(), 2);
    EXPECT_EQ(OvApp::progressText(), QStringLiteral("Importing props.pp2 ..."));

    OvObject *object = labelled("box")->getObject();
    ASSERT_EQ(object->getNumShapes(), 1) << "elsewhere.obj adds nothing";
    const OvShape *shape = object->getShape(0);
    EXPECT_EQ(QStringList({shape->getName(), shape->getLabel(), object->getName()}),
              QStringList({"box_4", "box", "box_4"}));
    EXPECT_EQ(source(shape).getSourceFilePath(), box);
    EXPECT_TRUE(source(shape).getGroupName().isEmpty());
    EXPECT_EQ(source(labelled("box")).getSourceFilePath(), box) << "the first record stays";
    EXPECT_TRUE(source(labelled("box")).getGroupName().isNull()) << "a prop's record names no group";

    OvObject *other = labelled("other")->getObject();
    ASSERT_EQ(other->getNumShapes(), 2);
    EXPECT_EQ(QStringList({other->getShape(0)->getName(), other->getShape(0)->getLabel()}),
              QStringList({"other_3", "other"}))
        << "inline geometry";
    EXPECT_EQ(other->getGeometryControl()->getValue(), 1) << "the new shape is the one shown";
    EXPECT_EQ(other->getShape(1)->getGeometry(), shape->getGeometry()) << "shared, not copied";
    EXPECT_EQ(other->getShape(1)->getMaterial(0)->getName(), QStringLiteral("red"));
    EXPECT_NE(other->getShape(1)->getMaterial(0), shape->getMaterial(0)) << "each prop has its own";

    EXPECT_EQ(source(labelled("lost")).getSourceFilePath(), QStringLiteral(":Runtime:Geometries:lost.obj"));
    for (const char *label : {"lost", "broken", "broken2", "mag"})
        EXPECT_EQ(labelled(label)->getObject(), nullptr) << label;
    EXPECT_EQ(source(labelled("mag")).getSourceFilePath(), box)
        << "deformer props only record their geometry";
}

} // namespace
