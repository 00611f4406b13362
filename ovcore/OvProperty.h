#pragma once
// Node properties (the animatable values a user sees), the controllers that drive them, and
// element data items (records that importers leave on scene objects).

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
    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }

private:
    QString m_name;
};

// Dependent-parameter link: the owning property follows `source`; the two numbers are kept as the
// importer gives them.
class OvERCLink : public OvController {
public:
    OvERCLink(OvNumericProperty *source, double a, double b) : m_source(source), m_a(a), m_b(b) {}
    const char *className() const override { return "OvERCLink"; }
    OvNumericProperty *getSource() const { return m_source; }
    double getA() const { return m_a; }
    double getB() const { return m_b; }

private:
    OvNumericProperty *m_source;
    double m_a, m_b;
};

class OvProperty {
public:
    explicit OvProperty(const QString &name) : m_name(name), m_label(name) {}
    virtual ~OvProperty() = default;
    OvProperty(const OvProperty &) = delete;
    OvProperty &operator=(const OvProperty &) = delete;
    virtual const char *className() const = 0;

    const QString &getName() const { return m_name; }
    // The label follows the name until it is set on its own.
    void setName(const QString &name) {
        if (m_label == m_name)
            m_label = name;
        m_name = name;
    }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }
    bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) { m_hidden = hidden; }
    // A property an importer or user added (the host's own are not), and whether it takes keys.
    bool isUserProperty() const { return m_userProperty; }
    void setIsUserProperty(bool user) { m_userProperty = user; }
    bool canAnimate() const { return m_canAnimate; }
    void setCanAnimate(bool animate) { m_canAnimate = animate; }
    OvElement *getOwner() const { return m_owner; }
    void setOwner(OvElement *owner) { m_owner = owner; }

    // Controllers, owned; position -1 appends.
    void insertController(OvController *controller, int position = -1);
    bool removeController(OvController *controller);
    int getNumControllers() const { return int(m_controllers.size()); }
    OvController *getController(int i) const { return m_controllers[size_t(i)].get(); }

    // The host's integer value setter, used for int, enum and bool properties alike.
    virtual void setIntValue(int) {}

private:
    QString m_name;
    QString m_label;
    bool m_hidden = false;
    bool m_userProperty = false;
    bool m_canAnimate = true;
    OvElement *m_owner = nullptr;
    std::vector<std::unique_ptr<OvController>> m_controllers;
};

class OvNumericProperty : public OvProperty {
public:
    using OvProperty::OvProperty;
    bool isClamped() const { return m_clamped; }
    void setIsClamped(bool clamped) { m_clamped = clamped; }

private:
    bool m_clamped = false;
};

// A float dial: its value, the default it resets to, limits that hold while it is clamped, and the
// sensitivity (value change per unit of mouse drag).
class OvFloatProperty : public OvNumericProperty {
public:
    static constexpr float Unbounded = std::numeric_limits<float>::infinity();

    explicit OvFloatProperty(const QString &name, float value = 0.0f)
        : OvNumericProperty(name), m_value(value), m_default(value) {}
    const char *className() const override { return "OvFloatProperty"; }
    float getValue() const { return m_value; }
    // Held within the limits while the property is clamped.
    void setValue(float v) { m_value = isClamped() ? std::min(std::max(v, m_min), m_max) : v; }
    float getDefaultValue() const { return m_default; }
    // The value follows its new default.
    void setDefaultValue(float v) {
        m_default = v;
        setValue(v);
    }
    void setIntValue(int v) override { setValue(float(v)); }
    float getMin() const { return m_min; }
    void setMin(float v) { m_min = v; }
    float getMax() const { return m_max; }
    void setMax(float v) { m_max = v; }
    void getMinMax(float &min, float &max) const {
        min = m_min;
        max = m_max;
    }
    float getSensitivity() const { return m_sensitivity; }
    void setSensitivity(float v) { m_sensitivity = v; }

private:
    float m_value;
    float m_default;
    float m_min = -Unbounded;
    float m_max = Unbounded;
    float m_sensitivity = 1.0f;
};

// A float dial that also names a node: the point-at control (weight and target).
class OvNumericNodeProperty : public OvFloatProperty {
public:
    explicit OvNumericNodeProperty(const QString &name, float value = 0.0f) : OvFloatProperty(name, value) {}
    const char *className() const override { return "OvNumericNodeProperty"; }
    OvNode *getNode() const { return m_node; }
    void setNode(OvNode *node) { m_node = node; }

private:
    OvNode *m_node = nullptr;
};

// A colour (a light's); components 0 to 1.
class OvColorProperty : public OvProperty {
public:
    explicit OvColorProperty(const QString &name, const QColor &value = Qt::white)
        : OvProperty(name), m_value(value) {}
    const char *className() const override { return "OvColorProperty"; }
    QColor getValue() const { return m_value; }
    void setValue(const QColor &c) { m_value = c; }

private:
    QColor m_value;
};

class OvIntProperty : public OvNumericProperty {
public:
    explicit OvIntProperty(const QString &name, int value = 0) : OvNumericProperty(name), m_value(value) {}
    const char *className() const override { return "OvIntProperty"; }
    int getValue() const { return m_value; }
    void setValue(int v) { m_value = v; }
    void setIntValue(int v) override { m_value = v; }
    int getMin() const { return m_min; }
    void setMin(int v) { m_min = v; }
    int getMax() const { return m_max; }
    void setMax(int v) { m_max = v; }

private:
    int m_value;
    int m_min = -2147483647 - 1;
    int m_max = 2147483647;
};

class OvBoolProperty : public OvNumericProperty {
public:
    explicit OvBoolProperty(const QString &name, bool value = false)
        : OvNumericProperty(name), m_value(value) {}
    const char *className() const override { return "OvBoolProperty"; }
    bool getValue() const { return m_value; }
    void setValue(bool v) { m_value = v; }
    void setIntValue(int v) override { m_value = v != 0; }

private:
    bool m_value;
};

// A choice among named items; the value is the index of the chosen one.
class OvEnumProperty : public OvIntProperty {
public:
    explicit OvEnumProperty(const QString &name) : OvIntProperty(name, 0) {}
    const char *className() const override { return "OvEnumProperty"; }
    int getNumItems() const { return int(m_items.size()); }
    const QStringList &getItems() const { return m_items; }
    void setItems(const QStringList &items) { m_items = items; }

private:
    QStringList m_items;
};

// A reference to a skeleton (a figure follows the one it conforms to).
class OvSkeletonProperty : public OvProperty {
public:
    explicit OvSkeletonProperty(const QString &name) : OvProperty(name) {}
    const char *className() const override { return "OvSkeletonProperty"; }
    OvSkeleton *getValue() const { return m_value; }
    void setValue(OvSkeleton *skeleton) { m_value = skeleton; }

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
