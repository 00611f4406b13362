#include "OvImporter.h"
#include "OvApp.h"
#include "OvNode.h"
#include "OvScene.h"

OvFileIOFrame::OvFileIOFrame(const QString &title, QWidget *parent, const char *name)
    : QWidget(parent), m_title(title) {
    if (name)
        setObjectName(QString::fromLatin1(name));
    setWindowTitle(title);
}

unsigned int OvGeometryImporter::read(const QString &fileName, const OvFileIOSettings &options) {
    OvShape *shape = nullptr;
    unsigned int result = readShape(fileName, &shape, options);
    if (!shape)
        return result;
    // The node is named like the shape; the shape goes to the scene even when its material library
    // failed, as the geometry itself was read.
    auto *node = new OvNode;
    node->setName(shape->getName());
    node->setLabel(shape->getName());
    auto *object = new OvObject;
    object->addShape(shape);
    node->setObject(object);
    OvApp::getScene()->addNode(node);
    return result;
}
