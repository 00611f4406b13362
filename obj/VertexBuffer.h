#pragma once
// Positions read from `v` lines wait here and reach the mesh in one resize-and-copy per run of `v`
// lines, instead of growing the mesh's array per vertex. Blocks are kept for reuse.

#include <OvPolyMesh.h>
#include <cstring>
#include <memory>
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
        size_t block = m_count / m_blockVerts, slot = m_count % m_blockVerts;
        if (block == m_blocks.size())
            m_blocks.emplace_back(new float[3 * m_blockVerts]);
        float *p = m_blocks[block].get() + 3 * slot;
        p[0] = x;
        p[1] = y;
        p[2] = z;
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
            std::memcpy(dst + 3 * done, m_blocks[b].get(), 3 * n * sizeof(float));
            done += n;
        }
        m_count = 0;
    }

    void release() {
        m_blocks.clear();
        m_count = 0;
    }

private:
    size_t m_blockVerts;
    size_t m_count = 0;
    std::vector<std::unique_ptr<float[]>> m_blocks;
};

} // namespace obj
