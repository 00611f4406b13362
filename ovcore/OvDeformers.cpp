#include "OvDeformers.h"

#include <algorithm>

void OvNaturalSpline::insertPoint(float x, float y) {
    auto at = std::upper_bound(m_points.begin(), m_points.end(), x,
                               [](float v, const std::pair<float, float> &p) { return v < p.first; });
    m_points.insert(at, {x, y});
}

void OvDForm::setZone(OvDFormZone *zone) {
    if (zone && std::find(m_zones.begin(), m_zones.end(), zone) == m_zones.end())
        m_zones.push_back(zone);
}
