#pragma once
// Names that every glTF viewer takes as they are: three.js, for one, reads '.', ':', '/', '[' and
// ']' in a node name as parts of an animation path, and several tools trip over spaces.

#include <QSet>
#include <QString>
#include <string>

class GltfNames {
public:
    // `name` with every character outside A-Z, a-z, 0-9, '_' and '-' made '_', then made unique
    // among the names handed out so far by a numeric suffix. An empty name becomes `fallback`.
    std::string make(const QString &name, const char *fallback);
    // How many names had to change (characters replaced or a suffix added).
    int changed() const { return m_changed; }

private:
    QSet<QString> m_used;
    int m_changed = 0;
};
