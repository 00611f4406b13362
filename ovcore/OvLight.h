#pragma once
#include "OvNode.h"

// Light and camera nodes. Scenes and light or camera sets replace all of them at once.
class OvLight : public OvNode {
    Q_OBJECT
public:
    OvLight();
    OvColorProperty *getColorControl() const { return m_color; }
    OvFloatProperty *getIntensityControl() const { return m_intensity; }

private:
    OvColorProperty *m_color;
    OvFloatProperty *m_intensity;
};

class OvDistantLight : public OvLight {
    Q_OBJECT
public:
    OvDistantLight() = default;
};

class OvSpotLight : public OvLight {
    Q_OBJECT
public:
    OvSpotLight() : m_spread(addProperty(new OvFloatProperty(QStringLiteral("Spread Angle"), 45.0f))) {}
    OvFloatProperty *getSpreadAngleControl() const { return m_spread; }

private:
    OvFloatProperty *m_spread;
};

class OvBasicCamera : public OvNode {
    Q_OBJECT
public:
    // Camera types of the host; 6 is the plain perspective camera importers make.
    explicit OvBasicCamera(int cameraType = 6, bool flag = false);
    int getCameraType() const { return m_type; }
    bool getCreationFlag() const { return m_flag; }
    bool isPerspective() const { return m_type == 6; }
    OvFloatProperty *getFocalLengthChannel() const { return m_focalLength; }
    float getFocalDistance() const { return m_focalDistance; }
    void setFocalDistance(float d) {
        OvUndoStack::noteElement(this);
        m_focalDistance = d;
    }

private:
    int m_type;
    bool m_flag;
    OvFloatProperty *m_focalLength;
    float m_focalDistance = 0.0f;
};
