// The figure section (welds, conforming, IK chains, subdivision, linked parameters), as the tree
// dump shows it, and the bone index of a skeleton that the figure lookups rely on.
#include "PoserTest.h"

#include <QRegularExpression>
#include <SceneDump.h>

namespace {

using FigureSection = PoserTest;

QByteArray translation(const char *axis) {
    return QByteArray("translate") + axis + " t\n{\ninitValue 0.5\nkeys\n{\nk 0 1\nk 5 2\n}\n}\n";
}

// Figure 1: hip, lLeg (dials a and b), lFoot (bending as told, keyed translations), then its
// figure section.
QByteArray figureFile(const QByteArray &figureLines, int footBend = 1) {
    return "{\nactor hip:1\n{\n}\nactor lLeg:1\n{\nparent hip:1\nchannels\n{\nvalueParm a\n{\n}\nvalueParm "
           "b\n{\n}\n}\n}\nactor lFoot:1\n{\nbend " +
           QByteArray::number(footBend) + "\nchannels\n{\n" + translation("X") + translation("Y") +
           translation("Z") + "}\n}\nfigure\n{\nroot hip:1\n" + figureLines + "}\n}\n";
}
const int kFigureLine = int(figureFile("").count('\n')) - 1; // of the first figure line

// The tree's lines about welds, chains, IK targets and linked dials, and the subdivision records.
QString facts(const OvPZ3Importer &importer) {
    QString tree;
    QTextStream out(&tree);
    writeSceneTree(out, *OvApp::getScene());
    QStringList list = tree.split('\n').filter(QRegularExpression("weld |ik chain|PoserIKTarget|linked to"));
    for (QString &line : list)
        line = line.trimmed().replace(QRegularExpression("^property (\\S+) .*(linked to \"\\w+\").*"),
                                      "\\1 \\2");
    for (int i = 0; i < importer.subDNodes().size(); ++i)
        list << QString("subdivision %1 of %2")
                    .arg(importer.subDNodes()[i].level)
                    .arg(importer.subDNodes()[i].node->getName());
    return list.join('|');
}

#define LOG logText().replace(dir.path() + "/", "")

TEST_F(FigureSection, KeywordsLeaveTheirRecords) {
    const struct {
        const char *lines;
        int footBend;
        unsigned result;
        const char *facts;
        const char *log; // "@N": line N of the figure lines
    } rows[] = {
        {"weld lFoot:1\nlLeg:1\nweld lLeg:1\nhip:1\n", 1, 0, R"(weld "lFoot" to "lLeg"|weld "lLeg" to "hip")",
         ""},
        // A part that does not bend is not welded, yet its partner's line is taken.
        {"weld lFoot:1\nlLeg:1\nweld lFoot:1\nsubdivision 3\n", 0, 0, "", ""},
        // The figure is no bone; a part that is missing welds nothing.
        {"weld lLeg:1\nBODY:1\nweld lLeg:1\nnosuch:1\nweld nosuch:1\nhip:1\n", 1, 0, "", ""},
        {"subdivision 0\nsubdivision 2\n", 1, 0, "subdivision 2 of f_0", ""},
        // linkParms takes one, three or four lines; the rest is read on its own.
        {"linkParms lLeg:1\na\nlLeg:1\nb\n", 1, 0, R"(b linked to "a")", ""},
        {"linkParms nosuch:1\nsubdivision 3\n", 1, 0, "subdivision 3 of f_0", ""},
        {"linkParms lLeg:1\nsubdivision 3\nnosuch:1\nsubdivision 4\n", 1, 0, "subdivision 4 of f_0", ""},
        {"linkParms lLeg:1\nsubdivision 3\nhip:1\nsubdivision 4\n", 1, 0, "",
         "info: Could not find property \"subdivision 3\" on node \"lLeg\" for linkParms while importing "
         "Poser File"},
        {"inkyChain\n{\nsubdivision 2\n}\n", 1, 0, "subdivision 2 of f_0",
         "info: No name was specified for inkyChain on line @0 in f.cr2"},
        {"inkyChain leg\n{\non\nname Left Leg\naddLink hip:1\naddLink nosuch:1\naddLink lLeg:1\naddLink "
         "lFoot:1\n"
         "linkWeight 1 0.25\nlinkWeight 3 0.5\nlinkWeight 1\ngoal lFoot:1\noff\non\n}\n",
         1, 0,
         R"(ik chain "leg" label "Left Leg" (on): links "hip" 1, "lLeg" 0.25, "lFoot" 1; goal "lFoot"|)"
         "data PoserIKTarget",
         "info: No values specified for linkWeight in inkyChain section on line @10 in f.cr2"},
        // The figure is a goal but no target. A section without a figure makes no chain: its lines
        // change the chain made before it.
        {"inkyChain a\n{\ngoal BODY:1\n}\ninkyChain b\n{\ngoal nosuch:1\nname\naddLink\ngoal\n}\n}\n"
         "figure\n{\ninkyChain c\n{\nname Other\n}\n",
         1, 0,
         R"(ik chain "a" (off): links none; goal "f_0"|ik chain "b" label "Other" (off): links none; goal none)",
         "info: No value specified for name in inkyChain section on line @7 in f.cr2\n"
         "info: No value specified for addLink in inkyChain section on line @8 in f.cr2\n"
         "info: No goal specified for IK chain on line @9 in f.cr2"},
        {"weld\nsubdivision 2\n", 1, 0x62, "",
         "error: No group name was specified for weld on line @0 in f.cr2"},
        {"material\nsubdivision 2\n", 1, 0x62, "",
         "error: No material name was specified on line @0 in f.cr2"},
        {"conforming\nsubdivision 2\n", 1, 0x62, "",
         "error: No conforming parameter was specified on line @0 in f.cr2"},
        {"linkParms\nsubdivision 2\n", 1, 0x62, "",
         "error: No master group name was specified for linkParms on line @0 in f.cr2"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.lines);
        OvApp::reset();
        EXPECT_EQ(read("f.cr2", figureFile(row.lines, row.footBend)), row.result);
        EXPECT_EQ(facts(importer), row.facts);
        QString log = row.log;
        for (int n = 10; n >= 0; --n)
            log.replace(QString("@%1").arg(n), QString::number(kFigureLine + n));
        EXPECT_EQ(LOG, log);
    }
}

TEST_F(FigureSection, GoalBoneKeepsNoTranslationKeys) {
    ASSERT_TRUE(readOk("f.cr2", figureFile("inkyChain leg\n{\ngoal lFoot:1\n}\n")));
    OvSkeleton *figure = skeleton("f");
    OvBone *foot = figure->findBone("lFoot");
    for (OvFloatProperty *t : {foot->getXPosControl(), foot->getYPosControl(), foot->getZPosControl()})
        EXPECT_EQ(QString("%1 %2 %3").arg(t->getNumKeys()).arg(t->getDefaultValue()).arg(t->getValueAt(0)),
                  "0 0 0");
    // Nor does a pose give it any; other bones take theirs.
    scene()->setPrimarySelection(figure);
    const QByteArray pose = "actor lFoot:1\n{\nchannels\n{\n" + translation("X") + "}\n}\n";
    ASSERT_TRUE(readOk("p.pz2", "{\n" + pose + QByteArray(pose).replace("lFoot", "lLeg") + "}\n"));
    EXPECT_EQ(foot->getXPosControl()->getNumKeys(), 0);
    EXPECT_EQ(figure->findBone("lLeg")->getXPosControl()->getNumKeys(), 2);
}

// The bundled hat, with its conforming line and file kind varied, over the bundled doll.
TEST_F(FigureSection, ConformingFollowsTheSelectedFigureWhenDroppedSo) {
    const QString content = OV_SOURCE_DIR "/examples/poser/Runtime/libraries/character/";
    OvApp::getContentMgr()->addPoserDirectory(OV_SOURCE_DIR "/examples/poser");
    ASSERT_EQ(importer.read(content + "doll.cr2", OvFileIOSettings()), 0u);
    OvSkeleton *doll = skeleton("doll");
    QFile hat(content + "dollHat.cr2");
    ASSERT_TRUE(hat.open(QIODevice::ReadOnly));
    const QByteArray hatText = hat.readAll();
    OvContentDropOptions drop;
    const struct {
        const char *fileName, *line;
        int dropMode; // -1: no drop options
        bool follows;
    } rows[] = {
        {"a.cr2", "conforming 1", -1, true},  {"b.cr2", "conforming 1", 0, true},
        {"c.cr2", "conforming 1", 3, true},   {"d.cr2", "conforming 1", 1, false},
        {"e.cr2", "conforming 1", 2, false},  {"f.cr2", "conforming 1", 4, false},
        {"g.cr2", "conforming 0", -1, false}, {"h.pp2", "conforming 1", -1, false},
        {"i.pz3", "conforming 1", -1, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.fileName);
        drop.setDropMode(OvContentDropOptions::DropMode(qMax(0, row.dropMode)));
        OvApp::getContentMgr()->setContentDropOptions(row.dropMode < 0 ? nullptr : &drop);
        scene()->setPrimarySelection(doll->findBone("head"));
        const int before = scene()->getNumNodes();
        ASSERT_TRUE(readOk(row.fileName, QByteArray(hatText).replace("conforming 1", row.line)));
        auto *made = qobject_cast<OvSkeleton *>(scene()->getNode(before));
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->getFollowTarget(), row.follows ? doll : nullptr);
        EXPECT_EQ(made->getWelds().size(), 1u);
    }
    OvApp::getContentMgr()->setContentDropOptions(nullptr);
    // The second section's root is the selected figure itself (its first conforming registered it).
    scene()->setPrimarySelection(doll);
    ASSERT_TRUE(readOk("self.cr2", figureFile("conforming 1\n}\nfigure\n{\nroot BODY\nconforming 1\n")));
    EXPECT_EQ(doll->getFollowTarget(), nullptr);
    EXPECT_EQ(LOG,
              QString("info: Figure \"doll\" cannot conform to itself or to a figure that follows it on line "
                      "%1 in self.cr2")
                  .arg(kFigureLine + 5));
}

// ---- the bone index ----

using BoneIndex = ::testing::Test;

OvBone *boneNamed(const char *name, OvNode *parent) {
    auto *bone = new OvBone;
    bone->setName(name);
    parent->addNodeChild(bone);
    return bone;
}

TEST_F(BoneIndex, FollowsRenamesMovesAndDeletions) {
    OvSkeleton a, b;
    OvBone *hip = boneNamed("hip", &a), *leg = boneNamed("leg", hip);
    auto *group = new OvNode; // a plain node between bones hides nothing
    hip->addNodeChild(group);
    OvBone *foot = boneNamed("foot", group);
    EXPECT_EQ(a.findBone("foot"), foot);
    leg->setName("thigh");
    EXPECT_EQ(a.findBone("leg"), nullptr);
    EXPECT_EQ(a.findBone("thigh"), leg);
    b.addNodeChild(group); // with the foot
    EXPECT_EQ(a.findBone("foot"), nullptr);
    EXPECT_EQ(b.findBone("foot"), foot);
    EXPECT_EQ(foot->getSkeleton(), &b);
    auto *c = new OvSkeleton; // a figure parented below another keeps its bones
    OvBone *hat = boneNamed("hat", c);
    leg->addNodeChild(c);
    EXPECT_EQ(a.findBone("hat"), nullptr);
    EXPECT_EQ(hat->getSkeleton(), c);
    a.removeNodeChild(hip);
    EXPECT_EQ(a.findBone("hip"), nullptr);
    EXPECT_EQ(leg->getSkeleton(), nullptr);
    a.addNodeChild(hip);
    EXPECT_EQ(a.findBone("thigh"), leg);
    hip->removeNodeChild(leg);
    delete leg; // with the figure below it
    EXPECT_EQ(a.findBone("thigh"), nullptr);
    EXPECT_EQ(a.getAllBones(), QList<OvBone *>{hip});
    // Bones that share a name are found in walk order.
    OvBone *first = boneNamed("x", &a), *second = boneNamed("x", &a), *third = boneNamed("x", second);
    EXPECT_EQ(a.findBone("x"), first);
    second->addNodeChild(first);
    EXPECT_EQ(a.findBone("x"), second);
    second->setName("y");
    EXPECT_EQ(a.findBone("x"), third);
}

} // namespace
