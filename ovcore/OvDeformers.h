#pragma once
// Magnet deformers: a magnet (OvDForm) pulls geometry relative to its base, inside its zone,
// weighted by the zone's falloff curve.

#include "OvNode.h"
#include <utility>
#include <vector>

// A curve through control points, kept sorted by x.
class OvNaturalSpline {
public:
    void clear() { m_points.clear(); }
    void insertPoint(float x, float y);
    int getNumPoints() const { return int(m_points.size()); }
    const std::pair<float, float> &getPoint(int i) const { return m_points[size_t(i)]; }

private:
    std::vector<std::pair<float, float>> m_points;
};

class OvDFormBase : public OvNode {
    Q_OBJECT
public:
    OvDFormBase() = default;
};

class OvDFormZone : public OvNode {
    Q_OBJECT
public:
    OvDFormZone() = default;
    OvNaturalSpline *getSpline() { return &m_falloff; }
    const OvNaturalSpline *getSpline() const { return &m_falloff; }

private:
    OvNaturalSpline m_falloff;
};

class OvDForm : public OvNode {
    Q_OBJECT
public:
    OvDForm() = default;
    OvDFormBase *getBase() const { return m_base; }
    void setBase(OvDFormBase *base) { m_base = base; }
    // Zones, in the order they were added.
    const std::vector<OvDFormZone *> &getZones() const { return m_zones; }
    void setZone(OvDFormZone *zone);

private:
    OvDFormBase *m_base = nullptr;
    std::vector<OvDFormZone *> m_zones;
};
