#pragma once
// How an element's properties are arranged for the user: a tree of named groups, each listing
// property names in the order shown, each collapsed or not. A property's path ("General/Transforms")
// names its group; setting the path makes the groups on the way.

#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

class OvPropertyGroup {
public:
    explicit OvPropertyGroup(const QString &name = QString()) : m_name(name) {}
    const QString &getName() const { return m_name; }
    bool isCollapsed() const { return m_collapsed; }
    void setCollapsed(bool collapsed) { m_collapsed = collapsed; }
    // Property names in the order shown.
    const QStringList &propertyNames() const { return m_properties; }
    // Moves a property of this group to `index`; false when the group does not hold it.
    bool movePropertyToIndex(const QString &name, int index);
    int getNumChildren() const { return int(m_children.size()); }
    const OvPropertyGroup *getChild(int i) const { return m_children[size_t(i)].get(); }
    OvPropertyGroup *findChildNamed(const QString &name) const;

private:
    friend class OvPropertyGroupTree;
    QString m_name;
    bool m_collapsed = false;
    QStringList m_properties;
    std::vector<std::unique_ptr<OvPropertyGroup>> m_children;
};

class OvPropertyGroupTree {
public:
    // The group at a path of names separated by '/', or null; the empty path is the root.
    OvPropertyGroup *findChild(const QString &path) const;
    // Puts a property into the group at `path` (made when missing), at its end, taking it out of
    // the group it was in; an empty path leaves it in no group.
    void place(const QString &property, const QString &oldPath, const QString &path);
    const OvPropertyGroup &root() const { return m_root; }
    bool isEmpty() const { return m_root.getNumChildren() == 0; }

private:
    OvPropertyGroup m_root;
};
