#pragma once
// Keys of the OBJ import settings, read by the OBJ importer, shown by its options frame and set by
// the Poser importer for its geometry loads.

#include <QString>

namespace ObjOption {

inline const QString Preset = QStringLiteral("Preset");
inline const QString Scale = QStringLiteral("Scale");
inline const QString SwapYZ = QStringLiteral("SwapYZ");
inline const QString IncludeG = QStringLiteral("IncludeG");
inline const QString IncludeVT = QStringLiteral("IncludeVT");
inline const QString IncludeUsemtl = QStringLiteral("IncludeUsemtl");
inline const QString IncludeMtllib = QStringLiteral("IncludeMtllib");

} // namespace ObjOption
