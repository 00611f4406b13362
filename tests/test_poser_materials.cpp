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
    // The colour, bump, opacity and reflection maps: "PATH=KEY" (the path below the temporary folder) or "-".
    QString maps(const OvDefaultMaterial *m) {
        QStringList out;
        for (const OvTexture *t :
             {m->getColorMap(), m->getBumpMap(), m->getOpacityMap(), m->getReflectionMap()})
            out << (t ? QDir(dir.path()).relativeFilePath(t->getPath()) + "=" + t->getName() : "-");
        return out.join(' ');
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
    for (const char *name :
         {"content/Runtime/Textures/skin.png", "content/B/deep.png", "content/a/z/deep.png",
          "content/top.png", "content/A/top.png", "content/Runtime/Textures/x.jpg", "content/p.jpg"})
        image(name);
    QFile::link(dir.filePath("content/Runtime/Textures/skin.png"),
                dir.filePath("content/Runtime/Textures/alias.png"));
    OvImageMgr *images = OvApp::getImageMgr();
    EXPECT_EQ(
        maps(material("textureMap \"C:\\Poser 4\\Runtime\\Textures\\skin.png\"\nbumpMap "
                      ":Runtime:Textures:x.bum\ntransparencyMap \"D:\\gone\\deep.png\"\n"
                      "reflectionMap Mac HD:stuff:top.png")),
        "content/Runtime/Textures/skin.png=skin content/Runtime/Textures/x.jpg=x content/a/z/deep.png=deep "
        "content/top.png=top")
        << "a bump file as JPEG first; folders in order ignoring case, depth first, a folder's files first";
    EXPECT_EQ(importer.foldersListedForNames(), 8) << "content, A, a, a/z, B, Runtime, Geometries, Textures";

    const int requests = images->requests().size(), decodes = images->numDecodes();
    EXPECT_EQ(
        maps(material("textureMap :Runtime:Textures:other:skin.jpg\nbumpMap :Runtime:Textures:alias.png\n"
                      "transparencyMap p.pict")),
        "content/Runtime/Textures/skin.png=skin content/Runtime/Textures/skin.png=skin content/p.jpg=p -")
        << "same key: not looked for again; a link: not decoded again";
    EXPECT_EQ(images->requests().size(), requests + 2);
    EXPECT_EQ(images->numDecodes(), decodes + 1) << "only p.jpg is new";
    EXPECT_EQ(importer.textures().size(), 5);
}

TEST_F(Materials, AMissingImageIsAskedForOrLeftOut) {
    image("elsewhere/found.png");
    EXPECT_EQ(maps(material("textureMap :Runtime:Textures:lost.png")), "- - - -");
    EXPECT_TRUE(logText().contains("Could not find \"lost.png\""))
        << "no window: the log says what was missing";

    auto window = std::make_unique<OvMainWindow>();
    OvApp::setInterface(window.get());
    DialogAnswerer answerer;
    answerer.pressButton("Locate").chooseFile(dir.filePath("elsewhere/found.png")).pressButton("Skip");
    EXPECT_EQ(maps(material("textureMap :Runtime:Textures:lost.png\nbumpMap :Runtime:gone.png\n"
                            "transparencyMap NO_MAP")),
              "elsewhere/found.png=lost - - -");
    ASSERT_EQ(answerer.seen().size(), 3) << qPrintable(answerer.failures().join('\n'));
    EXPECT_TRUE(answerer.seen()[0].text.contains("\"lost.png\"") &&
                answerer.seen()[2].text.contains("gone.png"));
}

TEST_F(Materials, HostileReferencesFailCleanly) {
    for (const char *name :
         {"outside.png", "content/Runtime/Textures/peau rosée.png", "content/later/folder.png"})
        image(name);
    QDir(dir.path()).mkpath("content/Runtime/Textures/folder.png");
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
    EXPECT_EQ(maps(m),
              "- content/Runtime/Textures/peau rosée.png=peau rosée content/later/folder.png=folder -")
        << "never above the content folder; a folder is not an image; found below a link loop";
    EXPECT_EQ(importer.foldersListedForNames(), 6) << "the loop is not entered again";
    for (const char *name : {"empty", "text", "cut"}) {
        const QString map = QString(":Runtime:Textures:") + name + ".png";
        EXPECT_EQ(maps(material("textureMap " + map.toUtf8() + "\nKdColor 0 0 1 1")), "- - - -") << name;
        EXPECT_TRUE(
            logText().contains("Could not load the image " + dir.filePath("content" + QString(map).replace(':', '/'))))
            << qPrintable(logText());
    }
    EXPECT_EQ(m->getDiffuseColor().name() + m->getSpecularColor().name(), "#00ff00#ff0000")
        << "the values around the bad maps are read";
    // A surface the geometry does not have: the block is skipped, nothing else changes.
    geometry("plain.obj", "usemtl skin\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    EXPECT_TRUE(readOk("plain.pp2", "prop plain\n{\nobjFileGeom 0 0 :Runtime:Geometries:plain.obj\n"
                                    "material cloth\n{\nKdColor 0 0 0 1\n}\nmaterial skin\n{\n}\n}\n"));
    EXPECT_EQ(
        dynamic_cast<OvDefaultMaterial *>(lastShape(labelled("plain"))->getMaterial(0))->getDiffuseColor(),
        QColor(Qt::white));
}

} // namespace
