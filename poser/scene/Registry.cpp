// The node registry: how every section finds the scene objects a file talks about.
#include "../OvPZ3Importer.h"
#include "SceneHelpers.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <new>

using poser::isDeformer;
using poser::make;

namespace {

void collectMaterials(const OvNode *node, OvTArray<OvTSharedPointer<OvMaterial>> &out) {
    const OvObject *object = node ? node->getObject() : nullptr;
    if (!object)
        return;
    for (int s = 0; s < object->getNumShapes(); ++s) {
        const OvShape *shape = object->getShape(s);
        for (int m = 0; m < shape->getNumMaterials(); ++m)
            out.append(shape->getMaterial(m));
    }
}

} // namespace

// ---- records ----

OvPz3SceneItem::OvPz3SceneItem(OvNode *n, bool figure, bool made) : node(n), isFigure(figure), created(made) {
    collectMaterials(node, materials);
    if (auto *skeleton = qobject_cast<OvSkeleton *>(node))
        for (OvBone *bone : skeleton->getAllBones())
            collectMaterials(bone, materials);
}

OvTSharedPointer<OvMaterial> OvPz3SceneItem::findMaterial(const QString &materialName) const {
    for (int i = 0; i < materials.size(); ++i)
        if (materials[i] && materials[i]->getName() == materialName)
            return materials[i];
    if (materialName == QLatin1String("Preview"))
        return findMaterial(QStringLiteral("default"));
    return OvTSharedPointer<OvMaterial>();
}

// ---- names ----

int OvPZ3Importer::stripFigureNumber(QString &name) {
    int colon = name.indexOf(QLatin1Char(':'));
    if (colon <= 0)
        return -1;
    bool ok = false;
    int number = name.mid(colon + 1).toInt(&ok, 10);
    name.truncate(colon);
    return ok ? number : 0;
}

// Counters go on from the last one this import handed out for the base, so that 10,000 figures of
// one geometry do not each try every label taken before them.
QString OvPZ3Importer::makeUniqueLabel(const QString &base) {
    OvScene *scene = OvApp::getScene();
    QString label = base;
    int counter = 2;
    for (;;) {
        OvNode *clash = scene->findNodeByLabel(label);
        if (!clash || isDeformer(clash))
            break;
        if (counter == 2)
            counter = qMax(counter, m_labelCounters.value(base, 2));
        label = QStringLiteral("%1 (%2)").arg(base).arg(counter++);
    }
    if (counter > 2)
        m_labelCounters.insert(base, counter);
    return label;
}

void OvPZ3Importer::addSceneItem(const OvPz3SceneItem &item) {
    m_sceneItems.append(item);
    m_itemIndex.add(m_sceneItems, m_sceneItems.size() - 1);
}

// ---- scene items ----

OvPz3SceneItem *OvPZ3Importer::findSceneItem(const OvNode *node) {
    const int i = m_itemIndex.firstOfNode(node);
    return i < 0 ? nullptr : &m_sceneItems[i];
}

OvPz3SceneItem *OvPZ3Importer::findSceneItemByName(const QString &name) {
    const int i = m_itemIndex.firstNamed(name);
    return i < 0 ? nullptr : &m_sceneItems[i];
}

OvPz3NodeItem *OvPZ3Importer::findNodeItem(const OvNode *node) const {
    return m_nodeItemOf.value(node);
}

OvPz3NodeItem *OvPZ3Importer::getNodeItem(OvNode *node) {
    if (OvPz3NodeItem *item = findNodeItem(node))
        return item;
    m_nodeItems.emplace_back(new OvPz3NodeItem(node));
    m_nodeItemOf.insert(node, m_nodeItems.back().get());
    return m_nodeItems.back().get();
}

void OvPZ3Importer::forgetNode(OvNode *node) {
    // Positions move only when an item goes; most forgotten nodes (lights) are no items.
    if (m_itemIndex.firstOfNode(node) >= 0) {
        for (int i = m_sceneItems.size() - 1; i >= 0; --i)
            if (m_sceneItems[i].node == node)
                m_sceneItems.removeAt(i);
        m_itemIndex.rebuild(m_sceneItems);
    }
    m_nodeItemOf.remove(node);
    forgetLinksOf(node);
    for (size_t i = m_nodeItems.size(); i-- > 0;) {
        if (m_nodeItems[i]->node == node)
            m_nodeItems.erase(m_nodeItems.begin() + long(i));
        else if (m_nodeItems[i]->smartParent == node)
            m_nodeItems[i]->smartParent = nullptr;
    }
    for (size_t i = m_deformerChannels.size(); i-- > 0;)
        if (m_deformerChannels[i]->node == node) {
            if (m_curDeformerChannel == m_deformerChannels[i].get())
                m_curDeformerChannel = nullptr;
            m_deformerChannels.erase(m_deformerChannels.begin() + long(i));
        }
    for (int i = m_subDNodes.size() - 1; i >= 0; --i)
        if (m_subDNodes[i].node == node)
            m_subDNodes.removeAt(i);
    if (auto *light = qobject_cast<OvLight *>(node)) {
        m_lights.removeAll(light);
        reindexLights();
    }
    if (auto *camera = qobject_cast<OvBasicCamera *>(node))
        m_cameras.removeAll(camera);
    if (m_curNode == node)
        m_curNode = nullptr;
    if (m_curFigure == node)
        m_curFigure = nullptr;
    OvScene *scene = OvApp::getScene();
    if (scene->getPrimarySelection() == node)
        scene->setPrimarySelection(nullptr);
}

// ---- figures ----

OvNode *OvPZ3Importer::getSkeleton(int figureNumber, bool create) {
    if (const int i = m_itemIndex.firstFigure(figureNumber); i >= 0)
        return m_sceneItems[i].node;
    if (!create || m_applyToSelection)
        return nullptr;
    auto *skeleton = make<OvSkeleton>();
    if (m_figureResName.isEmpty())
        m_figureResName = OvFileIO::getBaseFileName(m_fileName);
    skeleton->setName(QStringLiteral("%1_%2").arg(m_figureResName).arg(m_figureVertexCount));
    if (!m_figureBaseName.isEmpty()) {
        skeleton->setLabel(makeUniqueLabel(m_figureBaseName));
        m_figureBaseName.clear();
    } else {
        skeleton->setLabel(makeUniqueLabel(m_figureResName));
    }
    OvApp::getScene()->addNode(skeleton);
    if (m_curGeom) {
        // The whole file: an empty group name, where a prop's own record has none at all.
        const QString wholeFile = QStringLiteral("");
        if (auto *data = dynamic_cast<OvGeomSourceFileData *>(
                skeleton->findDataItem(QStringLiteral("GeomSourceFileData")))) {
            data->setSourceFilePath(m_curGeom->path);
            data->setGroupName(wholeFile);
        } else {
            skeleton->addDataItem(new OvGeomSourceFileData(m_curGeom->path, wholeFile));
        }
    }
    OvPz3SceneItem item(skeleton, true, true);
    item.figureNumber = figureNumber;
    addSceneItem(item);
    return skeleton;
}

OvSkeleton *OvPZ3Importer::getSelectedSkeleton() {
    OvNode *selection = OvApp::getScene()->getPrimarySelection();
    if (selection && selection->inherits("OvBone"))
        selection = selection->getSkeleton();
    auto *skeleton = qobject_cast<OvSkeleton *>(selection);
    if (skeleton && !findSceneItem(skeleton))
        addSceneItem(OvPz3SceneItem(skeleton, true, false));
    return skeleton;
}

// ---- props ----

OvNode *OvPZ3Importer::getPropNode(const QString &name, int kind) {
    if (m_applyToSelection) {
        OvNode *selection = OvApp::getScene()->getPrimarySelection();
        if (!selection)
            return nullptr;
        OvNode *result = nullptr;
        OvNode *root = nullptr;
        if (selection->inherits("OvBone")) {
            root = selection->getSkeleton();
            if (!root)
                result = selection;
        } else if (selection->inherits("OvSkeleton")) {
            root = selection;
        } else {
            result = selection;
        }
        if (root) {
            result = root->findNodeChild(name, true);
            if (!result && kind == PropDForm) {
                auto *skeleton = qobject_cast<OvSkeleton *>(root);
                OvSkeleton *followed = skeleton ? skeleton->getFollowTarget() : nullptr;
                if (followed && (result = followed->findNodeChild(name, true)))
                    m_foundOnFollowTarget = true;
            }
            if (!result)
                return nullptr;
        }
        if (!findSceneItem(result))
            addSceneItem(OvPz3SceneItem(result, true, false));
        return result;
    }

    if (const int i = m_itemIndex.firstPropNamed(name); i >= 0)
        return m_sceneItems[i].node;
    const QString label = makeUniqueLabel(name);
    OvNode *node = nullptr;
    switch (kind) {
    case PropDFormBase:
        node = make<OvDFormBase>();
        break;
    case PropDForm:
        node = make<OvDForm>();
        break;
    case PropDFormZone:
        node = make<OvDFormZone>();
        break;
    default:
        node = make<OvNode>();
        break;
    }
    node->setName(label);
    node->setLabel(label);
    OvApp::getScene()->addNode(node);
    OvPz3SceneItem item(node, false, true);
    item.name = name;
    addSceneItem(item);
    return node;
}

// ---- bones ----

OvNode *OvPZ3Importer::getNode(OvNode *item, const QString &nameIn) {
    if (!item) {
        qDebug("NULL item passed to OvPZ3Importer::getNode()");
        return nullptr;
    }
    if (nameIn.isNull()) {
        qDebug("NULL node name passed to OvPZ3Importer::getNode()");
        return nullptr;
    }
    if (item->inherits("OvDFormBase") || !item->inherits("OvSkeleton")) {
        OvPz3SceneItem *own = findSceneItem(item);
        if (own && own->name == nameIn)
            return item;
        OvPz3SceneItem *named = findSceneItemByName(nameIn);
        return named ? named->node : nullptr;
    }
    auto *skeleton = static_cast<OvSkeleton *>(item);
    if (nameIn == QLatin1String("BODY"))
        return skeleton;
    QString name = nameIn;
    if (m_handSide != Pz3HandSide::NotHandPose && !name.isEmpty()) {
        m_fileHandSide = name.at(0) == QLatin1Char('r') ? Pz3HandSide::Right : Pz3HandSide::Left;
        name[0] = QLatin1Char(m_handSide == Pz3HandSide::Right ? 'r' : 'l');
    }
    if (OvBone *bone = skeleton->findBone(name))
        return bone;
    if (m_applyToSelection)
        return nullptr;
    auto *bone = make<OvBone>();
    bone->setName(name);
    skeleton->addNodeChild(bone, false);
    auto *object = make<OvObject>();
    object->setName(name);
    object->addModifier(make<OvPoserJoint>(), -1);
    bone->setObject(object);
    return bone;
}

OvNode *OvPZ3Importer::findNode(const QString &qualifiedName) {
    QString name = qualifiedName;
    const int figureNumber = stripFigureNumber(name);
    OvNode *figure = getSkeleton(figureNumber, false);
    if (!figure)
        return nullptr;
    if (auto *skeleton = qobject_cast<OvSkeleton *>(figure)) {
        if (name == QLatin1String("BODY"))
            return skeleton;
        return skeleton->findBone(name);
    }
    OvPz3SceneItem *own = findSceneItem(figure);
    if (own && own->name == name)
        return figure;
    OvPz3SceneItem *named = findSceneItemByName(name);
    return named ? named->node : nullptr;
}

// ---- lights and cameras ----

void OvPZ3Importer::reindexLights() {
    m_lightNamed.clear();
    for (OvLight *light : m_lights)
        if (!m_lightNamed.contains(light->getName()))
            m_lightNamed.insert(light->getName(), light);
}

OvLight *OvPZ3Importer::getLight(const QString &name) {
    if (OvLight *light = m_lightNamed.value(name))
        return light;
    auto *light = make<OvDistantLight>();
    light->setName(name);
    OvApp::getScene()->addNode(light);
    m_lights.append(light);
    m_lightNamed.insert(name, light);
    return light;
}

OvBasicCamera *OvPZ3Importer::getCamera(const QString &name) {
    static const char *const skipped[] = {"SIDE_CAMERA",   "RIGHT_CAMERA", "TOP_CAMERA",
                                          "BOTTOM_CAMERA", "FRONT_CAMERA", "BACK_CAMERA"};
    // Shadow and orthographic cameras are Poser's own.
    if (name.left(6) == QLatin1String("SHADOW"))
        return nullptr;
    for (const char *s : skipped)
        if (name == QLatin1String(s))
            return nullptr;
    OvScene *scene = OvApp::getScene();
    OvBasicCamera *camera = scene->findCamera(name);
    if (!camera) {
        camera = new (std::nothrow) OvBasicCamera(6, false);
        if (!camera)
            throw QString("Out of Memory");
        camera->setName(name);
        scene->addNode(camera);
    }
    if (!m_cameras.contains(camera))
        m_cameras.append(camera);
    return camera;
}

// ---- deformer channels ----

OvPz3DeformerChannelItem *OvPZ3Importer::findOrCreateDeformerChannel(OvNode *node, const QString &name) {
    for (const auto &item : m_deformerChannels)
        if (item->node == node && item->modifier && item->modifier->getName() == name)
            return item.get();
    OvObject *object = node ? node->getObject() : nullptr;
    if (!object)
        return nullptr;
    for (int i = 0; i < object->getNumModifiers(); ++i) {
        auto *modifier = dynamic_cast<OvDFormModifier *>(object->getModifier(i));
        if (modifier && modifier->getName() == name) {
            m_deformerChannels.emplace_back(new OvPz3DeformerChannelItem{modifier, node});
            return m_deformerChannels.back().get();
        }
    }
    if (m_applyToSelection && !m_foundOnFollowTarget)
        return nullptr;
    auto *modifier = make<OvDFormModifier>();
    modifier->setName(name);
    // Deformer modifiers stay ahead of morphs and joints.
    int position = 0;
    while (position < object->getNumModifiers() &&
           dynamic_cast<OvDFormModifier *>(object->getModifier(position)))
        ++position;
    object->addModifier(modifier, position);
    m_deformerChannels.emplace_back(new OvPz3DeformerChannelItem{modifier, node});
    return m_deformerChannels.back().get();
}
