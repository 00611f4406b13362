#include "GltfNames.h"

namespace {

bool safe(QChar c) {
    const ushort u = c.unicode();
    return (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9') || u == '_' || u == '-';
}

} // namespace

std::string GltfNames::make(const QString &name, const char *fallback) {
    QString clean = name.isEmpty() ? QString::fromLatin1(fallback) : name;
    bool replaced = false;
    for (QChar &c : clean)
        if (!safe(c)) {
            c = QLatin1Char('_');
            replaced = true;
        }
    QString unique = clean;
    for (int n = 2; m_used.contains(unique); ++n)
        unique = clean + QLatin1Char('_') + QString::number(n);
    if (replaced || unique != clean)
        ++m_changed;
    m_used.insert(unique);
    return unique.toStdString();
}
