#include "OvViewport.h"
#include "OvLight.h"

OvBasicCamera *Ov3DViewport::getCamera() const {
    return m_camera.data();
}

void Ov3DViewport::setCamera(OvBasicCamera *camera) {
    m_camera = camera;
}

// The viewports start on the front, side, top and front view cameras.
OvViewportMgr::OvViewportMgr() : m_viewports(NumViewports) {
    static const char *const names[NumViewCameras] = {"Front Camera", "Back Camera", "Side Camera",
                                                      "Right Camera", "Top Camera",  "Bottom Camera"};
    for (int type = 0; type < NumViewCameras; ++type) {
        m_viewCameras.emplace_back(new OvBasicCamera(type, false));
        m_viewCameras.back()->setName(QString::fromLatin1(names[type]));
    }
    static const int initial[NumViewports] = {0, 2, 4, 0};
    for (int i = 0; i < NumViewports; ++i)
        m_viewports[size_t(i)].get3DViewport()->setCamera(m_viewCameras[size_t(initial[i])].get());
}

OvViewportMgr::~OvViewportMgr() = default;

OvBasicCamera *OvViewportMgr::getViewCamera(int type) const {
    return type >= 0 && type < NumViewCameras ? m_viewCameras[size_t(type)].get() : nullptr;
}
