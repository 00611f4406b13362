#include "OvLight.h"

OvBasicCamera::OvBasicCamera(int cameraType, bool flag)
    : m_type(cameraType), m_flag(flag),
      m_focalLength(addProperty(new OvFloatProperty(QStringLiteral("Focal Length"), 50.0f))) {}
