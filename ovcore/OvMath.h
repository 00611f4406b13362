#pragma once
// Small math types of the host SDK.

#include <cmath>

class OvVec3 {
public:
    OvVec3() = default;
    OvVec3(float x, float y, float z) : v{x, y, z} {}
    explicit OvVec3(const float *p) : v{p[0], p[1], p[2]} {}

    float operator[](int i) const { return v[i]; }
    float &operator[](int i) { return v[i]; }
    float x() const { return v[0]; }
    float y() const { return v[1]; }
    float z() const { return v[2]; }
    void getValue(float *out) const {
        out[0] = v[0];
        out[1] = v[1];
        out[2] = v[2];
    }
    void setValue(float x, float y, float z) {
        v[0] = x;
        v[1] = y;
        v[2] = z;
    }
    OvVec3 operator+(const OvVec3 &o) const { return {v[0] + o.v[0], v[1] + o.v[1], v[2] + o.v[2]}; }
    OvVec3 operator-(const OvVec3 &o) const { return {v[0] - o.v[0], v[1] - o.v[1], v[2] - o.v[2]}; }
    OvVec3 operator*(float s) const { return {v[0] * s, v[1] * s, v[2] * s}; }
    bool operator==(const OvVec3 &o) const { return v[0] == o.v[0] && v[1] == o.v[1] && v[2] == o.v[2]; }
    float dot(const OvVec3 &o) const { return v[0] * o.v[0] + v[1] * o.v[1] + v[2] * o.v[2]; }
    OvVec3 cross(const OvVec3 &o) const {
        return {v[1] * o.v[2] - v[2] * o.v[1], v[2] * o.v[0] - v[0] * o.v[2], v[0] * o.v[1] - v[1] * o.v[0]};
    }
    float length() const { return std::sqrt(dot(*this)); }

private:
    float v[3] = {0, 0, 0};
};

// Unit quaternion (x, y, z, w).
class OvQuat {
public:
    OvQuat() = default;
    OvQuat(float x, float y, float z, float w) : q{x, y, z, w} {}
    // Rotation of `angle` radians about `axis` (normalised here).
    OvQuat(const OvVec3 &axis, float angle) {
        float len = axis.length();
        float s = len > 0 ? std::sin(angle * 0.5f) / len : 0.0f;
        q[0] = axis.x() * s;
        q[1] = axis.y() * s;
        q[2] = axis.z() * s;
        q[3] = std::cos(angle * 0.5f);
    }
    float operator[](int i) const { return q[i]; }
    OvQuat operator*(const OvQuat &b) const {
        const float *a = q;
        return {a[3] * b.q[0] + a[0] * b.q[3] + a[1] * b.q[2] - a[2] * b.q[1],
                a[3] * b.q[1] - a[0] * b.q[2] + a[1] * b.q[3] + a[2] * b.q[0],
                a[3] * b.q[2] + a[0] * b.q[1] - a[1] * b.q[0] + a[2] * b.q[3],
                a[3] * b.q[3] - a[0] * b.q[0] - a[1] * b.q[1] - a[2] * b.q[2]};
    }
    // Rotates v by this quaternion (right-hand rule).
    OvVec3 multVec(const OvVec3 &v) const {
        OvVec3 u(q[0], q[1], q[2]);
        float w = q[3];
        OvVec3 t = u.cross(v) * 2.0f;
        return v + t * w + u.cross(t);
    }

private:
    float q[4] = {0, 0, 0, 1};
};

class OvBox3 {
public:
    OvBox3() = default;
    OvBox3(const OvVec3 &mn, const OvVec3 &mx) : m_min(mn), m_max(mx), m_empty(false) {}
    bool isEmpty() const { return m_empty; }
    const OvVec3 &getMin() const { return m_min; }
    const OvVec3 &getMax() const { return m_max; }
    void extendBy(const OvVec3 &p) {
        if (m_empty) {
            m_min = m_max = p;
            m_empty = false;
            return;
        }
        for (int i = 0; i < 3; ++i) {
            m_min[i] = std::fmin(m_min[i], p[i]);
            m_max[i] = std::fmax(m_max[i], p[i]);
        }
    }

private:
    OvVec3 m_min, m_max;
    bool m_empty = true;
};

// Scene time range in host time units (4800 per second).
class OvTimeRange {
public:
    OvTimeRange() = default;
    OvTimeRange(int start, int end) : m_start(start), m_end(end) {}
    void setEnds(int start, int end) {
        m_start = start;
        m_end = end;
    }
    int getStart() const { return m_start; }
    int getEnd() const { return m_end; }
    bool operator==(const OvTimeRange &o) const { return m_start == o.m_start && m_end == o.m_end; }

private:
    int m_start = 0;
    int m_end = 0;
};

// 4x4 float matrix, stored row by row (row vectors: the fourth row holds the translation).
class OvMatrix4 {
public:
    // True makes the identity; false leaves every element 0, for a matrix filled in afterwards.
    explicit OvMatrix4(bool identity = true) {
        if (identity)
            m[0] = m[5] = m[10] = m[15] = 1.0f;
    }
    float get(int row, int column) const { return m[row * 4 + column]; }
    void set(int row, int column, float v) { m[row * 4 + column] = v; }
    // The sixteen stored floats, row by row.
    float *data() { return m; }
    const float *data() const { return m; }
    // Scales the space the matrix maps into: the first three columns of every row (the linear part
    // and the translation); the homogeneous column stays.
    void scale(float s) {
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 3; ++column)
                m[row * 4 + column] *= s;
    }
    bool operator==(const OvMatrix4 &o) const {
        for (int i = 0; i < 16; ++i)
            if (m[i] != o.m[i])
                return false;
        return true;
    }

private:
    float m[16] = {};
};
