// Channel bodies: the default value, limits, sensitivity, label and visibility of the property a
// channel drives. Ordinary channels, morph channels and deformer channels share one family of
// attribute keywords; each body mode has its own table of the ones it takes.
#include "../OvPZ3Importer.h"
#include "../scene/SceneHelpers.h"

#include <OvDeformers.h>
#include <OvModifiers.h>
#include <QtDebug>
#include <cstdlib>
#include <text/Numbers.h>

namespace {
constexpr const char *NoValue = "No value specified";
// Limits beyond these mean the channel has no real limit.
constexpr float NoLowerLimit = -9999.0f;
constexpr float NoUpperLimit = 9999.0f;
} // namespace

// Dependent-parameter blocks, in every body; their codes are the host's link types.
#define OV_VALUE_OPS                                                                                         \
    {"valueOpDeltaAdd", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyValueOp<0>},                            \
        {"valueOpDivideInto", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyValueOp<1>},                      \
        {"valueOpDivideBy", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyValueOp<2>},                        \
        {"valueOpTimes", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyValueOp<3>},                           \
        {"valueOpMinus", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyValueOp<4>}, {                         \
        "valueOpPlus", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyValueOp<5>                               \
    }

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_channelBodyKeywords[] = {
    {"initValue", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyInitValue, Needs::Property},
    {"min", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyMin, Needs::Property},
    {"max", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyMax, Needs::Property},
    {"trackingScale", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyTrackingScale, Needs::Property},
    {"forceLimits", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyForceLimits, Needs::Property},
    {"name", 2, Short::Warn, "No name specified", &OvPZ3Importer::bodyName},
    OV_VALUE_OPS,
    {"hidden", 2, Short::Skip, nullptr, &OvPZ3Importer::bodyHidden, Needs::Property},
    {"keys", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyKeys},
    {"pointAtTarget", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyPointAtTarget},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_targetGeomKeywords[] = {
    {"name", 2, Short::Warn, "No name specified", &OvPZ3Importer::bodyName},
    {"initValue", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyInitValue, Needs::Property},
    {"min", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyMin, Needs::Property},
    {"max", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyMax, Needs::Property},
    {"trackingScale", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyTrackingScale, Needs::Property},
    {"forceLimits", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyForceLimits, Needs::Property},
    {"deltas", 0, Short::Skip, nullptr, &OvPZ3Importer::morphDeltas},
    {"useBinaryMorph", 0, Short::Skip, nullptr, &OvPZ3Importer::morphUseBinary},
    {"indexes", 0, Short::Skip, nullptr, &OvPZ3Importer::morphIndexes},
    {"numbDeltas", 2, Short::Stop, "No delta count was given", &OvPZ3Importer::morphNumbDeltas},
    {"keys", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyKeys},
    {"hidden", 2, Short::Skip, nullptr, &OvPZ3Importer::bodyHidden, Needs::Property},
    OV_VALUE_OPS,
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_parmChannelKeywords[] = {
    {"name", 2, Short::Warn, "No name specified", &OvPZ3Importer::bodyName},
    {"min", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyMin, Needs::Property},
    {"max", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyMax, Needs::Property},
    {"trackingScale", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyTrackingScale, Needs::Property},
    {"forceLimits", 2, Short::Stop, NoValue, &OvPZ3Importer::bodyForceLimits, Needs::Property},
    {"deformerProp", 2, Short::Stop, "No name for deformer prop was specified",
     &OvPZ3Importer::bodyDeformerProp},
    {"addZone", 0, Short::Skip, nullptr, &OvPZ3Importer::ignoreLine},
    {"keys", 0, Short::Skip, nullptr, &OvPZ3Importer::bodyKeys},
    {"hidden", 2, Short::Skip, nullptr, &OvPZ3Importer::bodyHidden, Needs::Property},
    OV_VALUE_OPS,
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

#undef OV_VALUE_OPS

bool OvPZ3Importer::parseChannelBody(char **argv, int argc) {
    return dispatchKeyword(s_channelBodyKeywords, argv, argc);
}

bool OvPZ3Importer::parseTargetGeomBody(char **argv, int argc) {
    return dispatchKeyword(s_targetGeomKeywords, argv, argc);
}

bool OvPZ3Importer::parseParmChannelBody(char **argv, int argc) {
    return dispatchKeyword(s_parmChannelKeywords, argv, argc);
}

// A body value; text that is no number leaves the property as it was, where Poser would take 0.
bool OvPZ3Importer::bodyValue(char **argv, float &value) {
    if (!text::isPoserNumber(argv[1])) {
        reportInfo(tr("\"%1\" is not a number; the %2 line is ignored")
                       .arg(QString::fromLocal8Bit(argv[1]), QString::fromLatin1(argv[0])));
        return false;
    }
    value = parsePoserFloat(argv[1]);
    return true;
}

// Limits that were given the wrong way round are put right, and said so; a clamped dial takes its
// limits, which its body may give after its value.
void OvPZ3Importer::checkChannelLimits() {
    auto *f = dynamic_cast<OvFloatProperty *>(m_curProperty);
    if (!f)
        return;
    if (!(f->getMin() > f->getMax())) {
        f->setValue(f->getValue());
        return;
    }
    reportInfo(tr("The minimum of channel \"%1\" (%2) lies above its maximum (%3); the two are swapped")
                   .arg(f->getLabel())
                   .arg(double(f->getMin()))
                   .arg(double(f->getMax())));
    const float min = f->getMax();
    f->setMax(f->getMin());
    f->setMin(min);
    f->setValue(f->getValue());
}

float OvPZ3Importer::channelUnits(float value) const {
    if (m_parseMode != ModeChannel)
        return value;
    const bool length = (m_curChannelType & (TranslateX | TranslateY | TranslateZ)) != 0 ||
                        (m_curChannelType == UniformScale && m_curProperty &&
                         qobject_cast<OvDFormZone *>(m_curProperty->getOwner()));
    return length ? float(double(value) * double(POSER_UNIT_CM)) : value;
}

bool OvPZ3Importer::bodyInitValue(char **argv, int) {
    float value = 0.0f;
    if (m_ignoreKeys || !bodyValue(argv, value))
        return true;
    value = channelUnits(value);
    if (auto *f = dynamic_cast<OvFloatProperty *>(m_curProperty))
        f->setDefaultValue(value);
    else
        m_curProperty->setIntValue(int(value));
    return true;
}

bool OvPZ3Importer::bodyMin(char **argv, int) {
    return setChannelLimit(argv, false);
}

bool OvPZ3Importer::bodyMax(char **argv, int) {
    return setChannelLimit(argv, true);
}

// A limit beyond +-9999 (after units) means the channel has none: it is unclamped.
bool OvPZ3Importer::setChannelLimit(char **argv, bool upper) {
    float value = 0.0f;
    if (!bodyValue(argv, value))
        return true;
    value = channelUnits(value);
    if (auto *f = dynamic_cast<OvFloatProperty *>(m_curProperty))
        upper ? f->setMax(value) : f->setMin(value);
    else if (auto *i = dynamic_cast<OvIntProperty *>(m_curProperty); i && m_parseMode != ModeParmChannel)
        upper ? i->setMax(int(value)) : i->setMin(int(value));
    else
        return true;
    if (upper ? value > NoUpperLimit : value < NoLowerLimit)
        static_cast<OvNumericProperty *>(m_curProperty)->setIsClamped(false);
    // Checked at once: a body cut short never reaches its closing brace.
    checkChannelLimits();
    return true;
}

bool OvPZ3Importer::bodyTrackingScale(char **argv, int) {
    float value = 0.0f;
    if (!bodyValue(argv, value) || !(value > 0.0f))
        return true;
    if (auto *f = dynamic_cast<OvFloatProperty *>(m_curProperty))
        f->setSensitivity(channelUnits(value));
    return true;
}

bool OvPZ3Importer::bodyForceLimits(char **argv, int) {
    if (std::atoi(argv[1]) != 0)
        if (auto *n = dynamic_cast<OvNumericProperty *>(m_curProperty)) {
            n->setIsClamped(true);
            checkChannelLimits();
        }
    return true;
}

// The light's colour property serves three channels; none of them names it.
bool OvPZ3Importer::bodyName(char **argv, int argc) {
    if (m_curProperty && !(m_parseMode == ModeChannel && m_isColorChannel))
        m_curProperty->setLabel(tokenText(argv, 1, argc));
    return true;
}

// The geometry switch is never hidden by an ordinary channel body.
bool OvPZ3Importer::bodyHidden(char **argv, int) {
    if (m_parseMode == ModeChannel && dynamic_cast<OvEnumProperty *>(m_curProperty))
        return true;
    m_curProperty->setHidden(std::atoi(argv[1]) != 0);
    return true;
}

bool OvPZ3Importer::bodyKeys(char **, int) {
    m_parseMode = ModeKeys;
    return true;
}

bool OvPZ3Importer::bodyPointAtTarget(char **argv, int argc) {
    if (!m_curProperty) {
        reportError(tr("No current channel for pointAtTarget"));
        return false;
    }
    auto *control = dynamic_cast<OvNumericNodeProperty *>(m_curProperty);
    if (!control) {
        reportError(tr("Wrong channel type for pointAtTarget"));
        return false;
    }
    if (argc < 2)
        return true;
    QString name = tokenText(argv, 1, argc);
    const int figureNumber = stripFigureNumber(name);
    OvNode *target = nullptr;
    if (OvNode *figure = getSkeleton(figureNumber, false))
        target = figure->findNodeChild(name, true);
    if (!target)
        target = lastSceneItemNamed(name);
    if (target)
        control->setNode(target);
    return true;
}

bool OvPZ3Importer::bodyDeformerProp(char **argv, int argc) {
    const QString fullName = tokenText(argv, 1, argc);
    QString name = fullName;
    const int figureNumber = stripFigureNumber(name);
    if (name == QLatin1String("UNIVERSE"))
        return true;
    OvNode *target = nullptr;
    if (OvNode *figure = getSkeleton(figureNumber, false)) {
        target = figure->findNodeChild(name, true);
        if (!target)
            target = figure->findNodeChild(fullName, true);
    }
    if (!target)
        target = lastSceneItemNamed(name);
    for (int i = 0; !target && name != fullName && i < m_sceneItems.size(); ++i)
        if (poser::itemKey(m_sceneItems[i]) == fullName)
            target = m_sceneItems[i].node;
    if (!target || !m_curDeformerChannel || !m_curDeformerChannel->modifier)
        return true;
    if (auto *magnet = qobject_cast<OvDForm *>(target))
        m_curDeformerChannel->modifier->setDForm(magnet);
    else
        qDebug("deformerProp %s is not a magnet", qPrintable(fullName));
    return true;
}
