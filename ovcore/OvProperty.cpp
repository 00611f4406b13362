#include "OvProperty.h"
#include "OvNode.h"
#include "OvPropertyGroups.h"

#include <algorithm>
#include <cmath>

void OvProperty::insertController(OvController *controller, int position) {
    if (!controller)
        return;
    if (position < 0 || position >= int(m_controllers.size()))
        m_controllers.emplace_back(controller);
    else
        m_controllers.emplace(m_controllers.begin() + position, controller);
}

bool OvProperty::removeController(OvController *controller) {
    auto it =
        std::find_if(m_controllers.begin(), m_controllers.end(),
                     [controller](const std::unique_ptr<OvController> &c) { return c.get() == controller; });
    if (it == m_controllers.end())
        return false;
    it->release();
    m_controllers.erase(it);
    return true;
}

QColor OvColorProperty::getColorValue(int time) const {
    if (m_keys.isEmpty())
        return m_value;
    int rgb[3];
    for (int c = 0; c < 3; ++c) {
        const int shift = 16 - 8 * c; // red, green, blue
        const double v =
            evaluateKeys(m_keys, time, [&](int i) { return double((m_keys.value(i) >> shift) & 0xff); });
        rgb[c] = std::isfinite(v) ? int(std::lround(std::min(255.0, std::max(0.0, v)))) : 0;
    }
    return QColor(rgb[0], rgb[1], rgb[2]);
}

void OvProperty::setPath(const QString &path) {
    if (m_owner)
        m_owner->getPropertyGroups()->place(m_name, m_path, path);
    m_path = path;
}
