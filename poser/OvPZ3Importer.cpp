#include "OvPZ3Importer.h"
#include "Pz3InputFile.h"

#include <OvApp.h>
#include <OvScene.h>
#include <OvUndoStackHold.h>
#include <QFileInfo>
#include <memory>
#include <new>

const char *const OvPZ3Importer::Extensions[NumExtensions] = {"pz3", "pz2", "cr2", "lt2", "cm2", "pp2",
                                                              "fc2", "hd2", "hr2", "pzz", "p2z", "crz",
                                                              "ltz", "cmz", "ppz", "fcz", "hdz", "hrz"};

OvPZ3Importer::OvPZ3Importer() : m_locatedDirs(new LocatedDirList) {}

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

int OvPZ3Importer::fileTypeOf(const QString &ext) {
    static const struct {
        const char *plain, *compressed;
        int type;
    } kinds[] = {{"pz3", "pzz", 0}, {"cr2", "crz", 1}, {"pp2", "ppz", 2}, {"hr2", "hrz", 3}, {"pz2", "p2z", 4},
                 {"lt2", "ltz", 5}, {"cm2", "cmz", 6}, {"fc2", "fcz", 7}, {"hd2", "hdz", 8}};
    for (const auto &k : kinds)
        if (ext == QLatin1String(k.plain) || ext == QLatin1String(k.compressed))
            return k.type;
    return 9;
}

bool OvPZ3Importer::isCompressedExtension(const QString &ext) {
    return ext.size() > 2 && ext.at(2) == QLatin1Char('z');
}

// Per-read state that every read starts from.
void OvPZ3Importer::resetForRead() {
    m_parseMode = ModeFile;
    m_modeStack.clear();
    m_version = 4.0f;
    m_movieCurrentTime = m_movieLoopStart = m_movieLoopEnd = -1;
    m_curFigure = nullptr;
    m_curNode = nullptr;
    m_curProperty = nullptr;
    m_material = nullptr;
    m_curChannelType = 0;
    m_colorComponent = 0;
    m_isColorChannel = false;
    m_limitsAnswer = 0;
    m_foundOnFollowTarget = false;
    m_jointParmsSeen = false;
    m_ignoreKeys = false;
    m_keyPending = false;
    m_lastFrame = 0;
}

// Scene, figure, prop and hair files make new objects; every other kind is applied to the
// selection at the current frame.
bool OvPZ3Importer::preparePoseTarget(unsigned int &) {
    m_applyToSelection = m_fileType > 3;
    OvScene *scene = OvApp::getScene();
    m_startFrame = m_applyToSelection ? scene->getTime() / scene->getTimeStep() : 0;
    return true;
}

unsigned int OvPZ3Importer::read(const QString &fileName, const OvFileIOSettings &) {
    m_sceneItems.clear();
    m_nodeItems.clear();
    m_subDNodes.clear();
    m_lights.clear();
    m_cameras.clear();
    m_locatedDirs->clear();
    m_figureVertexCount = 0;
    m_askForFiles = true;

    m_fileName = OvFileIO::getShortFileName(fileName);
    m_filePath = OvFileIO::getFilePath(fileName);
    m_figureBaseName.clear();
    OvApp::statusLine(tr("Importing %1 ...").arg(m_fileName), true);

    m_handSide = 2;
    const QString ext = OvFileIO::getFileExtension(fileName);
    m_fileType = fileTypeOf(ext);
    if (m_fileType == 1)
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

    std::unique_ptr<OvUndoStackHold> hold;
    if (m_fileType >= 4 && m_fileType <= 8)
        hold.reset(new OvUndoStackHold);

    OvScene *scene = OvApp::getScene();
    if (m_fileType == 0) {
        scene->removeAllLights();
        scene->removeAllCameras();
    } else if (m_fileType == 5) {
        scene->removeAllLights();
    } else if (m_fileType == 6) {
        scene->removeAllCameras();
    }

    resetForRead();
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
    return carryOn ? ResultOk : ResultStopped;
}
