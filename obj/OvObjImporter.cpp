#include "OvObjImporter.h"
#include "ObjParse.h"
#include "OvObjImportFrame.h"

#include <OvApp.h>
#include <OvShape.h>
#include <OvTextInputFile.h>
#include <QDir>
#include <text/ObjOptions.h>

namespace {
const float kDefaultScale = 243.84f;
}

OvObjImporter::OvObjImporter() = default;

OvFileIOFrame *OvObjImporter::getOptionsFrame() {
    auto *frame = new (std::nothrow) OvObjImportFrame;
    if (!frame)
        throw QString("Out of Memory");
    return frame;
}

void OvObjImporter::getDefaultOptions(OvFileIOSettings *settings) {
    if (!settings)
        return;
    settings->setStringValue(ObjOption::Preset, QStringLiteral("Talven (1 unit = 8ft)"));
    settings->setFloatValue(ObjOption::Scale, kDefaultScale);
    settings->setBoolValue(ObjOption::SwapYZ, false);
    settings->setBoolValue(ObjOption::IncludeG, true);
    settings->setBoolValue(ObjOption::IncludeVT, true);
    settings->setBoolValue(ObjOption::IncludeUsemtl, true);
    settings->setBoolValue(ObjOption::IncludeMtllib, true);
}

void OvObjImporter::loadSettings(const OvFileIOSettings &settings) {
    m_scale = settings.getFloatValue(ObjOption::Scale, kDefaultScale);
    m_swapYZ = settings.getBoolValue(ObjOption::SwapYZ, false);
    m_includeG = settings.getBoolValue(ObjOption::IncludeG, true);
    m_includeVT = settings.getBoolValue(ObjOption::IncludeVT, true);
    m_includeUsemtl = settings.getBoolValue(ObjOption::IncludeUsemtl, true);
    m_includeMtllib = settings.getBoolValue(ObjOption::IncludeMtllib, true);
}

bool OvObjImporter::recognize(const QString &fileName) {
    QString ext = OvFileIO::getFileExtension(fileName);
    return ext == QLatin1String("obj") || ext == QLatin1String("obz");
}

QString OvObjImporter::getExtension(int i) {
    if (i == 0)
        return QStringLiteral("obj");
    if (i == 1)
        return QStringLiteral("obz");
    return QString();
}

void OvObjImporter::reportObjError(const QString &message, int line) {
    if (line == -1)
        OvFileIO::error(message);
    else
        OvFileIO::error(message + QLatin1String(" on line ") + QString::number(line) +
                        QLatin1String(" in OvObjImporter"));
}

unsigned int OvObjImporter::readShape(const QString &fileName, OvShape **shape,
                                      const OvFileIOSettings &settings) {
    bool compressed = OvFileIO::getFileExtension(fileName).toLower() == QLatin1String("obz");
    OvTextInputFile file(fileName, compressed, true);
    if (obj::readTuning().chunkSize)
        file.setChunkSize(obj::readTuning().chunkSize);
    m_mtlLib.clear();
    if (!file.open())
        return ResultCannotOpen;
    int lineNumber = 0;
    unsigned int result = readObj(file, shape, lineNumber, settings);
    if (shape && *shape)
        (*shape)->setName(OvFileIO::getBaseFileName(fileName));
    if (file.truncatedLines() > 0)
        reportObjError(tr("%1 line(s) longer than %2 MB were cut in %3, the first")
                           .arg(file.truncatedLines())
                           .arg(OvTextInputFile::MaxLineLength >> 20)
                           .arg(OvFileIO::getShortFileName(fileName)),
                       file.firstTruncatedLine());
    // What was read stays in the shape, but the caller learns that the file was not read whole.
    const bool damaged = file.hasError();
    if (damaged)
        reportObjError(tr("Could not read all of %1: %2").arg(fileName, file.errorString()), -1);
    file.close();

    if (!m_mtlLib.isEmpty() && shape && *shape) {
        QDir dir(OvFileIO::getFilePath(fileName));
        if (dir.exists(m_mtlLib)) {
            m_mtlLib = dir.absoluteFilePath(m_mtlLib);
            result = readMtl(*shape, m_mtlLib);
        } else {
            // Into the import log too, so a host that shows only the log still tells the user.
            const QString message = QStringLiteral("Could not find material file : %1").arg(m_mtlLib);
            qWarning("%s", qPrintable(message));
            OvFileIO::info(tr("%1 (looked in: %2); continuing without it").arg(message, dir.absolutePath()));
        }
    }
    return damaged ? unsigned(ResultCannotOpen) : result;
}
