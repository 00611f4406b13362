// The Poser read driver through real files: sections and braces, file kinds, includes, damaged
// input, and the messages of keyword lines that lack their arguments.
#include "PoserTest.h"

#include <OvLight.h>

namespace {

using PoserDriver = PoserTest;

// Files of the kinds applied to the selection need one.
void selectANode() {
    auto *target = new OvNode;
    OvApp::getScene()->addNode(target);
    OvApp::getScene()->setPrimarySelection(target);
}

TEST_F(PoserDriver, SectionsNestAndCloseAndEveryReadStartsAfresh) {
    // The actor's channels are skipped whole, braces and a version section included, but for an
    // include (readScript) and a brace in quotes; the stray '}' on line 2 is reported and changes
    // nothing, so the last version section is read at the top.
    EXPECT_TRUE(readOk("a.pz3",
                       "* comment\n}\n\n   \nactor hip:1\n{\nchannels\n{\nxrot x\n{\nk 1 2\n\t readScript\n"
                       "readScripts x\n\"{\" q\n}\n}\nversion\n{\nnumber 9\n}\n}\n}\nversion\n{\nnumber\n}\n"
                       "version\n{\nnumber 3.5\n}\n"));
    EXPECT_EQ(logText(), QStringLiteral("info: Unexpected '}' found in file on line 2 in %1\n"
                                        "error: No script name was specified on line 12 in %1\n"
                                        "error: No version number specified on line 25 in %1")
                             .arg(path));
    EXPECT_EQ(importer.version(), 3.5f);
    EXPECT_TRUE(readOk("b.pp2", "* only\n\n*comments\n"));
    EXPECT_EQ(importer.version(), 4.0f) << "a new read starts again from version 4";
}

TEST_F(PoserDriver, EveryExtensionIsReadPlainOrCompressed) {
    const QByteArray text = "{\nversion\n{\nnumber 4.5\n}\n}\n";
    selectANode();
    for (int i = 0; i < OvPZ3Importer::NumExtensions; ++i) {
        const QString ext = importer.getExtension(i), name = "f." + ext;
        const QString p =
            OvPZ3Importer::isCompressedExtension(ext) ? writeGzipFile(dir, name, text) : file(name, text);
        OvPZ3Importer fresh;
        EXPECT_TRUE(fresh.read(p, OvFileIOSettings()) == 0 && fresh.version() == 4.5f) << qPrintable(ext);
    }
    const QString hand = "info: Asked \"Apply Hand Pose\", answered Right (the host's default: no window "
                         "to ask in) while importing Poser File";
    EXPECT_EQ(logText(), hand + "\n" + hand) << "hd2 and hdz";
    EXPECT_TRUE(OvPZ3Importer::fileTypeOf("p2z") == Pz3FileKind::Pose && !importer.recognize("x.PZ3") &&
                OvPZ3Importer::fileTypeOf("hdz") == Pz3FileKind::HandPose);
    EXPECT_EQ(OvPZ3Importer::fileTypeOf("PZ3"), Pz3FileKind::Other);
}

TEST_F(PoserDriver, FilesThatCannotBeReadReturn0x200OrReportTheDamage) {
    selectANode(); // a folder has no extension, so it would be applied to the selection
    EXPECT_EQ(importer.read(dir.filePath("missing.pz3"), OvFileIOSettings()), 0x200u);
    EXPECT_EQ(read("plain.pzz", "version\n{\nnumber 2\n}\n"), 0x200u) << "compressed name, plain content";
    EXPECT_EQ(importer.read(dir.path(), OvFileIOSettings()), 0x200u) << "a folder";
    QByteArray big;
    for (int i = 0; i < 4000; ++i)
        big += "version\n{\nnumber 7\n}\n";
    QByteArray gz = gzipBytes(big);
    gz.chop(gz.size() / 3);
    EXPECT_EQ(read("cut.crz", gz), 0x200u) << "a damaged file fails the import";
    EXPECT_EQ(importer.version(), 7.0f) << "what could be read was read";
    EXPECT_TRUE(logText().startsWith("error: \"" + dir.path() +
                                     "\" is a folder: it is not read\nerror: Could not read the "
                                     "rest of " +
                                     path))
        << qPrintable(logText());
}

TEST_F(PoserDriver, FileKindsDecideWhatIsReplacedAndWhatIsOneUndoStep) {
    const struct {
        const char *name;
        int lightsLeft, camerasLeft;
    } kinds[] = {{"s.pz3", 0, 0}, {"s.lt2", 0, 1}, {"s.cm2", 1, 0}, {"s.pp2", 1, 1}};
    for (const auto &k : kinds) {
        OvApp::reset();
        scene()->addNode(new OvLight);
        scene()->addNode(new OvBasicCamera);
        read(k.name, "\n");
        EXPECT_EQ(scene()->getNumNodes(), k.lightsLeft + k.camerasLeft) << k.name;
        EXPECT_EQ(scene()->getNumNodes() > 0 && scene()->getNode(0)->inherits("OvLight"), k.lightsLeft > 0);
    }
    selectANode();
    for (const char *name : {"walk.pz2", "hand.hd2", "odd.xyz", "fig.cr2"})
        read(name, "\n");
    EXPECT_EQ(scene()->undoSteps(), QStringList({"\"walk.pz2\"", "\"hand.hd2\""}));
    EXPECT_FALSE(importer.applyToSelection()) << "a figure file makes new objects";
}

TEST_F(PoserDriver, IncludesAreReadInPlaceAndTheirBracesCountAlone) {
    file("content/Runtime/libraries/inc.pz2", "prop fromInclude\n{\n}\n");
    writeGzipFile(dir, "content/Runtime/libraries/twin.crz", "prop fromTwin\n{\n}\n");
    // The include opens a version section and never closes it; its stray '}' closes nothing of the
    // outer file, whose next line is read in the section the include left open.
    const QString open = file("content/Runtime/open.pz2", "}\nversion\n{\n");
    EXPECT_TRUE(readOk(
        "main.pz3", "readScript :Runtime:libraries:inc.pz2\nreadScript :Runtime:libraries:twin.cr2\n"
                    "readScript :Runtime:libraries:gone.pz2\n{\nreadScript Runtime/open.pz2\nnumber 5\n}\n"));
    EXPECT_TRUE(labelled("fromInclude") && labelled("fromTwin")) << "a missing x.cr2 is read as x.crz";
    EXPECT_EQ(importer.version(), 5.0f);
    EXPECT_EQ(
        logText(),
        QStringLiteral("info: Could not find \"/Runtime/libraries/gone.pz2\" (looked in: %3); continuing "
                       "without it\nerror: Could not find file :Runtime:libraries:gone.pz2 on line 3 in %1\n"
                       "info: Unexpected '}' found in file on line 1 in %2\n"
                       "info: 1 sections still open at the end of file on line 3 in %2")
            .arg(path, open, dir.filePath("content")));
}

TEST_F(PoserDriver, IncludeCyclesAndDeepChainsAreRefusedAndTheImportGoesOn) {
    // Each read of a file that holds this prop adds one shape to it.
    const QByteArray shape = "{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\n}\n";
    const QString self = file("content/self.pz2", "readScript /self.pz2\nprop fromSelf\n" + shape);
    const QString a = file("content/a.pz2", "readScript /b.pz2\n"),
                  b = file("content/b.pz2", "readScript /a.pz2\n");
    file("content/twice.pz2", "prop twice\n" + shape);
    EXPECT_TRUE(readOk(
        "t.pz3", "readScript /self.pz2\nreadScript /a.pz2\nreadScript /twice.pz2\nreadScript /twice.pz2\n"));
    const QString cycle =
        "error: %1 includes itself through readScript; it is not read again on line 1 in %2";
    EXPECT_EQ(logText(),
              cycle.arg(self, self) + "\n" + cycle.arg(a, b) +
                  QStringLiteral("\ninfo: %1 was already read in this import; it is not read again on "
                                 "line 4 in %2")
                      .arg(dir.filePath("content/twice.pz2"), dir.filePath("t.pz3")));
    // Every file is read once per import, the self-including one and one named twice alike.
    EXPECT_EQ(std::make_pair(labelled("fromSelf")->getObject()->getNumShapes(),
                             labelled("twice")->getObject()->getNumShapes()),
              std::make_pair(1, 1));

    OvApp::clearLog();
    const int depth = OvPZ3Importer::MaxIncludeDepth + 8;
    for (int i = 0; i < depth; ++i)
        file(QStringLiteral("content/c%1.pz2").arg(i),
             QStringLiteral("readScript /c%1.pz2\n").arg(i + 1).toLatin1());
    file(QStringLiteral("content/c%1.pz2").arg(depth), "prop deepest\n{\n}\n");
    EXPECT_TRUE(readOk("deep.pz3", "readScript /c0.pz2\n"));
    EXPECT_FALSE(labelled("deepest")) << "the end of the chain is never reached";
    EXPECT_TRUE(OvApp::log().size() == 1 && logText().startsWith("error: Too many nested readScript files"))
        << qPrintable(logText());

    // Braces nested far beyond any real file stop the import instead of growing the section stack.
    OvApp::clearLog();
    EXPECT_EQ(
        read("braces.pz3", QByteArray("{\n").repeated(OvPZ3Importer::MaxSectionDepth + 500) + "prop late\n"),
        0x62u);
    EXPECT_EQ(logText(),
              QStringLiteral("error: Sections are nested more than 1000 deep; the rest of the file is not "
                             "read on line 1001 in %1")
                  .arg(dir.filePath("braces.pz3")));
    EXPECT_FALSE(labelled("late"));
}

// Keyword lines without their arguments, through every keyword table: the exact message, and
// whether the import stops there (result 0x62) or goes on.
TEST_F(PoserDriver, MissingArgumentsGiveTheirMessageAndStopOrGoOn) {
    const char *top = "", *prop = "prop box\n{\n", *light = "light L\n{\n";
    const char *alt = "prop box\n{\nalternateGeom a\n{\n", *version = "version\n{\n";
    const struct {
        const char *before, *line, *log; // log: "E message", "I message", or "" for none
        bool stops;
    } rows[] = {
        {top, "figureResFile", "E No filename was specified", true},
        {top, "morphBinaryFile", "E No filename was specified", true},
        {top, "actor", "E No actor part was specified", true},
        {top, "prop", "E No prop name was specified", true},
        {top, "baseProp", "E No dform base prop name was specified", true},
        {top, "magnetDeformerProp", "E No dform deformer prop name was specified", true},
        {top, "sphereZoneProp", "E No sphere zone name was specified", true},
        {top, "light", "E No light or camera name was specified", true},
        {top, "camera", "E No light or camera name was specified", true},
        {top, "readScript", "E No script name was specified", false},
        {version, "number", "E No version number specified", false},
        {prop, "name", "I No name specified", false},
        {prop, "parent", "E No actor part was specified", true},
        {prop, "nonInkyParent", "E No actor part was specified", true},
        {prop, "origin 1 2", "E Insufficient arguments for origin", true},
        {prop, "endPoint 1", "E Insufficient arguments for endPoint", true},
        {prop, "orientation 1 2", "E Insufficient arguments", true},
        {prop, "material", "E No material name was specified", true},
        {prop, "conformingTarget", "E No conforming target was specified", true},
        {prop, "bend", "E No bend type was specified", true},
        {prop, "castsShadow", "E No shadow value was specified", true},
        {light, "lightType", "E No light type identifier was specified", true},
        {prop, "hidden", "E Insufficient Arguments", true},
        {prop, "geomHandlerGeom 13", "E Insufficient arguments", true},
        {prop, "objFileGeom 0 0", "E No filename was specified", true},
        {alt, "name", "E No name was specified for altGeom", true},
        {alt, "objFile 1", "E No OBJ file was specified for altGeom", true},
        // Skipped without a word: too few tokens, or no figure to put geometry on.
        {prop, "smartparent", "", false},
        {prop, "falloffCpt 1", "", false},
        {prop, "subdivision", "", false},
        {light, "geomHandlerGeom 13", "", false},
        {light, "objFileGeom 0 0", "", false},
    };
    for (const auto &r : rows) {
        OvApp::clearLog();
        // Sections are closed after the line: only the line itself may be reported.
        const QByteArray before(r.before),
            text = before + r.line + "\n" + QByteArray("}\n").repeated(before.count('{'));
        EXPECT_EQ(read("m.pz3", text), r.stops ? 0x62u : 0u) << r.line;
        const QString expected = QString::fromLatin1(r.log).mid(2);
        const QString level = r.log[0] == 'I' ? "info: " : "error: ";
        EXPECT_EQ(logText(), expected.isEmpty() ? QString()
                                                : level + expected + " on line " +
                                                      QString::number(before.count('\n') + 1) + " in " + path)
            << r.before << r.line;
    }
}

} // namespace
