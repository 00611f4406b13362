// The fast path of the OBJ reader: v and vt lines of plain numbers and f lines of plain corners
// parsed straight from the line reader's buffer in one pass, comments and normals passed over.
// Anything unusual leaves the line, untouched, to the general path.
//
// Lines are read where they stand, many at a time: a line ends at its '\n' (every scanner stops at
// a blank, and the '\n' is one), so the line reader does not look for line ends first.
#include "ObjLines.h"
#include "ObjParse.h"

#include <cstring>
#include <text/NumberScan.h>
#include <text/ShortScan.h>

namespace obj {

namespace {

// The blanks within a line: every blank but the '\n' that ends it.
inline const char *skipLineBlanks(const char *p) {
    constexpr uint64_t lineBlanks = text::kBlankBits & ~(uint64_t(1) << '\n');
    if (p[0] == ' ' && static_cast<unsigned char>(p[1]) > ' ') // the usual single space
        return p + 1;
    for (unsigned u; (u = static_cast<unsigned char>(*p)) <= ' ' && (lineBlanks >> u) & 1u;)
        ++p;
    return p;
}

// The '\n' that ends the line p is in; `last` is a '\n' at or after it.
inline const char *lineEnd(const char *p, const char *last) {
    return *p == '\n' ? p : static_cast<const char *>(std::memchr(p, '\n', size_t(last - p) + 1));
}

} // namespace

// Takes the whole lines the line reader holds while the fast path reads them; a line it does not
// read goes to the general path, and the reader's buffer is read again after it.
void ObjLines::readWholeLines() {
    char *begin = nullptr, *end = nullptr;
    while (!m_endSeen && m_file.peekLines(begin, end)) {
        if (end - begin < text::kMinScanBytes || size_t(end - begin) >= OvTextInputFile::MaxLineLength)
            return; // too short for the eight-byte reads, or it may hold a line the reader cuts
        const char *const last = end - 1, *p = begin;
        int lines = 0;
        for (const char *eol; p < end; p = eol + 1, ++lines) {
            ++m_line;
            if (!(eol = fastLineAt(p, last))) {
                --m_line;
                break;
            }
        }
        m_file.skipLines(p, lines);
        if (p == end)
            return;
        ++m_line;
        if (m_file.getRawLine(begin, end)) // the line the fast path left, whole in the buffer
            generalRawLine(begin, end);
    }
}

// One line from getRawLine; false leaves it, untouched, to the general path.
bool ObjLines::fastLine(char *begin, char *end) {
    const size_t length = size_t(end - begin);
    if (length >= OvTextInputFile::MaxLineLength || std::memchr(begin, '\n', length))
        return false; // cut short, or a '\n' inside a line of a file whose lines end with CR
    *end = '\n';
    char padded[text::kMinScanBytes] = {};
    if (end - begin + 1 < text::kMinScanBytes) { // the scanners read eight bytes up to the end
        std::memcpy(padded, begin, length);
        end = padded + text::kMinScanBytes - 1; // the NULs after the copy are blanks
        *end = '\n';
        begin = padded;
    }
    return fastLineAt(begin, end) != nullptr;
}

// Reads the line at p, which ends at a '\n' no later than `last` (a '\n' too); returns where it
// ends, or null to leave it to the general path with nothing read from it.
const char *ObjLines::fastLineAt(const char *p, const char *last) {
    p = skipLineBlanks(p);
    switch (p[0]) {
    case '\n':
        return p;
    case '#':
        return lineEnd(p, last);
    case 'f':
        return text::isBlank(p[1]) ? fastFace(p + 1, last) : nullptr;
    case 'v':
        break;
    default:
        return nullptr;
    }
    if (text::isBlank(p[1]))
        return fastRow(p + 1, last, m_positions);
    if (p[1] != 't')
        return lineEnd(p, last); // "vn" and other keys are not read
    if (!text::isBlank(p[2]))
        return nullptr;
    return m_options.includeVT ? fastRow(p + 2, last, m_texCoords) : lineEnd(p + 2, last);
}

// A row of Width plain numbers, the usual short ones ("-0.004512") in one eight-byte step; the
// general path reads lines with fewer or other numbers (and reports them). Numbers after them are not read on
// either path.
template <int Width>
const char *ObjLines::fastRow(const char *p, const char *last, PendingRows<Width> &rows) {
    float *values = rows.values + rows.rows * Width;
    int32_t *divisions = rows.divisions + rows.rows * Width;
    for (int i = 0; i < Width; ++i) {
        p = skipLineBlanks(p);
        if (*p == '\n' || !(p = text::scanShortFloat(p, last, values[i], divisions[i])))
            return nullptr;
    }
    if (++rows.rows == rows.kRows)
        flushPending();
    return lineEnd(p, last);
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
const char *ObjLines::fastFace(const char *p, const char *last) {
    // Before the corners: the counts they are resolved against include the rows still pending. A
    // line the general path then reads begins its face the same way.
    beginFace();
    const char *first = p;
    int n = 0, prev = 0;
    bool withUVs = false;
    for (;;) {
        p = skipLineBlanks(p);
        if (*p == '\n')
            break;
        int value = 0, t = 0;
        bool tokenTex = false;
        const char *q = text::scanCorner(p, last, value, tokenTex, t);
        if (!q)
            return nullptr;
        if (n == int(m_cornerV.size())) {
            m_cornerV.resize(2 * size_t(n));
            m_cornerT.resize(2 * size_t(n));
        }
        // A face has texture indices when its first corner has one; a corner without one keeps the
        // one before.
        if (n == 0)
            withUVs = tokenTex && m_faceUVs > 0;
        m_cornerV[size_t(n)] = obj::resolveVertexIndex(value, m_faceVertices, m_baseVertex);
        if (withUVs)
            prev = tokenTex ? obj::resolveUVIndex(t, m_faceUVs, m_baseUV) : prev;
        m_cornerT[size_t(n)] = prev;
        ++n;
        while (!text::isBlank(*q)) // the rest of the corner ("/n") is not read
            ++q;
        p = q;
    }
    const int bad = m_mesh->addFace(m_cornerV.data(), m_cornerT.data(), n);
    if (bad >= 0)
        reportFace(cornerText(first, bad), m_line);
    return p;
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
