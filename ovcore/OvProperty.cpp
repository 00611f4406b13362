#include "OvProperty.h"

#include <algorithm>

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
