// Animation keys: `k` lines with their interpolation lines. Keys of the transform channels are
// gathered per frame and applied when the object section closes, where units, camera conventions,
// hand mirroring, rotation order and limits are dealt with together; other channels key at once.
#include "../OvPZ3Importer.h"
#include "../Questions.h"

#include <OvApp.h>
#include <OvDeformers.h>
#include <OvLight.h>
#include <OvMainWindow.h>
#include <OvScene.h>
#include <OvSkeleton.h>
#include <OvTextInputFile.h>
#include <QApplication>
#include <QtDebug>
#include <climits>
#include <cmath>
#include <cstring>
#include <text/Numbers.h>
#include <text/ShortScan.h>

namespace {

// Interpolation codes of the key lines.
constexpr int CodeSpline = 1, CodeLinear = 2, CodeConstant = 3;

// The ten transform values of a key record, in record (and mask bit) order.
float Pz3Key::*const kValues[10] = {&Pz3Key::transX, &Pz3Key::transY, &Pz3Key::transZ, &Pz3Key::rotX,
                                    &Pz3Key::rotY,   &Pz3Key::rotZ,   &Pz3Key::scale,  &Pz3Key::scaleX,
                                    &Pz3Key::scaleY, &Pz3Key::scaleZ};

// The mask bit of a transform component code of m_curChannelType; -1 for none.
int componentBit(int channelType) {
    static const int codes[10] = {0x1, 0x2, 0x4, 0x10, 0x20, 0x40, 0x100, 0x200, 0x400, 0x800};
    for (int i = 0; i < 10; ++i)
        if (codes[i] == channelType)
            return i;
    return -1;
}

} // namespace

OvInterpolation OvPZ3Importer::hostInterpolation(int code) {
    switch (code) {
    case CodeLinear:
        return OvInterpolation::Linear;
    case CodeConstant:
        return OvInterpolation::Constant;
    default:
        return OvInterpolation::Spline;
    }
}

bool OvPZ3Importer::parseKeysLine(char **argv, int argc) {
    const char *keyword = argv[0];
    if (keyword[0] == 'k') {
        if (m_keyPending)
            flushKey(CodeSpline);
        if (argc < 3) {
            reportError(tr("Not enough values specified to define a key"));
            return true;
        }
        const long long frame = (long long)text::leadingInt(argv[1]) + m_startFrame;
        const float value = parsePoserFloat(argv[2]);
        // Host time is frame x time step in an int; a key that cannot be placed is dropped.
        const long long limit = INT_MAX / OvApp::getScene()->getTimeStep();
        if (frame < 0 || frame > limit) {
            reportError(tr("Key frame %1 lies outside 0 to %2; the key is ignored").arg(frame).arg(limit));
            return true;
        }
        if (!std::isfinite(value)) {
            reportError(tr("Key value \"%1\" is no finite number; the key is ignored")
                            .arg(QString::fromLocal8Bit(argv[2])));
            return true;
        }
        m_keyFrame = int(frame);
        m_keyValue = value;
        m_keyPending = true;
    } else if (std::strcmp(keyword, "spl") == 0) {
        flushKey(CodeSpline);
    } else if (std::strcmp(keyword, "lin") == 0) {
        flushKey(CodeLinear);
    } else if (std::strcmp(keyword, "con") == 0) {
        flushKey(CodeConstant);
    }
    return true;
}

// The usual lines of a keys section read straight from the line reader's buffer: "k FRAME VALUE"
// with a plain frame and number, the interpolation words and the words parseKeysLine passes over.
// A key it would refuse, and any other line, is left to it untouched. Words after the value are not
// read on either path; a line that could hold more words than the tokenizer keeps is left to it.
bool OvPZ3Importer::readKeyLine(char *begin, char *end) {
    if (end - begin > 2 * OvTextInputFile::MaxTokens)
        return false;
    char padded[text::kMinScanBytes] = {};
    const char *last = end;
    if (end - begin + 1 < text::kMinScanBytes) { // the scanners read eight bytes up to the end
        std::memcpy(padded, begin, size_t(end - begin));
        last = padded + text::kMinScanBytes - 1; // the NULs after the copy are blanks
    } else {
        *end = '\0';
    }
    const char *p = text::skipBlanks(last == end ? begin : padded, last);
    const char c = *p;
    if (c == 'k' && text::isBlank(p[1])) {
        int frame = 0;
        float number = 0;
        int32_t divisions = 0;
        if (!(p = text::scanShortInt(text::skipBlanks(p + 1, last), last, frame)) ||
            (p = text::skipBlanks(p, last)) == last || !text::scanShortFloat(p, last, number, divisions))
            return false;
        float value = 0;
        text::finishFloats(&number, &divisions, 1, &value);
        const long long at = (long long)frame + m_startFrame;
        if (at < 0 || at > INT_MAX / OvApp::getScene()->getTimeStep() || !std::isfinite(value))
            return false; // refused with a message there
        if (m_keyPending)
            flushKey(CodeSpline);
        m_keyFrame = int(at);
        m_keyValue = value;
        m_keyPending = true;
        return true;
    }
    if (c < 'a' || c > 'z' || c == 'k' || c == 'r') // braces, comments, quotes, readScript, other keys
        return false;
    const char *word = p;
    while (!text::isBlank(*p))
        ++p;
    const std::ptrdiff_t length = p - word;
    if (length == 3 && std::memcmp(word, "spl", 3) == 0)
        flushKey(CodeSpline);
    else if (length == 3 && std::memcmp(word, "lin", 3) == 0)
        flushKey(CodeLinear);
    else if (length == 3 && std::memcmp(word, "con", 3) == 0)
        flushKey(CodeConstant);
    return true;
}

void OvPZ3Importer::flushKey(int code) {
    if (!m_keyPending)
        return;
    m_lastFrame = std::max(m_lastFrame, m_keyFrame);
    if (m_curChannelType != 0)
        addTransformKey(m_keyFrame, m_keyValue, code);
    else if (m_curProperty)
        setKey(m_curProperty, m_keyFrame, m_keyValue, m_colorComponent, code);
    m_keyPending = false;
}

void OvPZ3Importer::addTransformKey(int frame, float value, int code) {
    const int bit = componentBit(m_curChannelType);
    if (bit < 0)
        return;
    int index = m_keyIndexOf.value(frame, -1);
    if (index < 0) {
        Pz3Key key;
        key.frame = frame;
        index = m_keys.size();
        m_keys.append(key);
        m_keyIndexOf.insert(frame, index);
    }
    Pz3Key &key = m_keys[index];
    key.*kValues[bit] = value;
    key.interp[bit] = (unsigned char)code;
    key.mask |= 1 << bit;
}

void OvPZ3Importer::setKey(OvProperty *property, int frame, float value, int component, int) {
    if (!property) {
        qDebug("NULL property passed to OvPZ3Importer::setKey()");
        return;
    }
    const int time = OvApp::getScene()->getTimeStep() * frame;
    if (auto *color = dynamic_cast<OvColorProperty *>(property)) {
        if (component < 0 || component > 3)
            qDebug("Color Index out of range in OvPZ3Importer::setKey()");
        if (component < 0 || component > 2)
            return;
        const int level = int(std::min(255.0f, std::max(0.0f, value * 255.0f)));
        QColor c = color->getColorValue(time);
        if (component == 0)
            c.setRgb(level, c.green(), c.blue());
        else if (component == 1)
            c.setRgb(c.red(), level, c.blue());
        else
            c.setRgb(c.red(), c.green(), level);
        color->setColorValue(time, c);
    } else if (auto *f = dynamic_cast<OvFloatProperty *>(property)) {
        // Only transform keys carry their interpolation; the others take the host's default.
        f->setValue(time, value);
    } else {
        const float clamped = std::min(float(INT_MAX / 2), std::max(float(INT_MIN / 2), value));
        property->setIntValue(time, int(clamped));
    }
}

void OvPZ3Importer::applyTransformKeys(OvNode *node, OvTArray<Pz3Key> &keys, float version) {
    if (!node) {
        qDebug("NULL node passed to OvPZ3Importer::applyTransformKeys()");
        return;
    }
    // A node item that has seen no rotation channel has no order to give.
    OvRotationOrder order = node->getRotationOrder();
    if (const OvPz3NodeItem *item = findNodeItem(node); item && item->rotAxisCount > 0)
        order = item->rotOrder;
    node->setRotationOrder(order);
    auto *camera = qobject_cast<OvBasicCamera *>(node);
    const bool zone = !camera && qobject_cast<OvDFormZone *>(node);
    const bool mirror = m_handSide != Pz3HandSide::NotHandPose && m_handSide != m_fileHandSide;
    const int step = OvApp::getScene()->getTimeStep();
    OvFloatProperty *controls[10] = {
        node->getXPosControl(),   node->getYPosControl(),  node->getZPosControl(),  node->getXRotControl(),
        node->getYRotControl(),   node->getZRotControl(),  node->getScaleControl(), node->getXScaleControl(),
        node->getYScaleControl(), node->getZScaleControl()};
    for (int k = 0; k < keys.size(); ++k) {
        Pz3Key key = keys[k];
        const int time = step * key.frame;
        if (mirror) {
            key.rotY = -key.rotY;
            key.rotZ = -key.rotZ;
        }
        OvVec3 t = OvVec3(key.transX, key.transY, key.transZ) * POSER_UNIT_CM;
        if (camera) {
            if (version < 4.0f) {
                key.rotX = -key.rotX, key.rotY = -key.rotY, key.rotZ = -key.rotZ;
                t = t * -1.0f;
            }
            t[2] = camera->isPerspective() ? float(double(t[2]) + 277.9800109863281) : 360.0f;
            const OvVec3 angles = OvVec3(key.rotX, key.rotY, key.rotZ) * POSER_DEG_TO_RAD;
            t = quatFromEuler(order, angles).multVec(t);
        } else if (zone) {
            key.scale *= POSER_UNIT_CM;
        }
        key.transX = t[0], key.transY = t[1], key.transZ = t[2];
        for (int c = 0; c < 10; ++c) {
            if (!(key.mask & (1 << c)))
                continue;
            if (c >= 3 && c <= 5)
                checkKeyLimits(node, controls[c], key.*kValues[c]);
            controls[c]->setValue(time, key.*kValues[c], hostInterpolation(key.interp[c]));
        }
    }
}

void OvPZ3Importer::checkKeyLimits(OvNode *node, const OvFloatProperty *control, float value) {
    if (m_limitsAnswer != 0 || !control->isClamped())
        return;
    float min = 0, max = 0;
    control->getMinMax(min, max);
    if (!(value < min || value > max))
        return;
    const QString what = tr("A %1 key of %2 lies beyond its limits (%3 to %4)")
                             .arg(control->getLabel())
                             .arg(double(value))
                             .arg(double(min))
                             .arg(double(max));
    m_limitsAnswer = askTurnOffLimits(what) ? 1 : 2;
    if (m_limitsAnswer == 1) {
        OvNode *figure = qobject_cast<OvBone *>(node) ? node->getSkeleton() : node;
        turnOffLimits(figure ? figure : node);
    }
}

namespace {

// What a host without a window answers, and how the log says it.
bool headlessYes(QString &said) {
    switch (OvApp::headlessAnswer()) {
    case OvApp::AnswerYes:
        said = OvPZ3Importer::tr("yes");
        return true;
    case OvApp::AnswerNo:
        said = OvPZ3Importer::tr("no");
        return false;
    case OvApp::AnswerCancel:
        said = OvPZ3Importer::tr("cancel");
        return false;
    case OvApp::AnswerDefault:
        break;
    }
    said = OvPZ3Importer::tr("no (the host's default: no window to ask in)");
    return false;
}

} // namespace

// A pose keyed past the end of the play range may lengthen it.
void OvPZ3Importer::askToAddFrames() {
    OvScene *scene = OvApp::getScene();
    const int step = scene->getTimeStep();
    if (m_lastFrame <= scene->getPlayRange().getEnd() / step)
        return;
    bool yes = false;
    QString said;
    if (OvMainWindow *window = OvApp::getInterface()) {
        OvApp::pauseProgress();
        yes = poser::askUser(QMessageBox::Question, window, QStringLiteral("Add Frames to Play Range?"),
                             QStringLiteral("Do you want to add frames to the current animation in order to "
                                            "import the entire pose?"),
                             {QStringLiteral("&Yes"), QStringLiteral("&No")}, 0, -1) == 0;
        OvApp::resumeProgress();
        said = yes ? tr("yes") : tr("no");
    } else {
        yes = headlessYes(said);
    }
    reportInfo(tr("The pose reaches frame %1, past the play range; asked \"Add Frames to Play Range?\", "
                  "answered %2")
                   .arg(m_lastFrame)
                   .arg(said));
    if (!yes)
        return;
    const int end = step * m_lastFrame;
    const OvTimeRange anim = scene->getAnimRange();
    if (anim.getEnd() < end)
        scene->setAnimRange(OvTimeRange(anim.getStart(), end));
    scene->setPlayRange(OvTimeRange(scene->getPlayRange().getStart(), end));
}

// With a main window the user is asked; a host without one answers as it was told to (by default
// no, as it cannot ask). Either way the log says what was asked and answered.
bool OvPZ3Importer::askTurnOffLimits(const QString &what) {
    bool yes = false;
    QString answer;
    if (OvMainWindow *window = OvApp::getInterface()) {
        OvApp::pauseProgress();
        yes = window->askTurnOffLimits(QApplication::activeModalWidget());
        OvApp::resumeProgress();
        answer = yes ? tr("yes") : tr("no");
    } else {
        yes = headlessYes(answer);
    }
    reportInfo(tr("%1; asked \"Turn limits off?\", answered %2").arg(what, answer));
    return yes;
}
