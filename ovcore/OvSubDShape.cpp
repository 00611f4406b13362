#include "OvSubDShape.h"
#include "OvNode.h"

static const QString kLevelName = QStringLiteral("Subdivision Level");

bool OvSubDShape::convertToSubD(OvNode *node, int level) {
    OvObject *object = node ? node->getObject() : nullptr;
    if (!object || level <= 0)
        return false;
    auto *property = dynamic_cast<OvIntProperty *>(object->findProperty(kLevelName));
    if (!property) {
        property = object->addProperty(new OvIntProperty(kLevelName, 0));
        property->setMin(0);
    }
    property->setValue(level);
    return true;
}

int OvSubDShape::subDivisionLevel(const OvNode *node) {
    const OvObject *object = node ? node->getObject() : nullptr;
    auto *property = object ? dynamic_cast<OvIntProperty *>(object->findProperty(kLevelName)) : nullptr;
    return property ? property->getValue() : 0;
}
