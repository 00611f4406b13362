// The movieInfo section: the scene's frame rate and sound take effect at once; its current frame
// and loop range are kept for the end of the import, when every key exists.
#include "../OvPZ3Importer.h"
#include "../Questions.h"

#include <OvApp.h>
#include <OvAudio.h>
#include <OvMainWindow.h>
#include <OvScene.h>
#include <algorithm>
#include <climits>
#include <memory>
#include <text/Numbers.h>

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_movieInfoKeywords[] = {
    {"currentFrame", 2, Short::Error, "No value specified", &OvPZ3Importer::movieCurrentFrame},
    {"loopStart", 2, Short::Error, "No value specified", &OvPZ3Importer::movieLoopStart},
    {"loopEnd", 2, Short::Error, "No value specified", &OvPZ3Importer::movieLoopEnd},
    {"framesPerSec", 2, Short::Error, "No value specified", &OvPZ3Importer::movieFramesPerSec},
    {"soundFile", 2, Short::Error, "No value specified", &OvPZ3Importer::movieSoundFile},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseMovieInfoLine(char **argv, int argc) {
    return dispatchKeyword(s_movieInfoKeywords, argv, argc);
}

// The time step in force when the line is read: a framesPerSec line after it does not rescale it.
bool OvPZ3Importer::movieCurrentFrame(char **argv, int) {
    const qint64 time = qint64(text::leadingInt(argv[1])) * OvApp::getScene()->getTimeStep();
    m_movieCurrentTime = int(std::clamp<qint64>(time, INT_MIN, INT_MAX));
    return true;
}

bool OvPZ3Importer::movieLoopStart(char **argv, int) {
    m_movieLoopStart = text::leadingInt(argv[1]);
    return true;
}

bool OvPZ3Importer::movieLoopEnd(char **argv, int) {
    m_movieLoopEnd = text::leadingInt(argv[1]);
    return true;
}

// A rate that would make a frame shorter than one time unit, or no rate at all, leaves the step.
bool OvPZ3Importer::movieFramesPerSec(char **argv, int) {
    const int rate = text::leadingInt(argv[1]);
    OvScene *scene = OvApp::getScene();
    if (rate <= 0 || rate > OvScene::TimeUnitsPerSecond) {
        reportInfo(tr("A frame rate of %1 frames a second cannot be used; the time step stays %2")
                       .arg(rate)
                       .arg(scene->getTimeStep()));
        return true;
    }
    scene->setTimeStep(OvScene::TimeUnitsPerSecond / rate);
    return true;
}

// The sound plays from the start frame, and the loop range ends where it ends.
bool OvPZ3Importer::movieSoundFile(char **argv, int argc) {
    OvScene *scene = OvApp::getScene();
    if (scene->getAudio() && !askReplaceAudio())
        return true;
    auto clip = std::make_unique<OvWinAudioClip>();
    QString found;
    if (!findContentFile(tokenText(argv, 1, argc), found, true))
        return true;
    // A refused file is named in the log by the host.
    if (OvApp::getMultiMediaMgr()->importAudioClip(found, clip.get(), -1) != 0)
        return true;
    const int length = clip->getLength();
    scene->setAudio(clip.release(), m_startFrame);
    m_movieLoopEnd = length / scene->getTimeStep();
    return true;
}

// With a main window the user chooses; a host without one keeps the sound unless told to answer
// yes. Either way the log says what was asked and answered.
bool OvPZ3Importer::askReplaceAudio() {
    bool replace = false;
    if (OvMainWindow *window = OvApp::getInterface()) {
        OvApp::pauseProgress();
        replace = poser::askUser(QMessageBox::Question, window, QStringLiteral("Replace Audio File"),
                                 QStringLiteral("Do you want to keep your existing audio file or replace it "
                                                "with the one specified in the file?"),
                                 {QStringLiteral("Keep"), QStringLiteral("Replace")}, 0, -1) == 1;
        OvApp::resumeProgress();
    } else {
        replace = OvApp::headlessAnswer() == OvApp::AnswerYes;
    }
    reportInfo(tr("The scene has a sound already; asked \"Replace Audio File\", answered %1")
                   .arg(replace ? tr("Replace") : tr("Keep")));
    return replace;
}
