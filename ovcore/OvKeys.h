#pragma once
// Animation keys of one property: times (host time units), values and the interpolation of the
// segment that leaves each key, in one array: a float key costs twelve bytes and a track needs no
// allocation per key.

#include <algorithm>
#include <cmath>
#include <vector>

// Host interpolation types; the values are the host's.
enum class OvInterpolation : unsigned char { Linear = 0, Constant = 1, Spline = 2 };

template <class T> class OvKeyTrack {
public:
    int count() const {
        settle();
        return int(m_keys.size());
    }
    bool isEmpty() const { return m_keys.empty(); }
    int time(int i) const {
        settle();
        return m_keys[size_t(i)].time;
    }
    const T &value(int i) const {
        settle();
        return m_keys[size_t(i)].value;
    }
    OvInterpolation interpolation(int i) const {
        settle();
        return m_keys[size_t(i)].interp;
    }
    void setValueAt(int i, const T &v) {
        settle();
        m_keys[size_t(i)].value = v;
    }
    void remove(int i) {
        settle();
        m_keys.erase(m_keys.begin() + i);
    }
    // The key at `t`, or -1.
    int find(int t) const {
        settle();
        auto it = std::lower_bound(m_keys.begin(), m_keys.end(), t,
                                   [](const Key &k, int time) { return k.time < time; });
        return it != m_keys.end() && it->time == t ? int(it - m_keys.begin()) : -1;
    }
    // The last key at or before `t`; -1 before the first.
    int segment(int t) const {
        settle();
        return int(std::upper_bound(m_keys.begin(), m_keys.end(), t,
                                    [](int time, const Key &k) { return time < k.time; }) -
                   m_keys.begin()) -
               1;
    }
    // One key per time: a key at a time that has one replaces it. Keys in time order are appended;
    // others are sorted in once the track is next read, so that a long track given backwards does
    // not move its keys once per key.
    void set(int t, const T &v, OvInterpolation interp) {
        if (!m_unsorted && !m_keys.empty() && t <= m_keys.back().time) {
            if (const int i = find(t); i >= 0) {
                m_keys[size_t(i)].value = v;
                m_keys[size_t(i)].interp = interp;
                return;
            }
            m_unsorted = true;
        }
        m_keys.push_back(Key{t, v, interp});
    }
    size_t bytesPerKey() const { return sizeof(Key); }

private:
    struct Key {
        int time;
        T value;
        OvInterpolation interp;
    };

    // Sorts by time; of keys at the same time the one set last stays.
    void settle() const {
        if (!m_unsorted)
            return;
        m_unsorted = false;
        std::stable_sort(m_keys.begin(), m_keys.end(),
                         [](const Key &a, const Key &b) { return a.time < b.time; });
        std::vector<Key> kept;
        kept.reserve(m_keys.size());
        for (const Key &k : m_keys) {
            if (!kept.empty() && kept.back().time == k.time)
                kept.back() = k;
            else
                kept.push_back(k);
        }
        m_keys.swap(kept);
    }

    // One array: a track of one key (every channel of a Poser figure has one) is one allocation.
    mutable std::vector<Key> m_keys;
    mutable bool m_unsorted = false;
};

// A track at time `t` through `valueOf(i)`, the value of key i as a double: the first key's
// value before it, the last key's after it; between two keys the interpolation of the earlier one.
// Splines are Catmull-Rom curves (tangents from the neighbouring keys, scaled to the segment's
// length; an end key takes the slope to its neighbour), so they pass through every key. The track
// has at least one key.
template <class T, class ValueOf> double evaluateKeys(const OvKeyTrack<T> &keys, int t, ValueOf valueOf) {
    const int n = keys.count();
    const int i = keys.segment(t);
    if (i < 0)
        return valueOf(0);
    if (i >= n - 1 || keys.time(i) == t)
        return valueOf(i);
    const double t0 = keys.time(i), t1 = keys.time(i + 1);
    const double v0 = valueOf(i), v1 = valueOf(i + 1);
    const double u = (double(t) - t0) / (t1 - t0);
    switch (keys.interpolation(i)) {
    case OvInterpolation::Constant:
        return v0;
    case OvInterpolation::Linear:
        return v0 + (v1 - v0) * u;
    case OvInterpolation::Spline:
        break;
    }
    const double slope = (v1 - v0) / (t1 - t0);
    const double m0 = i > 0 ? (v1 - valueOf(i - 1)) / (t1 - keys.time(i - 1)) : slope;
    const double m1 = i + 2 < n ? (valueOf(i + 2) - v0) / (keys.time(i + 2) - t0) : slope;
    const double u2 = u * u, u3 = u2 * u;
    return (2 * u3 - 3 * u2 + 1) * v0 + (u3 - 2 * u2 + u) * (t1 - t0) * m0 + (-2 * u3 + 3 * u2) * v1 +
           (u3 - u2) * (t1 - t0) * m1;
}

// Integer-valued tracks hold each key's value until the next one.
inline int evaluateStepKeys(const OvKeyTrack<int> &keys, int t) {
    const int i = keys.segment(t);
    return keys.value(i < 0 ? 0 : i);
}
