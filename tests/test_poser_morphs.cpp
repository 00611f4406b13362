// Morph targets: targetGeom channels, their deltas (text and binary morph files), where morphs go
// among an object's modifiers, and damaged binary morph files.
#include "PoserTest.h"

#include <OvModifiers.h>
#include <OvMorph.h>
#include <QProcess>
#include <QtEndian>
#include <poser/channels/BinaryMorph.h>

namespace {

using Morphs = PoserTest;

// Six vertices: hip and chest have four each.
const QByteArray kObj = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 2 0\nv 1 2 0\n"
                        "g hip\nf 1 2 3 4\ng chest\nf 4 3 6 5\n";

// A figure with geometry on hip and chest; `channels` goes into a channels section of each of the
// actors named in `actors`.
QByteArray figure(const QByteArray &hipChannels, const QByteArray &chestChannels = "",
                  const QByteArray &top = "") {
    return "{\n" + top +
           "figureResFile :Runtime:Geometries:m.obj\nactor hip:1\n{\ngeomHandlerGeom 13 hip\n}\n"
           "actor chest:1\n{\ngeomHandlerGeom 13 chest\n}\nactor hip:1\n{\nchannels\n{\n" +
           hipChannels + "}\n}\nactor chest:1\n{\nparent hip:1\nchannels\n{\n" + chestChannels + "}\n}\n}\n";
}

QByteArray morph(const QByteArray &name, const QByteArray &body) {
    return "targetGeom " + name + "\n{\n" + body + "}\n";
}

// The morphs of a node's object, in modifier order, with the place of its joint as "JOINT".
QStringList modifiers(const OvNode *node) {
    QStringList names;
    for (int i = 0; node && node->getObject() && i < node->getObject()->getNumModifiers(); ++i) {
        OvModifier *m = node->getObject()->getModifier(i);
        names << (dynamic_cast<OvPoserJoint *>(m) ? QStringLiteral("JOINT") : m->getName());
    }
    return names;
}

OvMorph *morphOf(const OvNode *node, const QString &name) {
    for (int i = 0; node && node->getObject() && i < node->getObject()->getNumModifiers(); ++i)
        if (auto *m = dynamic_cast<OvMorph *>(node->getObject()->getModifier(i)); m && m->getName() == name)
            return m;
    return nullptr;
}

// "index x y z" of every delta, offsets in Poser units again (3 decimals).
QString deltaText(const OvMorph *m) {
    QStringList rows;
    const OvMorphDeltas *d = m ? m->getDeltas() : nullptr;
    for (int i = 0; d && i < d->getNumDeltas(); ++i) {
        const OvVec3 v = d->getOffset(i);
        rows << QString::asprintf("%d %.3f %.3f %.3f", d->getIndex(i), v[0] / 243.84, v[1] / 243.84,
                                  v[2] / 243.84);
    }
    return rows.join("; ");
}

struct PzmdMorph {
    QByteArray morph, actor;
    QList<QVector<float>> deltas; // index x y z
};

// A binary morph file; a block offset of -1 in `offsets` means "where the block lies".
QByteArray pzmd(const QList<PzmdMorph> &morphs, qint32 count = -1, QList<qint32> offsets = {}) {
    auto word = [](QByteArray &out, quint32 w) {
        char b[4];
        qToBigEndian(w, b);
        out.append(b, 4);
    };
    QByteArray index, blocks;
    int at = 20;
    for (const PzmdMorph &m : morphs)
        at += 2 + int(m.morph.size() + m.actor.size()) + 8;
    for (int i = 0; i < morphs.size(); ++i) {
        const PzmdMorph &m = morphs[i];
        index += char(m.morph.size()) + m.morph + char(m.actor.size()) + m.actor;
        word(index, 0);
        word(index, quint32(i < offsets.size() && offsets[i] != -1 ? offsets[i] : at + int(blocks.size())));
        word(blocks, quint32(m.deltas.size()));
        for (const auto &d : m.deltas) {
            word(blocks, quint32(qint32(d[0])));
            for (int k = 1; k < 4; ++k)
                word(blocks, qFromUnaligned<quint32>(&d[k]));
        }
    }
    QByteArray head = "PZMD";
    for (quint32 w : {1u, 0u, 0u, quint32(count < 0 ? morphs.size() : count)})
        word(head, w);
    return head + index + blocks;
}

TEST_F(Morphs, DeltaLinesFillTheMorphOfTheirActor) {
    geometry("m.obj", kObj);
    const QByteArray hip = morph("Bëlly Out:2", "name Belly\nindexes 3\nnumbDeltas 4\ndeltas\n{\n"
                                                "d 1 0.001 0 -0.002\ndx 2 0.001 0 -0.002\nx 3 9 9 9\n"
                                                "d 4 1 1 1\nd -1 1 1 1\nd\t3 +.5 zero 2 extra\n}\n");
    ASSERT_TRUE(readOk("fig.cr2", figure(hip, morph("Bëlly Out:2", "deltas\n{\nd 0 0 0.25 0\n}\n"))));
    OvSkeleton *fig = skeleton("fig");
    ASSERT_TRUE(fig);
    OvNode *hipNode = fig->findBone("hip"), *chest = fig->findBone("chest");
    OvMorph *m = morphOf(hipNode, "Bëlly Out:2");
    ASSERT_TRUE(m) << "names keep spaces, accents and colons";
    EXPECT_EQ(m->getDeltas()->getName(), "Belly") << "named after the channel's label";
    EXPECT_EQ(m->getDeltas()->getVertCount(), 4);
    // "dx" is a delta line too; "zero" reads as 0 through the general number grammar.
    EXPECT_EQ(deltaText(m), "1 0.001 0.000 -0.002; 2 0.001 0.000 -0.002; 3 0.500 0.000 2.000");
    EXPECT_EQ(m->getDeltas()->getOffset(0)[2], m->getDeltas()->getOffset(1)[2]) << "both paths agree";
    EXPECT_EQ(deltaText(morphOf(chest, "Bëlly Out:2")), "0 0.000 0.250 0.000") << "one morph per actor";
    const QString log = logText();
    EXPECT_TRUE(log.contains("Delta of vertex 4 dropped: hip has 4 vertices on line 25 in "))
        << log.toStdString();
    EXPECT_TRUE(log.contains("Delta of vertex -1 dropped")) << log.toStdString();
}

// Deltas read before their actor has geometry are checked once the geometry is there.
TEST_F(Morphs, DeltasReadBeforeTheGeometryAreCheckedAtTheEnd) {
    geometry("m.obj", kObj);
    const QByteArray early =
        "actor hip:1\n{\nchannels\n{\n" + morph("early", "deltas\n{\nd 3 0 1 0\nd 9 0 1 0\n}\n") + "}\n}\n";
    ASSERT_TRUE(readOk("fig.cr2", figure("", "", early)));
    EXPECT_EQ(deltaText(morphOf(skeleton("fig")->findBone("hip"), "early")), "3 0.000 1.000 0.000");
    EXPECT_TRUE(
        logText().startsWith("info: Morph \"early\" of hip: 1 delta(s) name vertices beyond the 4 of its "
                             "geometry and were dropped"))
        << logText().toStdString();
}

TEST_F(Morphs, RepeatedChannelsReachOneMorphAndIndexesStartAgain) {
    geometry("m.obj", kObj);
    const QByteArray first =
        morph("A", "deltas\n{\nd 0 1 0 0\n}\n") + morph("B", "deltas\n{\nd 0 1 0 0\n}\n");
    const QByteArray again =
        morph("A", "deltas\n{\nd 1 1 0 0\n}\n") + morph("B", "indexes 1\ndeltas\n{\nd 2 1 0 0\n}\n");
    const QByteArray many =
        morph("Many", "deltas\n{\n" + QByteArray("d 3 0.001 0 0\n").repeated(300) + "}\n");
    ASSERT_TRUE(readOk("fig.cr2", figure(first + "}\nchannels\n{\n" + again + many)));
    OvNode *hip = skeleton("fig")->findBone("hip");
    EXPECT_EQ(modifiers(hip), QStringList({"A", "B", "Many", "JOINT"})) << "read before any joint parameter";
    EXPECT_EQ(deltaText(morphOf(hip, "A")), "0 1.000 0.000 0.000; 1 1.000 0.000 0.000");
    EXPECT_EQ(deltaText(morphOf(hip, "B")), "2 1.000 0.000 0.000") << "indexes drops what was read";
    EXPECT_EQ(importer.morphItems().size(), 3u);
    const OvMorphDeltas *d = morphOf(hip, "Many")->getDeltas();
    ASSERT_EQ(d->getNumDeltas(), 300) << "batches of lines";
    EXPECT_EQ(d->getOffset(299), d->getOffset(0));

    // A pose dials the morphs the figure has and makes none.
    scene()->setPrimarySelection(skeleton("fig"));
    ASSERT_TRUE(readOk("dial.pz2", "{\nactor hip:1\n{\nchannels\n{\n" + morph("A", "initValue 0.7\n") +
                                       morph("Gone", "deltas\n{\nd 0 1 1 1\n}\n") + "}\n}\n}\n"));
    EXPECT_EQ(modifiers(hip), QStringList({"A", "B", "Many", "JOINT"}));
    EXPECT_EQ(morphOf(hip, "A")->getValueChannel()->getValue(), 0.7f);
}

TEST_F(Morphs, FigureDialsAndBadMorphLines) {
    geometry("m.obj", kObj);
    const QByteArray body =
        "actor BODY:1\n{\nchannels\n{\ntargetGeom Smile\n{\n}\ntargetGeom Smile\n{\n}\n}\n}\n";
    ASSERT_TRUE(readOk("fig.cr2", figure("", "", "") + body));
    OvSkeleton *fig = skeleton("fig");
    int dials = 0;
    for (int i = 0; i < fig->getNumProperties(); ++i)
        dials += fig->getProperty(i)->getName() == "Smile";
    EXPECT_EQ(dials, 1) << "a figure-level dial is one value property of the figure";
    EXPECT_FALSE(fig->getObject() && morphOf(fig, "Smile"));

    EXPECT_EQ(read("short.cr2", figure(morph("A", "deltas\n{\nd 1 0.1 0.2\n}\n"))), 0x62u);
    EXPECT_TRUE(logText().contains("Insufficient delta values supplied on line 19"))
        << logText().toStdString();
    EXPECT_EQ(read("nocount.cr2", figure(morph("A", "numbDeltas\n"))), 0x62u);
    EXPECT_EQ(read("noname.cr2", figure("targetGeom\n{\n}\n")), 0x62u);
}

TEST_F(Morphs, MorphsAfterJointParametersFollowTheJoint) {
    geometry("m.obj", kObj);
    const QByteArray joint = "jointX jointx\n{\nflipped\n}\n";
    ASSERT_TRUE(readOk("fig.cr2", figure(morph("Before", "") + joint + morph("After", ""))));
    OvNode *hip = skeleton("fig")->findBone("hip");
    EXPECT_EQ(modifiers(hip), QStringList({"Before", "JOINT", "After"}));
    EXPECT_EQ(importer.findOrCreateMorph(hip, "Before")->morph, morphOf(hip, "Before"));
}

TEST_F(Morphs, BinaryMorphsLoadOnDemand) {
    geometry("m.obj", kObj);
    const QList<PzmdMorph> morphs = {{"big", "hip", {{1, 1, 1, 1}}},
                                     {"Big", "hip", {{0, 1, 0, 0}, {9, 1, 1, 1}, {3, 0, 0.5f, 0}}},
                                     {"Big", "hip", {{2, 2, 2, 2}}},
                                     {"Big", "chest", {}}};
    file("content/Runtime/libraries/character/m.pmd", pzmd(morphs));
    const QByteArray use = "useBinaryMorph\n";
    ASSERT_TRUE(readOk("fig.cr2", figure(morph("Big", use) + morph("Small", use), morph("Big", use),
                                         "morphBinaryFile :Runtime:libraries:character:m.pmd\n")));
    OvNode *hip = skeleton("fig")->findBone("hip");
    EXPECT_EQ(deltaText(morphOf(hip, "Big")), "0 1.000 0.000 0.000; 3 0.000 0.500 0.000")
        << "the first record of exactly that name; vertex 9 of 4 is dropped";
    EXPECT_EQ(morphOf(hip, "Big")->getDeltas()->getOffset(0)[0], 243.84f);
    EXPECT_EQ(deltaText(morphOf(hip, "Small")), "") << "not in the file";
    EXPECT_TRUE(logText().contains("1 delta(s) of morph Big name vertices outside the 4 of hip"))
        << logText().toStdString();

    EXPECT_EQ(read("none.cr2", figure("", "", "morphBinaryFile NONE\n")), 0u);
    EXPECT_EQ(read("gone.cr2", figure("", "", "morphBinaryFile :nowhere.pmd\n")), 0x62u);
}

// The reader's index, reads on demand and damaged files, without an import.
TEST_F(Morphs, BinaryMorphFileReaderHoldsToTheFileSize) {
    QList<PzmdMorph> many;
    for (int i = 0; i < 40; ++i)
        many.append({"m" + QByteArray::number(i), "body", QList<QVector<float>>(1000, {1, 0, 0, 1})});
    const QString big = file("big.pmd", pzmd(many));
    OvPz3BinMorphFile reader(big);
    ASSERT_EQ(reader.index().size(), 40);
    const qint64 indexBytes = reader.bytesRead();
    EXPECT_LE(indexBytes, 4096) << "only the index is read eagerly";
    OvMorph morph("m7");
    OvNode body;
    body.setName("body");
    ASSERT_TRUE(reader.loadMorph(&morph, &body));
    EXPECT_EQ(morph.getDeltas()->getNumDeltas(), 1000);
    EXPECT_EQ(reader.bytesRead() - indexBytes, 4 + 1000 * 16) << "one block, nothing else";
    EXPECT_TRUE(reader.takeProblems().isEmpty());

    const QByteArray good = pzmd({{"a", "body", {{0, 1, 2, 3}}}});
    const struct {
        const char *what;
        QByteArray bytes;
        int records;
        bool loads;
        const char *problem;
    } damaged[] = {
        {"wrong magic", "PZMX" + good.mid(4), 0, false, "does not begin with PZMD"},
        {"truncated index", good.left(30), 0, false, "ends after 0 of 1 records"},
        {"name length past the end", good.left(20) + char(200) + QByteArray(20, 'x'), 0, false,
         "ends after 0 of 1"},
        {"huge record count", pzmd({{"a", "body", {}}}, 0x7fffffff), 1, true, "room for at most"},
        {"offset past the end", pzmd({{"a", "body", {}}}, -1, {1 << 30}), 1, false, "lies outside"},
        {"huge delta count", good.left(good.size() - 20) + QByteArray("\x7f\xff\xff\xff", 4) + good.right(16),
         1, true, "claims 2147483647 deltas, the file holds at most 1"},
    };
    for (const auto &c : damaged) {
        SCOPED_TRACE(c.what);
        OvPz3BinMorphFile f(file("bad.pmd", c.bytes));
        OvMorph a("a");
        EXPECT_EQ(f.index().size(), c.records);
        EXPECT_EQ(f.loadMorph(&a, &body), c.loads);
        EXPECT_LE(a.getDeltas()->getNumDeltas(), 1);
        EXPECT_TRUE(f.takeProblems().join("\n").contains(c.problem));
    }
}

// The example's binary morph file is the script's output for its text list, byte for byte.
TEST_F(Morphs, ExampleBinaryMorphFileIsWrittenByTheScript) {
    const QString character = OV_SOURCE_DIR "/examples/poser/Runtime/libraries/character/";
    QProcess python;
    python.start("python3", {OV_SOURCE_DIR "/bench/write_pzmd.py", dir.filePath("doll.pmd"), "--from",
                             character + "doll.pmd.txt"});
    if (!python.waitForStarted())
        GTEST_SKIP() << "python3 is not available";
    ASSERT_TRUE(python.waitForFinished() && python.exitCode() == 0)
        << python.readAllStandardError().toStdString();
    QFile written(dir.filePath("doll.pmd")), example(character + "doll.pmd");
    ASSERT_TRUE(written.open(QIODevice::ReadOnly) && example.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), example.readAll());
}

TEST(MorphDeltas, AccumulateAddsToTheSameVertexAndSqueezeKeepsTheData) {
    OvMorphDeltas d;
    d.addDelta(4, OvVec3(1, 2, 3), false);
    d.addDelta(5, OvVec3(1, 1, 1), false);
    d.addDelta(4, OvVec3(1, 1, 1), true);
    d.squeeze();
    ASSERT_EQ(d.getNumDeltas(), 2);
    EXPECT_EQ(d.getOffset(0), OvVec3(2, 3, 4));
    EXPECT_EQ(d.getIndex(1), 5);
    EXPECT_EQ(d.bytesHeld(), 2 * 16u);
}

} // namespace
