// Joint parameters of figure bones: the channel lines that open them, the keywords of their bodies
// and the raw sphere matrices, read through whole figure files.
#include "PoserTest.h"

#include <OvModifiers.h>
#include <functional>

namespace {

QStringList g_messages; // Qt debug and warning output of the current test

void collectMessage(QtMsgType type, const QMessageLogContext &, const QString &message) {
    if (type == QtDebugMsg || type == QtWarningMsg)
        g_messages.append(message);
}

class PoserJoints : public PoserTest {
protected:
    void SetUp() override {
        PoserTest::SetUp();
        g_messages.clear();
        qInstallMessageHandler(collectMessage);
    }
    void TearDown() override {
        qInstallMessageHandler(nullptr);
        PoserTest::TearDown();
    }

    // A figure of three bones whose rShldr has `channels` as its channels section; `after` follows
    // the channels section inside that actor. Lines of the channels section start on line 17.
    unsigned readFigure(const QByteArray &channels, const QByteArray &after = QByteArray()) {
        return read("fig.cr2", "* no geometry\nactor hip:1\n{\n}\nactor rShldr:1\n{\nparent hip:1\n}\n"
                               "actor rForeArm:1\n{\nparent rShldr:1\n}\nactor rShldr:1\n{\nchannels\n{\n" +
                                   channels + "}\n" + after + "}\n");
    }
    OvBone *bone(const char *name) const {
        OvSkeleton *figure = skeleton("fig");
        return figure ? figure->findBone(name) : nullptr;
    }
    OvPoserJoint *joint(const char *boneName = "rShldr") const {
        OvBone *b = bone(boneName);
        return b ? b->getObject()->findModifier<OvPoserJoint>() : nullptr;
    }
    // The parameter of that name on rShldr's joint, as a P (null when missing or of another kind).
    template <class P = OvPoserJointParam> P *param(const char *name) const {
        OvPoserJoint *j = joint();
        return j ? dynamic_cast<P *>(j->findJointParam(name)) : nullptr;
    }
    static bool logged(const QString &text) { return logText().contains(text); }
    // Where the log says a message of the file read last comes from.
    QString at(int line) const { return QStringLiteral(" on line %1 in %2").arg(line).arg(path); }
    static bool messaged(const QString &text) { return g_messages.contains(text); }
};

constexpr unsigned Stopped = 0x62;

// The usual layout of raw sphere matrices: a block of two blocks of four rows.
const QByteArray kSphereMats = "sphereMatsRaw\n{\n{\n1 0 0 0\n0 2 0 0\n0 0 3 0\n0.5 0.25 0 1\n}\n"
                               "{\n4 0 0 0\n0 5 0 0\n0 0 6 0 extra\n1 1 1 1\n}\n}\n";

TEST_F(PoserJoints, BodyKeywords) {
    using Check = std::function<void(OvPoserJointParam *)>;
    auto bend = [](OvPoserJointParam *p) { return dynamic_cast<OvPoserBendParam *>(p); };
    auto twist = [](OvPoserJointParam *p) { return dynamic_cast<OvPoserTwistParam *>(p); };
    const struct {
        const char *channel; // the channel line, named "p"
        const char *body;    // the lines of its body (its first line is line 19)
        unsigned result;
        const char *message; // expected in the log (ending "on line 19 in fig.cr2") or as a Qt warning
        Check check;
    } cases[] = {
        {"jointX p", "angles 0 90 180 270", 0, nullptr,
         [&](auto *p) {
             EXPECT_EQ(bend(p)->getAngle(0), 0.0f);
             EXPECT_EQ(bend(p)->getAngle(1), 1.5707961f);
             EXPECT_EQ(bend(p)->getAngle(2), 3.1415923f);
             EXPECT_EQ(bend(p)->getAngle(3), 4.7123885f);
             EXPECT_TRUE(bend(p)->getApplyAngles());
         }},
        {"jointX p", "posBulgeLeft 0.5\nposBulgeRight 1\nnegBulgeLeft -1\nnegBulgeRight 2", 0, nullptr,
         [&](auto *p) {
             EXPECT_EQ(bend(p)->getPosLeftBulge(), 121.92f);
             EXPECT_EQ(bend(p)->getPosRightBulge(), 243.84f);
             EXPECT_EQ(bend(p)->getNegLeftBulge(), -243.84f);
             EXPECT_EQ(bend(p)->getNegRightBulge(), 487.68f);
             EXPECT_FALSE(bend(p)->getApplyAngles() || bend(p)->getApplyBulges());
         }},
        {"jointX p", "doBulge 2", 0, nullptr, [&](auto *p) { EXPECT_TRUE(bend(p)->getApplyBulges()); }},
        {"jointX p", "doBulge 1\ndoBulge 0", 0, nullptr,
         [&](auto *p) { EXPECT_FALSE(bend(p)->getApplyBulges()); }},
        {"twistY p", "startPt 0.25", 0, nullptr,
         [&](auto *p) {
             EXPECT_EQ(twist(p)->getStart(), 60.96f);
             EXPECT_FALSE(twist(p)->getApplyBlend()) << "only endPt turns the blend on";
         }},
        {"twistY p", "endPt -0.5", 0, nullptr,
         [&](auto *p) { EXPECT_TRUE(twist(p)->getEnd() == -121.92f && twist(p)->getApplyBlend()); }},
        {"smoothScaleZ p", "smoothZones 0 0.5 1 -1", 0, nullptr,
         [&](auto *p) {
             auto *s = dynamic_cast<OvPoserSmoothScale *>(p);
             EXPECT_TRUE(s->getSmoothZone(0) == 0 && s->getSmoothZone(1) == 121.92f &&
                         s->getSmoothZone(2) == 243.84f && s->getSmoothZone(3) == -243.84f);
         }},
        {"twistY p", "flipped 0 extra", 0, nullptr, [](auto *p) { EXPECT_TRUE(p->isFlipped()); }},
        {"jointX p", "center 0.1 0.2 0.3\nsomethingNew 1", 0, nullptr,
         [&](auto *p) { EXPECT_FALSE(p->isFlipped() || bend(p)->getApplyAngles()); }},
        // Keywords of another kind of parameter: a warning, nothing set, the reading goes on.
        {"jointX p", "startPt 1", 0, "Wrong type of joint parameter for tag 'startPt' on line 19!",
         [&](auto *p) { EXPECT_TRUE(bend(p)); }},
        {"jointX p", "endPt 1", 0, "Wrong type of joint parameter for tag 'endPt' on line 19!",
         [&](auto *p) { EXPECT_TRUE(bend(p)); }},
        {"twistY p", "angles 1 2 3 4", 0, "Wrong type of joint parameter for tag 'angles' on line 19!",
         [&](auto *p) { EXPECT_TRUE(twist(p)); }},
        {"twistY p", "negBulgeRight 1", 0,
         "Wrong type of joint parameter for tag 'negBulgeRight' on line 19!",
         [&](auto *p) { EXPECT_TRUE(twist(p)); }},
        {"twistY p", "doBulge 1", 0, "Wrong type of joint parameter for tag 'doBulge' on line 19!",
         [&](auto *p) { EXPECT_TRUE(twist(p)); }},
        {"jointX p", "smoothZones 1 2 3 4", 0,
         "Wrong type of joint parameter for tag 'smoothZones' on line 19!",
         [&](auto *p) { EXPECT_TRUE(bend(p)); }},
        // Too few values stop the import, whatever the parameter's kind.
        {"jointX p", "center 0.1", Stopped, "Not enough parameters specified for 'center'", nullptr},
        {"jointX p", "angles 1 2 3", Stopped, "Not enough joint parameter angles specified", nullptr},
        {"jointX p", "doBulge", Stopped, "No Bulge setting specified", nullptr},
        {"jointX p", "posBulgeLeft", Stopped, "No posBulgeLeft value specified", nullptr},
        {"jointX p", "negBulgeRight", Stopped, "No negBulgeRight value specified", nullptr},
        {"jointX p", "startPt", Stopped, "Not enough parameters specified", nullptr},
        {"twistY p", "smoothZones 1 2 3", Stopped, "Not enough parameters specified", nullptr},
        {"twistY p", "otherActor", Stopped, "No actor specified for otherActor", nullptr},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.channel) + " / " + c.body);
        OvApp::reset();
        g_messages.clear();
        ASSERT_EQ(readFigure(QByteArray(c.channel) + "\n{\n" + c.body + "\n}\n"), c.result);
        if (c.message) {
            const QString text = QString::fromLatin1(c.message);
            EXPECT_TRUE(c.result == Stopped ? logged("error: " + text + at(19)) : messaged(text))
                << logText().toStdString() << g_messages.join('\n').toStdString();
        } else {
            EXPECT_TRUE(logText().isEmpty() && g_messages.isEmpty()) << logText().toStdString();
        }
        if (c.check) {
            OvPoserJointParam *p = param("p");
            ASSERT_TRUE(p);
            c.check(p);
        }
    }
}

TEST_F(PoserJoints, ChannelLinesNameKindAxisAndDriver) {
    ASSERT_EQ(readFigure("jointX rShldr\n{\n}\ntwistY rShldr_rForeArm\n{\notherActor rForeArm:1\n"
                         "otherActor hip:1\n}\nsmoothScaleZ rShldr_hip\n{\notherActor nobody:1\n}\n"
                         "jointZ rShldr\n{\nangles 1 2 3 4\n}\n"),
              0u);
    OvBone *shoulder = bone("rShldr");
    auto *bend = param<OvPoserBendParam>("rShldr");
    auto *twist = param<OvPoserTwistParam>("rShldr_rForeArm");
    auto *smooth = param<OvPoserSmoothScale>("rShldr_hip");
    ASSERT_TRUE(bend && twist && smooth);
    EXPECT_EQ(joint()->getNumParams(), 3);
    EXPECT_EQ(importer.findNodeItem(shoulder)->jointParams,
              (QList<OvPoserJointParam *>{bend, twist, smooth}));
    EXPECT_EQ(bend->getDriver(), shoulder) << "a name without '_' is driven by its own bone";
    EXPECT_EQ(twist->getDriver(), bone("rForeArm")) << "the first otherActor drives, the second is ignored";
    EXPECT_EQ(smooth->getDriver(), nullptr);
    EXPECT_TRUE(logged("info: No bone found for otherActor" + at(27))) << logText().toStdString();
    EXPECT_EQ(twist->getAxis(), OvPoserJointParam::AxisY);
    EXPECT_EQ(smooth->getAxis(), OvPoserJointParam::AxisZ);
    // The same name again finds the parameter made first: jointZ re-aims the bend.
    EXPECT_EQ(bend->getAxis(), OvPoserJointParam::AxisZ);
    EXPECT_TRUE(bend->getApplyAngles());
}

TEST_F(PoserJoints, AnExistingNameKeepsItsKind) {
    ASSERT_EQ(readFigure("jointX p\n{\n}\ntwistY p\n{\nstartPt 1\n}\n"), 0u);
    EXPECT_EQ(joint()->getNumParams(), 1);
    EXPECT_TRUE(param<OvPoserBendParam>("p"));
    EXPECT_TRUE(messaged("Wrong type of joint parameter for tag 'startPt' on line 22!"));
}

TEST_F(PoserJoints, ChannelLinesThatMakeNoParameter) {
    const struct {
        QByteArray channels;
        unsigned result;
        const char *log;     // expected in the log, on the channel line
        const char *message; // expected as Qt output
    } cases[] = {
        {"jointY\n{\n}\n", Stopped, "error: No joint parameter name was specified", nullptr},
        {"curve\n{\n}\n", Stopped, "error: No curve parameter name was specified", nullptr},
        // A curve follows a twist; without one the whole section is skipped, braces and all.
        {"curve c\n{\nflipped\nsphereMatsRaw\n{\n}\n}\n", 0, nullptr,
         "No twist parameter found for bone when adding curve!"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.channels.toStdString());
        OvApp::reset();
        g_messages.clear();
        ASSERT_EQ(readFigure(c.channels, "hidden 1\n"), c.result);
        if (c.log) {
            EXPECT_TRUE(logged(QString(c.log) + at(17))) << logText().toStdString();
        }
        if (c.message) {
            EXPECT_TRUE(messaged(c.message) && bone("rShldr")->isHidden());
        }
        EXPECT_EQ(joint()->getNumParams(), 0);
    }

    // A prop is no bone: no parameter, and the body is read as a nested channels section.
    OvApp::reset();
    g_messages.clear();
    ASSERT_TRUE(readOk("box.pp2", "prop box\n{\nchannels\n{\ntwistX t\n{\nflipped\n}\n}\nhidden 1\n}\n"));
    EXPECT_TRUE(messaged("Wrong type of node for joint parameter on line 5!"))
        << g_messages.join('\n').toStdString();
    EXPECT_TRUE(labelled("box")->isHidden());
}

TEST_F(PoserJoints, CurvesFollowTheFirstTwist) {
    const struct {
        const char *twist;
        int axis;
    } cases[] = {{"twistX", 5}, {"twistY", 4}, {"twistZ", 3}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.twist);
        OvApp::reset();
        ASSERT_EQ(readFigure(QByteArray(c.twist) + " t\n{\n}\ntwistZ u\n{\n}\ncurve c\n{\nflipped\n}\n"), 0u);
        auto *curve = param<OvPoserCurve>("c");
        ASSERT_TRUE(curve);
        EXPECT_EQ(int(curve->getAxis()), c.axis);
        EXPECT_EQ(curve->getBone(), bone("rShldr"));
        EXPECT_EQ(curve->getDriver(), nullptr) << "a curve's channel sets no driver";
        EXPECT_TRUE(curve->isFlipped()) << "its body is read";
    }
}

TEST_F(PoserJoints, SphereMatricesInTheUsualLayout) {
    // After the matrices the joint section, the channels section and the actor go on as written.
    ASSERT_EQ(readFigure("jointX p\n{\n" + kSphereMats + "flipped\n}\ntwistY t\n{\n}\n", "hidden 1\n"), 0u);
    auto *p = param("p");
    ASSERT_TRUE(p && p->getApplyMatrices());
    const float first[16] = {1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 3, 0, 0.5f, 0.25f, 0, 1};
    const float second[16] = {4, 0, 0, 0, 0, 5, 0, 0, 0, 0, 6, 0, 1, 1, 1, 1};
    for (int i = 0; i < 16; ++i) {
        const float unit = i % 4 == 3 ? 1.0f : 243.84f; // the homogeneous column is not scaled
        EXPECT_EQ(p->getFirstMatrix().data()[i], first[i] * unit) << i;
        EXPECT_EQ(p->getSecondMatrix().data()[i], second[i] * unit) << i;
    }
    EXPECT_TRUE(p->isFlipped());
    EXPECT_TRUE(param<OvPoserTwistParam>("t"));
    EXPECT_TRUE(bone("rShldr")->isHidden());
    EXPECT_TRUE(bone("rForeArm")->getNodeParent() == bone("rShldr"));
    EXPECT_TRUE(logText().isEmpty()) << logText().toStdString();
}

TEST_F(PoserJoints, SphereMatricesCutShort) {
    // A '}' that the block did not open closes the joint section: what follows is read as usual.
    ASSERT_EQ(readFigure("jointX p\n{\nsphereMatsRaw\n1 0 0 0\n0 1 0 0\n}\ntwistY t\n{\n}\n", "hidden 1\n"),
              0u);
    EXPECT_TRUE(
        logged("info: sphereMatsRaw ends after 2 of its 8 rows; its sphere matrices are not used" + at(22)))
        << logText().toStdString();
    EXPECT_FALSE(param("p")->getApplyMatrices());
    EXPECT_TRUE(param<OvPoserTwistParam>("t") && bone("rShldr")->isHidden());
    EXPECT_FALSE(logged("Unexpected")) << logText().toStdString();

    // A block that closes early is as short; its own braces stay its own.
    OvApp::reset();
    ASSERT_EQ(readFigure("jointX p\n{\nsphereMatsRaw\n{\n{\n1 0 0 0\n}\n}\nflipped\n}\n", "hidden 1\n"), 0u);
    EXPECT_TRUE(logged("ends after 1 of its 8 rows; its sphere matrices are not used" + at(24)));
    EXPECT_TRUE(param("p")->isFlipped() && !param("p")->getApplyMatrices() && bone("rShldr")->isHidden());

    // The end of the file.
    OvApp::reset();
    path = file("cut.cr2", "* no geometry\nactor hip:1\n{\n}\nactor hip:1\n{\nchannels\n{\njointX p\n{\n"
                           "sphereMatsRaw\n{\n{\n1 0 0 0\n0 1 0 0\n0 0 1 0\n");
    EXPECT_EQ(importer.read(path, OvFileIOSettings()), 0u);
    EXPECT_TRUE(logged("ends after 3 of its 8 rows; its sphere matrices are not used" + at(16)))
        << logText().toStdString();
    EXPECT_TRUE(logged("3 sections still open at the end of file"))
        << "the block's own braces are not counted";
}

TEST(JointParamsCore, MatrixFlagScaleAndJointOwnership) {
    OvMatrix4 identity, zero(false);
    EXPECT_TRUE(identity.get(0, 0) == 1 && identity.get(3, 3) == 1 && identity.get(3, 0) == 0);
    EXPECT_EQ(zero, OvMatrix4(false));
    EXPECT_FALSE(zero == identity);
    identity.set(3, 1, 2);
    identity.scale(10);
    EXPECT_TRUE(identity.get(0, 0) == 10 && identity.get(3, 1) == 20 && identity.get(3, 3) == 1 &&
                identity.get(0, 3) == 0);

    OvPoserJoint joint;
    auto *a = new OvPoserBendParam;
    auto *b = new OvPoserTwistParam;
    a->setName("a");
    b->setName("b");
    joint.addJointParam(a);
    joint.addJointParam(b);
    EXPECT_TRUE(joint.getNumParams() == 2 && joint.getParam(0) == a && joint.getParam(1) == b);
    EXPECT_TRUE(joint.findJointParam("b") == b && !joint.findJointParam("c"));
    EXPECT_STREQ(b->className(), "OvPoserTwistParam");
}

} // namespace
