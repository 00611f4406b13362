#pragma once
#include "OvNode.h"

// Light and camera nodes. Scenes and light or camera sets replace all of them at once.
class OvLight : public OvNode {
    Q_OBJECT
public:
    OvLight() = default;
};

class OvBasicCamera : public OvNode {
    Q_OBJECT
public:
    OvBasicCamera() = default;
};
