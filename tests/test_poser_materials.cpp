// Material sections and texture maps: value conversions, where maps are looked for and what is
// cached, the Locate question for a missing image, and damaged or hostile references.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvImageMgr.h>
#include <OvMainWindow.h>
#include <QDir>
#include <QFile>
#include <QImage>
#include <functional>
#include <memory>

namespace {

class Materials : public PoserTest {
protected:
    void TearDown() override {
        OvApp::setInterface(nullptr);
        PoserTest::TearDown();
    }
    // Reads a prop whose material "skin" has the given body; the material, or null.
    OvDefaultMaterial *material(const QByteArray &body, unsigned expectedResult = 0) {
        const QByteArray name = "box" + QByteArray::number(++props);
        geometry(name + ".obj", "usemtl skin\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        EXPECT_EQ(read(name + ".pp2", "prop " + name + "\n{\nobjFileGeom 0 0 :Runtime:Geometries:" + name +
                                          ".obj\nmaterial skin\n{\n" + body + "\n}\n}\n"),
                  expectedResult)
            << qPrintable(logText());
        OvShape *shape = lastShape(labelled(QString::fromLatin1(name)));
        return shape ? dynamic_cast<OvDefaultMaterial *>(shape->findMaterial("skin")) : nullptr;
    }
    QString image(const QString &name, int size = 4) {
        const QString path = file(name, "");
        QImage(size, size, QImage::Format_RGB32).save(path, "PNG");
        return path;
    }
    int props = 0;
};

QString num(float v) {
    return QString::number(double(v));
}

TEST_F(Materials, KeywordsConvertToHostSettings) {
    image("content/Runtime/Textures/env.png");
    using D = const OvDefaultMaterial &;
    const struct {
        const char *body;
        std::function<QString(D)> value;
        const char *expected;
    } rows[] = {
        {"KdColor 1 0.5 0 1", [](D m) { return m.getDiffuseColor().name(); }, "#ff7f00"},
        {"KaColor 0.2 0.2 0.2 1",
         [](D m) { return m.getAmbientColor().name() + num(m.getAmbientStrength()); }, "#3333330.15"},
        {"KsColor 0 0 1 1", [](D m) { return m.getSpecularColor().name(); }, "#0000ff"},
        {"ReflectionColor 0 1 0 0", [](D m) { return m.getReflectionColor().name(); }, "#00ff00"},
        {"KdColor 0 0 1 1\nKdColor 1.5 0 -2 1", [](D m) { return m.getDiffuseColor().name(); }, "#0000ff"},
        {"NsExponent 20", [](D m) { return num(m.getGlossinessStrength()); }, "0.9"},
        {"NsExponent 150", [](D m) { return num(m.getGlossinessStrength()); }, "0.5"},
        {"NsExponent 0", [](D m) { return num(m.getGlossinessStrength()); }, "1"},
        {"bumpStrength 0.7",
         [](D m) { return num(m.getBumpStrength()) + " " + num(m.getBumpMin()) + " " + num(m.getBumpMax()); },
         "0.7 -0.01 0.01"},
        {"reflectionStrength 0.5", [](D m) { return num(m.getReflectionStrength()); }, "0"},
        {"reflectionMap env.png\nreflectionStrength 0.5", [](D m) { return num(m.getReflectionStrength()); },
         "0.5"},
        {"tMax 0.25", [](D m) { return num(m.getBaseOpacity()); }, "0.75"},
        {"tMax -1", [](D m) { return num(m.getBaseOpacity()); }, "1"},
        {"tMax 2", [](D m) { return num(m.getBaseOpacity()); }, "0"},
        {"tMax 0.5\ntransparencyMap env.png", [](D m) { return num(m.getBaseOpacity()); }, "1"},
        {"textureMap env.png\ntextureMap NO_MAP", [](D m) { return QString::number(!m.getColorMap()); }, "1"},
        {"KdColor 0 0 0 1\nshaderTree\n{\nKdColor 1 1 1 1\n{\nKsColor 0 0 0 1\n}\n}\nReflectionColor 0 0 0 1",
         [](D m) {
             return m.getDiffuseColor().name() + m.getSpecularColor().name() + m.getReflectionColor().name();
         },
         "#000000#ffffff#000000"},
    };
    for (const auto &row : rows) {
        const OvDefaultMaterial *m = material(row.body);
        ASSERT_TRUE(m) << row.body;
        EXPECT_EQ(row.value(*m), QString(row.expected)) << row.body;
    }
    EXPECT_TRUE(logText().contains("KdColor values must lie between 0 and 1 (1.5 0 -2)"))
        << qPrintable(logText());
}

TEST_F(Materials, LinesWithoutTheirValuesStopTheImport) {
    const struct {
        const char *line, *message;
    } rows[] = {
        {"KdColor 1 1 1", "Insufficient material color values were specified"},
        {"ReflectionColor", "Insufficient material color values were specified"},
        {"NsExponent", "Insufficient m_material shininess exponent values were specified"},
        {"bumpStrength", "Insufficient bump strength values were specified"},
        {"reflectionStrength", "Insufficient reflection strength values were specified"},
        {"tMax", "No transparency value specified"},
        {"bumpMap", "No image file specified"},
    };
    for (const auto &row : rows) {
        EXPECT_TRUE(material(QByteArray(row.line) + "\nKsColor 0 0 0 1", 0x62)->getSpecularColor() ==
                    Qt::white);
        EXPECT_TRUE(logText().contains(QString(row.message) + " on line 6")) << row.line;
    }
}

// Runtime paths and Windows paths map onto the content folders; what is left of a foreign path is
// found by file name below them, in order; each key and each image file is looked for once.
TEST_F(Materials, MapsAreFoundInOrderAndCached) {
    const QString skin = image("content/Runtime/Textures/skin.png");
    const QString deep = image("content/B/deep.png"), first = image("content/a/z/deep.png");
    const QString top = image("content/top.png"), nested = image("content/A/top.png");
    const QString bump = image("content/Runtime/Textures/x.jpg"), pict = image("content/p.jpg");
    QFile::link(skin, dir.filePath("content/Runtime/Textures/alias.png"));
    OvImageMgr *images = OvApp::getImageMgr();
    const OvDefaultMaterial *m =
        material("textureMap \"C:\\Poser 4\\Runtime\\Textures\\skin.png\"\nbumpMap :Runtime:Textures:x.bum\n"
                 "transparencyMap \"D:\\gone\\deep.png\"\nreflectionMap Mac HD:stuff:top.png");
    ASSERT_TRUE(m && m->getColorMap() && m->getBumpMap() && m->getOpacityMap() && m->getReflectionMap());
    EXPECT_EQ(m->getColorMap()->getPath(), skin);
    EXPECT_EQ(m->getColorMap()->getName(), QString("skin"));
    EXPECT_EQ(m->getBumpMap()->getPath(), bump) << "a Poser bump file is looked for as a JPEG first";
    EXPECT_EQ(m->getOpacityMap()->getPath(), first) << "folders in order ignoring case, depth first";
    EXPECT_EQ(m->getReflectionMap()->getPath(), top) << "a folder's own files before its subfolders'";
    const int listed = importer.foldersListedForNames();
    EXPECT_EQ(listed, 8) << "content, A, a, a/z, B, Runtime and its Geometries and Textures: each once";

    const int requests = images->requests().size(), decodes = images->numDecodes();
    m = material("textureMap :Runtime:Textures:other:skin.jpg\nbumpMap :Runtime:Textures:alias.png\n"
                 "transparencyMap p.pict");
    EXPECT_EQ(m->getColorMap()->getPath(), skin) << "same key, same texture, not looked for again";
    EXPECT_EQ(m->getBumpMap()->getPath(), skin) << "a link to a decoded image";
    EXPECT_EQ(m->getOpacityMap()->getPath(), pict);
    EXPECT_EQ(images->requests().size(), requests + 2);
    EXPECT_EQ(images->numDecodes(), decodes + 1) << "only p.jpg is new";
    EXPECT_EQ(importer.textures().size(), 6);
}

TEST_F(Materials, AMissingImageIsAskedForOrLeftOut) {
    const QString chosen = image("elsewhere/found.png");
    EXPECT_EQ(material("textureMap :Runtime:Textures:lost.png")->getColorMap(), nullptr);
    EXPECT_TRUE(logText().contains("Could not find \"lost.png\""))
        << "no window: the log says what was missing";

    auto window = std::make_unique<OvMainWindow>();
    OvApp::setInterface(window.get());
    DialogAnswerer answerer;
    answerer.pressButton("Locate").chooseFile(chosen).pressButton("Skip");
    const OvDefaultMaterial *m = material("textureMap :Runtime:Textures:lost.png\nbumpMap :Runtime:gone.png");
    ASSERT_EQ(answerer.seen().size(), 3) << qPrintable(answerer.failures().join('\n'));
    EXPECT_TRUE(answerer.seen()[0].text.contains("\"lost.png\""));
    EXPECT_EQ(m->getColorMap()->getPath(), chosen);
    EXPECT_EQ(m->getColorMap()->getName(), QString("lost")) << "cached under the key asked for";
    EXPECT_EQ(m->getBumpMap(), nullptr);
}

TEST_F(Materials, HostileReferencesFailCleanly) {
    image("outside.png");
    image("content/Runtime/Textures/peau rosée.png");
    QDir(dir.path()).mkpath("content/Runtime/Textures/folder.png");
    const QString real = image("content/later/folder.png");
    QFile::link(dir.filePath("content"), dir.filePath("content/later/loop"));
    file("content/Runtime/Textures/empty.png", "");
    file("content/Runtime/Textures/text.png", "not an image at all");
    QFile whole(image("big.png", 64));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    file("content/Runtime/Textures/cut.png", whole.readAll().left(200));
    const OvDefaultMaterial *m =
        material("KdColor 0 1 0 1\ntextureMap :Runtime:Textures:..:..:..:outside.png\n"
                 "bumpMap \"Q:\\My Textures\\peau rosée.png\"\ntransparencyMap :Runtime:Textures:folder.png\n"
                 "reflectionMap Z:\\runtime\\textures\\nowhere.png\nKsColor 1 0 0 1\n");
    ASSERT_TRUE(m);
    EXPECT_EQ(m->getColorMap(), nullptr) << "never above the content folder";
    ASSERT_TRUE(m->getBumpMap() && m->getOpacityMap());
    EXPECT_TRUE(m->getBumpMap()->getPath().endsWith("peau rosée.png"));
    EXPECT_EQ(m->getOpacityMap()->getPath(), real) << "a folder is not an image; found below a link loop";
    EXPECT_EQ(importer.foldersListedForNames(), 6) << "the loop is not entered again";
    for (const char *name : {"empty", "text", "cut"}) {
        const QByteArray map = QByteArray(":Runtime:Textures:") + name + ".png";
        EXPECT_EQ(material("textureMap " + map + "\nKdColor 0 0 1 1")->getColorMap(), nullptr) << name;
        EXPECT_TRUE(logText().contains(QString("Could not load the image %1")
                                           .arg(dir.filePath("content" + QString(map).replace(':', '/')))))
            << qPrintable(logText());
    }
    EXPECT_EQ(m->getDiffuseColor().name(), QString("#00ff00")) << "earlier values stay";
    EXPECT_EQ(m->getSpecularColor().name(), QString("#ff0000")) << "later lines still read";
    // A surface the geometry does not have: the block is skipped, nothing else changes.
    geometry("plain.obj", "usemtl skin\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_TRUE(readOk("plain.pp2", "prop plain\n{\nobjFileGeom 0 0 :Runtime:Geometries:plain.obj\n"
                                    "material cloth\n{\nKdColor 0 0 0 1\n}\nmaterial skin\n{\n}\n}\n"));
    EXPECT_EQ(
        dynamic_cast<OvDefaultMaterial *>(lastShape(labelled("plain"))->getMaterial(0))->getDiffuseColor(),
        QColor(Qt::white));
}

} // namespace
