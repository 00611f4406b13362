#pragma once
// Node properties (the animatable values a user sees) and element data items (records that
// importers leave on scene objects).

#include <QString>

class OvProperty {
public:
    explicit OvProperty(const QString &name) : m_name(name), m_label(name) {}
    virtual ~OvProperty() = default;
    virtual const char *className() const = 0;
    const QString &getName() const { return m_name; }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }

private:
    QString m_name;
    QString m_label;
};

class OvFloatProperty : public OvProperty {
public:
    explicit OvFloatProperty(const QString &name, float value = 0.0f) : OvProperty(name), m_value(value) {}
    const char *className() const override { return "OvFloatProperty"; }
    float getValue() const { return m_value; }
    void setValue(float v) { m_value = v; }

private:
    float m_value;
};

class OvBoolProperty : public OvProperty {
public:
    explicit OvBoolProperty(const QString &name, bool value = false) : OvProperty(name), m_value(value) {}
    const char *className() const override { return "OvBoolProperty"; }
    bool getValue() const { return m_value; }
    void setValue(bool v) { m_value = v; }

private:
    bool m_value;
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
    explicit OvSourceFileData(const QString &path) : OvElementData(QStringLiteral("SourceFileData")), m_path(path) {}
    const char *className() const override { return "OvSourceFileData"; }
    const QString &getSourceFilePath() const { return m_path; }
    void setSourceFilePath(const QString &path) { m_path = path; }

private:
    QString m_path;
};

// The geometry file a figure or shape was built from.
class OvGeomSourceFileData : public OvElementData {
public:
    explicit OvGeomSourceFileData(const QString &path)
        : OvElementData(QStringLiteral("GeomSourceFileData")), m_path(path) {}
    const char *className() const override { return "OvGeomSourceFileData"; }
    const QString &getSourceFilePath() const { return m_path; }
    void setSourceFilePath(const QString &path) { m_path = path; }

private:
    QString m_path;
};
