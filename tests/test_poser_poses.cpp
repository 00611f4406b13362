// Poses onto the selected figure: the node dialog and the hand question, the add-frames question,
// one undo step per pose or set and what undo puts back, and the host's runs of several files.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvLight.h>
#include <OvMainWindow.h>
#include <OvMorph.h>
#include <OvNodeDlg.h>
#include <OvUndoStackHold.h>
#include <QApplication>
#include <QDialogButtonBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <SceneDump.h>

namespace {

constexpr int Step = 160; // time units per frame

// A figure "fig": hip with both hands below it, and a value dial "wave" on the figure.
const QByteArray kFigure =
    "actor hip:1\n{\n}\nactor lHand:1\n{\nparent hip:1\n}\nactor rHand:1\n{\nparent hip:1\n}\n"
    "actor BODY:1\n{\nchannels\n{\nvalueParm wave\n{\nmin 0\nmax 1\nkeys\n{\nk 0 0\n}\n}\n}\n}\n";

QByteArray channels(const QByteArray &actor, const QByteArray &body) {
    return "actor " + actor + "\n{\nchannels\n{\n" + body + "}\n}\n";
}
QByteArray keyed(const QByteArray &channel, const QByteArray &keys, const QByteArray &more = "") {
    return channel + "\n{\n" + more + "keys\n{\n" + keys + "}\n}\n";
}
// A right-hand pose: bend 10, twist 20, side-side 30.
const QByteArray kRightHand =
    channels("rHand:1", keyed("rotateX xrot", "k 0 10\n") + keyed("rotateY yrot", "k 0 20\n") +
                            keyed("rotateZ zrot", "k 0 30\n"));

QString rotations(const OvNode *n) {
    return QStringLiteral("%1 %2 %3")
        .arg(n->getXRotControl()->getValueAt(0))
        .arg(n->getYRotControl()->getValueAt(0))
        .arg(n->getZRotControl()->getValueAt(0));
}

// The whole scene as the host writes it, without the log.
QString dump() {
    OvApp::clearLog();
    QString text;
    QTextStream out(&text);
    writeSceneJson(out, *OvApp::getScene(), ImportReport());
    return text;
}

// Chooses `node` in the next node dialog, as a user would click it and press OK; `listed` says how
// many nodes the dialog showed, and how many at the top of its tree.
void chooseInNodeDialog(OvNode *node, QString *listed) {
    auto *timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, node, listed] {
        auto *dialog = qobject_cast<OvNodeDlg *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer->stop();
        timer->deleteLater();
        auto *tree = dialog->findChild<QTreeWidget *>();
        int count = 0;
        for (QTreeWidgetItemIterator it(tree); *it; ++it)
            ++count;
        *listed = QStringLiteral("%1 nodes, %2 at the top").arg(count).arg(tree->topLevelItemCount());
        dialog->setNode(node);
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    });
    timer->start(5);
}

class Poses : public PoserTest {
protected:
    void SetUp() override {
        PoserTest::SetUp();
        ASSERT_TRUE(readOk("fig.cr2", kFigure));
        fig = skeleton("fig");
        ASSERT_TRUE(fig && fig->findBone("lHand") && fig->findBone("rHand"));
    }
    void withWindow() { OvApp::setInterface(&window); }
    QString failures(const DialogAnswerer &a) { return a.failures().join('\n'); }

    OvSkeleton *fig = nullptr;
    OvMainWindow window;
};

TEST_F(Poses, SetsNeedNoTargetAndAPoseAsksForOneThatCancelLeavesAlone) {
    withWindow();
    DialogAnswerer answerer;
    EXPECT_TRUE(readOk("l.lt2", "light L1\n{\n}\n"));
    EXPECT_TRUE(readOk("c.cm2", "camera C1\n{\n}\n"));
    EXPECT_TRUE(answerer.seen().isEmpty()) << "sets asked nothing";

    const QByteArray pose = channels("hip:1", keyed("rotateX xrot", "k 0 5\n"));
    answerer.reject();
    const QString before = dump();
    EXPECT_EQ(read("p.pz2", pose), 0u);
    EXPECT_EQ(dump(), before) << "cancelled: nothing changed";
    ASSERT_EQ(answerer.seen().size(), 1);
    EXPECT_EQ(answerer.seen()[0].className + ": " + answerer.seen()[0].title,
              "OvNodeDlg: Select an item from the scene");
    EXPECT_EQ(failures(answerer), "");

    QString listed;
    chooseInNodeDialog(fig, &listed);
    EXPECT_TRUE(readOk("p.pz2", pose));
    EXPECT_EQ(listed, "6 nodes, 3 at the top") << "the figure with its three bones, the light, the camera";
    EXPECT_EQ(scene()->getPrimarySelection(), fig);
    EXPECT_EQ(rotations(fig->findBone("hip")), "5 0 0");
}

TEST_F(Poses, TheHandQuestionPicksTheHandAndTheOtherHandIsMirrored) {
    withWindow();
    scene()->setPrimarySelection(fig);
    const struct {
        const char *press; // a button, "Escape", or a headless answer
        OvApp::Answer headless;
        unsigned result;
        const char *right, *left;
    } rows[] = {{"Right", OvApp::AnswerDefault, 0, "10 20 30", "0 0 0"},
                {"Left", OvApp::AnswerDefault, 0, "0 0 0", "10 -20 -30"},
                {"Cancel", OvApp::AnswerDefault, 100, "0 0 0", "0 0 0"},
                {"Escape", OvApp::AnswerDefault, 100, "0 0 0", "0 0 0"},
                {nullptr, OvApp::AnswerNo, 0, "0 0 0", "10 -20 -30"},
                {nullptr, OvApp::AnswerCancel, 100, "0 0 0", "0 0 0"}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.press ? row.press : "headless");
        while (scene()->undo()) {
        }
        OvApp::setInterface(row.press ? &window : nullptr);
        OvApp::setHeadlessAnswer(row.headless);
        DialogAnswerer answerer;
        if (row.press && QString(row.press) == "Escape")
            answerer.pressEscape();
        else if (row.press)
            answerer.pressButton(row.press);
        EXPECT_EQ(read("h.hd2", kRightHand), row.result);
        EXPECT_EQ(rotations(fig->findBone("rHand")), row.right);
        EXPECT_EQ(rotations(fig->findBone("lHand")), row.left);
        EXPECT_EQ(scene()->undoSteps().size(), row.result == 0 ? 1 : 0) << "a cancelled pose leaves no step";
        if (!row.press)
            continue;
        EXPECT_EQ(failures(answerer), "");
        ASSERT_EQ(answerer.seen().size(), 1);
        const DialogAnswerer::Seen &seen = answerer.seen()[0];
        EXPECT_EQ(seen.title + ": " + seen.text + ": " + seen.buttons.join(", "),
                  "Apply Hand Pose: Which Hand would you like to pose?: Right, Left, Cancel");
    }
}

TEST_F(Poses, WithoutATargetNothingIsAskedOrImported) {
    // No selection and no window: refused before the hand question; with a window, the node
    // dialog comes first and its cancel ends the import there.
    const QString before = dump();
    EXPECT_EQ(read("h.hd2", kRightHand), 0u);
    EXPECT_EQ(logText(),
              "error: Nothing is selected to apply h.hd2 to, and a host without a main window cannot "
              "ask for a node; nothing was imported while importing Poser File");
    EXPECT_EQ(dump(), before);
    withWindow();
    DialogAnswerer answerer;
    answerer.reject();
    EXPECT_EQ(read("h.hd2", kRightHand), 0u);
    EXPECT_EQ(answerer.seen().size(), 1) << "no hand question after the node dialog was cancelled";
    EXPECT_EQ(dump(), before);
    EXPECT_TRUE(scene()->undoSteps().isEmpty());
}

TEST_F(Poses, ActorsTheFigureLacksAreSkippedAndSaid) {
    scene()->setPrimarySelection(fig->findBone("hip")); // a bone stands for its figure
    const QString before = dump();
    EXPECT_TRUE(readOk("p.pz2", channels("tail:1", keyed("rotateX xrot", "k 0 5\nk 90 6\n"))));
    EXPECT_EQ(logText(),
              "info: The selected figure fig has no actor \"tail\"; its section is skipped on line 1 in " +
                  path);
    EXPECT_EQ(dump(), before) << "nothing else changed, not even the ranges";
}

TEST_F(Poses, AddFramesIsAskedWhenThePoseRunsPastThePlayRange) {
    withWindow();
    scene()->setPrimarySelection(fig);
    const QByteArray pose = channels("hip:1", keyed("rotateX xrot", "k 0 1\nk 20 2\n"));
    for (const char *answer : {"Yes", "No"}) {
        SCOPED_TRACE(answer);
        scene()->setTime(10 * Step);
        scene()->setPlayRange(OvTimeRange(2 * Step, 20 * Step));
        scene()->setAnimRange(OvTimeRange(0, 25 * Step));
        DialogAnswerer answerer;
        answerer.pressButton(answer);
        EXPECT_TRUE(readOk("p.pz2", pose));
        EXPECT_EQ(failures(answerer), "");
        const bool yes = QString(answer) == "Yes";
        EXPECT_EQ(scene()->getPlayRange(), OvTimeRange(2 * Step, (yes ? 30 : 20) * Step));
        EXPECT_EQ(scene()->getAnimRange(), OvTimeRange(0, (yes ? 30 : 25) * Step));
        EXPECT_EQ(fig->findBone("hip")->getXRotControl()->getKeyTime(1), 30 * Step) << "keyed from frame 10";
    }
}

TEST_F(Poses, UndoPutsBackEveryValueKeyLimitAndRange) {
    scene()->setPrimarySelection(fig);
    OvApp::setHeadlessAnswer(OvApp::AnswerYes); // lengthen the ranges
    ASSERT_TRUE(readOk("a.pz2", channels("hip:1", keyed("rotateX xrot", "k 0 3\nk 5 4\n"))));
    const QString before = dump();
    const QByteArray pose = channels("hip:1", keyed("rotateX xrot", "k 0 7\nk 60 8\n",
                                                    "initValue 2\nmin -5\nmax 5\nforceLimits 1\n")) +
                            channels("BODY:1", keyed("valueParm wave", "k 10 1\n")) +
                            channels("rHand:1", "rotateY yrot\n{\nhidden 1\n}\n");
    ASSERT_TRUE(readOk("b.pz2", pose));
    ASSERT_NE(dump(), before);
    EXPECT_EQ(scene()->undoSteps(), QStringList({"\"a.pz2\"", "\"b.pz2\""}));
    EXPECT_TRUE(scene()->undo());
    EXPECT_EQ(dump(), before);
    EXPECT_EQ(scene()->undoSteps(), QStringList({"\"a.pz2\""}));
    EXPECT_TRUE(scene()->undo());
    EXPECT_EQ(fig->findBone("hip")->getXRotControl()->getNumKeys(), 0);
    EXPECT_FALSE(scene()->undo()) << "no step left";
}

// A pose on the bundled doll that changes the figure's materials, gives the head a material of its
// own, adds deltas to one morph and replaces the deltas of another.
TEST_F(Poses, UndoPutsBackMaterialsTheirMapsAndMorphDeltas) {
    OvApp::getContentMgr()->addPoserDirectory(OV_SOURCE_DIR "/examples/poser");
    ASSERT_EQ(importer.read(OV_SOURCE_DIR "/examples/poser/Runtime/libraries/character/doll.cr2",
                            OvFileIOSettings()),
              0u);
    OvSkeleton *doll = skeleton("doll");
    ASSERT_NE(doll, nullptr);
    scene()->setPrimarySelection(doll);
    OvShape *head = lastShape(doll->findBone("head"));
    ASSERT_NE(head, nullptr);
    OvMaterial *headSkin = head->findMaterial("skin");
    const QString before = dump();

    const QByteArray smile = "targetGeom Smile\n{\ndeltas\n{\nd 2 0.5 0 0\nd 0 0 0.5 0\n}\n}\n";
    const QByteArray brow = "targetGeom Brow Up:L\n{\nindexes 1\nnumbDeltas 8\ndeltas\n{\nd 3 1 1 1\n}\n}\n";
    const QByteArray pose =
        "figure\n{\nmaterial skin\n{\nKdColor 0.1 0.2 0.3 1\nKaColor 0.5 0.5 0.5 1\nNsExponent 10\n"
        "textureMap NO_MAP\nbumpStrength 2\n}\nmaterial shirt\n{\ntMax 0.5\ntransparencyMap NO_MAP\n"
        "reflectionStrength 1\n}\n}\n"
        "actor head:1\n{\nmaterial skin\n{\nKsColor 0 1 0 1\n}\nchannels\n{\n" +
        smile + brow + "}\n}\n";
    ASSERT_TRUE(readOk("mat.pz2", pose)) << logText().toStdString();
    auto *own = dynamic_cast<OvDefaultMaterial *>(head->findMaterial("skin"));
    ASSERT_TRUE(own && own != headSkin) << "the head got a skin of its own";
    EXPECT_EQ(own->getSpecularColor(), QColor(0, 255, 0));
    const OvObject *headObject = doll->findBone("head")->getObject();
    auto findMorph = [headObject](const QString &name) -> OvMorph * {
        for (int i = 0; i < headObject->getNumModifiers(); ++i)
            if (auto *m = dynamic_cast<OvMorph *>(headObject->getModifier(i)); m && m->getName() == name)
                return m;
        return nullptr;
    };
    ASSERT_TRUE(findMorph("Smile") && findMorph("Brow Up:L"));
    EXPECT_EQ(findMorph("Smile")->getDeltas()->getNumDeltas(), 5);
    EXPECT_EQ(findMorph("Brow Up:L")->getDeltas()->getIndex(0), 3);
    EXPECT_NE(dump(), before);

    EXPECT_TRUE(scene()->undo());
    EXPECT_EQ(dump(), before) << "every material value, map, assignment and delta";
    EXPECT_EQ(head->findMaterial("skin"), headSkin) << "the same material, not a copy";
}

TEST_F(Poses, UndoOfASetBringsBackTheLightsAndCamerasItReplaced) {
    auto *lamp = new OvDistantLight;
    lamp->setLabel("lamp");
    fig->findBone("hip")->addNodeChild(lamp); // a light under a body part
    auto *top = new OvSpotLight;
    top->setLabel("top");
    scene()->addNode(top);
    scene()->setPrimarySelection(top);
    const QString before = dump();
    ASSERT_TRUE(
        readOk("l.lt2",
               "light NEW\n{\nlightType 1\nchannels\n{\nkdIntensity in\n{\nkeys\n{\nk 0 0.5\n}\n}\n}\n}\n"));
    ASSERT_TRUE(readOk("c.cm2", "camera CAM\n{\n}\n"));
    EXPECT_EQ(labelled("lamp"), nullptr);
    EXPECT_EQ(scene()->getPrimarySelection(), nullptr) << "the selected light went";
    EXPECT_TRUE(scene()->undo() && scene()->undo());
    EXPECT_EQ(dump(), before);
    EXPECT_EQ(labelled("lamp"), lamp) << "the same lights, at their places";
    EXPECT_EQ(lamp->getNodeParent(), fig->findBone("hip"));
    EXPECT_EQ(scene()->getPrimarySelection(), top);
}

TEST_F(Poses, HoldsMakeOneStepOrNoneAndUndoSurvivesWhatWentSince) {
    OvNode *hip = fig->findBone("hip");
    {
        OvUndoStackHold dropped;
        hip->getXRotControl()->setValue(9.0f);
    }
    EXPECT_TRUE(scene()->undoSteps().isEmpty());
    EXPECT_FALSE(scene()->undo());
    EXPECT_EQ(hip->getXRotControl()->getValue(), 9.0f) << "an unaccepted hold undoes nothing";

    auto *box = new OvNode;
    scene()->addNode(box);
    const QString before = dump();
    auto *doomed = new OvNode;
    scene()->addNode(doomed);
    QPointer<OvNode> made;
    {
        OvUndoStackHold outer;
        {
            OvUndoStackHold inner;
            hip->getXRotControl()->setValue(1.0f);
            hip->getXRotControl()->setValue(2.0f);
            inner.accept("inner");
        }
        scene()->setTime(7 * Step);
        doomed->getXPosControl()->setValue(3.0f);
        made = new OvNode; // made in the step
        fig->findBone("lHand")->addNodeChild(made);
        scene()->removeNode(fig);
        box->addNodeChild(fig);
        scene()->addNode(new OvDistantLight); // made and removed in the step
        scene()->removeAllLights();
        outer.accept("outer");
    }
    EXPECT_EQ(scene()->undoSteps(), QStringList{"outer"}) << "nested holds join the outer one";
    scene()->removeNode(doomed);
    delete doomed; // goes after the step that touched it
    EXPECT_TRUE(scene()->undo());
    EXPECT_EQ(dump(), before) << "the figure back at the top, first; the value, the time";
    EXPECT_TRUE(made.isNull()) << "the node made in the step is deleted";
    EXPECT_EQ(scene()->topLevelIndex(box), 1);
}

// The command-line host on the bundled doll and its poses.
struct HostRun {
    int status;
    QJsonObject json;
    QString err;
};
HostRun runHost(const QStringList &args) {
    const QString examples = OV_SOURCE_DIR "/examples/poser";
    QProcess process;
    process.start(OV_BIN_DIR "/ovimport", QStringList{"--content", examples, "--json", "-"} + args);
    process.waitForFinished(60000);
    return {process.exitCode(), QJsonDocument::fromJson(process.readAllStandardOutput()).object(),
            QString::fromUtf8(process.readAllStandardError())};
}

TEST(PoseHost, SeveralFilesSelectAtFrameAndUndo) {
    const QString lib = OV_SOURCE_DIR "/examples/poser/Runtime/libraries/";
    const QString doll = lib + "character/doll.cr2", wave = lib + "pose/wave.pz2";
    const HostRun alone = runHost({doll});
    const struct {
        QStringList args;
        int status, files;
        const char *play, *undone, *err;
    } rows[] = {
        {{doll, "--select", "doll", "--at-frame", "10", wave, "--answer", "yes"},
         0,
         2,
         "0,6400",
         nullptr,
         ""},
        {{doll, "--select", "doll", "--at-frame", "10", wave, "--answer", "yes", "--undo"},
         0,
         2,
         "0,4800",
         "\"wave.pz2\"",
         "undid \"wave.pz2\""},
        {{doll, wave}, 3, 2, "0,4800", nullptr, "wave.pz2 was refused: nothing is selected"},
        {{doll, "--undo"}, 0, 1, "0,4800", "", "the last import made no undo step"},
        {{doll, "--select", "nobody", wave}, 2, 0, "", nullptr, "--select nobody: no node"},
        {{doll, "--at-frame", "3"}, 2, 0, "", nullptr, "apply to a file that follows them"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.args.join(' ').toStdString());
        const HostRun run = runHost(row.args);
        EXPECT_EQ(run.status, row.status) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(row.err)) << run.err.toStdString();
        if (row.status == 2)
            continue;
        const QJsonArray imports = run.json["imports"].toArray();
        EXPECT_EQ(imports.size(), row.files == 1 ? 1 : row.files);
        QStringList play;
        for (const QJsonValue v : run.json["scene"]["playRange"].toArray())
            play << QString::number(v.toInt());
        EXPECT_EQ(play.join(','), row.play);
        EXPECT_EQ(run.json.contains("undo"), row.undone != nullptr);
        if (row.undone && *row.undone) {
            EXPECT_EQ(run.json["undo"]["step"].toString(), row.undone);
            EXPECT_EQ(run.json["scene"]["nodes"], alone.json["scene"]["nodes"]) << "undone to the doll alone";
        }
    }
}

} // namespace
