#pragma once
// Node properties (the animatable values a user sees), the controllers that drive them, and
// element data items (records that importers leave on scene objects).

#include "OvKeys.h"
#include "OvUndoStack.h"
#include <QColor>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

class OvElement;
class OvNode;
class OvSkeleton;
class OvNumericProperty;

// Drives a property from elsewhere (a dependent-parameter link, for instance).
class OvController {
public:
    virtual ~OvController() = default;
    virtual const char *className() const = 0;
    // A copy, for undo.
    virtual OvController *clone() const = 0;
    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

private:
    QString m_name;
};

// Dependent-parameter link: the owning property follows a controlling property through one
// operation. Applied in controller order, each link turns the value so far (v) and the controlling
// property's value (s) into: DeltaAdd v + scalar*s, DivideInto scalar*s / v, DivideBy v / (scalar*s),
// Times v * scalar*s, Minus v - scalar*s, Plus v + scalar*s. A division by zero leaves v; a link
// without a controlling property (a place-holder) leaves v too. The second number is kept as given.
class OvERCLink : public OvController {
public:
    enum Type : int { DeltaAdd = 0, DivideInto = 1, DivideBy = 2, Times = 3, Minus = 4, Plus = 5 };

    OvERCLink(int type, OvNumericProperty *property, double scalar, double second)
        : m_type(type), m_property(property), m_scalar(scalar), m_second(second) {}
    // A delta-add link with the given scalar.
    OvERCLink(OvNumericProperty *property, double scalar, double second)
        : OvERCLink(DeltaAdd, property, scalar, second) {}
    const char *className() const override { return "OvERCLink"; }
    OvController *clone() const override { return new OvERCLink(*this); }
    // "deltaAdd", "divideInto", ... ("unknown" for a code out of range).
    static const char *typeName(int type);
    int getType() const { return m_type; }
    void setType(int type) { m_type = type; }
    OvNumericProperty *getProperty() const { return m_property; }
    void setProperty(OvNumericProperty *property) { m_property = property; }
    double getScalar() const { return m_scalar; }
    void setScalar(double scalar) { m_scalar = scalar; }
    double getSecondNumber() const { return m_second; }
    double apply(double value, double source) const;

private:
    int m_type;
    OvNumericProperty *m_property;
    double m_scalar;
    double m_second;
};

class OvProperty;

// The copies of its state that undo takes of each concrete property class.
#define OV_PROPERTY_STATE(Class)                                                                             \
protected:                                                                                                   \
    Class(const Class &) = default;                                                                          \
    Class &operator=(const Class &) = default;                                                               \
    OvProperty *cloneState() const override {                                                                \
        return new Class(*this);                                                                             \
    }                                                                                                        \
    void assignState(const OvProperty &other) override {                                                     \
        *this = static_cast<const Class &>(other);                                                           \
    }                                                                                                        \
                                                                                                             \
public:

// Everything a change can touch in a property, kept by undo (OvUndoStack).
struct OvPropertyState {
    std::unique_ptr<OvProperty> copy;
    std::vector<std::unique_ptr<OvController>> controllers;
};

// Every setter notes the property with OvUndoStack before it changes anything.
class OvProperty {
public:
    explicit OvProperty(const QString &name) : m_name(name), m_label(name) {}
    virtual ~OvProperty();
    virtual const char *className() const = 0;

    OvPropertyState saveState() const;
    // Puts back a saved state; its controllers move into the property.
    void restoreState(OvPropertyState &state);

    const QString &getName() const { return m_name; }
    // The label follows the name until it is set on its own.
    void setName(const QString &name) {
        OvUndoStack::noteProperty(this);
        if (m_label == m_name)
            m_label = name;
        m_name = name;
    }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) {
        OvUndoStack::noteProperty(this);
        m_label = label;
    }
    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) {
        OvUndoStack::noteProperty(this);
        m_hidden = hidden;
    }
    // A property an importer or user added (the host's own are not), and whether it takes keys.
    bool isUserProperty() const { return m_userProperty; }
    void setIsUserProperty(bool user) {
        OvUndoStack::noteProperty(this);
        m_userProperty = user;
    }
    bool canAnimate() const { return m_canAnimate; }
    void setCanAnimate(bool animate) {
        OvUndoStack::noteProperty(this);
        m_canAnimate = animate;
    }
    OvElement *getOwner() const { return m_owner; }
    void setOwner(OvElement *owner) { m_owner = owner; }
    // The property's group in its owner's group tree ("General/Transforms"); empty for none.
    const QString &getPath() const;
    void setPath(const QString &path);

    // Controllers, owned; position -1 appends.
    void insertController(OvController *controller, int position = -1);
    bool removeController(OvController *controller);
    int getNumControllers() const { return m_rare ? int(m_rare->controllers.size()) : 0; }
    OvController *getController(int i) const { return m_rare->controllers[size_t(i)].get(); }

    // The host's integer value setter, used for int, enum and bool properties alike; the second
    // form sets a key at `time` (host time units).
    virtual void setIntValue(int) {}
    virtual void setIntValue(int /*time*/, int /*value*/) {}

    // Keys, in time order (one per time); properties that take none have none.
    virtual int getNumKeys() const { return 0; }
    virtual int getKeyTime(int) const { return 0; }
    virtual OvInterpolation getKeyInterpolation(int) const { return OvInterpolation::Spline; }
    virtual void deleteKey(int) {}
    void deleteAllKeys() {
        for (int i = getNumKeys(); i-- > 0;)
            deleteKey(i);
    }

protected:
    // Copies for undo: everything but the controllers, which saveState copies one by one.
    OvProperty(const OvProperty &other);
    OvProperty &operator=(const OvProperty &other);
    virtual OvProperty *cloneState() const = 0;
    virtual void assignState(const OvProperty &other) = 0;

    // The link of a numeric property, kept with the other rarely set fields.
    OvNumericProperty *linkProperty() const { return m_rare ? m_rare->link : nullptr; }
    void setLinkProperty(OvNumericProperty *master);

private:
    // Fields few properties ever set (a group path, controllers, a link) live behind one pointer,
    // made on first use: a figure holds thousands of properties that set none of them.
    struct Rare {
        QString path;
        std::vector<std::unique_ptr<OvController>> controllers;
        OvNumericProperty *link = nullptr;
    };
    Rare &rare();
    void assignCopied(const OvProperty &other);

    QString m_name;
    QString m_label;
    OvElement *m_owner = nullptr;
    std::unique_ptr<Rare> m_rare;
    bool m_hidden = false;
    bool m_userProperty = false;
    bool m_canAnimate = true;

protected:
    // In the base's tail padding; numeric properties use it.
    bool m_clamped = false;
};

// A property with a number for a value. Its value at a time is its own (keyed) value, or the value
// of the property it is linked to, turned by its ERC links in order; see drivenValueAt.
class OvNumericProperty : public OvProperty {
public:
    using OvProperty::OvProperty;
    bool isClamped() const { return m_clamped; }
    void setIsClamped(bool clamped) {
        OvUndoStack::noteProperty(this);
        m_clamped = clamped;
    }

    // Linked properties share one value: this one then shows `master`'s (null unlinks).
    void linkTo(OvNumericProperty *master) {
        OvUndoStack::noteProperty(this);
        setLinkProperty(master);
    }
    OvNumericProperty *getLinkProperty() const { return linkProperty(); }
    // True when links or controllers take part in the value.
    bool isDriven() const { return linkProperty() || getNumControllers() > 0; }

    // The value at `time` from keys alone (or the value without keys), before links and controllers.
    virtual double ownValueAt(int time) const = 0;
    // A computed value made fit for the property: held within limits, whole for whole numbers.
    virtual double fitValue(double v) const { return v; }
    // The value at `time` with links and ERC links applied. Chains longer than MaxDriveDepth, and a
    // cycle that slipped in, fall back on the own value of the property where they are cut.
    double drivenValueAt(int time) const;
    static constexpr int MaxDriveDepth = 256;

protected:
    OvNumericProperty(const OvNumericProperty &) = default;
    OvNumericProperty &operator=(const OvNumericProperty &) = default;
};

// A float dial: its value, the default it resets to, limits that hold while it is clamped, and the
// sensitivity (value change per unit of mouse drag).
class OvFloatProperty : public OvNumericProperty {
public:
    OV_PROPERTY_STATE(OvFloatProperty)
    static constexpr float Unbounded = std::numeric_limits<float>::infinity();

    explicit OvFloatProperty(const QString &name, float value = 0.0f)
        : OvNumericProperty(name), m_value(value), m_default(value) {}
    const char *className() const override { return "OvFloatProperty"; }
    using InterpolationType = OvInterpolation;

    float getValue() const { return m_value; }
    // Held within the limits while the property is clamped.
    void setValue(float v) {
        OvUndoStack::noteProperty(this);
        m_value = clamp(v);
    }
    // A key at `time`; keys take spline interpolation unless told otherwise.
    void setValue(int time, float v, InterpolationType interp = OvInterpolation::Spline) {
        OvUndoStack::noteProperty(this);
        m_keys.set(time, v, interp);
    }
    // The value at `time`: the keys' curve when there are keys (held within the limits while
    // clamped, like the value), else the value; then the link and controllers, when there are any.
    float getValueAt(int time) const { return isDriven() ? float(drivenValueAt(time)) : keyedValueAt(time); }
    double ownValueAt(int time) const override { return keyedValueAt(time); }
    double fitValue(double v) const override { return clamp(float(v)); }
    int getNumKeys() const override { return m_keys.count(); }
    int getKeyTime(int i) const override { return m_keys.time(i); }
    OvInterpolation getKeyInterpolation(int i) const override { return m_keys.interpolation(i); }
    float getKeyValue(int i) const { return m_keys.value(i); }
    void setKeyValue(int i, float v) {
        OvUndoStack::noteProperty(this);
        m_keys.setValueAt(i, v);
    }
    void deleteKey(int i) override {
        OvUndoStack::noteProperty(this);
        m_keys.remove(i);
    }
    const OvKeyTrack<float> &keys() const { return m_keys; }
    float getDefaultValue() const { return m_default; }
    // The value follows its new default.
    void setDefaultValue(float v) {
        OvUndoStack::noteProperty(this);
        m_default = v;
        setValue(v);
    }
    void setIntValue(int v) override {
        OvUndoStack::noteProperty(this);
        setValue(float(v));
    }
    void setIntValue(int time, int v) override {
        OvUndoStack::noteProperty(this);
        setValue(time, float(v));
    }
    float getMin() const { return m_min; }
    void setMin(float v) {
        OvUndoStack::noteProperty(this);
        m_min = v;
    }
    float getMax() const { return m_max; }
    void setMax(float v) {
        OvUndoStack::noteProperty(this);
        m_max = v;
    }
    void getMinMax(float &min, float &max) const {
        min = m_min;
        max = m_max;
    }
    float getSensitivity() const { return m_sensitivity; }
    void setSensitivity(float v) {
        OvUndoStack::noteProperty(this);
        m_sensitivity = v;
    }

private:
    float clamp(float v) const { return isClamped() ? std::min(std::max(v, m_min), m_max) : v; }
    float keyedValueAt(int time) const {
        if (m_keys.isEmpty())
            return m_value;
        return clamp(float(evaluateKeys(m_keys, time, [this](int i) { return double(m_keys.value(i)); })));
    }

    OvKeyTrack<float> m_keys;
    float m_value;
    float m_default;
    float m_min = -Unbounded;
    float m_max = Unbounded;
    float m_sensitivity = 1.0f;
};

// A float dial that also names a node: the point-at control (weight and target).
class OvNumericNodeProperty : public OvFloatProperty {
public:
    OV_PROPERTY_STATE(OvNumericNodeProperty)
    explicit OvNumericNodeProperty(const QString &name, float value = 0.0f) : OvFloatProperty(name, value) {}
    const char *className() const override { return "OvNumericNodeProperty"; }
    OvNode *getNode() const { return m_node; }
    void setNode(OvNode *node) {
        OvUndoStack::noteProperty(this);
        m_node = node;
    }

private:
    OvNode *m_node = nullptr;
};

// A colour (a light's); components 0 to 1.
class OvColorProperty : public OvProperty {
public:
    OV_PROPERTY_STATE(OvColorProperty)
    explicit OvColorProperty(const QString &name, const QColor &value = Qt::white)
        : OvProperty(name), m_value(value) {}
    const char *className() const override { return "OvColorProperty"; }
    QColor getValue() const { return m_value; }
    void setValue(const QColor &c) {
        OvUndoStack::noteProperty(this);
        m_value = c;
    }
    // Keys interpolate each component; the value stands while there are none.
    QColor getColorValue(int time) const;
    void setColorValue(int time, const QColor &c, OvInterpolation interp = OvInterpolation::Spline) {
        OvUndoStack::noteProperty(this);
        m_keys.set(time, c.rgb(), interp);
    }
    int getNumKeys() const override { return m_keys.count(); }
    int getKeyTime(int i) const override { return m_keys.time(i); }
    OvInterpolation getKeyInterpolation(int i) const override { return m_keys.interpolation(i); }
    QColor getKeyValue(int i) const { return QColor::fromRgb(m_keys.value(i)); }
    void deleteKey(int i) override {
        OvUndoStack::noteProperty(this);
        m_keys.remove(i);
    }

private:
    OvKeyTrack<QRgb> m_keys;
    QColor m_value;
};

class OvIntProperty : public OvNumericProperty {
public:
    OV_PROPERTY_STATE(OvIntProperty)
    explicit OvIntProperty(const QString &name, int value = 0) : OvNumericProperty(name), m_value(value) {}
    const char *className() const override { return "OvIntProperty"; }
    int getValue() const { return m_value; }
    void setValue(int v) {
        OvUndoStack::noteProperty(this);
        m_value = v;
    }
    void setIntValue(int v) override {
        OvUndoStack::noteProperty(this);
        m_value = v;
    }
    // Keys hold until the next one.
    void setIntValue(int time, int v) override {
        OvUndoStack::noteProperty(this);
        m_keys.set(time, v, OvInterpolation::Constant);
    }
    int getValueAt(int time) const { return isDriven() ? int(drivenValueAt(time)) : keyedValueAt(time); }
    double ownValueAt(int time) const override { return keyedValueAt(time); }
    // Rounded to the nearest whole number within the range.
    double fitValue(double v) const override;
    int getNumKeys() const override { return m_keys.count(); }
    int getKeyTime(int i) const override { return m_keys.time(i); }
    OvInterpolation getKeyInterpolation(int i) const override { return m_keys.interpolation(i); }
    int getKeyValue(int i) const { return m_keys.value(i); }
    void deleteKey(int i) override {
        OvUndoStack::noteProperty(this);
        m_keys.remove(i);
    }
    int getMin() const { return m_min; }
    void setMin(int v) {
        OvUndoStack::noteProperty(this);
        m_min = v;
    }
    int getMax() const { return m_max; }
    void setMax(int v) {
        OvUndoStack::noteProperty(this);
        m_max = v;
    }

private:
    int keyedValueAt(int time) const { return m_keys.isEmpty() ? m_value : evaluateStepKeys(m_keys, time); }

    OvKeyTrack<int> m_keys;
    int m_value;
    int m_min = -2147483647 - 1;
    int m_max = 2147483647;
};

class OvBoolProperty : public OvNumericProperty {
public:
    OV_PROPERTY_STATE(OvBoolProperty)
    explicit OvBoolProperty(const QString &name, bool value = false)
        : OvNumericProperty(name), m_value(value) {}
    const char *className() const override { return "OvBoolProperty"; }
    bool getValue() const { return m_value; }
    void setValue(bool v) {
        OvUndoStack::noteProperty(this);
        m_value = v;
    }
    void setIntValue(int v) override {
        OvUndoStack::noteProperty(this);
        m_value = v != 0;
    }
    void setIntValue(int time, int v) override {
        OvUndoStack::noteProperty(this);
        m_keys.set(time, v != 0, OvInterpolation::Constant);
    }
    bool getValueAt(int time) const { return isDriven() ? drivenValueAt(time) != 0 : keyedValueAt(time); }
    double ownValueAt(int time) const override { return keyedValueAt(time) ? 1.0 : 0.0; }
    double fitValue(double v) const override { return v != 0 ? 1.0 : 0.0; }
    int getNumKeys() const override { return m_keys.count(); }
    int getKeyTime(int i) const override { return m_keys.time(i); }
    OvInterpolation getKeyInterpolation(int i) const override { return m_keys.interpolation(i); }
    bool getKeyValue(int i) const { return m_keys.value(i) != 0; }
    void deleteKey(int i) override {
        OvUndoStack::noteProperty(this);
        m_keys.remove(i);
    }

private:
    bool keyedValueAt(int time) const {
        return m_keys.isEmpty() ? m_value : evaluateStepKeys(m_keys, time) != 0;
    }

    OvKeyTrack<int> m_keys;
    bool m_value;
};

// A choice among named items; the value is the index of the chosen one.
class OvEnumProperty : public OvIntProperty {
public:
    OV_PROPERTY_STATE(OvEnumProperty)
    explicit OvEnumProperty(const QString &name) : OvIntProperty(name, 0) {}
    const char *className() const override { return "OvEnumProperty"; }
    int getNumItems() const { return int(m_items.size()); }
    const QStringList &getItems() const { return m_items; }
    void setItems(const QStringList &items) {
        OvUndoStack::noteProperty(this);
        m_items = items;
    }

private:
    QStringList m_items;
};

// A reference to a skeleton (a figure follows the one it conforms to).
class OvSkeletonProperty : public OvProperty {
public:
    OV_PROPERTY_STATE(OvSkeletonProperty)
    explicit OvSkeletonProperty(const QString &name) : OvProperty(name) {}
    const char *className() const override { return "OvSkeletonProperty"; }
    OvSkeleton *getValue() const { return m_value; }
    void setValue(OvSkeleton *skeleton) {
        OvUndoStack::noteProperty(this);
        m_value = skeleton;
    }

private:
    OvSkeleton *m_value = nullptr;
};

class OvElementData {
public:
    explicit OvElementData(const QString &name) : m_name(name) {}
    virtual ~OvElementData() = default;
    virtual const char *className() const = 0;
    const QString &getName() const { return m_name; }

private:
    QString m_name;
};

// The file an object was imported from.
class OvSourceFileData : public OvElementData {
public:
    explicit OvSourceFileData(const QString &path)
        : OvElementData(QStringLiteral("SourceFileData")), m_path(path) {}
    const char *className() const override { return "OvSourceFileData"; }
    const QString &getSourceFilePath() const { return m_path; }
    void setSourceFilePath(const QString &path) { m_path = path; }

protected:
    OvSourceFileData(const QString &itemName, const QString &path) : OvElementData(itemName), m_path(path) {}

private:
    QString m_path;
};

// The geometry file (and face group) a figure or shape was built from.
class OvGeomSourceFileData : public OvSourceFileData {
public:
    OvGeomSourceFileData(const QString &path, const QString &group = QString())
        : OvSourceFileData(QStringLiteral("GeomSourceFileData"), path), m_group(group) {}
    const char *className() const override { return "OvGeomSourceFileData"; }
    const QString &getGroupName() const { return m_group; }
    void setGroupName(const QString &group) { m_group = group; }

private:
    QString m_group;
};
