#pragma once
// Animation keys of one property: times (host time units), values and the interpolation of the
// segment that leaves each key, in one array: a float key costs twelve bytes, a track needs no
// allocation per key, and a track of one key none at all.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

// Host interpolation types; the values are the host's.
enum class OvInterpolation : unsigned char { Linear = 0, Constant = 1, Spline = 2 };

template <class T> class OvKeyTrack {
public:
    OvKeyTrack() : m_capacity(1), m_unsorted(0) {}
    OvKeyTrack(const OvKeyTrack &o) : m_capacity(1), m_unsorted(0) { copyFrom(o); }
    OvKeyTrack &operator=(const OvKeyTrack &o) {
        if (this != &o) {
            release();
            copyFrom(o);
        }
        return *this;
    }
    ~OvKeyTrack() { release(); }

    int count() const {
        settle();
        return int(m_size);
    }
    bool isEmpty() const { return m_size == 0; }
    int time(int i) const {
        settle();
        return keys()[i].time;
    }
    const T &value(int i) const {
        settle();
        return keys()[i].value;
    }
    OvInterpolation interpolation(int i) const {
        settle();
        return keys()[i].interp;
    }
    void setValueAt(int i, const T &v) {
        settle();
        keys()[i].value = v;
    }
    void remove(int i) {
        settle();
        Key *k = keys();
        std::copy(k + i + 1, k + m_size, k + i);
        shrinkTo(m_size - 1);
    }
    // The key at `t`, or -1.
    int find(int t) const {
        settle();
        const Key *k = keys();
        const Key *it =
            std::lower_bound(k, k + m_size, t, [](const Key &a, int time) { return a.time < time; });
        return it != k + m_size && it->time == t ? int(it - k) : -1;
    }
    // The last key at or before `t`; -1 before the first.
    int segment(int t) const {
        settle();
        const Key *k = keys();
        return int(std::upper_bound(k, k + m_size, t, [](int time, const Key &a) { return time < a.time; }) -
                   k) -
               1;
    }
    // One key per time: a key at a time that has one replaces it. Keys in time order are appended;
    // others are sorted in once the track is next read, so that a long track given backwards does
    // not move its keys once per key.
    void set(int t, const T &v, OvInterpolation interp) {
        if (!m_unsorted && m_size > 0 && t <= keys()[m_size - 1].time) {
            if (const int i = find(t); i >= 0) {
                keys()[i].value = v;
                keys()[i].interp = interp;
                return;
            }
            m_unsorted = 1;
        }
        append(Key{t, v, interp});
    }
    size_t bytesPerKey() const { return sizeof(Key); }
    // Whether the keys live in an allocation of their own (a track of one key keeps it inline).
    bool isAllocated() const { return m_capacity > 1; }

private:
    struct Key {
        int time;
        T value;
        OvInterpolation interp;
    };
    static_assert(std::is_trivially_copyable<Key>::value, "keys are copied as bytes");

    Key *keys() const { return m_capacity > 1 ? m_store.heap : &m_store.one; }
    void append(const Key &key) {
        if (m_size == m_capacity)
            reserve(m_capacity < 4 ? 4 : m_capacity + m_capacity / 2);
        keys()[m_size++] = key;
    }
    void reserve(uint32_t capacity) const {
        Key *heap = new Key[capacity];
        std::copy(keys(), keys() + m_size, heap);
        if (m_capacity > 1)
            delete[] m_store.heap;
        m_store.heap = heap;
        m_capacity = capacity;
    }
    // A track down to one key goes back inline.
    void shrinkTo(uint32_t size) const {
        m_size = size;
        if (m_capacity > 1 && size <= 1) {
            const Key one = m_store.heap[0];
            delete[] m_store.heap;
            m_store.one = one;
            m_capacity = 1;
        }
    }
    void release() {
        if (m_capacity > 1)
            delete[] m_store.heap;
        m_capacity = 1;
        m_size = 0;
        m_unsorted = 0;
    }
    void copyFrom(const OvKeyTrack &o) {
        m_unsorted = o.m_unsorted;
        if (o.m_size > 1)
            reserve(o.m_size);
        std::copy(o.keys(), o.keys() + o.m_size, keys());
        m_size = o.m_size;
    }

    // Sorts by time; of keys at the same time the one set last stays.
    void settle() const {
        if (!m_unsorted)
            return;
        m_unsorted = 0;
        Key *k = keys();
        std::stable_sort(k, k + m_size, [](const Key &a, const Key &b) { return a.time < b.time; });
        uint32_t kept = 0;
        for (uint32_t i = 0; i < m_size; ++i) {
            if (kept > 0 && k[kept - 1].time == k[i].time)
                k[kept - 1] = k[i];
            else
                k[kept++] = k[i];
        }
        shrinkTo(kept);
    }

    // One key (every channel of a Poser figure has one) is kept inline: no allocation per track.
    union Store {
        Key one;
        Key *heap;
    };
    mutable Store m_store;
    mutable uint32_t m_size = 0;
    mutable uint32_t m_capacity : 31; // 1: the inline key; more: m_store.heap
    mutable uint32_t m_unsorted : 1;
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
