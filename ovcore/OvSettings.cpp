#include "OvSettings.h"

float OvSettings::getFloatValue(const QString &key, float def) const {
    auto it = m_values.constFind(key);
    if (it == m_values.constEnd())
        return def;
    bool ok = false;
    float v = it->toFloat(&ok);
    return ok ? v : def;
}

bool OvSettings::getBoolValue(const QString &key, bool def) const {
    auto it = m_values.constFind(key);
    if (it == m_values.constEnd())
        return def;
    if (it->typeId() == QMetaType::QString) {
        QString s = it->toString().trimmed().toLower();
        if (s == QLatin1String("true") || s == QLatin1String("1") || s == QLatin1String("yes") ||
            s == QLatin1String("on"))
            return true;
        if (s == QLatin1String("false") || s == QLatin1String("0") || s == QLatin1String("no") ||
            s == QLatin1String("off"))
            return false;
        return def;
    }
    return it->toBool();
}

int OvSettings::getIntValue(const QString &key, int def) const {
    auto it = m_values.constFind(key);
    if (it == m_values.constEnd())
        return def;
    bool ok = false;
    int v = it->toInt(&ok);
    return ok ? v : def;
}

QString OvSettings::getStringValue(const QString &key, const QString &def) const {
    auto it = m_values.constFind(key);
    return it == m_values.constEnd() ? def : it->toString();
}
