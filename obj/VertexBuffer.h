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
            std::memcpy(dst + 3 * done, m_blocks[b].get(), 3 * n * sizeof(float));
            done += n;
        }
        m_count = 0;
        m_next = m_blockEnd = nullptr;
    }

    void release() {
        m_blocks.clear();
        m_count = 0;
        m_next = m_blockEnd = nullptr;
    }

private:
    // Moves the write position to the start of the block that takes vertex m_count.
    void nextBlock() {
        size_t block = m_count / m_blockVerts;
        if (block == m_blocks.size()) {
            std::unique_ptr<float[]> fresh(new float[3 * m_blockVerts]);
            m_blocks.push_back(std::move(fresh));
        }
        m_next = m_blocks[block].get();
        m_blockEnd = m_next + 3 * m_blockVerts;
    }

    size_t m_blockVerts;
    size_t m_count = 0;
    float *m_next = nullptr; // where the next vertex goes, inside the block of vertex m_count
    float *m_blockEnd = nullptr;
    std::vector<std::unique_ptr<float[]>> m_blocks;
};

} // namespace obj
