// Dependent parameters and linked parameters: what each valueOp computes, place-holders resolved at
// the end of the import (across an include too), refused cycles, units of the scalar, repeated
// links, links that never resolve, linkParms pairs, and evaluation that stays bounded.
#include "PoserTest.h"

#include <cmath>

namespace {

using ErcLinks = PoserTest;

QByteArray op(const char *kind, const char *node, const QByteArray &channel, const char *delta = "1") {
    const bool add = QByteArray(kind) == "valueOpDeltaAdd";
    return QByteArray(kind) + "\nFigure 1\n" + node + "\n" + channel + "\n" +
           (add ? QByteArray("deltaAddDelta ") + delta + "\n" : QByteArray());
}

// A value dial with its body, or any other channel line given whole.
QByteArray dial(const QByteArray &line, const QByteArray &body = "") {
    return (line.contains(' ') ? line : "valueParm " + line) + "\n{\n" + body + "}\n";
}

QByteArray actor(const char *name, const QByteArray &channels) {
    return QByteArray("actor ") + name + "\n{\nchannels\n{\n" + channels + "}\n}\n";
}

QByteArray figure(const QByteArray &actors) {
    return "{\n" + actors + "}\n";
}

OvNode *bone(const char *name) {
    auto *figure = qobject_cast<OvSkeleton *>(OvApp::getScene()->getNode(0));
    return QByteArray(name) == "BODY" ? static_cast<OvNode *>(figure) : figure->findBone(name);
}

OvFloatProperty *dialOf(const char *node, const char *name) {
    return dynamic_cast<OvFloatProperty *>(bone(node)->findProperty(name));
}

// "type name <- source * scalar" of every controller, in order.
QStringList links(const OvProperty *p) {
    QStringList list;
    for (int i = 0; i < p->getNumControllers(); ++i) {
        auto *link = dynamic_cast<const OvERCLink *>(p->getController(i));
        list << QString("%1 %2 <- %3 * %4")
                    .arg(link->getType())
                    .arg(link->getName(), link->getProperty() ? link->getProperty()->getLabel() : "none")
                    .arg(link->getScalar(), 0, 'g', 6);
    }
    return list;
}

// The log with the test folder left out of file paths.
#define LOG logText().replace(dir.path() + "/", "")

TEST_F(ErcLinks, EachOperationComputesTheDrivenValue) {
    // BODY's dial is 0 at frame 0 and 4 at frame 10; the driven dial's own value is 6.
    const struct {
        const char *kind;
        double scalar, atFrame0, atFrame10;
    } rows[] = {
        {"valueOpDeltaAdd", 0.5, 6, 6 + 0.5 * 4},
        {"valueOpDivideInto", 1, 0, 4.0 / 6},
        {"valueOpDivideBy", 1, 6, 6.0 / 4}, // by zero: the value stays
        {"valueOpTimes", 1, 0, 24},
        {"valueOpMinus", 1, 6, 2},
        {"valueOpPlus", 1, 6, 10},
    };
    for (int type = 0; type < 6; ++type) {
        SCOPED_TRACE(rows[type].kind);
        OvApp::reset();
        ASSERT_TRUE(readOk(
            "ops.cr2", figure(actor("BODY:1", dial("master", "keys\n{\nk 0 0\nk 10 4\n}\n")) +
                              actor("hip:1", dial("driven", "initValue 6\n" + op(rows[type].kind, "BODY:1",
                                                                                 "master", "0.5"))))));
        OvFloatProperty *driven = dialOf("hip", "driven");
        EXPECT_EQ(
            links(driven),
            QStringList(QString("%1 Imported ERC Control <- master * %2").arg(type).arg(rows[type].scalar)));
        EXPECT_NEAR(driven->getValueAt(0), rows[type].atFrame0, 1e-5);
        EXPECT_NEAR(driven->getValueAt(10 * scene()->getTimeStep()), rows[type].atFrame10, 1e-5);
    }
}

TEST_F(ErcLinks, DeferredLinksResolveInPlaceAcrossAnIncludeAndOnlyOnce) {
    // hip names chest's dial before any chest is read; chest comes from an included file.
    file("content/Runtime/libraries/character/chest.cr2", actor("chest:1", dial("bend", "initValue 3\n")));
    const QByteArray times = op("valueOpTimes", "BODY:1", "master");
    ASSERT_TRUE(readOk(
        "main.cr2",
        figure(actor("BODY:1", dial("master", "initValue 2\n")) +
               actor("hip:1",
                     dial("driven", "initValue 1\n" + op("valueOpPlus", "chest:1", "bend") + times + times)) +
               actor("hip:1", dial("driven", times)) +
               "readScript :Runtime:libraries:character:chest.cr2\n")));
    EXPECT_EQ(LOG, QString());
    OvFloatProperty *driven = dialOf("hip", "driven");
    EXPECT_EQ(links(driven),
              QStringList({"5 Imported ERC Control <- bend * 1", "3 Imported ERC Control <- master * 1"}));
    EXPECT_FLOAT_EQ(driven->getValueAt(0), (1 + 3) * 2);
    // A name two channels of one actor carry stands for the first of them.
    OvApp::reset();
    ASSERT_TRUE(
        readOk("twin.cr2", figure(actor("BODY:1", dial("rotateX twin", "initValue 5\n") +
                                                      dial("translateY twin", "initValue 1\n")) +
                                  actor("hip:1", dial("driven", op("valueOpPlus", "BODY:1", "twin"))))));
    EXPECT_FLOAT_EQ(dialOf("hip", "driven")->getValueAt(0), 5);
}

TEST_F(ErcLinks, LinksThatNeverResolveLeaveNothingAndAreNamedAtTheEnd) {
    ASSERT_TRUE(
        readOk("lost.cr2", figure(actor("hip:1", dial("driven", op("valueOpPlus", "nosuch:1", "x") +
                                                                    op("valueOpMinus", "BODY:1", "gone"))))));
    EXPECT_EQ(dialOf("hip", "driven")->getNumControllers(), 0);
    EXPECT_FALSE(bone("nosuch")) << "a link makes no bone";
    EXPECT_EQ(LOG, "info: 2 dependent parameter link(s) stayed unresolved, their controlling channel was "
                   "never read: hip:driven => nosuch:x (line 8 in lost.cr2); hip:driven => BODY:gone "
                   "(line 12 in lost.cr2)");
    // A blank channel line is no link at all; the import goes on.
    OvApp::reset();
    ASSERT_TRUE(readOk("short.cr2", figure(actor("hip:1", dial("d", "valueOpPlus\nFigure 1\nhip:1\n\n") +
                                                              dial("e", "initValue 2\n")))));
    EXPECT_EQ(LOG, "error: Missing channel name for valueOp on line 11 in short.cr2");
    EXPECT_EQ(dialOf("hip", "d")->getNumControllers(), 0);
    EXPECT_FLOAT_EQ(dialOf("hip", "e")->getValue(), 2);
}

TEST_F(ErcLinks, CyclesAreRefused) {
    // a waits for b; b follows a at once; a's link would close the cycle at the end of the import.
    ASSERT_TRUE(
        readOk("two.cr2", figure(actor("hip:1", dial("a", op("valueOpPlus", "chest:1", "b"))) +
                                 actor("chest:1", dial("b", op("valueOpPlus", "hip:1", "a"))) +
                                 actor("head:1", dial("self", op("valueOpPlus", "head:1", "self"))))));
    EXPECT_EQ(LOG, "info: Attempted to create circular ERC: head:self => head:self on line 34 in two.cr2\n"
                   "info: Attempted to create circular ERC: hip:a => chest:b on line 8 in two.cr2");
    EXPECT_EQ(dialOf("hip", "a")->getNumControllers(), 0) << "its place-holder is gone";
    EXPECT_EQ(links(dialOf("chest", "b")), QStringList("5 Imported ERC Control <- a * 1"));

    // Twenty dials, each following the next: p19 follows p0 at once, then p0 to p17 resolve at the
    // end and p18 would close the cycle.
    OvApp::reset();
    QByteArray chain;
    for (int i = 0; i < 20; ++i)
        chain += dial("p" + QByteArray::number(i),
                      op("valueOpDeltaAdd", "hip:1", "p" + QByteArray::number((i + 1) % 20)));
    ASSERT_TRUE(readOk("twenty.cr2", figure(actor("hip:1", chain))));
    EXPECT_EQ(LOG, "info: Attempted to create circular ERC: hip:p18 => hip:p19 on line 152 in twenty.cr2");
    EXPECT_EQ(dialOf("hip", "p18")->getNumControllers(), 0);
    EXPECT_EQ(links(dialOf("hip", "p19")), QStringList("0 Imported ERC Control <- p0 * 1"));
}

TEST_F(ErcLinks, ScalarsOfTranslationsAreInHostUnits) {
    ASSERT_TRUE(
        readOk("units.cr2",
               figure(actor("hip:1", dial("dial", "initValue 1\n") +
                                         dial("translateX xtran", op("valueOpDeltaAdd", "hip:1", "dial")) +
                                         dial("translateY ytran", op("valueOpDeltaAdd", "hip:1", "xtran")) +
                                         dial("follower", op("valueOpDeltaAdd", "hip:1", "xtran"))))));
    EXPECT_EQ(links(bone("hip")->getXPosControl()), QStringList("0 Imported ERC Control <- dial * 243.84"));
    EXPECT_EQ(links(bone("hip")->getYPosControl()), QStringList("0 Imported ERC Control <- xTran * 1"));
    EXPECT_EQ(links(dialOf("hip", "follower")), QStringList("0 Imported ERC Control <- xTran * 0.00410105"));
}

TEST_F(ErcLinks, LinkParmsShareOneValue) {
    ASSERT_TRUE(readOk(
        "pairs.cr2",
        figure(actor("hip:1", dial("a", "initValue 5\n") + dial("a2")) +
               actor("chest:1", dial("b", "initValue 1\n") + dial("c", op("valueOpPlus", "hip:1", "a"))))));
    OvNode *hip = bone("hip"), *chest = bone("chest");
    OvFloatProperty *a = dialOf("hip", "a"), *a2 = dialOf("hip", "a2"), *b = dialOf("chest", "b"),
                    *c = dialOf("chest", "c");
    importer.resolveLinkParm({hip, chest, "a", "b"});
    EXPECT_EQ(b->getLinkProperty(), a) << "the slave follows the master";
    EXPECT_FLOAT_EQ(b->getValueAt(0), 5);
    importer.resolveLinkParm({chest, hip, "b", "a"});
    EXPECT_EQ(a->getLinkProperty(), nullptr) << "already linked: nothing changes";
    importer.resolveLinkParm({hip, chest, "a2", "c"});
    EXPECT_EQ(a2->getLinkProperty(), c) << "a driven slave keeps its drivers and leads";
    EXPECT_FLOAT_EQ(a2->getValueAt(0), 5);
    importer.resolveLinkParm({hip, chest, "a", "c"});
    importer.resolveLinkParm({hip, chest, "nosuch", "b"});
    EXPECT_EQ(LOG,
              "info: Attempted to create a circular link: chest:c <==> hip:a while importing Poser File\n"
              "info: Could not find property \"nosuch\" on node \"hip\" for linkParms while importing "
              "Poser File");
    EXPECT_EQ(a->getLinkProperty(), nullptr);
}

TEST_F(ErcLinks, EvaluationStaysBoundedWhateverTheGraph) {
    // Sixty levels, each driven twice by the next: one computation per property, not one per path.
    std::vector<std::unique_ptr<OvFloatProperty>> p;
    for (int i = 0; i <= 100000; ++i)
        p.emplace_back(new OvFloatProperty(QString(), 1));
    for (int i = 0; i < 60; ++i) {
        p[size_t(i)]->insertController(new OvERCLink(OvERCLink::DeltaAdd, p[size_t(i) + 1].get(), 1, 0));
        p[size_t(i)]->insertController(new OvERCLink(OvERCLink::Times, p[size_t(i) + 1].get(), 1, 0));
    }
    // (1 + 1) * 1 = 2, (1 + 2) * 2 = 6, (1 + 6) * 6 = 42 ... beyond any float long before the top.
    EXPECT_FLOAT_EQ(p[58]->getValueAt(0), 6);
    EXPECT_FLOAT_EQ(p[57]->getValueAt(0), 42);
    EXPECT_TRUE(std::isinf(p[0]->getValueAt(0)));

    // A chain far longer than any rig is cut; so is a cycle that slipped in.
    for (size_t i = 61; i < p.size() - 1; ++i)
        p[i]->insertController(new OvERCLink(OvERCLink::Plus, p[i + 1].get(), 1, 0));
    EXPECT_FLOAT_EQ(p[61]->getValueAt(0), OvNumericProperty::MaxDriveDepth + 2);
    EXPECT_TRUE(OvPZ3Importer::wouldCreateCycle(p[61].get(), p.back().get()));
    EXPECT_FALSE(OvPZ3Importer::wouldCreateCycle(p.back().get(), p[61].get()));
    // The bottom of the ladder linked back to the level above: each is cut where it comes back.
    p[60]->linkTo(p[59].get());
    EXPECT_FLOAT_EQ(p[59]->getValueAt(0), 2);
    EXPECT_FLOAT_EQ(p[60]->getValueAt(0), 2);
}

} // namespace
