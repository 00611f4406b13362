#pragma once
// The host's viewports: each shows the scene through a camera, one of them is active. The six view
// cameras (front, back, side, right, top, bottom) belong to the viewport manager, not to the scene.

#include "OvLight.h"
#include <QPointer>
#include <memory>
#include <vector>

class OvBasicCamera;

class Ov3DViewport {
public:
    // The camera shown; null once that camera is deleted.
    OvBasicCamera *getCamera() const;
    void setCamera(OvBasicCamera *camera);

private:
    QPointer<OvBasicCamera> m_camera;
};

class OvViewport {
public:
    Ov3DViewport *get3DViewport() { return &m_view; }
    const Ov3DViewport *get3DViewport() const { return &m_view; }

private:
    Ov3DViewport m_view;
};

class OvViewportMgr {
public:
    static constexpr int NumViewports = 4;
    static constexpr int NumViewCameras = 6;

    OvViewportMgr();
    ~OvViewportMgr();
    OvViewportMgr(const OvViewportMgr &) = delete;
    OvViewportMgr &operator=(const OvViewportMgr &) = delete;

    int getNumViewports() const { return NumViewports; }
    OvViewport *getViewport(int i) { return &m_viewports[size_t(i)]; }
    const OvViewport *getViewport(int i) const { return &m_viewports[size_t(i)]; }
    int getActiveIndex() const { return m_active; }
    OvViewport *getActiveViewport() { return m_active < 0 ? nullptr : getViewport(m_active); }
    // -1 leaves no viewport active.
    void setActiveViewport(int i) { m_active = i >= -1 && i < NumViewports ? i : -1; }
    // The view camera of a type 0 (front) to 5 (bottom); null for other types.
    OvBasicCamera *getViewCamera(int type) const;

private:
    std::vector<OvViewport> m_viewports;
    std::vector<std::unique_ptr<OvBasicCamera>> m_viewCameras;
    int m_active = 0;
};
