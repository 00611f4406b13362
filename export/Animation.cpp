#include "Animation.h"

#include <OvProperty.h>
#include <OvScene.h>
#include <algorithm>

namespace {

bool driven(const OvFloatProperty &p) {
    return p.isDriven();
}

// Times of every key, ascending, once each; times before 0 become one key at 0.
std::vector<int> keyTimes(const std::vector<const OvFloatProperty *> &props) {
    std::vector<int> times;
    for (const OvFloatProperty *p : props)
        for (int i = 0; i < p->getNumKeys(); ++i)
            times.push_back(std::max(0, p->getKeyTime(i)));
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

// True when every segment that leaves a key (all keys but each track's last) has `kind`.
bool allSegments(const std::vector<const OvFloatProperty *> &props, OvInterpolation kind) {
    for (const OvFloatProperty *p : props)
        for (int i = 0; i + 1 < p->getNumKeys(); ++i)
            if (p->getKeyInterpolation(i) != kind)
                return false;
    return true;
}

bool varies(const std::vector<const OvFloatProperty *> &props, const std::vector<int> &times) {
    for (const OvFloatProperty *p : props) {
        const float first = p->getValueAt(times.front());
        for (int t : times)
            if (p->getValueAt(t) != first)
                return true;
    }
    return false;
}

} // namespace

float hostSeconds(int time) {
    return float(double(time) / OvScene::TimeUnitsPerSecond);
}

std::vector<int> Timeline::frames() const {
    std::vector<int> times;
    for (int t = start; t < end; t += step)
        times.push_back(t);
    times.push_back(end);
    return times;
}

Timeline makeTimeline(const OvScene &scene, const std::vector<const OvFloatProperty *> &animated) {
    Timeline t;
    t.step = scene.getTimeStep();
    t.start = scene.getAnimRange().getStart();
    t.end = scene.getAnimRange().getEnd();
    for (const OvFloatProperty *p : animated)
        if (const int n = p->getNumKeys(); n > 0) {
            t.start = std::min(t.start, p->getKeyTime(0));
            t.end = std::max(t.end, p->getKeyTime(n - 1));
        }
    t.start = std::max(0, t.start);
    t.end = std::max(t.start, t.end);
    return t;
}

TrackPlan planTrack(const std::vector<const OvFloatProperty *> &props, const Timeline &timeline,
                    bool linearValue) {
    TrackPlan plan;
    const bool anyDriven = std::any_of(props.begin(), props.end(), [](auto *p) { return driven(*p); });
    std::vector<int> keys = keyTimes(props);
    if (!anyDriven) {
        if (keys.size() < 2 || !varies(props, keys))
            return plan; // one value all the time
        if (allSegments(props, OvInterpolation::Constant)) {
            plan.kind = TrackPlan::Kind::Step;
            plan.times = std::move(keys);
            return plan;
        }
        if (linearValue && allSegments(props, OvInterpolation::Linear)) {
            plan.kind = TrackPlan::Kind::Linear;
            plan.times = std::move(keys);
            return plan;
        }
    }
    std::vector<int> frames = timeline.frames();
    if (frames.size() < 2 || !varies(props, frames))
        return plan;
    plan.kind = TrackPlan::Kind::Sampled;
    plan.times = std::move(frames);
    return plan;
}
