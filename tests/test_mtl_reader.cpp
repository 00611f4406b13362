// The MTL reader on the materials an OBJ selected: which lines count, how numbers become colours,
// and where texture maps are looked for.
#include "ImportTest.h"

#include <OvApp.h>
#include <OvImageMgr.h>
#include <OvShape.h>
#include <QFileInfo>
#include <QImage>
#include <memory>
#include <obj/OvObjImporter.h>

namespace {

using Material = OvDefaultMaterial;

// What a library set on a material: each value that differs from a new material's, in a fixed order.
std::string describe(const Material &m) {
    // clang-format off
    const std::pair<const char *, QColor (Material::*)() const> colours[] = {
        {"Kd", &Material::getDiffuseColor}, {"Ka", &Material::getAmbientColor},
        {"Ks", &Material::getSpecularColor}};
    const std::pair<const char *, float (Material::*)() const> values[] = {
        {"Ns", &Material::getGlossinessStrength}, {"Ni", &Material::getIndexOfRefraction},
        {"Km", &Material::getBumpStrength}, {"d", &Material::getBaseOpacity}};
    const std::pair<const char *, OvTexture *(Material::*)() const> maps[] = {
        {"map_Kd", &Material::getColorMap}, {"map_Ka", &Material::getAmbientColorMap},
        {"map_Ks", &Material::getSpecularColorMap}, {"bump", &Material::getBumpMap},
        {"opacity", &Material::getOpacityMap}, {"refl", &Material::getReflectionMap}};
    // clang-format on
    const Material fresh;
    QStringList s;
    for (const auto &[key, get] : colours)
        if (const QColor c = (m.*get)(); c != (fresh.*get)())
            s << QStringLiteral("%1(%2,%3,%4)").arg(key).arg(c.red()).arg(c.green()).arg(c.blue());
    for (const auto &[key, get] : values)
        if ((m.*get)() != (fresh.*get)())
            s << QStringLiteral("%1 %2").arg(key).arg((m.*get)());
    for (const auto &[key, get] : maps)
        if (OvTexture *t = (m.*get)())
            s << QStringLiteral("%1 %2").arg(key, QFileInfo(t->getPath()).fileName());
    return s.join(' ').toStdString();
}

class MtlReader : public ImportTest {
protected:
    // Reads `mtl` into a new shape whose OBJ selected the materials skin and eyes.
    unsigned read(const QByteArray &mtl, const QString &name = QStringLiteral("lib.mtl")) {
        shape = std::make_unique<OvPolyShape>();
        for (const char *material : {"skin", "eyes"}) {
            auto *m = new Material;
            m->setName(QString::fromLatin1(material));
            shape->addMaterial(m);
        }
        return importer.readMtl(shape.get(), file(name, mtl));
    }
    Material &material(const char *name) { return dynamic_cast<Material &>(*shape->findMaterial(name)); }
    QString image(const QString &name) {
        QImage img(2, 2, QImage::Format_RGB32);
        img.fill(Qt::gray);
        EXPECT_TRUE(img.save(file(name, QByteArray()), "PNG")) << name.toStdString();
        return QFileInfo(dir.filePath(name)).canonicalFilePath();
    }

    OvObjImporter importer;
    std::unique_ptr<OvPolyShape> shape;
};

TEST_F(MtlReader, WhichLinesSetWhat) {
    for (const char *name : {"a.png", "b.png"})
        image(name);
    file("fake.png", "not an image");
    // clang-format off
    const std::pair<const char *, const char *> cases[] = { // each after "newmtl skin"
        {"Kd 0.8\nKd 1 0 0 1\nNs 1 2\nNi\nd 0.5 0.5\nTr", ""}, // too few or too many numbers
        {"newmtl unused\nKd 1 0 0\nNs 5\nd 0.1", ""},          // a material the OBJ never selected
        // Channels times 255, truncated, clamped to 0..255; only the second letter of K and N counts.
        {"Ka 0.5 0.5 0.5\nKs 1 0.5 0\nKdx 0.1 0.2 0.3", "Kd(25,51,76) Ka(127,127,127) Ks(255,127,0)"},
        {"Ka 2 -1 0.5\nKs 1e9 -1e9 1.0001", "Ka(255,0,127) Ks(255,0,255)"},
        {"Ns 96\nNi 1.5\nKm 0.3", "Ns 96 Ni 1.5 Km 0.3"}, {"Nsx 7", "Ns 7"}, {"Tr 0.25\nTf 0.1", "d 0.25"},
        {"d 0.75", "d 0.75"}, {"disp 0.1\ndecal 0.2\ndissolve 0.3", ""}, // only the keyword d is opacity
        {"map_Kd a.png\nmap_Kd missing.png\nmap_Ka b.png\nmap_Ks fake.png", "map_Kd a.png map_Ka b.png"},
        {"map_kd a.png\nMAP_BUMP a.png\nMAP_D a.png\nmap_Refl a.png\nmap_Kd", ""},
        {"map_bump -bm 0.5 a.png\nmap_D b.png\nmap_refl a.png", "bump a.png opacity b.png refl a.png"},
        {"map_Bump b.png\nmap_d a.png\nmap_Ks b.png", "map_Ks b.png bump b.png opacity a.png"}};
    // clang-format on
    for (const auto &[mtl, expected] : cases) {
        ASSERT_EQ(read("newmtl skin\n" + QByteArray(mtl)), 0u);
        EXPECT_EQ(describe(material("skin")), expected) << mtl;
        EXPECT_EQ(describe(material("eyes")), "") << mtl;
        EXPECT_EQ(shape->getNumMaterials(), 2);
    }
}

// Separators become slashes; a path is tried as written, then inside the library's folder (a leading
// slash is not doubled). A drive letter's colon becomes a slash as well.
TEST_F(MtlReader, MapPathsAreTriedAsWrittenThenInTheLibraryFolder) {
    const QString skin = image("mtl/textures/skin.png"), absolute = image("elsewhere/abs.png");
    const QString folder = dir.filePath("mtl");
    OvApp::getImageMgr()->clear();
    ASSERT_EQ(read("Kd 1 0 0\nnewmtl skin\nmap_Kd textures\\skin.png\nnewmtl eyes\nmap_Kd " +
                       absolute.toUtf8() + "\nmap_Ka \\textures:skin.png\nmap_Ks C:\\maps\\a.png\n",
                   "mtl/lib.mtl"),
              0u);
    EXPECT_EQ(OvApp::getImageMgr()->requests(),
              QStringList({"textures/skin.png", folder + "/textures/skin.png", absolute, "/textures/skin.png",
                           folder + "/textures/skin.png", "C//maps/a.png", folder + "/C//maps/a.png"}));
    EXPECT_EQ(describe(material("skin")), "map_Kd skin.png"); // nothing before the first newmtl
    EXPECT_EQ(material("skin").getColorMap()->getPath(), skin);
    EXPECT_EQ(material("eyes").getColorMap()->getPath(), absolute);
    EXPECT_EQ(material("eyes").getAmbientColorMap()->getPath(), skin);
    EXPECT_EQ(importer.readMtl(shape.get(), dir.filePath("missing.mtl")), 0x200u);
}

} // namespace
