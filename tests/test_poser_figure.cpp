// The figure section (welds, conforming, IK chains, subdivision, linked parameters) and the bone
// index of a skeleton that the figure lookups rely on.
#include "PoserTest.h"

#include <OvIKChains.h>
#include <OvModifiers.h>

namespace {

using FigureSection = PoserTest;

QByteArray translation(const char *axis) {
    return QByteArray("translate") + axis + " t\n{\ninitValue 0.5\nkeys\n{\nk 0 1\nk 5 2\n}\n}\n";
}

// Figure 1: hip, lLeg below it (with the dials a and b), lFoot (bending as told, keyed
// translations); then the figure section.
QByteArray figureFile(const QByteArray &figureLines, int footBend = 1) {
    return "{\nactor hip:1\n{\n}\n"
           "actor lLeg:1\n{\nparent hip:1\nchannels\n{\nvalueParm a\n{\n}\nvalueParm b\n{\n}\n}\n}\n"
           "actor lFoot:1\n{\nbend " +
           QByteArray::number(footBend) + "\nchannels\n{\n" + translation("X") + translation("Y") +
           translation("Z") + "}\n}\nfigure\n{\nroot hip:1\n" + figureLines + "}\n}\n";
}
// The line number of the first of figureLines.
const int kFigureLine = [] {
    const QByteArray text = figureFile("");
    return int(text.left(text.indexOf("root hip:1")).count('\n')) + 2;
}();

OvSkeleton *figure1() {
    return qobject_cast<OvSkeleton *>(OvApp::getScene()->getNode(0));
}

QString nodeName(const OvNode *n) {
    return n ? n->getName() : QStringLiteral("none");
}

// What the figure section left: welds, IK chains, IK targets, subdivision records, linked dials.
QStringList facts(const OvPZ3Importer &importer) {
    QStringList list;
    OvSkeleton *figure = figure1();
    for (const OvSkeleton::Weld &weld : figure->getWelds())
        list << "weld " + nodeName(weld.bone) + ">" + nodeName(weld.target);
    if (auto *chains = dynamic_cast<OvPoserIKChains *>(figure->findDataItem("PoserIKChains")))
        for (int c = 0; c < chains->getNumChains(); ++c) {
            const OvPoserIKChain &chain = *chains->getChain(c);
            QStringList links;
            for (int l = 0; l < chain.getNumLinks(); ++l)
                links << nodeName(chain.getLink(l).node) + " " + QString::number(chain.getLink(l).weight);
            list << QString("chain %1 \"%2\" %3: %4; goal %5")
                        .arg(chain.getName(), chain.getLabel(), chain.isActive() ? "on" : "off",
                             links.join(", "), nodeName(chain.getGoal()));
        }
    for (OvBone *bone : figure->getAllBones())
        if (bone->findDataItem("PoserIKTarget"))
            list << "target " + bone->getName();
    for (int i = 0; i < importer.subDNodes().size(); ++i)
        list << QString("subdivision %1 of %2")
                    .arg(importer.subDNodes()[i].level)
                    .arg(nodeName(importer.subDNodes()[i].node));
    OvBone *leg = figure->findBone("lLeg");
    for (const char *dial : {"a", "b"})
        if (auto *p = dynamic_cast<OvNumericProperty *>(leg->findProperty(dial)); p && p->getLinkProperty())
            list << QString("%1 follows %2").arg(dial, p->getLinkProperty()->getName());
    return list;
}

#define LOG logText().replace(dir.path() + "/", "")

TEST_F(FigureSection, KeywordsLeaveTheirRecords) {
    const struct {
        const char *lines;
        int footBend;
        const char *facts; // joined with "|"
        const char *log;   // "@N" is line N of the figure lines
    } rows[] = {
        {"weld lFoot:1\nlLeg:1\nweld lLeg:1\nhip:1\n", 1, "weld lFoot>lLeg|weld lLeg>hip", ""},
        // A part that does not bend is not welded; the partner's line is consumed all the same.
        {"weld lFoot:1\nlLeg:1\nweld lFoot:1\nsubdivision 3\n", 0, "", ""},
        {"weld lFoot:1\nsubdivision 3\nsubdivision 4\n", 1, "subdivision 4 of f_0", ""},
        // The figure itself is no bone, and a missing actor is nothing.
        {"weld lLeg:1\nBODY:1\nweld lLeg:1\nnosuch:1\nweld nosuch:1\nhip:1\n", 1, "", ""},
        {"subdivision 0\nsubdivision 2\n", 1, "subdivision 2 of f_0", ""},
        // linkParms reads one, three or four lines; what it does not take is read on its own.
        {"linkParms lLeg:1\na\nlLeg:1\nb\n", 1, "b follows a", ""},
        {"linkParms nosuch:1\nsubdivision 3\n", 1, "subdivision 3 of f_0", ""},
        {"linkParms lLeg:1\nsubdivision 3\nnosuch:1\nsubdivision 4\n", 1, "subdivision 4 of f_0", ""},
        {"linkParms lLeg:1\nsubdivision 3\nhip:1\nsubdivision 4\n", 1, "",
         "info: Could not find property \"subdivision 3\" on node \"lLeg\" for linkParms while importing "
         "Poser File"},
        {"inkyChain\n{\nsubdivision 2\n}\n", 1, "subdivision 2 of f_0",
         "info: No name was specified for inkyChain on line @0 in f.cr2"},
        {"inkyChain leg\n{\non\nname Left Leg\naddLink hip:1\naddLink nosuch:1\naddLink lLeg:1\naddLink "
         "lFoot:1\nlinkWeight 1 0.25\nlinkWeight 3 0.5\nlinkWeight 1\ngoal lFoot:1\noff\non\n}\n",
         1, "chain leg \"Left Leg\" on: hip 1, lLeg 0.25, lFoot 1; goal lFoot|target lFoot",
         "info: No values specified for linkWeight in inkyChain section on line @10 in f.cr2"},
        // The figure is a goal but no target; a goal that names nothing is none; missing values are
        // said. A section that could make no chain (no figure) changes the chain made before it.
        {"inkyChain a\n{\ngoal BODY:1\n}\ninkyChain b\n{\ngoal nosuch:1\noff\nname\naddLink\ngoal\n}\n"
         "}\nfigure\n{\ninkyChain c\n{\nname Other\n}\n",
         1, "chain a \"a\" off: ; goal f_0|chain b \"Other\" off: ; goal none",
         "info: No value specified for name in inkyChain section on line @8 in f.cr2\n"
         "info: No value specified for addLink in inkyChain section on line @9 in f.cr2\n"
         "info: No goal specified for IK chain on line @10 in f.cr2"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.lines);
        OvApp::reset();
        ASSERT_EQ(read("f.cr2", figureFile(row.lines, row.footBend)), 0u);
        EXPECT_EQ(facts(importer).join("|"), row.facts);
        QString log = row.log;
        for (int n = 12; n >= 0; --n)
            log.replace(QString("@%1").arg(n), QString::number(kFigureLine + n));
        EXPECT_EQ(LOG, log);
    }
}

TEST_F(FigureSection, MissingNamesStopTheImport) {
    const struct {
        const char *line, *message;
    } rows[] = {
        {"weld", "No group name was specified for weld"},
        {"material", "No material name was specified"},
        {"conforming", "No conforming parameter was specified"},
        {"linkParms", "No master group name was specified for linkParms"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        OvApp::reset();
        EXPECT_EQ(read("f.cr2", figureFile(QByteArray(row.line) + "\nsubdivision 2\n")), 0x62u);
        EXPECT_EQ(LOG, QString("error: %1 on line %2 in f.cr2").arg(row.message).arg(kFigureLine));
        EXPECT_TRUE(importer.subDNodes().isEmpty()) << "nothing after the line is read";
    }
}

TEST_F(FigureSection, GoalBoneLosesItsTranslationKeysForGood) {
    ASSERT_TRUE(readOk("f.cr2", figureFile("inkyChain leg\n{\naddLink lFoot:1\ngoal lFoot:1\n}\n")));
    OvSkeleton *figure = figure1();
    OvBone *foot = figure->findBone("lFoot");
    for (OvFloatProperty *t : {foot->getXPosControl(), foot->getYPosControl(), foot->getZPosControl()}) {
        EXPECT_EQ(t->getNumKeys(), 0);
        EXPECT_EQ(t->getDefaultValue(), 0.0f);
        EXPECT_EQ(t->getValueAt(0), 0.0f);
    }
    // A pose no longer keys the target's translation; other bones take theirs.
    scene()->setPrimarySelection(figure);
    ASSERT_TRUE(readOk("p.pz2", "{\nactor lFoot:1\n{\nchannels\n{\n" + translation("X") +
                                    "}\n}\nactor lLeg:1\n{\nchannels\n{\n" + translation("X") + "}\n}\n}\n"));
    EXPECT_EQ(foot->getXPosControl()->getNumKeys(), 0);
    EXPECT_EQ(figure->findBone("lLeg")->getXPosControl()->getNumKeys(), 2);
}

TEST_F(FigureSection, ConformingFollowsTheSelectedFigure) {
    OvPZ3Importer first;
    ASSERT_EQ(first.read(file("base.cr2", figureFile("")), OvFileIOSettings()), 0u);
    OvSkeleton *base = figure1();
    OvContentDropOptions drop;
    const struct {
        const char *fileName, *line;
        bool selected;
        int dropMode; // -1: no drop options
        bool follows;
    } rows[] = {
        {"hat.cr2", "conforming 1", true, -1, true},
        {"hat.cr2", "conforming 1", true, OvContentDropOptions::Automatic, true},
        {"hat.cr2", "conforming 1", true, OvContentDropOptions::Conform, true},
        {"hat.cr2", "conforming 1", true, OvContentDropOptions::FollowTargetFigure, false},
        {"hat.cr2", "conforming 1", true, OvContentDropOptions::ParentToTarget, false},
        {"hat.cr2", "conforming 1", true, OvContentDropOptions::PlaceAtPoint, false},
        {"hat.cr2", "conforming 0", true, -1, false},
        {"hat.cr2", "conforming 1", false, -1, false},
        {"hat.pp2", "conforming 1", true, -1, false},
        {"hat.pz3", "conforming 1", true, -1, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(QString("%1 %2 drop %3").arg(row.fileName, row.line).arg(row.dropMode).toStdString());
        if (row.dropMode >= 0)
            drop.setDropMode(OvContentDropOptions::DropMode(row.dropMode));
        OvApp::getContentMgr()->setContentDropOptions(row.dropMode < 0 ? nullptr : &drop);
        scene()->setPrimarySelection(row.selected ? base->findBone("lLeg") : nullptr);
        const int before = scene()->getNumNodes();
        ASSERT_TRUE(readOk(row.fileName, figureFile(QByteArray(row.line) + "\n")));
        auto *hat = qobject_cast<OvSkeleton *>(scene()->getNode(before));
        ASSERT_NE(hat, nullptr);
        EXPECT_EQ(hat->getFollowTarget(), row.follows ? base : nullptr);
    }
    OvApp::getContentMgr()->setContentDropOptions(nullptr);
    EXPECT_EQ(LOG, "");
}

TEST_F(FigureSection, FigureNeverConformsToItself) {
    OvPZ3Importer first;
    ASSERT_EQ(first.read(file("base.cr2", figureFile("")), OvFileIOSettings()), 0u);
    OvSkeleton *base = figure1();
    scene()->setPrimarySelection(base);
    // The second section's root is the selected figure, which the first conforming registered.
    ASSERT_TRUE(readOk("self.cr2", figureFile("conforming 1\n}\nfigure\n{\nroot BODY\nconforming 1\n")));
    EXPECT_EQ(base->getFollowTarget(), nullptr);
    EXPECT_EQ(LOG, QString("info: Figure \"base\" cannot conform to itself or to a figure that follows it on "
                           "line %1 in self.cr2")
                       .arg(kFigureLine + 5));
}

TEST_F(FigureSection, BundledHatConformsToTheDoll) {
    const QString content = OV_SOURCE_DIR "/examples/poser";
    OvApp::getContentMgr()->addPoserDirectory(content);
    ASSERT_EQ(importer.read(content + "/Runtime/libraries/character/doll.cr2", OvFileIOSettings()), 0u);
    OvSkeleton *doll = figure1();
    scene()->setPrimarySelection(doll->findBone("head"));
    ASSERT_EQ(importer.read(content + "/Runtime/libraries/character/dollHat.cr2", OvFileIOSettings()), 0u);
    OvSkeleton *hat = skeleton("dollHat");
    ASSERT_NE(hat, nullptr);
    EXPECT_EQ(hat->getFollowTarget(), doll);
    ASSERT_EQ(hat->getWelds().size(), 1u);
    EXPECT_EQ(hat->getWelds()[0].bone, hat->findBone("crown"));
    EXPECT_EQ(logText(), "");
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
    OvBone *hip = boneNamed("hip", &a);
    OvBone *leg = boneNamed("leg", hip);
    auto *group = new OvNode; // a plain node between bones hides nothing
    hip->addNodeChild(group);
    OvBone *foot = boneNamed("foot", group);
    EXPECT_EQ(a.findBone("foot"), foot);
    EXPECT_EQ(foot->getSkeleton(), &a);

    leg->setName("thigh");
    EXPECT_EQ(a.findBone("leg"), nullptr);
    EXPECT_EQ(a.findBone("thigh"), leg);

    b.addNodeChild(group); // with the foot below it
    EXPECT_EQ(a.findBone("foot"), nullptr);
    EXPECT_EQ(b.findBone("foot"), foot);
    EXPECT_EQ(foot->getSkeleton(), &b);

    // A figure parented below another keeps its bones.
    auto *c = new OvSkeleton;
    OvBone *hat = boneNamed("hat", c);
    leg->addNodeChild(c);
    EXPECT_EQ(a.findBone("hat"), nullptr);
    EXPECT_EQ(c->findBone("hat"), hat);
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
}

TEST_F(BoneIndex, SharedNamesKeepWalkOrder) {
    OvSkeleton a;
    OvBone *first = boneNamed("x", &a);
    OvBone *second = boneNamed("x", &a);
    OvBone *third = boneNamed("x", second);
    EXPECT_EQ(a.findBone("x"), first);
    second->addNodeChild(first); // moved behind the second and its child
    EXPECT_EQ(a.findBone("x"), second);
    second->setName("y");
    EXPECT_EQ(a.findBone("x"), third);
}

} // namespace
