#pragma once
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

// Named values of one kind of settings (for importers: their options).
class OvSettings {
public:
    virtual ~OvSettings() = default;

    bool hasValue(const QString &key) const { return m_values.contains(key); }
    QStringList keys() const { return m_values.keys(); }
    QVariant value(const QString &key) const { return m_values.value(key); }
    void remove(const QString &key) { m_values.remove(key); }
    void clear() { m_values.clear(); }

    float getFloatValue(const QString &key, float def = 0.0f) const;
    bool getBoolValue(const QString &key, bool def = false) const;
    int getIntValue(const QString &key, int def = 0) const;
    QString getStringValue(const QString &key, const QString &def = QString()) const;

    void setFloatValue(const QString &key, float v) { m_values.insert(key, QVariant(v)); }
    void setBoolValue(const QString &key, bool v) { m_values.insert(key, QVariant(v)); }
    void setIntValue(const QString &key, int v) { m_values.insert(key, QVariant(v)); }
    void setStringValue(const QString &key, const QString &v) { m_values.insert(key, QVariant(v)); }

private:
    QMap<QString, QVariant> m_values; // sorted, so dumps are stable
};

class OvFileIOSettings : public OvSettings {};
