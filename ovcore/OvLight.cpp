#include "OvLight.h"

OvLight::OvLight()
    : m_color(addProperty(new OvColorProperty(QStringLiteral("Color")))),
      m_intensity(addProperty(new OvFloatProperty(QStringLiteral("Intensity"), 1.0f))) {}

OvBasicCamera::OvBasicCamera(int cameraType, bool flag)
    : m_type(cameraType), m_flag(flag),
      m_focalLength(addProperty(new OvFloatProperty(QStringLiteral("Focal Length"), 50.0f))) {}
