#include "OvProperty.h"
#include "OvNode.h"
#include "OvPropertyGroups.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <cmath>

OvProperty::~OvProperty() {
    OvUndoStack::forget(this);
}

OvProperty::OvProperty(const OvProperty &other)
    : m_name(other.m_name), m_label(other.m_label), m_owner(other.m_owner), m_hidden(other.m_hidden),
      m_userProperty(other.m_userProperty), m_canAnimate(other.m_canAnimate), m_clamped(other.m_clamped) {
    assignCopied(other);
}

OvProperty &OvProperty::operator=(const OvProperty &other) {
    m_name = other.m_name;
    m_label = other.m_label;
    m_hidden = other.m_hidden;
    m_userProperty = other.m_userProperty;
    m_canAnimate = other.m_canAnimate;
    m_clamped = other.m_clamped;
    m_owner = other.m_owner;
    assignCopied(other);
    return *this;
}

// The path and the link; controllers are copied one by one by saveState, and kept here.
void OvProperty::assignCopied(const OvProperty &other) {
    if (!other.m_rare) {
        if (m_rare) {
            m_rare->path = QString();
            m_rare->link = nullptr;
        }
        return;
    }
    rare().path = other.m_rare->path;
    m_rare->link = other.m_rare->link;
}

OvProperty::Rare &OvProperty::rare() {
    if (!m_rare)
        m_rare.reset(new Rare);
    return *m_rare;
}

const QString &OvProperty::getPath() const {
    static const QString none;
    return m_rare ? m_rare->path : none;
}

void OvProperty::setLinkProperty(OvNumericProperty *master) {
    if (master || m_rare)
        rare().link = master;
}

OvPropertyState OvProperty::saveState() const {
    OvPropertyState state;
    state.copy.reset(cloneState());
    if (m_rare)
        for (const auto &c : m_rare->controllers)
            state.controllers.emplace_back(c->clone());
    return state;
}

void OvProperty::restoreState(OvPropertyState &state) {
    const QString path = getPath();
    assignState(*state.copy);
    // The group tree follows the path through setPath.
    if (getPath() != path) {
        const QString wanted = getPath();
        rare().path = path;
        setPath(wanted);
    }
    // Controllers are put back as copies: the ones the step removed may have been deleted.
    if (getNumControllers() > 0 || !state.controllers.empty())
        rare().controllers = std::move(state.controllers);
}

void OvProperty::insertController(OvController *controller, int position) {
    if (!controller)
        return;
    OvUndoStack::noteProperty(this);
    auto &controllers = rare().controllers;
    if (position < 0 || position >= int(controllers.size()))
        controllers.emplace_back(controller);
    else
        controllers.emplace(controllers.begin() + position, controller);
}

bool OvProperty::removeController(OvController *controller) {
    if (!m_rare)
        return false;
    auto &controllers = m_rare->controllers;
    auto it =
        std::find_if(controllers.begin(), controllers.end(),
                     [controller](const std::unique_ptr<OvController> &c) { return c.get() == controller; });
    if (it == controllers.end())
        return false;
    OvUndoStack::noteProperty(this);
    it->release();
    controllers.erase(it);
    return true;
}

QColor OvColorProperty::getColorValue(int time) const {
    if (m_keys.isEmpty())
        return m_value;
    int rgb[3];
    for (int c = 0; c < 3; ++c) {
        const int shift = 16 - 8 * c; // red, green, blue
        const double v =
            evaluateKeys(m_keys, time, [&](int i) { return double((m_keys.value(i) >> shift) & 0xff); });
        rgb[c] = std::isfinite(v) ? int(std::lround(std::min(255.0, std::max(0.0, v)))) : 0;
    }
    return QColor(rgb[0], rgb[1], rgb[2]);
}

void OvProperty::setPath(const QString &path) {
    OvUndoStack::noteProperty(this);
    if (m_owner)
        m_owner->getPropertyGroups()->place(m_name, getPath(), path);
    if (!path.isEmpty() || m_rare)
        rare().path = path;
}

const char *OvERCLink::typeName(int type) {
    static const char *const names[] = {"deltaAdd", "divideInto", "divideBy", "times", "minus", "plus"};
    return type >= 0 && type < 6 ? names[type] : "unknown";
}

double OvERCLink::apply(double value, double source) const {
    const double s = m_scalar * source;
    switch (m_type) {
    case DeltaAdd:
    case Plus:
        return value + s;
    case Minus:
        return value - s;
    case Times:
        return value * s;
    case DivideBy:
        return s != 0 ? value / s : value;
    case DivideInto:
        return value != 0 ? s / value : value;
    default:
        return value;
    }
}

namespace {

// One evaluation at one time: each property is computed once, however many paths lead to it (a
// dial feeding a dozen joints that feed one another must not be walked once per path).
class DriveEvaluation {
public:
    explicit DriveEvaluation(int time) : m_time(time) {}

    double valueOf(const OvNumericProperty &p, int depth) {
        if (!p.isDriven())
            return p.ownValueAt(m_time);
        if (auto done = m_done.constFind(&p); done != m_done.constEnd())
            return *done;
        // Deeper than any rig, or back at a property being computed: the chain is cut here.
        if (depth > OvNumericProperty::MaxDriveDepth || m_busy.contains(&p))
            return p.ownValueAt(m_time);
        m_busy.insert(&p);
        const OvNumericProperty *link = p.getLinkProperty();
        double v = link ? valueOf(*link, depth + 1) : p.ownValueAt(m_time);
        for (int i = 0; i < p.getNumControllers(); ++i) {
            auto *erc = dynamic_cast<const OvERCLink *>(p.getController(i));
            if (erc && erc->getProperty())
                v = erc->apply(v, valueOf(*erc->getProperty(), depth + 1));
        }
        v = p.fitValue(v);
        m_busy.remove(&p);
        m_done.insert(&p, v);
        return v;
    }

private:
    int m_time;
    QHash<const OvNumericProperty *, double> m_done;
    QSet<const OvNumericProperty *> m_busy;
};

} // namespace

double OvNumericProperty::drivenValueAt(int time) const {
    return DriveEvaluation(time).valueOf(*this, 0);
}

double OvIntProperty::fitValue(double v) const {
    if (!(v == v))
        return double(m_value);
    return std::min(std::max(std::round(v), double(m_min)), double(m_max));
}
