#pragma once
#include <OvPlugin.h>

class OvPZ3ImporterFactory : public OvClassFactory {
public:
    explicit OvPZ3ImporterFactory(const OvGUID &classId);
    OvBase *create() override;
    OvBase *createFor(QObject *owner) override;
};

class OvObjImporterFactory : public OvClassFactory {
public:
    explicit OvObjImporterFactory(const OvGUID &classId);
    OvBase *create() override;
    OvBase *createFor(QObject *owner) override;
};
