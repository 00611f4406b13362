#pragma once
// Base of the Poser suites: files written to the temporary folder and read through one importer,
// the folder's "content" subfolder as the Poser content folder, and short ways into the scene.

#include "ImportTest.h"

#include <OvApp.h>
#include <OvScene.h>
#include <OvShape.h>
#include <OvSkeleton.h>
#include <poser/OvPZ3Importer.h>

class PoserTest : public ImportTest {
protected:
    void SetUp() override {
        ImportTest::SetUp();
        OvApp::getContentMgr()->addPoserDirectory(dir.filePath("content"));
    }
    // Writes `text` as `name` (under the temporary folder) and reads it; `path` is the file read.
    unsigned read(const QString &name, const QByteArray &text) {
        path = file(name, text);
        return importer.read(path, OvFileIOSettings());
    }
    // True when the read succeeded (result 0).
    bool readOk(const QString &name, const QByteArray &text) { return read(name, text) == 0; }
    // Writes content/Runtime/Geometries/`name`, named in files as :Runtime:Geometries:`name`.
    QString geometry(const QString &name, const QByteArray &text) {
        return file("content/Runtime/Geometries/" + name, text);
    }
    static OvScene *scene() { return OvApp::getScene(); }
    static OvNode *labelled(const QString &label) { return scene()->findNodeByLabel(label); }
    static OvSkeleton *skeleton(const QString &label) { return qobject_cast<OvSkeleton *>(labelled(label)); }
    // The last shape of the node's object (the one added last), or null.
    static OvShape *lastShape(const OvNode *node) {
        const OvObject *object = node ? node->getObject() : nullptr;
        return object && object->getNumShapes() > 0 ? object->getShape(object->getNumShapes() - 1) : nullptr;
    }

    // The geometry source record of a node or a shape; a record of no path when there is none.
    template <class T> static const OvGeomSourceFileData &source(const T *e) {
        static const OvGeomSourceFileData none(QStringLiteral("<none>"));
        auto *data =
            e ? dynamic_cast<const OvGeomSourceFileData *>(e->findDataItem("GeomSourceFileData")) : nullptr;
        return data ? *data : none;
    }

    QString path;
    OvPZ3Importer importer;
};
