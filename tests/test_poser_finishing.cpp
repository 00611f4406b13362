// The end of an import through real files: the movie section's time, loop range and sound, where
// dropped content goes, smart parents, source-file records, and the order of these steps.
#include "PoserTest.h"
#include "support/DialogAnswerer.h"

#include <OvAudio.h>
#include <OvMainWindow.h>
#include <QBuffer>

namespace {

QByteArray bytes(quint64 v, int n, bool bigEndian) {
    QByteArray b;
    for (int i = 0; i < n; ++i)
        b.append(char(v >> (8 * (bigEndian ? n - 1 - i : i))));
    return b;
}

// 8-bit mono WAV; `extra` goes between the header and the format chunk.
QByteArray wav(int rate, int frames, const QByteArray &extra = {}) {
    const QByteArray fmt = bytes(1, 2, false) + bytes(1, 2, false) + bytes(rate, 4, false) +
                           bytes(rate, 4, false) + bytes(1, 2, false) + bytes(8, 2, false);
    const QByteArray body = "WAVE" + extra + "fmt " + bytes(16, 4, false) + fmt + "data" +
                            bytes(frames, 4, false) + QByteArray(frames, '\x80');
    return "RIFF" + bytes(body.size(), 4, false) + body;
}

// 16-bit mono AIFF; the rate is written as the format's 80-bit float.
QByteArray aiff(int rate, int frames) {
    int e = 0;
    while ((rate >> (e + 1)) > 0)
        ++e;
    const QByteArray comm = bytes(1, 2, true) + bytes(frames, 4, true) + bytes(16, 2, true) +
                            bytes(16383 + e, 2, true) + bytes(quint64(rate) << (63 - e), 8, true);
    const QByteArray body = "AIFFCOMM" + bytes(18, 4, true) + comm + "SSND" + bytes(8 + 2 * frames, 4, true) +
                            QByteArray(8 + 2 * frames, 0);
    return "FORM" + bytes(body.size(), 4, true) + body;
}

QString header(const QByteArray &data) {
    QBuffer in;
    in.setData(data);
    in.open(QIODevice::ReadOnly);
    OvAudioFormat f;
    QString why;
    return !readAudioHeader(in, f, why)
               ? why
               : QString::asprintf("%s %dch %gHz %dbit %lld frames = %d", qPrintable(f.container), f.channels,
                                   f.sampleRate, f.bitsPerSample, f.sampleFrames, f.lengthInTimeUnits());
}

TEST(AudioHeader, LengthComesFromTheHeaderAndAnythingElseIsRefused) {
    QByteArray cut = wav(8000, 400);
    cut.chop(100); // the data chunk says more than the file holds
    EXPECT_EQ(
        QStringList({header(wav(8000, 8000)), header(wav(44100, 22050, "LIST" + bytes(3, 4, false) + "abc_")),
                     header(cut), header(aiff(22050, 11025))}),
        QStringList({"WAV 1ch 8000Hz 8bit 8000 frames = 4800", "WAV 1ch 44100Hz 8bit 22050 frames = 2400",
                     "WAV 1ch 8000Hz 8bit 300 frames = 180", "AIFF 1ch 22050Hz 16bit 11025 frames = 2400"}));
    EXPECT_EQ(QStringList({header("RIFF"), header("{\nversion\n{\n}\n}\n"), header(wav(8000, 10).left(36)),
                           header(wav(0, 10))}),
              QStringList({"too short to be a sound file", "not a WAV or AIFF file",
                           "a WAV file without a data chunk",
                           "a WAV file with 1 channels, 0 samples a second and 1-byte frames"}));
}

class Finishing : public PoserTest {
protected:
    // Reads a scene whose movieInfo section holds `lines`.
    bool readMovie(const QByteArray &lines) {
        return readOk("s.pz3", "{\nmovieInfo\n{\n" + lines + "}\n}\n");
    }
    static QString times() {
        const OvScene *s = scene();
        return QString::asprintf("step %d time %d anim %d..%d play %d..%d", s->getTimeStep(), s->getTime(),
                                 s->getAnimRange().getStart(), s->getAnimRange().getEnd(),
                                 s->getPlayRange().getStart(), s->getPlayRange().getEnd());
    }
    bool readFigure(const QString &name) {
        geometry("man.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\ng hip\nf 1 2 3\ng head\nf 1 2 3\n");
        return readOk(name, kFigure);
    }
    QString sound(const QString &name, const QByteArray &data) {
        file("content/Runtime/Sounds/" + name, data);
        return dir.filePath("content/Runtime/Sounds/" + name);
    }
    const QByteArray kFigure = "figureResFile :Runtime:Geometries:man.obj\nactor hip:1\n{\n}\n"
                               "actor head:1\n{\nparent hip:1\n}\n";
    const QByteArray kBox =
        "prop box\n{\ngeomCustom\n{\nnumbVerts 3\nv 0 1 0\nv 1 2 0\nv 0 2 1\nf 1 2 3\n}\n}\n";
};

TEST_F(Finishing, MovieValuesSetTimeStepTimeAndRanges) {
    const struct {
        const char *lines, *expected;
    } cases[] = {
        {"framesPerSec 30\n", "step 160 time 0 anim 0..4800 play 0..4800"},
        {"framesPerSec 24\n", "step 200 time 0 anim 0..4800 play 0..4800"},
        {"currentFrame 12\nframesPerSec 24\n", "step 200 time 1920 anim 0..4800 play 0..4800"},
        {"framesPerSec 24\nframesPerSec 0\ncurrentFrame 2\n", "step 200 time 400 anim 0..4800 play 0..4800"},
        {"loopStart 10\nloopEnd 10\n", "step 160 time 0 anim 1600..1760 play 1600..1760"},
        {"framesPerSec 24\nloopEnd 4\nloopStart 20\n", "step 200 time 0 anim 4000..4200 play 4000..4200"},
        {"loopStart 10\ncurrentFrame -3\n", "step 160 time 0 anim 0..4800 play 0..4800"},
        {"loopStart 2\nloopEnd 12\ncurrentFrame\nframesPerSec 5000\n",
         "step 160 time 0 anim 320..1920 play 320..1920"},
    };
    for (const auto &c : cases) {
        OvApp::reset();
        ASSERT_TRUE(readMovie(c.lines)) << c.lines;
        EXPECT_EQ(times(), c.expected) << c.lines;
    }
    EXPECT_EQ(logText(),
              QStringLiteral("error: No value specified on line 6 in %1\ninfo: A frame rate of 5000 "
                             "frames a second cannot be used; the time step stays 160 on line 7 in %1")
                  .arg(path));
}

// The sound ends the loop; a second one is kept or replaces it as the user answers, and one that is
// missing or no sound is named in the log and changes nothing.
TEST_F(Finishing, SoundIsImportedAskedAboutOrRefused) {
    const QString first = sound("a.wav", wav(8000, 8000)), second = sound("b.aif", aiff(8000, 16000));
    const QString text = sound("notes.wav", "these are not samples");
    ASSERT_TRUE(readMovie("loopStart 1\nloopEnd 5\nsoundFile :Runtime:Sounds:a.wav\n"));
    ASSERT_TRUE(scene()->getAudio());
    EXPECT_EQ(scene()->getAudio()->getPath(), first);
    EXPECT_EQ(times(), "step 160 time 0 anim 160..4800 play 160..4800") << "the sound's 30 frames, not 5";

    OvMainWindow window;
    OvApp::setInterface(&window);
    DialogAnswerer answerer;
    answerer.pressButton("Keep").pressButton("Replace");
    for (const QString &expected : {first, second}) {
        ASSERT_TRUE(readMovie("loopStart 0\nsoundFile :Runtime:Sounds:b.aif\n"));
        EXPECT_EQ(scene()->getAudio()->getPath(), expected);
    }
    OvApp::setInterface(nullptr);
    EXPECT_EQ(scene()->getPlayRange().getEnd(), 9600) << "the replacing sound's 2 seconds";
    ASSERT_EQ(answerer.seen().size(), 2);
    EXPECT_EQ(answerer.seen()[0].title + ": " + answerer.seen()[0].buttons.join(", "),
              "Replace Audio File: Keep, Replace");

    OvApp::setHeadlessAnswer(OvApp::AnswerYes);
    ASSERT_TRUE(readMovie("loopStart 1\nloopEnd 5\nsoundFile :Runtime:Sounds:gone.wav\n"
                          "soundFile :Runtime:Sounds:notes.wav\n"));
    EXPECT_EQ(scene()->getAudio()->getPath(), second);
    EXPECT_EQ(times(), "step 160 time 0 anim 160..800 play 160..800");
    EXPECT_EQ(OvApp::getMultiMediaMgr()->importAudioClip(dir.path(), nullptr),
              OvMultiMediaMgr::ImportNotReadable);
    const QString log = logText();
    EXPECT_TRUE(log.contains("gone.wav") &&
                log.contains("Cannot import the sound file " + text + ": not a WAV or AIFF file"))
        << log.toStdString();
}

TEST_F(Finishing, DroppedContentFollowsJoinsOrRestsWhereItWasDropped) {
    ASSERT_TRUE(readFigure("man.cr2"));
    OvSkeleton *man = skeleton("man");
    ASSERT_TRUE(man);
    OvNode *head = man->findBone("head");
    head->setOrigin(OvVec3(1, 2, 3));
    OvContentDropOptions drop(head, OvContentDropOptions::Automatic);
    OvApp::getContentMgr()->setContentDropOptions(&drop);
    ASSERT_TRUE(readFigure("woman.cr2"));
    EXPECT_EQ(skeleton("woman")->getFollowTarget(), man) << "a figure dropped on a figure follows it";
    ASSERT_TRUE(readOk("box.pp2", kBox));
    OvNode *box = labelled("box");
    EXPECT_EQ(box->getNodeParent(), head) << "a prop dropped on a body part";
    EXPECT_EQ(box->getLocalPos(), OvVec3(1, 2, 3)) << "starts at the bone's origin";
    EXPECT_EQ(scene()->getNumNodes(), 2) << "no longer at the top of the scene";

    // The figure the box's smartparent finds was not made by the import: it does not move.
    drop = OvContentDropOptions(nullptr, OvContentDropOptions::PlaceAtPoint, OvVec3(10, 0, 20));
    scene()->setPrimarySelection(man);
    ASSERT_TRUE(readOk("box.pp2", kBox + "prop box\n{\nsmartparent head\n}\n"));
    EXPECT_EQ(labelled("box (2)")->getWSPos(), OvVec3(10, -243.84f, 20)) << "the box's bottom rests on 0";
    EXPECT_EQ(man->getWSPos(), OvVec3());
    drop.setDropPoint(OvVec3(10, 5, 20));
    ASSERT_TRUE(readOk("box.pp2", kBox));
    EXPECT_EQ(labelled("box (3)")->getWSPos(), OvVec3(10, 5, 20));
    OvApp::getContentMgr()->setContentDropOptions(nullptr);
}

// A prop smart-parented to a prop that is declared first and placed later, and one smart-parented
// to a figure that was only selected: both end under their parents, and only what the import
// created records the file it came from. Then the order of the movie loop and a pose's question.
TEST_F(Finishing, SmartParentsSourceRecordsAndTheOrderOfTheLastSteps) {
    ASSERT_TRUE(readOk("s.pz3", "prop box\n{\n}\nprop ball\n{\nsmartparent box\n}\nprop table\n{\n}\n"
                                "prop box\n{\nparent table\n}\n"));
    EXPECT_EQ(labelled("ball")->getNodeParent(), labelled("box"));
    EXPECT_EQ(labelled("box")->getNodeParent(), labelled("table"));

    ASSERT_TRUE(readFigure("man.cr2"));
    const QString figureFile = path;
    OvSkeleton *man = skeleton("man");
    scene()->setPrimarySelection(man);
    man->findBone("hip")->setOrigin(OvVec3(1, 2, 3));
    OvContentDropOptions drop(man->findBone("hip"), OvContentDropOptions::ParentToTarget);
    OvApp::getContentMgr()->setContentDropOptions(&drop);
    ASSERT_TRUE(readOk("hat.pp2", "prop hat\n{\nsmartparent head\n}\n"));
    OvApp::getContentMgr()->setContentDropOptions(nullptr);
    EXPECT_EQ(labelled("hat")->getNodeParent(), man->findBone("head")) << "its smart parent, not the target";
    EXPECT_EQ(labelled("hat")->getLocalPos(), OvVec3()) << "nor moved to the target's origin";
    auto sourceOf = [](const OvNode *node) {
        auto *data = dynamic_cast<OvSourceFileData *>(node->findDataItem("SourceFileData"));
        return data ? data->getSourceFilePath() : QString();
    };
    EXPECT_EQ(sourceOf(labelled("hat")), path);
    EXPECT_EQ(sourceOf(man), figureFile) << "the figure the hat was put on keeps its own file";

    // Recording again on the same items updates the record instead of adding one.
    struct Recorder : OvPZ3Importer {
        using OvPZ3Importer::recordSourceFiles;
    } recorder;
    ASSERT_EQ(recorder.read(figureFile, OvFileIOSettings()), 0u);
    OvSkeleton *second = skeleton("man (2)");
    const int items = second->getNumDataItems();
    recorder.recordSourceFiles(path);
    EXPECT_EQ(sourceOf(second), path);
    EXPECT_EQ(second->getNumDataItems(), items);

    // The movie loop is set before a pose asks to lengthen the play range, so a pose keyed past the
    // loop still lengthens it.
    OvApp::setHeadlessAnswer(OvApp::AnswerYes);
    ASSERT_TRUE(readOk("wave.pz2", "{\nmovieInfo\n{\nloopStart 0\nloopEnd 10\n}\nactor hip\n{\nchannels\n{\n"
                                   "rotateX xrot\n{\nkeys\n{\nk 0 0\nk 40 10\n}\n}\n}\n}\n}\n"));
    EXPECT_EQ(times(), "step 160 time 0 anim 0..6400 play 0..6400");
}

} // namespace
