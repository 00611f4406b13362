#pragma once
// The OBJ reader as the Poser importer uses it for geometry. Declared here, below both importers,
// so that poser/ needs none of obj/'s headers; obj/ObjGeometry.cpp implements it. Each call reads
// with an OBJ importer of its own, made for that load and deleted after it.

class OvFileIOSettings;
class OvShape;
class OvTextInputFile;
class QString;

// The geometry file at `path` (plain or .obz) as a new shape, or null when it yields none.
OvShape *readObjGeometryFile(const QString &path, const OvFileIOSettings &settings);

// OBJ lines of an open file up to its end or a '}' line (inline geometry) as a new shape, or null;
// `lineNumber` is incremented once per line read.
OvShape *readObjGeometryInline(OvTextInputFile &file, int &lineNumber, const OvFileIOSettings &settings);
