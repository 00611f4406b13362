#pragma once
// The arrangement of an object's channels that a `groups` channel describes: a tree of named groups,
// each listing channels by name, built while the section is read and given to the node's properties
// when its channels section closes.

#include <QString>
#include <QStringList>
#include <memory>

class OvNode;

struct Pz3ChannelGroup {
    bool collapsed = false;
    QString name;
    QStringList parms; // channel names, in file order
    std::unique_ptr<Pz3ChannelGroup> firstChild;
    std::unique_ptr<Pz3ChannelGroup> nextSibling;
    Pz3ChannelGroup *parent = nullptr;

    explicit Pz3ChannelGroup(const QString &n) : name(n) {}
    // Sibling chains are released one by one: a long chain must not recurse once per group.
    ~Pz3ChannelGroup();
    void setCollapsed(bool on) { collapsed = on; }
    void addParm(const QString &parm) { parms.append(parm); }
    void addChild(std::unique_ptr<Pz3ChannelGroup> group);
    void appendSibling(std::unique_ptr<Pz3ChannelGroup> group);
    void applyTo(OvNode *node, const QString &parentPath) const;
};

struct Pz3ChannelGroupBuilder {
    std::unique_ptr<Pz3ChannelGroup> root;
    Pz3ChannelGroup *current = nullptr;

    void push(const QString &name);
    void pop() { current = current ? current->parent : nullptr; }
    QString currentName() const { return current ? current->name : QString(); }
    void apply(OvNode *node) const;
};
