// Joint parameters of a figure's bones: the channel lines that open them, the lines of their
// bodies and the raw sphere matrices.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"
#include "../scene/SceneHelpers.h"

#include <OvModifiers.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <cstdlib>
#include <cstring>
#include <text/Numbers.h>

namespace {

// Lengths in Poser units to host units, and degrees to radians, worked out in double precision.
constexpr double kPoserUnitCm = 243.84; // POSER_UNIT_CM before it is rounded to a float
float lengthOf(const char *token) {
    return float(double(parsePoserFloat(token)) * kPoserUnitCm);
}
float angleOf(const char *token) {
    return float(double(parsePoserFloat(token)) * double(POSER_DEG_TO_RAD));
}

// The host's axis for the letter X, Y or Z, or -1.
int axisOfLetter(char c) {
    return c == 'X' ? 0 : c == 'Y' ? 1 : c == 'Z' ? 2 : -1;
}

} // namespace

OvPoserJoint *poser::findPoserJoint(const OvNode *node) {
    const OvObject *object = node ? node->getObject() : nullptr;
    if (!object)
        return nullptr;
    for (int i = object->getNumModifiers() - 1; i >= 0; --i)
        if (auto *joint = dynamic_cast<OvPoserJoint *>(object->getModifier(i)))
            return joint;
    return nullptr;
}

OvPoserJointParam *OvPz3NodeItem::getJointParam(const QString &name, int kind) {
    if (!node || !node->inherits("OvBone"))
        return nullptr;
    OvPoserJoint *joint = poser::findPoserJoint(node);
    if (!joint)
        return nullptr;
    if (OvPoserJointParam *existing = joint->findJointParam(name))
        return existing;
    OvPoserJointParam *param = nullptr;
    switch (kind) {
    case JointBend:
        param = poser::make<OvPoserBendParam>();
        break;
    case JointTwist:
        param = poser::make<OvPoserTwistParam>();
        break;
    case JointSmoothScale:
        param = poser::make<OvPoserSmoothScale>();
        break;
    case JointCurve: {
        // A curve follows the bone's twist: the first twist parameter's axis picks the curve's.
        int axis = -1;
        for (int i = 0; i < joint->getNumParams() && axis < 0; ++i)
            if (auto *twist = dynamic_cast<OvPoserTwistParam *>(joint->getParam(i)))
                axis = twist->getAxis();
        static const int curveAxis[3] = {OvPoserJointParam::CurveOfTwistX, OvPoserJointParam::CurveOfTwistY,
                                         OvPoserJointParam::CurveOfTwistZ};
        if (axis < 0 || axis > 2) {
            qWarning("No twist parameter found for bone when adding curve!");
            return nullptr;
        }
        param = new (std::nothrow) OvPoserCurve(node, curveAxis[axis]);
        if (!param)
            throw QString("Out of Memory");
        break;
    }
    default:
        return nullptr;
    }
    jointParams.append(param);
    joint->addJointParam(param);
    param->setName(name);
    return param;
}

// ---- the channel line ----

bool OvPZ3Importer::chanJoint(char **argv, int argc) {
    const char *keyword = argv[0];
    const bool curve = std::strcmp(keyword, "curve") == 0;
    const int kind = curve                                    ? JointCurve
                     : std::strncmp(keyword, "joint", 5) == 0 ? JointBend
                     : std::strncmp(keyword, "twist", 5) == 0 ? JointTwist
                                                              : JointSmoothScale;
    if (argc < 2) {
        reportError(
            tr(curve ? "No curve parameter name was specified" : "No joint parameter name was specified"));
        return false;
    }
    if (!m_curNode) {
        qWarning(curve ? "NULL node pointer for curve parameter!" : "NULL node pointer for joint parameter!");
        return true;
    }
    if (!m_curNode->inherits("OvBone")) {
        qDebug(curve ? "Wrong type of node for curve parameter on line %d!"
                     : "Wrong type of node for joint parameter on line %d!",
               m_file ? m_file->m_lineNumber : 0);
        return true;
    }
    const QString name = tokenText(argv, 1, argc);
    m_curJointParam = getNodeItem(m_curNode)->getJointParam(name, kind);
    if (!m_curJointParam) {
        m_parseMode = ModeIgnore;
        return true;
    }
    if (!curve) {
        // A parameter named after a bone pair (rShldr_rForeArm) is driven by its otherActor line.
        if (!name.contains(QLatin1Char('_')))
            m_curJointParam->setDriver(m_curNode);
        const size_t letterAt = kind == JointSmoothScale ? 11 : 5;
        const int axis = std::strlen(keyword) > letterAt ? axisOfLetter(keyword[letterAt]) : -1;
        if (axis >= 0)
            m_curJointParam->setAxis(axis);
    }
    m_parseMode = ModeJointParm;
    return true;
}

// ---- the body ----

const OvPZ3Importer::KeywordRow OvPZ3Importer::s_jointParamKeywords[] = {
    {"sphereMatsRaw", 1, Short::Skip, nullptr, &OvPZ3Importer::readSphereMats},
    {"center", 4, Short::Stop, "Not enough parameters specified for 'center'", &OvPZ3Importer::ignoreLine},
    {"otherActor", 2, Short::Stop, "No actor specified for otherActor", &OvPZ3Importer::jointOtherActor},
    {"angles", 5, Short::Stop, "Not enough joint parameter angles specified", &OvPZ3Importer::jointAngles},
    {"doBulge", 2, Short::Stop, "No Bulge setting specified", &OvPZ3Importer::jointDoBulge},
    {"posBulgeLeft", 2, Short::Stop, "No posBulgeLeft value specified", &OvPZ3Importer::jointBulge},
    {"posBulgeRight", 2, Short::Stop, "No posBulgeRight value specified", &OvPZ3Importer::jointBulge},
    {"negBulgeLeft", 2, Short::Stop, "No negBulgeLeft value specified", &OvPZ3Importer::jointBulge},
    {"negBulgeRight", 2, Short::Stop, "No negBulgeRight value specified", &OvPZ3Importer::jointBulge},
    {"startPt", 2, Short::Stop, "Not enough parameters specified", &OvPZ3Importer::jointStartPt},
    {"endPt", 2, Short::Stop, "Not enough parameters specified", &OvPZ3Importer::jointEndPt},
    {"smoothZones", 5, Short::Stop, "Not enough parameters specified", &OvPZ3Importer::jointSmoothZones},
    {"flipped", 1, Short::Skip, nullptr, &OvPZ3Importer::jointFlipped},
    {nullptr, 0, Short::Skip, nullptr, nullptr},
};

bool OvPZ3Importer::parseJointParam(char **argv, int argc) {
    m_jointParmsSeen = true;
    if (!m_curJointParam) {
        qDebug("NULL joint parameter in OvPZ3Importer::parseJointParam()");
        m_parseMode = ModeIgnore;
        return true;
    }
    return dispatchKeyword(s_jointParamKeywords, argv, argc);
}

template <class P> P *OvPZ3Importer::jointParamAs(const char *tag) {
    auto *param = dynamic_cast<P *>(m_curJointParam);
    if (!param)
        qWarning("Wrong type of joint parameter for tag '%s' on line %d!", tag,
                 m_file ? m_file->m_lineNumber : 0);
    return param;
}

bool OvPZ3Importer::jointOtherActor(char **argv, int argc) {
    if (m_curJointParam->getDriver())
        return true;
    OvNode *node = findNode(tokenText(argv, 1, argc));
    if (node && node->inherits("OvBone"))
        m_curJointParam->setDriver(node);
    else
        reportInfo(tr("No bone found for otherActor"));
    return true;
}

bool OvPZ3Importer::jointAngles(char **argv, int) {
    if (auto *bend = jointParamAs<OvPoserBendParam>("angles")) {
        bend->setAngles(angleOf(argv[1]), angleOf(argv[2]), angleOf(argv[3]), angleOf(argv[4]));
        bend->setApplyAngles(true);
    }
    return true;
}

bool OvPZ3Importer::jointDoBulge(char **argv, int) {
    if (auto *bend = jointParamAs<OvPoserBendParam>("doBulge"))
        bend->setApplyBulges(std::atoi(argv[1]) != 0);
    return true;
}

// posBulgeLeft, posBulgeRight, negBulgeLeft and negBulgeRight.
bool OvPZ3Importer::jointBulge(char **argv, int) {
    auto *bend = jointParamAs<OvPoserBendParam>(argv[0]);
    if (!bend)
        return true;
    const bool pos = argv[0][0] == 'p';
    const bool left = std::strstr(argv[0], "Left") != nullptr;
    const float v = lengthOf(argv[1]);
    if (pos)
        left ? bend->setPosLeftBulge(v) : bend->setPosRightBulge(v);
    else
        left ? bend->setNegLeftBulge(v) : bend->setNegRightBulge(v);
    return true;
}

bool OvPZ3Importer::jointStartPt(char **argv, int) {
    if (auto *twist = jointParamAs<OvPoserTwistParam>("startPt"))
        twist->setStart(lengthOf(argv[1]));
    return true;
}

bool OvPZ3Importer::jointEndPt(char **argv, int) {
    if (auto *twist = jointParamAs<OvPoserTwistParam>("endPt")) {
        twist->setEnd(lengthOf(argv[1]));
        twist->setApplyBlend(true);
    }
    return true;
}

bool OvPZ3Importer::jointSmoothZones(char **argv, int) {
    if (auto *smooth = jointParamAs<OvPoserSmoothScale>("smoothZones"))
        smooth->setSmoothZones(lengthOf(argv[1]), lengthOf(argv[2]), lengthOf(argv[3]), lengthOf(argv[4]));
    return true;
}

bool OvPZ3Importer::jointFlipped(char **, int) {
    m_curJointParam->setFlipped(true);
    return true;
}

// ---- sphere matrices ----

// Eight rows of at least four numbers: the first matrix, then the second. They usually sit in a
// braced block of two braced blocks; those braces never reach the read driver, so the whole block
// is read here, up to the brace that closes it, and the sections around it stay balanced. A '}'
// that no '{' of the block opened closes the joint-parameter section. Matrices cut short by that
// brace or by the end of the file are not used.
bool OvPZ3Importer::readSphereMats(char **argv, int argc) {
    OvMatrix4 first(false), second(false);
    int rows = 0, depth = 0;
    bool closesSection = false;
    while (rows < 8 || depth > 0) {
        if (!nextLine(argv, argc))
            break;
        if (argc == 0)
            continue;
        if (argv[0][0] == '{') {
            ++depth;
        } else if (argv[0][0] == '}') {
            if (depth == 0) {
                closesSection = true;
                break;
            }
            if (--depth == 0)
                break;
        } else if (argc >= 4 && rows < 8) {
            float *row = (rows < 4 ? first.data() : second.data()) + (rows % 4) * 4;
            for (int i = 0; i < 4; ++i)
                row[i] = parsePoserFloat(argv[i]);
            ++rows;
        }
    }
    if (!m_curJointParam) {
        // Nothing to set; the lines are read all the same.
    } else if (rows < 8) {
        reportInfo(
            tr("sphereMatsRaw ends after %1 of its 8 rows; its sphere matrices are not used").arg(rows));
    } else {
        first.scale(POSER_UNIT_CM);
        second.scale(POSER_UNIT_CM);
        m_curJointParam->setApplyMatrices(true);
        m_curJointParam->setMatrices(first, second);
    }
    if (closesSection)
        closeSection();
    return true;
}
