#include "OvPZ3Importer.h"
#include "Pz3InputFile.h"

#include "Questions.h"

#include <OvApp.h>
#include <OvMainWindow.h>
#include <OvScene.h>
#include <OvUndoStackHold.h>
#include <QFileInfo>
#include <memory>
#include <new>

const char *const OvPZ3Importer::Extensions[NumExtensions] = {"pz3", "pz2", "cr2", "lt2", "cm2", "pp2",
                                                              "fc2", "hd2", "hr2", "pzz", "p2z", "crz",
                                                              "ltz", "cmz", "ppz", "fcz", "hdz", "hrz"};

OvPZ3Importer::OvPZ3Importer() = default;

OvPZ3Importer::~OvPZ3Importer() {
    delete m_file;
    while (!m_fileStack.isEmpty())
        delete m_fileStack.pop();
}

bool OvPZ3Importer::recognize(const QString &fileName) {
    QString ext = OvFileIO::getFileExtension(fileName);
    for (const char *e : Extensions)
        if (ext == QLatin1String(e))
            return true;
    return false;
}

QString OvPZ3Importer::getExtension(int i) {
    if (i < 0 || i >= NumExtensions)
        return QString();
    return QString::fromLatin1(Extensions[i]);
}

Pz3FileKind OvPZ3Importer::fileTypeOf(const QString &ext) {
    static const struct {
        const char *plain, *compressed;
        Pz3FileKind kind;
    } kinds[] = {{"pz3", "pzz", Pz3FileKind::Scene},     {"cr2", "crz", Pz3FileKind::Figure},
                 {"pp2", "ppz", Pz3FileKind::Prop},      {"hr2", "hrz", Pz3FileKind::Hair},
                 {"pz2", "p2z", Pz3FileKind::Pose},      {"lt2", "ltz", Pz3FileKind::LightSet},
                 {"cm2", "cmz", Pz3FileKind::CameraSet}, {"fc2", "fcz", Pz3FileKind::FacePose},
                 {"hd2", "hdz", Pz3FileKind::HandPose}};
    for (const auto &k : kinds)
        if (ext == QLatin1String(k.plain) || ext == QLatin1String(k.compressed))
            return k.kind;
    return Pz3FileKind::Other;
}

bool OvPZ3Importer::isCompressedExtension(const QString &ext) {
    return ext.size() > 2 && ext.at(2) == QLatin1Char('z');
}

// Scene, figure, prop and hair files make new objects; every other kind is applied to the
// selection at the current frame. Nothing is changed before the file is opened: a cancelled
// question ends the read with the scene as it was.
bool OvPZ3Importer::preparePoseTarget(unsigned int &result) {
    m_applyToSelection = m_fileType > Pz3FileKind::Hair;
    OvScene *scene = OvApp::getScene();
    m_startFrame = m_applyToSelection ? scene->getTime() / scene->getTimeStep() : 0;
    if (!m_applyToSelection)
        return true;

    const bool needsTarget = m_fileType != Pz3FileKind::LightSet && m_fileType != Pz3FileKind::CameraSet;
    if (needsTarget && !scene->getPrimarySelection()) {
        OvMainWindow *window = OvApp::getInterface();
        if (!window) {
            reportError(tr("Nothing is selected to apply %1 to, and a host without a main window cannot "
                           "ask for a node; nothing was imported")
                            .arg(m_fileName));
            result = ResultOk;
            return false;
        }
        OvNode *chosen = poser::askForNode(window);
        if (!chosen) {
            result = ResultOk;
            return false;
        }
        scene->setPrimarySelection(chosen);
    }

    if (m_fileType == Pz3FileKind::HandPose) {
        QString said;
        const int side = poser::askHandSide(said);
        reportInfo(tr("Asked \"Apply Hand Pose\", answered %1").arg(said));
        if (side == 2) {
            result = ResultHandCancelled;
            return false;
        }
        m_handSide = side == 0 ? Pz3HandSide::Right : Pz3HandSide::Left;
    }
    return true;
}

unsigned int OvPZ3Importer::read(const QString &fileName, const OvFileIOSettings &) {
    // Every read starts afresh. The files of the last read were all closed when it ended, so the
    // assignment drops nothing the state owns.
    static_cast<Pz3ReadState &>(*this) = Pz3ReadState();

    m_fileName = OvFileIO::getShortFileName(fileName);
    m_filePath = OvFileIO::getFilePath(fileName);
    OvApp::statusLine(tr("Importing %1 ...").arg(m_fileName), true);

    const QString ext = OvFileIO::getFileExtension(fileName);
    m_fileType = fileTypeOf(ext);
    if (m_fileType == Pz3FileKind::Figure)
        m_figureBaseName = OvFileIO::getBaseFileName(m_fileName);
    const bool compressed = isCompressedExtension(ext);

    unsigned int early = 0;
    if (!preparePoseTarget(early))
        return early;

    m_file = new (std::nothrow) Pz3InputFile(fileName, compressed);
    if (!m_file)
        throw QString("Out of Memory");
    if (!m_file->open()) {
        delete m_file;
        m_file = nullptr;
        return ResultCannotOpen;
    }
    m_file->m_canonicalPath = QFileInfo(fileName).canonicalFilePath();

    // Poses and sets are one undo step (the scene's lights and cameras that a set replaces are part
    // of it); files of an unknown kind are not undone.
    std::unique_ptr<OvUndoStackHold> hold;
    if (m_fileType >= Pz3FileKind::Pose && m_fileType <= Pz3FileKind::HandPose)
        hold.reset(new OvUndoStackHold);

    OvScene *scene = OvApp::getScene();
    if (m_fileType == Pz3FileKind::Scene || m_fileType == Pz3FileKind::LightSet)
        scene->removeAllLights();
    if (m_fileType == Pz3FileKind::Scene || m_fileType == Pz3FileKind::CameraSet)
        scene->removeAllCameras();

    std::unique_ptr<char *[]> argv(new (std::nothrow) char *[OvTextInputFile::MaxTokens]);
    if (!argv)
        throw QString("Out of Memory");
    m_modeStack.append(ModeFile);

    const bool carryOn = runLineLoop(argv.get());
    argv.reset();

    finishImport();
    if (m_applyToSelection)
        askToAddFrames();
    applySmartParents();
    convertSubDivisions();
    recordSourceFiles(fileName);

    if (hold)
        hold->accept(QStringLiteral("\"%1\"").arg(OvFileIO::getShortFileName(fileName)));
    // A file that could not be read to its end fails the import; what was read stays in the scene.
    if (m_inputDamaged)
        return ResultCannotOpen;
    return carryOn ? ResultOk : ResultStopped;
}
