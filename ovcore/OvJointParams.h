#pragma once
// The joint parameters of a Poser joint: how a bone bends (bend), twists (twist), scales smoothly
// (smooth scale) and curves (curve) the geometry of its body part. A joint owns them.

#include "OvMath.h"
#include <QString>

class OvNode;

class OvPoserJointParam {
public:
    // 0 to 2 are the bone's X, Y and Z axes; a curve takes 3 to 5, after the axis of the twist it
    // follows (Z, Y, X).
    enum ParamAxis : int {
        AxisX = 0,
        AxisY = 1,
        AxisZ = 2,
        CurveOfTwistZ = 3,
        CurveOfTwistY = 4,
        CurveOfTwistX = 5,
        NoAxis = -1,
    };

    OvPoserJointParam() = default;
    virtual ~OvPoserJointParam() = default;
    OvPoserJointParam(const OvPoserJointParam &) = delete;
    OvPoserJointParam &operator=(const OvPoserJointParam &) = delete;
    virtual const char *className() const { return "OvPoserJointParam"; }

    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    ParamAxis getAxis() const { return m_axis; }
    void setAxis(int axis) { m_axis = ParamAxis(axis); }
    // The bone whose rotation drives the parameter; not owned.
    OvNode *getDriver() const { return m_driver; }
    void setDriver(OvNode *bone) { m_driver = bone; }
    bool isFlipped() const { return m_flipped; }
    void setFlipped(bool flipped) { m_flipped = flipped; }

    // The two sphere matrices (host units) that bound the region the parameter blends over.
    void setMatrices(const OvMatrix4 &first, const OvMatrix4 &second) {
        m_first = first;
        m_second = second;
    }
    const OvMatrix4 &getFirstMatrix() const { return m_first; }
    const OvMatrix4 &getSecondMatrix() const { return m_second; }
    bool getApplyMatrices() const { return m_applyMatrices; }
    void setApplyMatrices(bool on) { m_applyMatrices = on; }

private:
    QString m_name;
    ParamAxis m_axis = NoAxis;
    OvNode *m_driver = nullptr;
    bool m_flipped = false;
    OvMatrix4 m_first, m_second;
    bool m_applyMatrices = false;
};

// Bends the geometry about the joint: four angles (radians) bound the blend zones, and the bulges
// (host units) swell the inside and outside of the bend.
class OvPoserBendParam : public OvPoserJointParam {
public:
    const char *className() const override { return "OvPoserBendParam"; }
    void setAngles(float a, float b, float c, float d) {
        m_angles[0] = a;
        m_angles[1] = b;
        m_angles[2] = c;
        m_angles[3] = d;
    }
    float getAngle(int i) const { return m_angles[i]; }
    bool getApplyAngles() const { return m_applyAngles; }
    void setApplyAngles(bool on) { m_applyAngles = on; }
    bool getApplyBulges() const { return m_applyBulges; }
    void setApplyBulges(bool on) { m_applyBulges = on; }
    void setPosLeftBulge(float v) { m_bulges[0] = v; }
    void setPosRightBulge(float v) { m_bulges[1] = v; }
    void setNegLeftBulge(float v) { m_bulges[2] = v; }
    void setNegRightBulge(float v) { m_bulges[3] = v; }
    float getPosLeftBulge() const { return m_bulges[0]; }
    float getPosRightBulge() const { return m_bulges[1]; }
    float getNegLeftBulge() const { return m_bulges[2]; }
    float getNegRightBulge() const { return m_bulges[3]; }

private:
    float m_angles[4] = {0, 0, 0, 0};
    float m_bulges[4] = {0, 0, 0, 0};
    bool m_applyAngles = false;
    bool m_applyBulges = false;
};

// Twists the geometry between a start and an end point along the axis (host units).
class OvPoserTwistParam : public OvPoserJointParam {
public:
    const char *className() const override { return "OvPoserTwistParam"; }
    float getStart() const { return m_start; }
    void setStart(float v) { m_start = v; }
    float getEnd() const { return m_end; }
    void setEnd(float v) { m_end = v; }
    bool getApplyBlend() const { return m_applyBlend; }
    void setApplyBlend(bool on) { m_applyBlend = on; }

private:
    float m_start = 0;
    float m_end = 0;
    bool m_applyBlend = false;
};

// Scales the geometry with a smooth falloff over four zone bounds (host units).
class OvPoserSmoothScale : public OvPoserJointParam {
public:
    const char *className() const override { return "OvPoserSmoothScale"; }
    void setSmoothZones(float a, float b, float c, float d) {
        m_zones[0] = a;
        m_zones[1] = b;
        m_zones[2] = c;
        m_zones[3] = d;
    }
    float getSmoothZone(int i) const { return m_zones[i]; }

private:
    float m_zones[4] = {0, 0, 0, 0};
};

// Curves the body part along the twist axis of its bone.
class OvPoserCurve : public OvPoserJointParam {
public:
    OvPoserCurve(OvNode *bone, int axis) : m_bone(bone) { setAxis(axis); }
    const char *className() const override { return "OvPoserCurve"; }
    OvNode *getBone() const { return m_bone; }

private:
    OvNode *m_bone; // not owned
};
