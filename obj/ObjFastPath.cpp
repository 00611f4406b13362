// The fast path of the OBJ reader: v and vt lines of plain numbers and f lines of plain corners
// parsed straight from the line reader's buffer in one pass, comments and normals passed over.
// Anything unusual leaves the line, untouched, to the general path.
#include "ObjLines.h"
#include "ObjParse.h"

#include <climits>
#include <cstring>
#include <text/NumberScan.h>

namespace obj {

namespace {

// Texture index of a corner without one (faceTexIndex never gives it).
const int kNoTex = INT_MIN;

} // namespace

// True when the line was read here; false leaves it, untouched, to the general path.
bool ObjLines::fastLine(char *begin, char *end) {
    if (size_t(end - begin) >= OvTextInputFile::MaxLineLength)
        return false; // cut short: the general path keeps what it always kept
    *end = '\0';      // the blank after the line at which the scanners stop
    char padded[text::kMinScanBytes] = {};
    if (end - begin + 1 < text::kMinScanBytes) { // the scanners read eight bytes up to the end
        std::memcpy(padded, begin, size_t(end - begin));
        end = padded + text::kMinScanBytes - 1; // the NULs after the copy are blanks
        begin = padded;
    }
    const char *p = begin;
    while (p < end && text::isBlank(*p))
        ++p;
    if (p == end)
        return true;
    if (p[0] == '#')
        return true;
    if (p[0] == 'f')
        return text::isBlank(p[1]) && fastFace(p + 1, end);
    if (p[0] != 'v')
        return false;
    if (text::isBlank(p[1]))
        return fastRow(p + 1, end, m_positions);
    if (p[1] != 't')
        return true; // "vn" and other keys are not read
    if (!text::isBlank(p[2]))
        return false;
    return !m_options.includeVT || fastRow(p + 2, end, m_texCoords);
}

// A row of Width plain numbers; the general path reads lines with fewer or other numbers (and
// reports them). Numbers after them are not read on either path.
template <int Width> bool ObjLines::fastRow(const char *p, const char *end, PendingRows<Width> &rows) {
    float *values = rows.values + rows.rows * Width;
    int32_t *divisions = rows.divisions + rows.rows * Width;
    for (int i = 0; i < Width; ++i) {
        while (p < end && text::isBlank(*p))
            ++p;
        if (p == end || !(p = text::scanPlainFloat(p, end, values[i], divisions[i])))
            return false;
    }
    if (++rows.rows == rows.kRows)
        flushPending();
    return true;
}

void ObjLines::flushPending() {
    int rows = 0;
    if (m_positions.rows) {
        const float *p = m_positions.finish(rows);
        appendPositions(p, rows, true);
    }
    if (m_texCoords.rows) {
        const float *uv = m_texCoords.finish(rows);
        for (int r = 0; r < rows; ++r)
            m_uvs->appendPnt2Value(uv + 2 * r);
    }
}

// Rows of three coordinates, scaled and turned Z up as the options say when `transform` is set. The
// mesh's array grows geometrically, in place for large arrays, so a batch at a time costs no copy.
void ObjLines::appendPositions(const float *p, int rows, bool transform) {
    const int first = m_mesh->getNumVertices();
    float *dst = m_mesh->setVertexArray(first + rows) + 3 * size_t(first);
    for (int r = 0; r < rows; ++r, p += 3, dst += 3) {
        float v[3] = {p[0], p[1], p[2]};
        if (transform) {
            v[0] = v[0] * m_options.scale;
            v[1] = v[1] * m_options.scale;
            v[2] = v[2] * m_options.scale;
            if (m_options.swapYZ)
                m_swap.multVec(OvVec3(v)).getValue(v);
        }
        dst[0] = v[0];
        dst[1] = v[1];
        dst[2] = v[2];
    }
}

// Corners of the usual forms; any other corner leaves the whole line to the general path. Faces
// of any size are read.
bool ObjLines::fastFace(const char *p, const char *end) {
    const char *first = p;
    int n = 0;
    for (;;) {
        while (p < end && text::isBlank(*p))
            ++p;
        if (p == end)
            break;
        int value = 0, t = 0;
        bool tokenTex = false;
        const char *q = text::scanCorner(p, end, value, tokenTex, t);
        if (!q)
            return false;
        if (n == int(m_cornerV.size())) {
            m_cornerV.resize(2 * size_t(n));
            m_cornerT.resize(2 * size_t(n));
        }
        m_cornerV[size_t(n)] = value;
        m_cornerT[size_t(n)] = tokenTex ? t : kNoTex;
        ++n;
        while (!text::isBlank(*q)) // the rest of the corner ("/n") is not read
            ++q;
        p = q;
    }
    beginFace();
    // Corner numbers become mesh indices in place. A face has texture indices when its first corner
    // has one; a corner without one keeps the one before.
    int *vertex = m_cornerV.data(), *uv = m_cornerT.data();
    const bool withUVs = n > 0 && uv[0] != kNoTex && m_faceUVs > 0;
    for (int i = 0, prev = 0; i < n; ++i) {
        vertex[i] = obj::resolveVertexIndex(vertex[i], m_faceVertices, m_baseVertex);
        uv[i] = !withUVs ? 0 : uv[i] == kNoTex ? prev : obj::resolveUVIndex(uv[i], m_faceUVs, m_baseUV);
        prev = uv[i];
    }
    const int bad = m_mesh->addFace(vertex, uv, n);
    if (bad >= 0)
        reportFace(cornerText(first, bad), m_line);
    return true;
}

// The text of corner `index` of a face whose corners begin at p.
QString ObjLines::cornerText(const char *p, int index) {
    for (int i = 0;; ++i) {
        while (text::isBlank(*p))
            ++p;
        const char *end = p;
        while (!text::isBlank(*end))
            ++end;
        if (i == index)
            return OvFileIO::decodeText(p, end - p);
        p = end;
    }
}

} // namespace obj
