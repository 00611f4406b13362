// Animation keys, channel groups and cameras, read through real files: key tracks and their
// interpolation, transform keys per object (units, camera conventions, rotation order, the limits
// question), groups in file order, the viewed camera and focal conversion, and the host's --frame
// and --answer.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvLight.h>
#include <OvMainWindow.h>
#include <OvViewport.h>
#include <QProcess>
#include <cmath>

namespace {

using Keys = PoserTest;

constexpr int Step = 160; // time units per frame at 30 frames per second

// A prop "box" (one triangle) whose channels section holds `channels`.
QByteArray propWith(const QByteArray &channels, const QByteArray &more = "") {
    return "prop box\n{\ngeomCustom\n{\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n}\n" + more + "channels\n{\n" +
           channels + "}\n}\n";
}
// One channel line with a keys section of `keys`, and a body line before it.
QByteArray keyed(const QByteArray &channel, const QByteArray &keys, const QByteArray &body = "") {
    return channel + "\n{\n" + body + "keys\n{\n" + keys + "}\n}\n";
}
QString keysOf(const OvProperty *p) {
    QStringList out;
    auto *f = dynamic_cast<const OvFloatProperty *>(p);
    for (int i = 0; p && i < p->getNumKeys(); ++i)
        out << QStringLiteral("%1:%2:%3")
                   .arg(p->getKeyTime(i) / Step)
                   .arg(f ? double(f->getKeyValue(i)) : -1.0)
                   .arg(int(p->getKeyInterpolation(i)));
    return out.join(' ');
}

TEST(KeyTrack, EvaluatesEachInterpolationAndKeepsOneKeyPerTimeInOrder) {
    OvFloatProperty p("x", 7);
    EXPECT_EQ(p.getValueAt(100), 7) << "no keys: the value";
    p.setValue(20, 5.0f, OvInterpolation::Constant);
    p.setValue(0, 1.0f, OvInterpolation::Linear); // out of order
    p.setValue(10, 9.0f);
    p.setValue(10, 3.0f, OvInterpolation::Linear); // same time: replaces
    p.setValue(30, 5.0f);
    EXPECT_EQ(keysOf(&p), "0:1:0 0:3:0 0:5:1 0:5:2") << "times 0, 10, 20, 30 as frames of 160 units";
    ASSERT_EQ(p.getNumKeys(), 4);
    const struct {
        int time;
        float value;
    } rows[] = {{-5, 1}, {0, 1}, {5, 2}, {10, 3}, {15, 4}, {20, 5}, {25, 5}, {30, 5}, {99, 5}};
    for (auto r : rows)
        EXPECT_FLOAT_EQ(p.getValueAt(r.time), r.value) << "at " << r.time;
    // A spline passes through its keys and bends between them.
    OvFloatProperty s("s");
    for (int t : {0, 10, 20})
        s.setValue(t, t == 10 ? 10.0f : 0.0f);
    EXPECT_FLOAT_EQ(s.getValueAt(10), 10);
    EXPECT_GT(s.getValueAt(5), 5.0f) << "above the straight line towards the peak";
    s.setIsClamped(true);
    s.setMax(4);
    EXPECT_FLOAT_EQ(s.getValueAt(10), 4) << "a clamped dial holds its keys within its limits";
    s.deleteKey(1);
    EXPECT_FLOAT_EQ(s.getValueAt(10), 0);
}

TEST_F(Keys, KeyLinesGiveKeysWithTheirInterpolationAndBadKeysAreDroppedWithAMessage) {
    const QByteArray keys = "k 0 10\nk 10 20\nlin\ncon\nk 5 1\ncon\nk 30 7\nsm 3\nk 3\n"
                            "k -2 1\nk 40 nan\nk 50 1e39\nk 5 2\n";
    ASSERT_TRUE(readOk("k.pz3", propWith(keyed("valueParm Dial", keys))));
    // Key 5 is given twice: the second (pending until the section closes, so spline) wins. Text that
    // is no number reads as 0, as everywhere in these files; a number beyond float is refused.
    EXPECT_EQ(keysOf(labelled("box")->findProperty("Dial")), "0:10:2 5:2:2 10:20:2 30:7:2 40:0:2")
        << "keys of value dials take the host's default interpolation";
    const QString log = logText();
    EXPECT_TRUE(log.contains("Not enough values specified to define a key on line 24 in"))
        << log.toStdString();
    EXPECT_TRUE(log.contains("Key frame -2 lies outside")) << log.toStdString();
    EXPECT_EQ(log.count("no finite number"), 1) << log.toStdString();
}

TEST_F(Keys, TransformKeysGatherPerFrameAndLandInHostUnitsWithTheirInterpolation) {
    const QByteArray channels = keyed("rotateY yrot", "k 0 5\nk 20 6\n") +
                                keyed("rotateX xrot", "k 0 1\nk 10 2\nlin\n") +
                                keyed("translateY ytran", "k 10 1\ncon\n") + keyed("scale scale", "k 0 2\n");
    ASSERT_TRUE(readOk("t.pz3", propWith(channels)));
    OvNode *box = labelled("box");
    EXPECT_EQ(keysOf(box->getXRotControl()), "0:1:2 10:2:0");
    EXPECT_EQ(keysOf(box->getYRotControl()), "0:5:2 20:6:2");
    EXPECT_EQ(keysOf(box->getYPosControl()), "10:243.84:1");
    EXPECT_EQ(keysOf(box->getScaleControl()), "0:2:2");
    EXPECT_EQ(box->getRotationOrder(), OvRotationOrder::YXZ) << "the order of the rotation channels";
}

TEST_F(Keys, LightColourKeysSetOneComponentAndIntensityKeysAreFloatKeys) {
    const QByteArray light = "light L\n{\nchannels\n{\n" +
                             keyed("kdGreen g", "k 0 0.5\nk 10 1.2\nk 20 -0.1\n") +
                             keyed("kdRed r", "k 10 0\n") + keyed("kdIntensity i", "k 4 0.25\n") + "}\n}\n";
    ASSERT_TRUE(readOk("l.lt2", light));
    auto *l = qobject_cast<OvLight *>(scene()->getNode(0));
    ASSERT_TRUE(l);
    OvColorProperty *c = l->getColorControl();
    ASSERT_EQ(c->getNumKeys(), 3);
    EXPECT_EQ(c->getKeyValue(0), QColor(255, 127, 255));
    EXPECT_EQ(c->getKeyValue(1), QColor(0, 255, 255)) << "the red key joins the green one of its frame";
    EXPECT_EQ(c->getKeyValue(2).green(), 0);
    EXPECT_EQ(keysOf(l->getIntensityControl()), "4:0.25:2");
}

TEST_F(Keys, CameraKeysTakeThePoserCameraConventions) {
    const struct {
        const char *what;
        QByteArray version, channels;
        OvVec3 expected;
    } rows[] = {
        {"at rest", "4", keyed("translateZ dollyZ", "k 0 0\n"), {0, 0, 277.98f}},
        {"dollied", "4", keyed("translateX dollyX", "k 0 1\n"), {243.84f, 0, 277.98f}},
        {"turned about Y",
         "4",
         keyed("translateZ dollyZ", "k 0 0\n") + keyed("rotateY yrot", "k 0 90\n"),
         {277.98f, 0, 0}},
        {"old files turn the other way",
         "3.5",
         keyed("translateZ dollyZ", "k 0 0\n") + keyed("rotateY yrot", "k 0 90\n"),
         {-277.98f, 0, 0}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        OvApp::reset();
        ASSERT_TRUE(readOk("c.cm2", "version\n{\nnumber " + row.version + "\n}\ncamera C\n{\nchannels\n{\n" +
                                        row.channels + "}\n}\n"));
        OvNode *c = scene()->getNode(0);
        const OvFloatProperty *pos[3] = {c->getXPosControl(), c->getYPosControl(), c->getZPosControl()};
        for (int i = 0; i < 3; ++i)
            if (pos[i]->getNumKeys() > 0) {
                EXPECT_NEAR(pos[i]->getValueAt(0), row.expected[i], 0.01) << "axis " << i;
            }
    }
}

// Reaches the importer's key records, as a hand pose would set them up.
struct HandImporter : OvPZ3Importer {
    void applyHandKeys(OvNode *node, Pz3HandSide hand, Pz3HandSide file) {
        m_handSide = hand;
        m_fileHandSide = file;
        for (int type : {RotateX, RotateY, RotateZ}) {
            m_curChannelType = type;
            addTransformKey(0, 10.0f, 1);
        }
        applyTransformKeys(node, m_keys, 4.0f);
    }
};

TEST_F(Keys, AHandPoseForTheOtherHandMirrorsItsTurnsAndTwists) {
    for (auto file : {Pz3HandSide::Right, Pz3HandSide::Left}) {
        OvNode node;
        HandImporter().applyHandKeys(&node, Pz3HandSide::Right, file);
        const float mirrored = file == Pz3HandSide::Left ? -10.0f : 10.0f;
        EXPECT_EQ(keysOf(node.getXRotControl()), "0:10:2");
        EXPECT_FLOAT_EQ(node.getYRotControl()->getKeyValue(0), mirrored);
        EXPECT_FLOAT_EQ(node.getZRotControl()->getKeyValue(0), mirrored);
    }
}

TEST_F(Keys, APoseKeysFromTheCurrentFrameAndMayLengthenThePlayRange) {
    const QByteArray pose =
        "actor hip:1\n{\nchannels\n{\n" + keyed("rotateX xrot", "k 0 5\nk 10 6\n") + "}\n}\n";
    for (OvApp::Answer answer : {OvApp::AnswerDefault, OvApp::AnswerYes}) {
        OvApp::reset();
        OvApp::setHeadlessAnswer(answer);
        ASSERT_TRUE(readOk("fig.cr2", "actor hip:1\n{\n}\n"));
        scene()->setPrimarySelection(skeleton("fig"));
        scene()->setTime(30 * Step);
        ASSERT_TRUE(readOk("p.pz2", pose));
        OvNode *hip = skeleton("fig")->findBone("hip");
        EXPECT_EQ(keysOf(hip->getXRotControl()), "30:5:2 40:6:2");
        const int end = answer == OvApp::AnswerYes ? 40 * Step : 30 * Step;
        EXPECT_EQ(scene()->getPlayRange(), OvTimeRange(0, end));
        EXPECT_EQ(scene()->getAnimRange(), OvTimeRange(0, end));
        EXPECT_TRUE(logText().contains("asked \"Add Frames to Play Range?\"")) << logText().toStdString();
    }
}

// An arm (clamped to -10..10) keyed beyond its limit, twice, in a file read with a main window.
class LimitsQuestion : public Keys {
protected:
    QByteArray file =
        propWith(keyed("rotateZ zrot", "k 0 30\nk 5 -40\n", "min -10\nmax 10\nforceLimits 1\n"));
    OvMainWindow window;
};

TEST_F(LimitsQuestion, IsAskedOnceAndTheAnswerDecidesTheLimits) {
    for (const char *answer : {"Yes", "No"}) {
        SCOPED_TRACE(answer);
        OvApp::reset();
        OvApp::setInterface(&window);
        DialogAnswerer answerer;
        answerer.pressButton(answer);
        ASSERT_TRUE(readOk("q.pz3", file));
        EXPECT_TRUE(answerer.failures().isEmpty()) << answerer.failures().join('\n').toStdString();
        ASSERT_EQ(answerer.seen().size(), 1) << "asked once per import";
        EXPECT_TRUE(answerer.seen()[0].text.contains("Turn limits off?"));
        const OvFloatProperty *z = labelled("box")->getZRotControl();
        const bool yes = QByteArray(answer) == "Yes";
        EXPECT_EQ(z->isClamped(), !yes);
        EXPECT_EQ(keysOf(z), "0:30:2 5:-40:2") << "the keys are kept either way";
        EXPECT_FLOAT_EQ(z->getValueAt(0), yes ? 30 : 10);
        EXPECT_TRUE(logText().contains(yes ? "answered yes" : "answered no")) << logText().toStdString();
    }
    OvApp::setInterface(nullptr);
}

TEST_F(LimitsQuestion, WithoutAWindowTheHostAnswersAndSaysSo) {
    ASSERT_TRUE(readOk("q.pz3", file));
    EXPECT_TRUE(labelled("box")->getZRotControl()->isClamped());
    EXPECT_TRUE(logText().contains("answered no (the host's default")) << logText().toStdString();
    OvApp::reset();
    OvApp::setHeadlessAnswer(OvApp::AnswerYes);
    ASSERT_TRUE(readOk("q.pz3", file));
    EXPECT_FALSE(labelled("box")->getZRotControl()->isClamped());
}

TEST_F(Keys, ChannelGroupsArrangeThePropertiesInFileOrder) {
    const QByteArray groups =
        "groups\n{\ngroupNode Transforms\n{\nparmNode yRotate\n}\n"
        "groupNode Face/Head\n{\ncollapsed 1\nparmNode c\nparmNode a\nparmNode missing\nparmNode b\n"
        "groupNode Inner\n{\ncollapsed 0.0\nparmNode d\n}\n}\n"
        "groupNode\n{\nparmNode a\n}\n}\n";
    QByteArray dials;
    for (const char *d : {"a", "b", "c", "d"})
        dials += "valueParm " + QByteArray(d) + "\n{\ninitValue 0\n}\n";
    ASSERT_TRUE(readOk("g.pz3", propWith(dials + groups)));
    OvNode *box = labelled("box");
    const OvPropertyGroupTree *tree = box->findPropertyGroups();
    ASSERT_TRUE(tree);
    EXPECT_EQ(box->getYRotControl()->getPath(), "General/Transforms");
    const OvPropertyGroup *face = tree->findChild("Face-Head");
    ASSERT_TRUE(face);
    EXPECT_EQ(face->propertyNames(), QStringList({"c", "a", "b"}));
    EXPECT_TRUE(face->isCollapsed());
    const OvPropertyGroup *inner = tree->findChild("Face-Head/Inner");
    ASSERT_TRUE(inner);
    EXPECT_FALSE(inner->isCollapsed());
    EXPECT_EQ(box->findProperty("d")->getPath(), "Face-Head/Inner");
    EXPECT_EQ(tree->root().getNumChildren(), 2) << "General and Face-Head at the top";
    EXPECT_TRUE(logText().contains("No name specified for groupNode on line")) << logText().toStdString();
    EXPECT_FALSE(readOk("g2.pz3", propWith("groups\n{\ngroupNode G\n{\nparmNode\n}\n}\n")))
        << "a parmNode without a name stops the import";
}

class CameraSteps : public Keys {
protected:
    void SetUp() override {
        Keys::SetUp();
        OvApp::setInterface(&window);
    }
    void TearDown() override {
        OvApp::setInterface(nullptr);
        Keys::TearDown();
    }
    OvBasicCamera *shown() {
        return window.getViewportMgr()->getActiveViewport()->get3DViewport()->getCamera();
    }
    OvMainWindow window;
};

TEST_F(CameraSteps, TheDocSectionShowsTheNamedCamera) {
    const QByteArray camera =
        "camera MAIN_CAMERA\n{\nchannels\n{\n" + keyed("focal focal", "k 0 35\nk 10 50\n") + "}\n}\n";
    ASSERT_TRUE(readOk("d.pz3", camera + "doc\n{\nuseCamera TOP_CAMERA\n}\n"));
    ASSERT_TRUE(shown());
    EXPECT_EQ(shown()->getCameraType(), 4);
    ASSERT_TRUE(readOk(
        "d.pz3", camera + "doc\n{\nuseCamera MAIN_CAMERA\nuseCamera SHADOW_CAM_LITE_1\nuseCamera\n}\n"));
    EXPECT_EQ(shown(), scene()->findCamera("MAIN_CAMERA"));
    EXPECT_TRUE(logText().contains("No active camera specified on line")) << logText().toStdString();
    // Perspective focal lengths are converted once the file is read.
    EXPECT_EQ(keysOf(shown()->getFocalLengthChannel()), "0:51.191:2 10:73.13:2");
}

TEST_F(CameraSteps, ABodyPartCameraLeavesItsPartAndMeasuresFromIt) {
    const QByteArray figure =
        "actor head:1\n{\nchannels\n{\n" + keyed("translateY ytran", "k 0 1\n") + "}\n}\n";
    ASSERT_TRUE(readOk("f.pz3", figure + "camera FACE_CAMERA\n{\nparent head:1\nchannels\n{\n" +
                                    keyed("translateZ dollyZ", "k 0 1\n") + "}\n}\n"));
    auto *camera = scene()->findCamera("FACE_CAMERA");
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->getNodeParent(), nullptr);
    // The head stands 243.84 up; the camera at (0, 0, 243.84 + 277.98).
    EXPECT_NEAR(camera->getFocalDistance(), std::hypot(243.84, 243.84 + 277.98), 0.01);
}

TEST_F(Keys, AMillionKeysOnOneChannelGivenBackwardsEndSorted) {
    QByteArray keys;
    keys.reserve(16 << 20);
    for (int f = 999999; f >= 0; --f)
        keys += "k " + QByteArray::number(f) + " " + QByteArray::number(f % 7) + "\n";
    ASSERT_TRUE(readOk("m.pz3", propWith(keyed("rotateX xrot", keys))));
    const OvFloatProperty *x = labelled("box")->getXRotControl();
    ASSERT_EQ(x->getNumKeys(), 1000000);
    EXPECT_EQ(x->getKeyTime(0), 0);
    EXPECT_EQ(x->getKeyTime(999999), 999999 * Step);
    EXPECT_FLOAT_EQ(x->getValueAt(999998 * Step), 999998 % 7);
}

// The command-line host on the bundled studio scene.
QString runHost(const QStringList &args) {
    QProcess process;
    process.start(OV_BIN_DIR "/ovimport", args);
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
}

TEST(Host, FrameShowsTheStudioAnimationAndAnswerAnswersTheQuestion) {
    const QString studio = OV_SOURCE_DIR "/examples/poser/Runtime/libraries/scene/studio.pz3";
    const QString content = OV_SOURCE_DIR "/examples/poser";
    const struct {
        const char *frame, *arm, *color, *dolly;
    } rows[] = {{"0", "= 0,", "#ffff33", "= 1009.5,"},
                {"15", "= 100,", "#99ff99", "= 864.49"},
                {"30", "= 0,", "#33ffff", "= 719.48"}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.frame);
        const QString tree = runHost({studio, "--content", content, "--frame", row.frame});
        const QString arm = tree.section("OvBone \"rArm\"", 1).section("object", 0, 0);
        EXPECT_TRUE(arm.contains(QString("zRotate (OvFloatProperty) ") + row.arm)) << arm.toStdString();
        EXPECT_TRUE(tree.contains(QString("Color (OvColorProperty) = ") + row.color));
        EXPECT_TRUE(tree.contains(QString("zTran (OvFloatProperty) ") + row.dolly)) << tree.toStdString();
    }
    QTemporaryDir dir;
    const QString file = writeFile(
        dir, "q.pz3", propWith(keyed("rotateZ zrot", "k 0 30\n", "min -10\nmax 10\nforceLimits 1\n")));
    for (const char *answer : {"yes", "no", "cancel"}) {
        const QString out = runHost({file, "--answer", answer, "--frame", "0"});
        EXPECT_TRUE(out.contains(QString("asked \"Turn limits off?\", answered ") + answer))
            << out.toStdString();
        EXPECT_EQ(out.contains("zRotate (OvFloatProperty) = 30,"), QByteArray(answer) == "yes")
            << out.toStdString();
    }
}

} // namespace
