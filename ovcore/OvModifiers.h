#pragma once
// Modifiers an object applies to its shapes: the Poser joint of a body part and the binding of a
// magnet deformer.

#include "OvJointParams.h"
#include "OvNode.h"
#include <memory>
#include <vector>

class OvDForm;

// Poser-style joint deformation of a body part; its bend switch turns bending on and off. It owns
// its joint parameters, in the order they were added.
class OvPoserJoint : public OvModifier {
public:
    OvPoserJoint() : m_bend(QStringLiteral("Bend"), 1) {
        setName(QStringLiteral("PoserJoint"));
        m_bend.setMin(0);
        m_bend.setMax(1);
    }
    const char *className() const override { return "OvPoserJoint"; }
    OvIntProperty *getBendControl() { return &m_bend; }
    const OvIntProperty *getBendControl() const { return &m_bend; }
    bool bendingOn() const { return m_bend.getValue() != 0; }

    // The first parameter of that name, or null.
    OvPoserJointParam *findJointParam(const QString &name) const;
    int getNumParams() const { return int(m_params.size()); }
    OvPoserJointParam *getParam(int i) const { return m_params[size_t(i)].get(); }
    // Takes ownership; appends.
    void addJointParam(OvPoserJointParam *param);

private:
    OvIntProperty m_bend;
    std::vector<std::unique_ptr<OvPoserJointParam>> m_params;
};

// Binds a magnet deformer to the object it deforms, with the strength channel of the binding.
class OvDFormModifier : public OvModifier {
public:
    OvDFormModifier() : m_value(QStringLiteral("Value"), 1.0f) {}
    const char *className() const override { return "OvDFormModifier"; }
    OvDForm *getDForm() const { return m_dform; }
    void setDForm(OvDForm *dform) { m_dform = dform; }
    OvFloatProperty *getValueChannel() { return &m_value; }

private:
    OvDForm *m_dform = nullptr;
    OvFloatProperty m_value;
};
