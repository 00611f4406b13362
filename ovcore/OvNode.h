#pragma once
// Scene graph: elements carry data items; nodes form the hierarchy and carry properties and an
// object; objects hold shapes.

#include "OvBase.h"
#include "OvProperty.h"
#include "OvShape.h"
#include <memory>
#include <vector>

class OvElement : public OvBase {
    Q_OBJECT
public:
    OvElement() = default;
    ~OvElement() override;

    OvElementData *findDataItem(const QString &name) const;
    // Takes ownership.
    void addDataItem(OvElementData *item);
    int getNumDataItems() const { return int(m_dataItems.size()); }
    OvElementData *getDataItem(int i) const { return m_dataItems[size_t(i)].get(); }

    // True when this object's class is exactly `className`.
    bool isA(const char *className) const;

private:
    std::vector<std::unique_ptr<OvElementData>> m_dataItems;
};

// What a node shows: its shapes (owned).
class OvObject : public OvElement {
    Q_OBJECT
public:
    ~OvObject() override;
    int getNumShapes() const { return int(m_shapes.size()); }
    OvShape *getShape(int i) const { return m_shapes[size_t(i)]; }
    // Takes ownership.
    void addShape(OvShape *shape) { m_shapes.push_back(shape); }

private:
    std::vector<OvShape *> m_shapes;
};

class OvNode : public OvElement {
    Q_OBJECT
public:
    OvNode() = default;
    ~OvNode() override;

    const QString &getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }

    OvNode *getNodeParent() const { return m_parent; }
    int getNumNodeChildren() const { return int(m_children.size()); }
    OvNode *getNodeChild(int i) const { return m_children[size_t(i)]; }
    // Takes ownership; a child that has another parent is taken from it first. Refuses (false) to
    // make a node its own ancestor.
    bool addNodeChild(OvNode *child, bool keepWorldPosition = false);
    // Gives up ownership; the caller then owns the child.
    bool removeNodeChild(OvNode *child, bool keepWorldPosition = false);
    bool isAncestorOf(const OvNode *node) const;

    OvObject *getObject() const { return m_object.get(); }
    // Takes ownership; replaces any previous object.
    void setObject(OvObject *object) { m_object.reset(object); }

    int getNumProperties() const { return int(m_properties.size()); }
    OvProperty *getProperty(int i) const { return m_properties[size_t(i)].get(); }
    OvProperty *findProperty(const QString &name) const;
    // Takes ownership.
    void addProperty(OvProperty *property) { m_properties.emplace_back(property); }

private:
    QString m_name;
    QString m_label;
    OvNode *m_parent = nullptr;
    std::vector<OvNode *> m_children;
    std::unique_ptr<OvObject> m_object;
    std::vector<std::unique_ptr<OvProperty>> m_properties;
};
