#include "OvPZ3Importer.h"

const char *const OvPZ3Importer::Extensions[NumExtensions] = {"pz3", "pz2", "cr2", "lt2", "cm2", "pp2",
                                                              "fc2", "hd2", "hr2", "pzz", "p2z", "crz",
                                                              "ltz", "cmz", "ppz", "fcz", "hdz", "hrz"};

OvPZ3Importer::OvPZ3Importer() = default;
OvPZ3Importer::~OvPZ3Importer() = default;

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

unsigned int OvPZ3Importer::read(const QString &fileName, const OvFileIOSettings &) {
    m_fileType = fileTypeOf(OvFileIO::getFileExtension(fileName));
    // The Poser read driver is not part of this build yet: say so instead of pretending.
    OvFileIO::error(tr("Reading Poser files is not available yet: %1 was not imported")
                        .arg(OvFileIO::getShortFileName(fileName)));
    return ResultCannotOpen;
}
