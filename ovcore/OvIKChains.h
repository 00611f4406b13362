#pragma once
// Inverse-kinematics chains of a figure: the figure's "PoserIKChains" data item holds its chains,
// each an ordered list of weighted links that bend towards a goal node; the goal bone carries a
// "PoserIKTarget" data item so that whatever moves it knows a chain pulls at it.

#include "OvProperty.h"
#include <QPointer>
#include <memory>
#include <vector>

class OvNode;

class OvPoserIKChain {
public:
    struct Link {
        QPointer<OvNode> node; // null once the node is deleted
        float weight;
    };

    explicit OvPoserIKChain(const QString &name) : m_name(name), m_label(name) {}

    const QString &getName() const { return m_name; }
    // What the user sees; the name until a label is set.
    const QString &getLabel() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }
    // A chain only solves while it is active; a new one is not.
    bool isActive() const { return m_active; }
    void setActive(bool active) { m_active = active; }

    // Inserts the link at `index`; an index outside the list (-1 among them) appends.
    void addLink(OvNode *node, float weight, int index = -1);
    // False (and nothing changes) when no link has that index.
    bool setLinkWeight(int index, float weight);
    int getNumLinks() const { return int(m_links.size()); }
    const Link &getLink(int i) const { return m_links[size_t(i)]; }

    OvNode *getGoal() const { return m_goal; }
    void setGoal(OvNode *node) { m_goal = node; }

private:
    QString m_name;
    QString m_label;
    bool m_active = false;
    std::vector<Link> m_links;
    QPointer<OvNode> m_goal;
};

// The chains of one figure, in the order they were added (owned).
class OvPoserIKChains : public OvElementData {
public:
    OvPoserIKChains() : OvElementData(QStringLiteral("PoserIKChains")) {}
    const char *className() const override { return "OvPoserIKChains"; }

    // Takes ownership; returns the chain.
    OvPoserIKChain *addChain(OvPoserIKChain *chain);
    int getNumChains() const { return int(m_chains.size()); }
    OvPoserIKChain *getChain(int i) const { return m_chains[size_t(i)].get(); }

private:
    std::vector<std::unique_ptr<OvPoserIKChain>> m_chains;
};

// Marks a bone as the goal of a chain; carries nothing else.
class OvPoserIKTargetFlag : public OvElementData {
public:
    OvPoserIKTargetFlag() : OvElementData(QStringLiteral("PoserIKTarget")) {}
    const char *className() const override { return "OvPoserIKTargetFlag"; }
};
