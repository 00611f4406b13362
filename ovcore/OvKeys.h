#pragma once
// Animation keys of one property: times (host time units), values and the interpolation of the
// segment that leaves each key. Kept as three parallel arrays so that a float key costs nine bytes
// and a long track needs no allocation per key.

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

// Host interpolation types; the values are the host's.
enum class OvInterpolation : unsigned char { Linear = 0, Constant = 1, Spline = 2 };

template <class T> class OvKeyTrack {
public:
    int count() const {
        settle();
        return int(m_times.size());
    }
    bool isEmpty() const { return m_times.empty(); }
    int time(int i) const {
        settle();
        return m_times[size_t(i)];
    }
    const T &value(int i) const {
        settle();
        return m_values[size_t(i)];
    }
    OvInterpolation interpolation(int i) const {
        settle();
        return OvInterpolation(m_interp[size_t(i)]);
    }
    void setValueAt(int i, const T &v) {
        settle();
        m_values[size_t(i)] = v;
    }
    void remove(int i) {
        settle();
        m_times.erase(m_times.begin() + i);
        m_values.erase(m_values.begin() + i);
        m_interp.erase(m_interp.begin() + i);
    }
    // The key at `t`, or -1.
    int find(int t) const {
        settle();
        auto it = std::lower_bound(m_times.begin(), m_times.end(), t);
        return it != m_times.end() && *it == t ? int(it - m_times.begin()) : -1;
    }
    // The last key at or before `t`; -1 before the first.
    int segment(int t) const {
        settle();
        return int(std::upper_bound(m_times.begin(), m_times.end(), t) - m_times.begin()) - 1;
    }
    // One key per time: a key at a time that has one replaces it. Keys in time order are appended;
    // others are sorted in once the track is next read, so that a long track given backwards does
    // not move its keys once per key.
    void set(int t, const T &v, OvInterpolation interp) {
        if (!m_unsorted && !m_times.empty() && t <= m_times.back()) {
            if (const int i = find(t); i >= 0) {
                m_values[size_t(i)] = v;
                m_interp[size_t(i)] = (unsigned char)interp;
                return;
            }
            m_unsorted = true;
        }
        m_times.push_back(t);
        m_values.push_back(v);
        m_interp.push_back((unsigned char)interp);
    }
    size_t bytesPerKey() const { return sizeof(int) + sizeof(T) + sizeof(unsigned char); }

private:
    // Sorts by time; of keys at the same time the one set last stays.
    void settle() const {
        if (!m_unsorted)
            return;
        m_unsorted = false;
        std::vector<size_t> order(m_times.size());
        std::iota(order.begin(), order.end(), size_t(0));
        std::stable_sort(order.begin(), order.end(),
                         [this](size_t a, size_t b) { return m_times[a] < m_times[b]; });
        std::vector<int> times;
        std::vector<T> values;
        std::vector<unsigned char> interp;
        times.reserve(order.size());
        values.reserve(order.size());
        interp.reserve(order.size());
        for (size_t i : order) {
            if (!times.empty() && times.back() == m_times[i]) {
                values.back() = m_values[i];
                interp.back() = m_interp[i];
                continue;
            }
            times.push_back(m_times[i]);
            values.push_back(m_values[i]);
            interp.push_back(m_interp[i]);
        }
        m_times.swap(times);
        m_values.swap(values);
        m_interp.swap(interp);
    }

    mutable std::vector<int> m_times;
    mutable std::vector<T> m_values;
    mutable std::vector<unsigned char> m_interp;
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
