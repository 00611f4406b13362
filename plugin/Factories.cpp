#include "Factories.h"

#include <new>
#include <obj/OvObjImporter.h>
#include <poser/OvPZ3Importer.h>

OvPZ3ImporterFactory::OvPZ3ImporterFactory(const OvGUID &classId)
    : OvClassFactory(&OvPZ3Importer::staticMetaObject, classId) {}

OvBase *OvPZ3ImporterFactory::create() {
    return new (std::nothrow) OvPZ3Importer;
}

OvBase *OvPZ3ImporterFactory::createFor(QObject *) {
    return nullptr;
}

OvObjImporterFactory::OvObjImporterFactory(const OvGUID &classId)
    : OvClassFactory(&OvObjImporter::staticMetaObject, classId) {}

OvBase *OvObjImporterFactory::create() {
    return new (std::nothrow) OvObjImporter;
}

OvBase *OvObjImporterFactory::createFor(QObject *) {
    return nullptr;
}
