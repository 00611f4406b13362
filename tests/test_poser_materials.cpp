// Material sections and texture maps: value conversions, where maps are looked for and what is
// cached, the Locate question for a missing image, and damaged or hostile references.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvImageMgr.h>
#include <OvMainWindow.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <memory>

namespace {

class Materials : public PoserTest {
protected:
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
        QImage image(size, size, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.save(path, "PNG");
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

// Every value of a material: "kd ka xStrength ks refl xStrength gloss bump min..max opacity maps".
QString values(const OvDefaultMaterial *m) {
    auto n = [](float v) { return QString::number(double(v)); };
    return QString("%1 %2x%3 %4 %5x%6 %7 %8 %9")
        .arg(m->getDiffuseColor().name(), m->getAmbientColor().name(), n(m->getAmbientStrength()),
             m->getSpecularColor().name(), m->getReflectionColor().name(), n(m->getReflectionStrength()),
             n(m->getGlossinessStrength()),
             n(m->getBumpStrength()) + " " + n(m->getBumpMin()) + ".." + n(m->getBumpMax()),
             n(m->getBaseOpacity()) + (m->getColorMap() ? " map" : " nomap"));
}

TEST_F(Materials, KeywordsConvertToHostSettings) {
    image("content/Runtime/Textures/env.png");
    const char *const fresh = "#ffffff #000000x0 #ffffff #ffffffx0 0.5 0 -1..1 1 nomap";
    const struct {
        const char *body, *values;
    } rows[] = {
        {"KdColor 1 0.5 0 1\nKaColor 0.2 0.2 0.2 1\nKsColor 0 0 1 1\nReflectionColor 0 1 0 0",
         "#ff7f00 #333333x0.15 #0000ff #00ff00x0 0.5 0 -1..1 1 nomap"},
        {"KdColor 0 0 1 1\nKdColor 1.5 0 -2 1", "#0000ff #000000x0 #ffffff #ffffffx0 0.5 0 -1..1 1 nomap"},
        {"NsExponent 20\nbumpStrength 0.7\ntMax 0.25",
         "#ffffff #000000x0 #ffffff #ffffffx0 0.9 0.7 -0.01..0.01 0.75 nomap"},
        {"NsExponent 0\ntMax 2", "#ffffff #000000x0 #ffffff #ffffffx0 1 0 -1..1 0 nomap"},
        {"NsExponent 150\ntMax -1\nreflectionStrength 0.5", fresh},
        {"reflectionMap env.png\nreflectionStrength 0.5",
         "#ffffff #000000x0 #ffffff #ffffffx0.5 0.5 0 -1..1 1 nomap"},
        {"tMax 0.5\ntransparencyMap env.png\ntextureMap env.png\ntextureMap NO_MAP", fresh},
        {"KdColor 1 0 0 1\ntextureMap env.png", "#ff0000 #000000x0 #ffffff #ffffffx0 0.5 0 -1..1 1 map"},
        {"shaderTree\n{\nKdColor 0 0 0 1\n{\nKsColor 0 0 0 1\n}\n}\nnewKeyword 1", fresh},
    };
    for (const auto &row : rows)
        EXPECT_EQ(values(material(row.body)), QString(row.values)) << row.body;
    EXPECT_TRUE(logText().contains("KdColor values must lie between 0 and 1 (1.5 0 -2)"))
        << qPrintable(logText());
}

TEST_F(Materials, LinesWithoutTheirValuesStopTheImport) {
    const char *const rows[][2] = {
        {"KdColor 1 1 1", "Insufficient material color values were specified"},
        {"NsExponent", "Insufficient m_material shininess exponent values were specified"},
        {"tMax", "No transparency value specified"},
        {"bumpMap", "No image file specified"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(values(material(QByteArray(row[0]) + "\nKdColor 0 0 0 1", 0x62)).left(7), "#ffffff")
            << row[0];
        EXPECT_TRUE(OvApp::log().last().text.startsWith(QString(row[1]) + " on line 6"))
            << qPrintable(logText());
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
    OvApp::setInterface(nullptr);
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
    const QString cut = image("content/Runtime/Textures/cut.png", 1024);
    ASSERT_TRUE(QFileInfo(cut).size() > 1000 && QFile::resize(cut, QFileInfo(cut).size() / 2));
    const OvDefaultMaterial *m =
        material("KdColor 0 1 0 1\ntextureMap :Runtime:Textures:..:..:..:outside.png\n"
                 "bumpMap \"Q:\\My Textures\\peau rosée.png\"\ntransparencyMap :Runtime:Textures:folder.png\n"
                 "reflectionMap Z:\\runtime\\textures\\nowhere.png\nKsColor 1 0 0 1\n");
    EXPECT_EQ(maps(m),
              "- content/Runtime/Textures/peau rosée.png=peau rosée content/later/folder.png=folder -")
        << "never above the content folder; a folder is not an image; found below a link loop";
    EXPECT_EQ(importer.foldersListedForNames(), 6) << "the loop is not entered again";
    EXPECT_EQ(maps(material("textureMap :Runtime:Textures:empty.png\nbumpMap :Runtime:Textures:text.png\n"
                            "transparencyMap :Runtime:Textures:cut.png")),
              "- - - -");
    for (const char *name : {"empty", "text", "cut"})
        EXPECT_TRUE(logText().contains(
            QString("Could not load the image %1/content/Runtime/Textures/%2.png (").arg(dir.path(), name)))
            << qPrintable(logText());
    EXPECT_EQ(m->getDiffuseColor().name() + m->getSpecularColor().name(), "#00ff00#ff0000")
        << "the values around the bad maps are read";
    // A surface the geometry does not have: its block is skipped.
    EXPECT_EQ(values(material("KsColor 0 0 0 1\n}\nmaterial cloth\n{\nKdColor 0 0 0 1")).left(23),
              "#ffffff #000000x0 #0000");
}

} // namespace
