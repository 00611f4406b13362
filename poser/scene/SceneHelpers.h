#pragma once
// Small helpers the scene handlers share.

#include <QString>
#include <new>

class OvNode;
struct OvPz3SceneItem;

namespace poser {

// A new T, or the importer's out-of-memory error (the read driver reports it and goes on).
template <class T> T *make() {
    T *p = new (std::nothrow) T;
    if (!p)
        throw QString("Out of Memory");
    return p;
}

// Magnets, their bases and their zones.
bool isDeformer(const OvNode *node);

// A scene item is known by the Poser name it was created under, else by its node's label.
QString itemKey(const OvPz3SceneItem &item);

// Moves `child` under `parent`. The scene lists top-level nodes only, so a top-level child leaves
// that list (keeping the selection, since the node stays in the scene). Refused, with nothing
// changed, when it would make a node its own ancestor.
bool moveUnder(OvNode *parent, OvNode *child);

} // namespace poser
