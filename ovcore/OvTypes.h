#pragma once
// Containers of the host SDK: a growable array, a stack, an intrusive shared pointer and the
// reference-counted base it needs, plus an array for bulk plain data (mesh arrays) whose growth
// costs no copy on large blocks.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

class OvRefCountedItem {
public:
    OvRefCountedItem() = default;
    OvRefCountedItem(const OvRefCountedItem &) : m_refCount(0) {}
    OvRefCountedItem &operator=(const OvRefCountedItem &) { return *this; }
    virtual ~OvRefCountedItem() = default;

    void ref() const { ++m_refCount; }
    void unref() const {
        if (--m_refCount == 0)
            delete this;
    }
    int refCount() const { return m_refCount; }

private:
    mutable int m_refCount = 0;
};

template <class T> class OvTSharedPointer {
public:
    OvTSharedPointer() = default;
    OvTSharedPointer(T *p) : m_p(p) {
        if (m_p)
            m_p->ref();
    }
    OvTSharedPointer(const OvTSharedPointer &o) : OvTSharedPointer(o.m_p) {}
    OvTSharedPointer(OvTSharedPointer &&o) noexcept : m_p(o.m_p) { o.m_p = nullptr; }
    template <class U> OvTSharedPointer(const OvTSharedPointer<U> &o) : OvTSharedPointer(o.get()) {}
    ~OvTSharedPointer() {
        if (m_p)
            m_p->unref();
    }
    OvTSharedPointer &operator=(OvTSharedPointer o) {
        std::swap(m_p, o.m_p);
        return *this;
    }
    T *get() const { return m_p; }
    T *operator->() const { return m_p; }
    T &operator*() const { return *m_p; }
    explicit operator bool() const { return m_p != nullptr; }
    bool operator==(const OvTSharedPointer &o) const { return m_p == o.m_p; }
    bool operator!=(const OvTSharedPointer &o) const { return m_p != o.m_p; }

private:
    T *m_p = nullptr;
};

// Growable array with the host's grow step: capacity grows by at least `growStep` entries. Items
// are kept in slots so that OvTArray<bool> hands out real references.
template <class T> class OvTArray {
    struct Slot {
        T value;
    };

public:
    explicit OvTArray(int growStep = 8) : m_growStep(size_t(growStep > 0 ? growStep : 8)) {}
    int getNumItems() const { return int(m_items.size()); }
    int size() const { return int(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }
    void append(const T &v) {
        if (m_items.size() == m_items.capacity())
            m_items.reserve(m_items.capacity() + std::max<size_t>(m_growStep, m_items.capacity() / 2));
        m_items.push_back(Slot{v});
    }
    void removeLast() { m_items.pop_back(); }
    void removeAt(int i) { m_items.erase(m_items.begin() + i); }
    void clear() { m_items.clear(); }
    T &operator[](int i) { return m_items[size_t(i)].value; }
    const T &operator[](int i) const { return m_items[size_t(i)].value; }
    T &last() { return m_items.back().value; }
    const T &last() const { return m_items.back().value; }

private:
    std::vector<Slot> m_items;
    size_t m_growStep;
};

template <class T> class OvTStack {
public:
    explicit OvTStack(int capacity = 32) { m_items.reserve(size_t(capacity > 0 ? capacity : 1)); }
    void push(const T &v) { m_items.push_back(v); }
    T pop() {
        T v = m_items.back();
        m_items.pop_back();
        return v;
    }
    const T &top() const { return m_items.back(); }
    bool isEmpty() const { return m_items.empty(); }
    int count() const { return int(m_items.size()); }
    void clear() { m_items.clear(); }
    const T &operator[](int i) const { return m_items[size_t(i)]; }

private:
    std::vector<T> m_items;
};

namespace ovpod {

// Blocks of at least kMappedBlock bytes get mappings of their own, which grow with mremap: page
// tables move, the data is not copied and no fresh pages are touched for a copy. From kLargeBlock on
// they grow in whole 2 MiB units, aligned and marked for transparent huge pages, so filling a mesh
// array of many megabytes costs a few page faults instead of one per 4 KiB.
constexpr size_t kMappedBlock = size_t(128) << 10;
constexpr size_t kLargeBlock = size_t(2) << 20;

#if defined(__linux__)
inline void adviseHuge(void *p, size_t bytes) {
    if (bytes >= kLargeBlock)
        madvise(p, bytes, MADV_HUGEPAGE);
}

// A fresh mapping of `bytes` (a multiple of 4 KiB), aligned to 2 MiB; null when there is no memory.
inline void *mapLarge(size_t bytes) {
    void *raw =
        mmap(nullptr, bytes + kLargeBlock, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED)
        return nullptr;
    uintptr_t r = reinterpret_cast<uintptr_t>(raw), a = (r + kLargeBlock - 1) & ~(kLargeBlock - 1);
    if (a > r)
        munmap(raw, a - r);
    munmap(reinterpret_cast<void *>(a + bytes), r + kLargeBlock - a); // never empty: a < r + kLargeBlock
    adviseHuge(reinterpret_cast<void *>(a), bytes);
    return reinterpret_cast<void *>(a);
}

// Resizes a mapping of mapLarge; null (and the old mapping intact) when there is no memory.
inline void *remapLarge(void *p, size_t oldBytes, size_t newBytes) {
    if (newBytes <= oldBytes) {
        if (newBytes < oldBytes)
            munmap(static_cast<char *>(p) + newBytes, oldBytes - newBytes);
        return p;
    }
    void *q = mremap(p, oldBytes, newBytes, 0); // in place when the address space after it is free
    if (q != MAP_FAILED) {
        adviseHuge(q, newBytes);
        return q;
    }
    // Else onto a fresh aligned range, so that the huge pages move whole.
    void *dst = mapLarge(newBytes);
    if (!dst)
        return nullptr;
    q = mremap(p, oldBytes, newBytes, MREMAP_MAYMOVE | MREMAP_FIXED, dst);
    if (q == MAP_FAILED) {
        munmap(dst, newBytes);
        return nullptr;
    }
    adviseHuge(q, newBytes); // the moved mapping keeps the flags of the old one
    return q;
}

inline void unmapLarge(void *p, size_t bytes) {
    munmap(p, bytes);
}
#else
inline void *mapLarge(size_t bytes) {
    return std::malloc(bytes);
}
inline void *remapLarge(void *p, size_t, size_t newBytes) {
    return std::realloc(p, newBytes);
}
inline void unmapLarge(void *p, size_t) {
    std::free(p);
}
#endif

} // namespace ovpod

// Array of trivially copyable values for bulk plain data (mesh arrays). Small blocks live on the
// heap and grow with realloc; larger ones are mappings of their own (see ovpod::kMappedBlock), so
// growing a mesh array neither copies it nor holds the old and the new block at once.
template <class T> class OvPodArray {
    static_assert(std::is_trivially_copyable<T>::value, "OvPodArray holds plain data only");

public:
    OvPodArray() = default;
    OvPodArray(const OvPodArray &o) { assign(o.m_data, o.m_size); }
    OvPodArray(OvPodArray &&o) noexcept
        : m_data(o.m_data), m_size(o.m_size), m_cap(o.m_cap), m_mappedBytes(o.m_mappedBytes) {
        o.m_data = nullptr;
        o.m_size = o.m_cap = o.m_mappedBytes = 0;
    }
    OvPodArray &operator=(OvPodArray o) {
        swap(o);
        return *this;
    }
    ~OvPodArray() { release(); }

    void swap(OvPodArray &o) noexcept {
        std::swap(m_data, o.m_data);
        std::swap(m_size, o.m_size);
        std::swap(m_cap, o.m_cap);
        std::swap(m_mappedBytes, o.m_mappedBytes);
    }
    size_t size() const { return m_size; }
    size_t capacity() const { return m_cap; }
    bool empty() const { return m_size == 0; }
    T *data() { return m_data; }
    const T *data() const { return m_data; }
    T &operator[](size_t i) { return m_data[i]; }
    const T &operator[](size_t i) const { return m_data[i]; }
    const T *begin() const { return m_data; }
    const T *end() const { return m_data + m_size; }

    void push_back(const T &v) {
        if (m_size == m_cap)
            grow(m_size + 1);
        m_data[m_size++] = v;
    }
    void reserve(size_t n) {
        if (n > m_cap)
            reallocTo(n);
    }
    void resize(size_t n) {
        if (n > m_cap)
            grow(n);
        m_size = n;
    }
    void truncate(size_t n) {
        if (n < m_size)
            m_size = n;
    }
    void clear() { m_size = 0; }
    void shrinkToFit() {
        if (m_cap > m_size)
            reallocTo(m_size);
    }
    void assign(const T *src, size_t n) {
        resize(n);
        if (n)
            std::memcpy(m_data, src, n * sizeof(T));
    }
    void append(const T *src, size_t n) {
        size_t old = m_size;
        resize(old + n);
        if (n)
            std::memcpy(m_data + old, src, n * sizeof(T));
    }
    size_t bytes() const { return m_cap * sizeof(T); }

private:
    void grow(size_t need) {
        size_t cap = m_cap < 16 ? 16 : m_cap + m_cap / 2;
        reallocTo(cap < need ? need : cap);
    }
    void release() {
        if (m_mappedBytes)
            ovpod::unmapLarge(m_data, m_mappedBytes);
        else
            std::free(m_data);
        m_data = nullptr;
        m_cap = m_mappedBytes = 0;
    }
    void reallocTo(size_t cap) {
        if (cap == 0) {
            release();
            return;
        }
        if (cap > (size_t(-1) - 4 * ovpod::kLargeBlock) / sizeof(T))
            throw std::bad_alloc();
        size_t bytes = cap * sizeof(T);
        if (bytes < ovpod::kMappedBlock) {
            void *p;
            if (!m_mappedBytes) {
                p = std::realloc(m_data, bytes);
            } else {
                p = std::malloc(bytes);
                if (p)
                    std::memcpy(p, m_data, std::min(m_size, cap) * sizeof(T));
            }
            if (!p)
                throw std::bad_alloc();
            if (m_mappedBytes)
                release();
            m_data = static_cast<T *>(p);
            m_cap = cap;
            return;
        }
        // Large blocks grow in whole 2 MiB units (the huge pages); otherwise whole pages.
        const size_t unit = cap > m_cap && bytes >= ovpod::kLargeBlock ? ovpod::kLargeBlock : size_t(4096);
        size_t mapped = (bytes + unit - 1) & ~(unit - 1);
        void *p;
        if (m_mappedBytes) {
            p = ovpod::remapLarge(m_data, m_mappedBytes, mapped);
        } else {
            p = ovpod::mapLarge(mapped);
            if (p && m_size)
                std::memcpy(p, m_data, std::min(m_size, cap) * sizeof(T));
            if (p)
                release();
        }
        if (!p)
            throw std::bad_alloc();
        m_data = static_cast<T *>(p);
        m_mappedBytes = mapped;
        m_cap = mapped / sizeof(T);
    }

    T *m_data = nullptr;
    size_t m_size = 0;
    size_t m_cap = 0;
    size_t m_mappedBytes = 0; // size of the mapping when the block is a large one, else 0
};
