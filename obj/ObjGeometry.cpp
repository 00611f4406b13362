// The OBJ reader behind the Poser importer's geometry loads (declared in text/ObjGeometry.h).
#include "OvObjImporter.h"

#include <OvShape.h>
#include <memory>
#include <new>
#include <text/ObjGeometry.h>

namespace {

std::unique_ptr<OvObjImporter> newImporter() {
    std::unique_ptr<OvObjImporter> importer(new (std::nothrow) OvObjImporter);
    if (!importer)
        throw QString("Out of Memory");
    return importer;
}

} // namespace

OvShape *readObjGeometryFile(const QString &path, const OvFileIOSettings &settings) {
    OvShape *shape = nullptr;
    newImporter()->readShape(path, &shape, settings);
    return shape;
}

OvShape *readObjGeometryInline(OvTextInputFile &file, int &lineNumber, const OvFileIOSettings &settings) {
    OvShape *shape = nullptr;
    newImporter()->readObj(file, &shape, lineNumber, settings);
    return shape;
}
