#pragma once
// Positions read from `v` lines wait here and reach the mesh in one resize-and-copy per run of `v`
// lines, instead of growing the mesh's array per vertex. Blocks are kept for reuse.
//
// Blocks are carved out of slabs that double in size up to one large block of OvPodArray (a huge
// page), so that a file of a million vertices does not cost a page fault per 4 KiB of buffer.

#include <OvPolyMesh.h>
#include <algorithm>
#include <cstring>
#include <vector>

namespace obj {

class VertexBuffer {
public:
    explicit VertexBuffer(int requestedBlockSize = 256) {
        size_t n = 1;
        while (n < size_t(requestedBlockSize > 0 ? requestedBlockSize : 1))
            n <<= 1;
        m_blockVerts = n;
    }

    bool pending() const { return m_count > 0; }
    size_t count() const { return m_count; }
    size_t blockSize() const { return m_blockVerts; }

    void append(float x, float y, float z) {
        if (m_next == m_blockEnd)
            nextBlock();
        m_next[0] = x;
        m_next[1] = y;
        m_next[2] = z;
        m_next += 3;
        ++m_count;
    }

    // Appends the buffered positions to the mesh and empties the buffer (blocks kept).
    void flushTo(OvPolyMesh &mesh) {
        if (!m_count)
            return;
        int first = mesh.getNumVertices();
        float *dst = mesh.setVertexArray(first + int(m_count)) + 3 * size_t(first);
        for (size_t done = 0, b = 0; done < m_count; ++b) {
            size_t n = m_count - done < m_blockVerts ? m_count - done : m_blockVerts;
            std::memcpy(dst + 3 * done, m_blocks[b], 3 * n * sizeof(float));
            done += n;
        }
        m_count = 0;
        m_next = m_blockEnd = nullptr;
    }

    void release() {
        m_blocks.clear();
        m_slabs.clear();
        m_count = 0;
        m_next = m_blockEnd = nullptr;
    }

private:
    // Moves the write position to the start of the block that takes vertex m_count.
    void nextBlock() {
        size_t block = m_count / m_blockVerts;
        if (block == m_blocks.size())
            addBlock();
        m_next = m_blocks[block];
        m_blockEnd = m_next + 3 * m_blockVerts;
    }

    void addBlock() {
        const size_t blockFloats = 3 * m_blockVerts;
        OvPodArray<float> *slab = m_slabs.empty() ? nullptr : &m_slabs.back();
        if (!slab || slab->capacity() - slab->size() < blockFloats) {
            const size_t maxFloats = std::max(ovpod::kLargeBlock / sizeof(float), blockFloats);
            size_t floats = slab ? std::min(2 * slab->capacity(), maxFloats) : 16 * blockFloats;
            floats = std::max(floats, blockFloats); // a whole number of blocks is carved from it
            OvPodArray<float> fresh;
            fresh.reserve(floats);
            m_slabs.push_back(std::move(fresh));
            slab = &m_slabs.back();
        }
        float *block = slab->data() + slab->size();
        m_blocks.push_back(block);
        slab->resize(slab->size() + blockFloats); // within the capacity: the block does not move
    }

    size_t m_blockVerts;
    size_t m_count = 0;
    float *m_next = nullptr; // where the next vertex goes, inside the block of vertex m_count
    float *m_blockEnd = nullptr;
    std::vector<float *> m_blocks;          // into m_slabs
    std::vector<OvPodArray<float>> m_slabs; // never grown once made, so blocks stay put
};

} // namespace obj
