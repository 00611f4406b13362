#pragma once
// Which times a glTF animation channel needs for a group of host properties that make one glTF
// value (the three angles of a rotation, the morph dials of a mesh), and how it interpolates:
// - no keys and no links: nothing to animate;
// - keys that all hold (constant): STEP at every key time, exact;
// - keys that are all linear, where the glTF value is linear in them (translation, scale, morph
//   weights): LINEAR at every key time, exact;
// - anything else (splines, mixed kinds, rotations, values driven by other properties): LINEAR
//   samples at every frame of the scene's animation, taken through the host's own evaluation.

#include <vector>

class OvFloatProperty;
class OvScene;

// The frames sampled channels cover: the scene's animation range, widened to every key of the
// exported properties, from time 0 on (glTF times start at 0).
struct Timeline {
    int start = 0;
    int end = 0;
    int step = 160; // host time units per frame
    std::vector<int> frames() const;
};
Timeline makeTimeline(const OvScene &scene, const std::vector<const OvFloatProperty *> &animated);

struct TrackPlan {
    enum class Kind { Static, Step, Linear, Sampled };
    Kind kind = Kind::Static;
    std::vector<int> times; // host time units, ascending
};

// `linearValue` says whether the glTF value is linear in the properties (false for rotations).
TrackPlan planTrack(const std::vector<const OvFloatProperty *> &props, const Timeline &timeline,
                    bool linearValue);

// Seconds of host time.
float hostSeconds(int time);
