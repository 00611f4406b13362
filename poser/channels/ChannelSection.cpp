// The channels section of an object: each line opens one channel, picks the host property it
// drives and the mode in which its brace body is read.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"

#include <OvDeformers.h>
#include <OvLight.h>
#include <OvModifiers.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <cstring>

// Kinds in the order they are tried; only the prefix rows read a component letter at a fixed place.
const OvPZ3Importer::ChannelKindRow OvPZ3Importer::s_channelKinds[] = {
    {"rotateX", ChannelMatch::Exact, &OvPZ3Importer::chanRotate},
    {"rotateY", ChannelMatch::Exact, &OvPZ3Importer::chanRotate},
    {"rotateZ", ChannelMatch::Exact, &OvPZ3Importer::chanRotate},
    {"translate", ChannelMatch::Prefix, &OvPZ3Importer::chanTranslate},
    {"jointX", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"jointY", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"jointZ", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"twistX", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"twistY", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"twistZ", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"smoothScaleX", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"smoothScaleY", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"smoothScaleZ", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"curve", ChannelMatch::Exact, &OvPZ3Importer::chanJoint},
    {"propagatingScale", ChannelMatch::Prefix, &OvPZ3Importer::chanScale},
    {"scale", ChannelMatch::Prefix, &OvPZ3Importer::chanScale},
    {"kdRed", ChannelMatch::Exact, &OvPZ3Importer::chanLightColor},
    {"kdGreen", ChannelMatch::Exact, &OvPZ3Importer::chanLightColor},
    {"kdBlue", ChannelMatch::Exact, &OvPZ3Importer::chanLightColor},
    {"kdIntensity", ChannelMatch::Exact, &OvPZ3Importer::chanIntensity},
    {"targetGeom", ChannelMatch::Exact, &OvPZ3Importer::chanTargetGeom},
    {"focal", ChannelMatch::Exact, &OvPZ3Importer::chanFocal},
    {"liteFalloffEnd", ChannelMatch::Exact, &OvPZ3Importer::chanFalloffEnd},
    {"groups", ChannelMatch::Exact, &OvPZ3Importer::chanGroups},
    {"valueParm", ChannelMatch::Exact, &OvPZ3Importer::chanValueParm},
    {"geomChan", ChannelMatch::Exact, &OvPZ3Importer::chanGeomChan},
    {"deformerPropChan", ChannelMatch::Exact, &OvPZ3Importer::chanDeformerPropChan},
    {"pointAtParm", ChannelMatch::Exact, &OvPZ3Importer::chanPointAt},
    {nullptr, ChannelMatch::Exact, nullptr},
};

namespace {

// The axis (0 X, 1 Y, 2 Z) that the letter at `position` (counted from 1) names; -1 for none.
int axisAt(const char *token, size_t position) {
    if (std::strlen(token) < position)
        return -1;
    switch (token[position - 1]) {
    case 'X':
        return 0;
    case 'Y':
        return 1;
    case 'Z':
        return 2;
    default:
        return -1;
    }
}

} // namespace

bool OvPZ3Importer::parseChannelsLine(char **argv, int argc) {
    // Every channel line starts afresh: nothing of the previous channel may reach this one's body.
    m_curProperty = nullptr;
    m_curChannelType = 0;
    m_isColorChannel = false;
    m_ignoreKeys = false;
    if (!m_curNode)
        qDebug("NULL m_curNode");
    for (const ChannelKindRow *row = s_channelKinds; row->keyword; ++row) {
        // The first character rules out most rows before a string is compared.
        if (row->keyword[0] != argv[0][0])
            continue;
        const bool match = row->match == ChannelMatch::Exact
                               ? std::strcmp(argv[0], row->keyword) == 0
                               : std::strncmp(argv[0], row->keyword, std::strlen(row->keyword)) == 0;
        if (match)
            return (this->*row->handler)(argv, argc);
    }
    m_parseMode = ModeIgnore;
    return true;
}

void OvPZ3Importer::recordChannelName(char **argv, int argc) {
    if (m_curProperty && !m_applyToSelection && argc >= 2)
        addChannelNameMap(m_curProperty, tokenText(argv, 1, argc));
}

bool OvPZ3Importer::chanRotate(char **argv, int argc) {
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    static const int codes[3] = {RotateX, RotateY, RotateZ};
    const int axis = axisAt(argv[0], 7);
    OvFloatProperty *controls[3] = {m_curNode->getXRotControl(), m_curNode->getYRotControl(),
                                    m_curNode->getZRotControl()};
    m_curProperty = controls[axis];
    m_curChannelType = codes[axis];
    trackRotationAxis(m_curNode, axis);
    recordChannelName(argv, argc);
    m_parseMode = ModeChannel;
    return true;
}

bool OvPZ3Importer::chanTranslate(char **argv, int argc) {
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    m_ignoreKeys = qobject_cast<OvBone *>(m_curNode) &&
                   m_curNode->findDataItem(QStringLiteral("PoserIKTarget")) != nullptr;
    // A distant light has no place to move to; a camera moves only along its dolly channels.
    if (qobject_cast<OvLight *>(m_curNode) && !qobject_cast<OvSpotLight *>(m_curNode))
        return true;
    if (qobject_cast<OvBasicCamera *>(m_curNode) && (argc < 2 || std::strncmp(argv[1], "dolly", 5) != 0))
        return true;
    static const int codes[3] = {TranslateX, TranslateY, TranslateZ};
    const int axis = axisAt(argv[0], 10);
    if (axis >= 0) {
        OvFloatProperty *controls[3] = {m_curNode->getXPosControl(), m_curNode->getYPosControl(),
                                        m_curNode->getZPosControl()};
        m_curProperty = controls[axis];
        m_curChannelType = codes[axis];
    } else {
        qDebug("Translation channel not found");
    }
    recordChannelName(argv, argc);
    m_parseMode = ModeChannel;
    return true;
}

bool OvPZ3Importer::chanScale(char **argv, int argc) {
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    const size_t prefix = std::strncmp(argv[0], "propagatingScale", 16) == 0 ? 16 : 5;
    if (std::strlen(argv[0]) == prefix) {
        m_curProperty = m_curNode->getScaleControl();
        m_curChannelType = UniformScale;
    } else if (const int axis = axisAt(argv[0], prefix + 1); axis >= 0) {
        static const int codes[3] = {ScaleX, ScaleY, ScaleZ};
        OvFloatProperty *controls[3] = {m_curNode->getXScaleControl(), m_curNode->getYScaleControl(),
                                        m_curNode->getZScaleControl()};
        m_curProperty = controls[axis];
        m_curChannelType = codes[axis];
    }
    recordChannelName(argv, argc);
    m_parseMode = ModeChannel;
    return true;
}

// The three colour channels share the light's one colour property.
bool OvPZ3Importer::chanLightColor(char **argv, int) {
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    m_colorComponent = argv[0][2] == 'R' ? 0 : argv[0][2] == 'G' ? 1 : 2;
    m_isColorChannel = true;
    m_curProperty = m_curNode->findProperty(QStringLiteral("Color"));
    if (!m_curProperty)
        qDebug("Color channel not found");
    m_parseMode = ModeChannel;
    return true;
}

bool OvPZ3Importer::chanIntensity(char **, int) {
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    m_colorComponent = 3;
    m_curProperty = m_curNode->findProperty(QStringLiteral("Intensity"));
    if (!m_curProperty)
        qDebug("Intensity channel not found");
    m_parseMode = ModeChannel;
    return true;
}

bool OvPZ3Importer::chanFocal(char **, int) {
    if (auto *camera = qobject_cast<OvBasicCamera *>(m_curNode)) {
        m_curProperty = camera->getFocalLengthChannel();
        m_parseMode = ModeChannel;
    }
    return true;
}

bool OvPZ3Importer::chanFalloffEnd(char **, int) {
    if (auto *spot = qobject_cast<OvSpotLight *>(m_curNode)) {
        m_curProperty = spot->getSpreadAngleControl();
        m_parseMode = ModeChannel;
    }
    return true;
}

// A second groups channel starts afresh: the groups of the first are dropped.
bool OvPZ3Importer::chanGroups(char **, int) {
    m_parseMode = m_curNode ? ModeGroups : ModeIgnore;
    if (m_curNode)
        m_curGroupNode.reset(new Pz3ChannelGroupBuilder);
    return true;
}

bool OvPZ3Importer::chanValueParm(char **argv, int argc) {
    if (argc < 2) {
        reportError(tr("No name was given for the valueParm channel"));
        return false;
    }
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    m_curProperty = getValueProperty(m_curNode, tokenText(argv, 1, argc));
    m_parseMode = ModeChannel;
    return true;
}

bool OvPZ3Importer::chanGeomChan(char **, int) {
    if (!m_curNode) {
        qDebug("No current node for geomChan channel.");
        m_parseMode = ModeIgnore;
        return true;
    }
    OvObject *object = m_curNode->getObject();
    m_curProperty = object ? object->getGeometryControl() : nullptr;
    m_parseMode = ModeChannel;
    return true;
}

bool OvPZ3Importer::chanDeformerPropChan(char **argv, int argc) {
    m_curDeformerChannel = nullptr;
    if (!m_curNode || !m_curNode->getObject()) {
        m_parseMode = ModeIgnore;
        return true;
    }
    if (argc < 2) {
        reportError(tr("No deformer name was specified"));
        return false;
    }
    QString name = tokenText(argv, 1, argc);
    stripFigureNumber(name);
    m_curDeformerChannel = findOrCreateDeformerChannel(m_curNode, name);
    if (!m_curDeformerChannel || !m_curDeformerChannel->modifier) {
        m_parseMode = ModeIgnore;
        return true;
    }
    m_curProperty = m_curDeformerChannel->modifier->getValueChannel();
    m_parseMode = ModeParmChannel;
    return true;
}

bool OvPZ3Importer::chanPointAt(char **, int) {
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    m_curProperty = m_curNode->getPointAtControl();
    m_parseMode = ModeChannel;
    return true;
}

// ---- rotation order ----

OvRotationOrder OvPZ3Importer::rotationOrderFor(int count, const short axes[3]) {
    if (count <= 0)
        return OvRotationOrder::XYZ;
    static const short next[3] = {1, 0, 0}; // X->Y, Y->X, Z->X
    const short first = axes[0];
    const short second = count >= 2 ? axes[1] : next[first];
    if (first == second)
        return OvRotationOrder::XYZ;
    // Orders are numbered by first axis, two to each; the lower of the remaining two comes first.
    const short lower = first == 0 ? 1 : 0;
    return OvRotationOrder(first * 2 + (second == lower ? 0 : 1));
}

void OvPZ3Importer::trackRotationAxis(OvNode *node, int axis) {
    OvPz3NodeItem *item = getNodeItem(node);
    if (item->rotOrderFixed)
        return;
    if (item->rotAxisCount >= 3) {
        reportError(tr("Too many rotational degrees of freedom specified"));
        return;
    }
    item->rotAxes[item->rotAxisCount++] = short(axis);
    item->rotOrder = rotationOrderFor(item->rotAxisCount, item->rotAxes);
}

void OvPZ3Importer::turnOffLimits(OvNode *node) {
    if (!node) {
        qWarning("NULL pointer passed to OvPZ3Importer::turnOffLimits()");
        return;
    }
    if (auto *skeleton = qobject_cast<OvSkeleton *>(node))
        for (OvBone *bone : skeleton->getAllBones())
            turnOffLimits(bone);
    node->getXRotControl()->setIsClamped(false);
    node->getYRotControl()->setIsClamped(false);
    node->getZRotControl()->setIsClamped(false);
}
