// Token services every section handler uses, the diagnostics and the version section.
#include "Tokens.h"
#include "OvPZ3Importer.h"
#include "Pz3InputFile.h"
#include "StockStrings.h"

#include <QtDebug>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <text/Numbers.h>

namespace poser {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads the next run of digits at or after p (never past end) as an int, saturated.
bool nextNumber(const char *&p, const char *end, int &value) {
    while (p < end && !isDigit(*p))
        ++p;
    if (p >= end)
        return false;
    long long v = 0;
    int digits = 0;
    for (; p < end && isDigit(*p); ++p) {
        // Only the first 63 digits count, as the reference buffer holds 64 characters.
        if (++digits <= 63 && v <= INT_MAX)
            v = v * 10 + (*p - '0');
    }
    value = v > INT_MAX ? INT_MAX : int(v);
    return true;
}

} // namespace

bool parseStringResRef(const char *token, const char *lineEnd, int &tableId, int &index) {
    const char *p = token;
    return nextNumber(p, lineEnd, tableId) && nextNumber(p, lineEnd, index);
}

QString tokenText(char **argv, int first, int argc) {
    if (first >= argc || first < 0)
        return QString();
    const char *start = argv[first];
    const char *lineEnd = argv[argc - 1] + std::strlen(argv[argc - 1]);
    if (std::strncmp(start, "GetStringRes", 12) == 0) {
        int tableId = 0, index = 0;
        if (!parseStringResRef(start, lineEnd, tableId, index))
            qDebug("Incomplete GetStringRes reference");
        return getStringRes(tableId, index);
    }
    // Most names are one word: no joining needed.
    if (first == argc - 1)
        return OvFileIO::decodeText(start, qsizetype(lineEnd - start));
    // Token by token rather than NUL by NUL, so a NUL byte that stood between two tokens in the
    // file cannot end the text early: it reads as a blank.
    QByteArray text;
    text.reserve(int(lineEnd - start));
    for (int i = first; i < argc; ++i) {
        size_t len = std::strlen(argv[i]);
        text.append(argv[i], qsizetype(len));
        if (i + 1 == argc)
            break;
        text.append(' ');
        for (const char *gap = argv[i] + len + 1; gap < argv[i + 1]; ++gap)
            text.append(*gap ? *gap : ' ');
    }
    return OvFileIO::decodeText(text.constData(), text.size());
}

} // namespace poser

QString OvPZ3Importer::tokenText(char **argv, int first, int argc) const {
    return poser::tokenText(argv, first, argc);
}

QString OvPZ3Importer::getStringRes(int tableId, int index) const {
    return poser::getStringRes(tableId, index);
}

bool OvPZ3Importer::nextLine(char **argv, int &argc) {
    argc = 0;
    if (!m_file || !m_file->getLine(argv, argc))
        return false;
    ++m_file->m_lineNumber;
    return true;
}

void OvPZ3Importer::reportError(const QString &message) {
    if (!m_file) {
        OvFileIO::error(tr("%1 while importing Poser File").arg(message));
        return;
    }
    OvFileIO::error(
        tr("%1 on line %2 in %3").arg(message, QString::number(m_file->m_lineNumber), m_file->name()));
}

void OvPZ3Importer::reportInfo(const QString &message) {
    if (!m_file) {
        OvFileIO::info(tr("%1 while importing Poser File").arg(message));
        return;
    }
    OvFileIO::info(
        tr("%1 on line %2 in %3").arg(message, QString::number(m_file->m_lineNumber), m_file->name()));
}

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_versionKeywords[] = {
    {"number", 2, Short::Error, "No version number specified", &OvPZ3Importer::versionNumber},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseVersionLine(char **argv, int argc) {
    return dispatchKeyword(s_versionKeywords, argv, argc);
}

bool OvPZ3Importer::versionNumber(char **argv, int) {
    m_version = parsePoserFloat(argv[1]);
    return true;
}
