#pragma once
// The animated side of the scene dumps: property keys, property groups and the viewports, in JSON
// and in the tree.

#include "JsonWriter.h"
#include <QString>
#include <QTextStream>

class OvProperty;
class OvPropertyGroupTree;
class OvScene;

// The time property values are shown at: frame `frame` when it is 0 or more, else the scene's time.
int dumpTime(const OvScene &scene, int frame);

// "keys": [[frame, value, "spline"], ...], written only when the property has keys.
void writeKeysJson(JsonWriter &w, const OvProperty &p, int timeStep);
// ", keys 0: 1 spline, 10: 2 linear" (the first few, then how many in all); empty without keys.
QString keysText(const OvProperty &p, int timeStep);

// "groups": the group tree, written only when the element has groups.
void writeGroupsJson(JsonWriter &w, const OvPropertyGroupTree *groups);
// One line per group under `indent`.
void writeGroupsTree(QTextStream &out, const QString &indent, const OvPropertyGroupTree *groups);

// "viewports": {"active": i, "views": [{"camera": name, "type": t}, ...]}.
void writeViewportsJson(JsonWriter &w);
QString viewportsText();
