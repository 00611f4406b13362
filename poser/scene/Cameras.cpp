// The camera steps: the doc section points the active viewport at the camera a scene was viewed
// through, and once the file is read the cameras' focal lengths and focal distances are converted
// from Poser's conventions.
#include "../OvPZ3Importer.h"

#include <OvApp.h>
#include <OvLight.h>
#include <OvMainWindow.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <OvViewport.h>
#include <cstring>

namespace {

// Poser's view cameras and the host's view camera types.
const char *const kViewCameras[OvViewportMgr::NumViewCameras] = {
    "FRONT_CAMERA", "BACK_CAMERA", "SIDE_CAMERA", "RIGHT_CAMERA", "TOP_CAMERA", "BOTTOM_CAMERA"};

// Cameras that follow a body part, and the bone each follows.
struct BodyPartCamera {
    const char *camera;
    const char *bone;
};
const BodyPartCamera kBodyPartCameras[] = {
    {"FACE_CAMERA", "head"}, {"RHAND_CAMERA", "rHand"}, {"LHAND_CAMERA", "lHand"}, {"POSE_CAMERA", "hip"}};

// Perspective focal lengths scale by the single-precision 1.4626, applied as a double.
constexpr double kFocalScale = double(1.4626f);
constexpr float kOrthographicFocal = 50.0f;

// Where a body-part camera's focal distance is measured from when it hangs under nothing: the
// bone of the first figure (in scene order) that has it; the origin when none has.
OvVec3 firstFigureBone(const char *bone) {
    OvScene *scene = OvApp::getScene();
    OvBone *found = nullptr;
    for (int i = 0; !found && i < scene->getNumNodes(); ++i)
        forEachNode(scene->getNode(i), [&](OvNode *node) {
            if (auto *skeleton = qobject_cast<OvSkeleton *>(node); skeleton && !found)
                found = skeleton->findBone(QLatin1String(bone));
            return !found;
        });
    return found ? found->getWSPos() : OvVec3();
}

} // namespace

bool OvPZ3Importer::parseDocLine(char **argv, int argc) {
    if (std::strcmp(argv[0], "useCamera") != 0)
        return true;
    OvMainWindow *window = OvApp::getInterface();
    OvViewport *viewport = window ? window->getViewportMgr()->getActiveViewport() : nullptr;
    if (argc < 2) {
        reportError(tr("No active camera specified"));
        return true;
    }
    if (std::strncmp(argv[1], "SHADOW", 6) == 0 || !viewport)
        return true;
    OvBasicCamera *camera = nullptr;
    for (int type = 0; type < OvViewportMgr::NumViewCameras; ++type)
        if (std::strcmp(argv[1], kViewCameras[type]) == 0)
            camera = window->getViewportMgr()->getViewCamera(type);
    if (!camera)
        camera = OvApp::getScene()->findCamera(QString::fromLocal8Bit(argv[1]));
    if (camera)
        viewport->get3DViewport()->setCamera(camera);
    return true;
}

void OvPZ3Importer::finishCameras() {
    for (OvBasicCamera *camera : m_cameras) {
        OvFloatProperty *focal = camera->getFocalLengthChannel();
        for (int i = 0; i < focal->getNumKeys(); ++i)
            focal->setKeyValue(i, camera->isPerspective() ? float(double(focal->getKeyValue(i)) * kFocalScale)
                                                          : kOrthographicFocal);
        const BodyPartCamera *bodyPart = nullptr;
        for (const BodyPartCamera &b : kBodyPartCameras)
            if (camera->getName() == QLatin1String(b.camera))
                bodyPart = &b;
        if (!bodyPart) {
            camera->setFocalDistance(camera->getLocalPos().length());
            continue;
        }
        OvVec3 reference;
        if (OvNode *parent = camera->getNodeParent()) {
            reference = parent->getWSPos();
            // The camera no longer follows the figure; the scene takes it as a top-level node.
            parent->removeNodeChild(camera, false);
            OvApp::getScene()->addNode(camera);
        } else {
            reference = firstFigureBone(bodyPart->bone);
        }
        camera->setFocalDistance((camera->getLocalPos() - reference).length());
    }
}
