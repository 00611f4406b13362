// The MTL reader on the materials an OBJ selected: which lines count, how numbers become colours,
// and where texture maps are looked for.
#include "support/TestSupport.h"

#include <OvApp.h>
#include <OvImageMgr.h>
#include <OvShape.h>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <obj/OvObjImporter.h>

namespace {

class MtlReader : public ::testing::Test {
protected:
    void SetUp() override {
        OvApp::reset();
        for (const char *name : {"skin", "eyes", "hair"}) {
            auto *m = new OvDefaultMaterial;
            m->setName(QString::fromLatin1(name));
            shape.addMaterial(m);
        }
    }

    unsigned read(const QByteArray &mtl, const QString &name = QStringLiteral("lib.mtl")) {
        return importer.readMtl(&shape, writeFile(dir, name, mtl));
    }
    OvDefaultMaterial *material(const char *name) {
        return dynamic_cast<OvDefaultMaterial *>(shape.findMaterial(QString::fromLatin1(name)));
    }
    QString image(const QString &name, int size = 2) {
        QString path = dir.filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QImage img(size, size, QImage::Format_RGB32);
        img.fill(Qt::gray);
        EXPECT_TRUE(img.save(path, "PNG")) << path.toStdString();
        return QFileInfo(path).canonicalFilePath();
    }
    static QString path(const OvTexture *t) { return t ? t->getPath() : QStringLiteral("<none>"); }

    QTemporaryDir dir;
    OvObjImporter importer;
    OvPolyShape shape;
};

TEST_F(MtlReader, SurfaceValues) {
    ASSERT_EQ(read("Kd 0 0 0\n" // no material yet
                   "newmtl skin\n"
                   "Kd 0.8\n"
                   "Ka 0.5 0.5 0.5\n"
                   "Ks 1 0.5 0\n"
                   "Ns 96\n"
                   "Ni 1.5\n"
                   "Km 0.3\n"
                   "Tr 0.25\n"
                   "Kd 1 1 1 1\n"
                   "Ns 1 2\n"
                   "newmtl eyes\n"
                   "Kdx 0.1 0.2 0.3\n" // only the second character is looked at
                   "d 0.75\n"
                   "d 0.5 0.5\n"
                   "Nsx 7\n"
                   "Tf 0.1\n"
                   "newmtl hair\n"
                   "dissolve 0.4\n"
                   "Ka 2 0 0\n"),
              0u);
    OvDefaultMaterial *skin = material("skin");
    ASSERT_TRUE(skin);
    EXPECT_EQ(skin->getDiffuseColor(), QColor(255, 255, 255));
    EXPECT_EQ(skin->getAmbientColor(), QColor(127, 127, 127));
    EXPECT_EQ(skin->getSpecularColor(), QColor(255, 127, 0));
    EXPECT_EQ(skin->getGlossinessStrength(), 96.0f);
    EXPECT_EQ(skin->getIndexOfRefraction(), 1.5f);
    EXPECT_EQ(skin->getBumpStrength(), 0.3f);
    EXPECT_EQ(skin->getBaseOpacity(), 0.25f);

    OvDefaultMaterial *eyes = material("eyes");
    ASSERT_TRUE(eyes);
    EXPECT_EQ(eyes->getDiffuseColor(), QColor(25, 51, 76)); // truncated, not rounded
    EXPECT_EQ(eyes->getBaseOpacity(), 0.75f);
    EXPECT_EQ(eyes->getGlossinessStrength(), 7.0f);

    OvDefaultMaterial *hair = material("hair");
    ASSERT_TRUE(hair);
    EXPECT_EQ(hair->getBaseOpacity(), 0.4f); // any keyword starting with d
    // 510 is handed on as it is, not clamped to 255.
    EXPECT_NE(hair->getAmbientColor(), QColor(255, 0, 0));
}

TEST_F(MtlReader, MaterialsTheObjNeverSelectedChangeNothing) {
    ASSERT_EQ(read("newmtl skin\nKd 1 0 0\n"
                   "newmtl unused\nKd 0 1 0\nNs 5\nd 0.1\n"
                   "newmtl eyes\nKd 0 0 1\n"),
              0u);
    EXPECT_EQ(material("skin")->getDiffuseColor(), QColor(255, 0, 0));
    EXPECT_EQ(material("skin")->getGlossinessStrength(), 0.5f);
    EXPECT_EQ(material("skin")->getBaseOpacity(), 1.0f);
    EXPECT_EQ(material("eyes")->getDiffuseColor(), QColor(0, 0, 255));
    EXPECT_EQ(material("hair")->getDiffuseColor(), QColor(255, 255, 255));
    EXPECT_EQ(shape.getNumMaterials(), 3);
}

TEST_F(MtlReader, TextureMapKeywords) {
    const QString colour = image("colour.png"), bump = image("bump.png"), bump2 = image("bump2.png");
    const QString opacity = image("opacity.png"), refl = image("refl.png"), specular = image("specular.png");
    const QString ambient = image("ambient.png");
    writeFile(dir, "fake.png", "not an image");
    ASSERT_EQ(read("newmtl skin\n"
                   "map_Kd colour.png\n"
                   "map_Kd missing.png\n" // nothing found: the map set before stays
                   "map_kd bump.png\n"
                   "map_Ka ambient.png\n"
                   "map_Ks fake.png\n"
                   "map_bump -bm 0.5 bump.png\n"
                   "MAP_BUMP bump2.png\n"
                   "map_D opacity.png\n"
                   "map_refl refl.png\n"
                   "map_Refl bump.png\n"
                   "newmtl eyes\n"
                   "map_Bump bump2.png\n"
                   "map_Ks specular.png\n"
                   "map_Kd\n"
                   "MAP_D opacity.png\n"),
              0u);
    OvDefaultMaterial *skin = material("skin");
    EXPECT_EQ(path(skin->getColorMap()), colour);
    EXPECT_EQ(path(skin->getAmbientColorMap()), ambient);
    EXPECT_EQ(skin->getSpecularColorMap(), nullptr);
    EXPECT_EQ(path(skin->getBumpMap()), bump);
    EXPECT_EQ(path(skin->getOpacityMap()), opacity);
    EXPECT_EQ(path(skin->getReflectionMap()), refl);
    OvDefaultMaterial *eyes = material("eyes");
    EXPECT_EQ(path(eyes->getBumpMap()), bump2);
    EXPECT_EQ(path(eyes->getSpecularColorMap()), specular);
    EXPECT_EQ(eyes->getColorMap(), nullptr);
    EXPECT_EQ(eyes->getOpacityMap(), nullptr);
}

TEST_F(MtlReader, MapPathsAreTriedAsWrittenThenInTheLibraryFolder) {
    const QString skin = image("mtl/textures/skin.png");
    const QString absolute = image("elsewhere/abs.png");
    const QString folder = dir.filePath("mtl");
    OvImageMgr *images = OvApp::getImageMgr();

    // Backslashes become slashes; the relative path is tried as it is first.
    images->clear();
    ASSERT_EQ(read("newmtl skin\nmap_Kd textures\\skin.png\n", "mtl/lib.mtl"), 0u);
    EXPECT_EQ(images->requests(), QStringList({"textures/skin.png", folder + "/textures/skin.png"}));
    EXPECT_EQ(path(material("skin")->getColorMap()), skin);

    // An absolute path that exists is taken at once.
    images->clear();
    ASSERT_EQ(read("newmtl eyes\nmap_Kd " + absolute.toUtf8() + "\n", "mtl/lib.mtl"), 0u);
    EXPECT_EQ(images->requests(), QStringList({absolute}));
    EXPECT_EQ(path(material("eyes")->getColorMap()), absolute);

    // A leading slash that leads nowhere is appended to the folder without a second slash; a
    // drive letter's colon becomes a slash as well.
    images->clear();
    ASSERT_EQ(read("newmtl hair\nmap_Kd \\textures\\skin.png\nmap_Ks C:\\maps\\a.png\n", "mtl/lib.mtl"), 0u);
    EXPECT_EQ(images->requests(), QStringList({"/textures/skin.png", folder + "/textures/skin.png",
                                               "C//maps/a.png", folder + "/C//maps/a.png"}));
    EXPECT_EQ(path(material("hair")->getColorMap()), skin);
    EXPECT_EQ(material("hair")->getSpecularColorMap(), nullptr);
}

TEST_F(MtlReader, LibrariesThatCannotBeRead) {
    EXPECT_EQ(importer.readMtl(&shape, dir.filePath("missing.mtl")), 0x200u);

    // Through readShape: a library name that exists but cannot be read gives 0x200 with the shape kept.
    QDir().mkpath(dir.filePath("folder.mtl"));
    QString obj = writeFile(dir, "m.obj", "mtllib folder.mtl\nv 0 0 0\nusemtl skin\nf 1 1 1\n");
    OvShape *raw = nullptr;
    EXPECT_EQ(importer.readShape(obj, &raw, OvFileIOSettings()), 0x200u);
    std::unique_ptr<OvShape> read(raw);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->getNumMaterials(), 1);
    EXPECT_EQ(static_cast<OvPolyShape *>(raw)->getPolyMesh()->getNumFaces(), 1);
}

} // namespace
