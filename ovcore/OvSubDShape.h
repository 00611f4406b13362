#pragma once
// Subdivision surfaces: a node's shapes are shown subdivided to a level.

class OvNode;

class OvSubDShape {
public:
    // Turns the shapes of the node's object into subdivision surfaces of `level` (kept as the
    // object's "Subdivision Level" property). False when the node has no object or the level is
    // not positive.
    static bool convertToSubD(OvNode *node, int level);
    // The level a node's shapes are subdivided to; 0 when they are not.
    static int subDivisionLevel(const OvNode *node);
};
