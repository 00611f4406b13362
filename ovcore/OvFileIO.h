#pragma once
#include "OvBase.h"
#include <QString>

// File-I/O base of importers: path helpers and the host log.
class OvFileIO : public OvBase {
    Q_OBJECT
public:
    explicit OvFileIO(QObject *parent = nullptr) : OvBase(parent) {}

    // "dir/name.ext" -> "name.ext"
    static QString getShortFileName(const QString &path);
    // "dir/name.ext" -> "dir" (empty when there is no folder)
    static QString getFilePath(const QString &path);
    // "dir/name.ext" -> "name"
    static QString getBaseFileName(const QString &path);
    // "dir/name.ext" -> "ext" (empty when the name has no dot)
    static QString getFileExtension(const QString &path);
    // changeFileExtension("a/b.cr2", "crz") -> "a/b.crz"; adds one when there is none
    static QString changeFileExtension(const QString &path, const QString &ext);

    // Text of a file's bytes: UTF-8 when they are valid UTF-8, else Latin-1 (older content).
    static QString decodeText(const char *bytes, qsizetype length = -1);

    // Host log: errors are malformed content, infos are warnings.
    static void error(const QString &text);
    static void info(const QString &text);
};
