// The OBJ line loop: positions, texture coordinates, faces, groups and material selection.
//
// Lines of the usual forms (v and vt lines of plain numbers, f lines of plain corners, comments and
// normals, which are not read) are parsed straight from the line reader's buffer in one pass. Every
// other line, and any of those with something unusual in it, is split into tokens and read by the
// general path, which defines what a line means.
#include "ObjParse.h"
#include "OvObjImporter.h"

#include <OvApp.h>
#include <OvMath.h>
#include <OvShape.h>
#include <OvTextInputFile.h>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <text/NumberScan.h>
#include <vector>

namespace {

// Out-of-range faces are reported one by one up to this many, then counted.
const int kMaxFaceReports = 10;
// Texture index of a fast-path corner without one (faceTexIndex never gives it).
const int kNoTex = INT_MIN;

bool is(const char *token, const char *keyword) {
    return std::strcmp(token, keyword) == 0;
}

void chooseMaterial(OvShape *shape, OvPolyMesh *mesh, const QString &name) {
    int index = shape->findMaterialIndex(name);
    if (index < 0) {
        auto *material = new (std::nothrow) OvDefaultMaterial;
        if (!material)
            throw QString("Out of Memory");
        material->setName(name);
        index = shape->addMaterial(material);
    }
    mesh->activateMaterial(index);
}

// Lines with one kind of trouble: how many, and the first.
struct LineTally {
    int count = 0, first = 0;
    void note(int line) {
        if (count++ == 0)
            first = line;
    }
};

struct Options {
    float scale;
    bool swapYZ, includeG, includeVT, includeUsemtl, includeMtllib;
};

// Rows of numbers read by the fast path wait here until kRows have come, so that their divisions
// run side by side (text::finishFloats).
template <int Width> struct PendingRows {
    static constexpr int kRows = 16;
    float values[kRows * Width];
    int32_t divisions[kRows * Width];
    float finished[kRows * Width];
    int rows = 0;
    // The finished rows, each Width floats; empties the batch.
    const float *finish(int &count) {
        text::finishFloats(values, divisions, rows * Width, finished);
        count = rows;
        rows = 0;
        return finished;
    }
};

// One read of OBJ lines into a shape's mesh.
class ObjLines {
public:
    ObjLines(OvObjImporter &importer, OvTextInputFile &file, OvShape *shape, OvPolyMesh *mesh, int &line,
             const Options &options, QString &mtlLib)
        : m_importer(importer), m_file(file), m_shape(shape), m_mesh(mesh), m_uvs(mesh->getUVs()),
          m_line(line), m_options(options), m_mtlLib(mtlLib), m_baseVertex(mesh->getNumVertices()),
          m_baseUV(m_uvs->getNumValues()), m_argv(new (std::nothrow) char *[OvTextInputFile::MaxTokens]),
          m_cornerV(64), m_cornerT(64) {
        if (!m_argv)
            throw QString("Out of Memory");
    }

    void readLines(bool fast);
    // Everything still waiting goes to the mesh, and the reports of the read to the log.
    void finish(const QString &shortName);

private:
    bool fastLine(char *begin, char *end);
    template <int Width> bool fastRow(const char *p, const char *end, PendingRows<Width> &rows);
    bool fastFace(const char *p, const char *end);
    void generalLine(char **av, int argc);
    void generalPosition(char **av, int argc);
    void generalFace(char **av, int argc);
    int tokenize(char *begin, char *end, char **av);
    int nextLine(char **av);
    void flushPending();
    void appendPositions(const float *p, int rows, bool transform);
    void beginFace();
    bool addCorner(int value, bool tokenTex, int t);
    void reportFace(const QString &badCorner, int faceLine);
    static QString cornerText(const char *p, int index);

    OvObjImporter &m_importer;
    OvTextInputFile &m_file;
    OvShape *m_shape;
    OvPolyMesh *m_mesh;
    OvMap *m_uvs;
    int &m_line;
    const Options m_options;
    QString &m_mtlLib;
    const int m_baseVertex, m_baseUV;
    const OvQuat m_swap{OvVec3(1.0f, 0.0f, 0.0f), 1.570796f};
    std::unique_ptr<char *[]> m_argv;
    PendingRows<3> m_positions;
    PendingRows<2> m_texCoords;
    std::vector<int> m_cornerV, m_cornerT; // corners of a fast-path face
    bool m_materialChosen = false, m_endSeen = false;
    // The face being built: counts that do not change while it is read, and its texture state.
    int m_faceVertices = 0, m_faceUVs = 0, m_prevUV = 0;
    bool m_faceHasTex = false;
    int m_faceReports = 0, m_unreportedFaces = 0;
    LineTally m_badVertexLines, m_cutLines;
};

void ObjLines::readLines(bool fast) {
    char **av = m_argv.get();
    for (;;) {
        char *begin = nullptr, *end = nullptr;
        ++m_line;
        if (m_file.getRawLine(begin, end) && !(fast && fastLine(begin, end))) {
            flushPending(); // positions and UVs keep their order with those of the general path
            const int argc = tokenize(begin, end, av);
            if (argc > 0)
                generalLine(av, argc);
        }
        if (m_endSeen || m_file.atEnd())
            break;
    }
}

int ObjLines::tokenize(char *begin, char *end, char **av) {
    const int cut = m_file.tokenCutLines();
    const int argc = m_file.tokenize(begin, end, av);
    if (m_file.tokenCutLines() != cut)
        m_cutLines.note(m_line);
    return argc;
}

// The line after a continuation mark, split into tokens; 0 when there is none.
int ObjLines::nextLine(char **av) {
    char *begin = nullptr, *end = nullptr;
    ++m_line;
    return m_file.getRawLine(begin, end) ? tokenize(begin, end, av) : 0;
}

// True when the line was read here; false leaves it, untouched, to the general path.
bool ObjLines::fastLine(char *begin, char *end) {
    if (size_t(end - begin) >= OvTextInputFile::MaxLineLength)
        return false; // cut short: the general path keeps what it always kept
    *end = '\0';      // the blank after the line at which the scanners stop
    char padded[text::kMinScanBytes] = {};
    if (end - begin + 1 < text::kMinScanBytes) { // the scanners read eight bytes up to the end
        std::memcpy(padded, begin, size_t(end - begin));
        end = padded + (end - begin);
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

void ObjLines::beginFace() {
    flushPending();
    if (!m_materialChosen) {
        chooseMaterial(m_shape, m_mesh, QStringLiteral("default"));
        m_materialChosen = true;
    }
    m_faceVertices = m_mesh->getNumVertices();
    m_faceUVs = m_uvs->getNumValues();
    m_faceHasTex = false;
    m_prevUV = 0;
}

// A corner from its numbers; false when the mesh refuses it (the face is then dropped).
bool ObjLines::addCorner(int value, bool tokenTex, int t) {
    const int v = obj::resolveVertexIndex(value, m_faceVertices, m_baseVertex);
    int uv = 0;
    if (m_faceHasTex && m_faceUVs > 0) { // a corner without a texture index keeps the one before
        uv = tokenTex ? obj::resolveUVIndex(t, m_faceUVs, m_baseUV) : m_prevUV;
        m_prevUV = uv;
    }
    return m_mesh->addFaceEdge(v, uv);
}

void ObjLines::reportFace(const QString &badCorner, int faceLine) {
    if (m_faceReports < kMaxFaceReports) {
        ++m_faceReports;
        m_importer.reportObjError(
            OvObjImporter::tr("Face ignored: corner \"%1\" refers to no vertex or texture "
                              "coordinate read so far")
                .arg(badCorner),
            faceLine);
    } else {
        ++m_unreportedFaces;
    }
}

void ObjLines::generalLine(char **av, int argc) {
    const char *key = av[0];
    switch (key[0]) {
    case 'v':
        if (key[1] == '\0') {
            generalPosition(av, argc);
        } else if (key[1] == 't' && m_options.includeVT) {
            float uv[2] = {0.0f, 0.0f};
            if (argc >= 3)
                parsePoserFloats(av + 1, 2, uv);
            m_uvs->appendPnt2Value(uv);
        }
        break;
    case 'f':
        generalFace(av, argc);
        break;
    case 'g':
        if (m_options.includeG) {
            m_mesh->deactivateAllFaceGroups();
            for (int i = 1; i < argc; ++i)
                m_mesh->activateFaceGroup(OvFileIO::decodeText(av[i]));
        }
        break;
    case 'u':
        if (m_options.includeUsemtl && argc >= 2 && is(key, "usemtl")) {
            chooseMaterial(m_shape, m_mesh, OvFileIO::decodeText(av[1]));
            m_materialChosen = true;
        }
        break;
    case 'm':
        if (m_options.includeMtllib && argc >= 2 && is(key, "mtllib"))
            m_mtlLib = OvFileIO::decodeText(av[1]);
        break;
    case '}':
        m_endSeen = true;
        break;
    default:
        break;
    }
}

// A position without three numbers is read as (0, 0, 0), a number that is not one as 0; both are
// counted for the report.
void ObjLines::generalPosition(char **av, int argc) {
    float p[3] = {0.0f, 0.0f, 0.0f};
    if (argc < 4 || !text::isPoserNumber(av[1]) || !text::isPoserNumber(av[2]) || !text::isPoserNumber(av[3]))
        m_badVertexLines.note(m_line);
    if (argc >= 4)
        parsePoserFloats(av + 1, 3, p);
    appendPositions(p, 1, argc >= 4);
}

void ObjLines::generalFace(char **av, int argc) {
    beginFace();
    m_mesh->startFace();
    const int faceLine = m_line;
    bool first = true, bad = false;
    QString badCorner; // copied: a continuation line reuses the token buffer
    for (int i = 1; i < argc; ++i) {
        const char *token = av[i];
        int value = 0, t = 0;
        bool tokenTex = false;
        if (token[0] == '\\') {
            if (first) // the first token decides about texture indices, even this one
                m_faceHasTex = text::faceTexIndex(token, t);
            first = false;
            argc = nextLine(av);
            i = -1; // the continuation line has no keyword
            continue;
        }
        const char *stop = text::readCorner(token, value, tokenTex, t);
        if (!stop || (!tokenTex && *stop != '\0' && *stop != '/')) { // a quoted token may hold blanks
            value = text::leadingInt(token);
            tokenTex = text::faceTexIndex(token, t);
        }
        if (first)
            m_faceHasTex = tokenTex;
        first = false;
        if (!addCorner(value, tokenTex, t) && !bad) {
            bad = true;
            badCorner = OvFileIO::decodeText(token);
        }
    }
    if (bad)
        reportFace(badCorner, faceLine);
    m_mesh->finishFace();
}

void ObjLines::finish(const QString &shortName) {
    if (m_unreportedFaces > 0)
        m_importer.reportObjError(
            OvObjImporter::tr("%1 more faces with indices out of range were ignored in %2")
                .arg(m_unreportedFaces)
                .arg(shortName),
            -1);
    if (m_badVertexLines.count > 0)
        m_importer.reportObjError(
            OvObjImporter::tr("%1 vertex line(s) with missing or non-numeric coordinates "
                              "read as 0 in %2, the first")
                .arg(m_badVertexLines.count)
                .arg(shortName),
            m_badVertexLines.first);
    if (m_cutLines.count > 0)
        m_importer.reportObjError(
            OvObjImporter::tr("%1 line(s) with more than %2 words lost the rest in %3 (a "
                              "face keeps its first %4 corners), the first")
                .arg(m_cutLines.count)
                .arg(OvTextInputFile::MaxTokens)
                .arg(shortName)
                .arg(OvTextInputFile::MaxTokens - 1),
            m_cutLines.first);
    try {
        flushPending();
        if (m_uvs->getNumValues() == 0) {
            const float zero[2] = {0.0f, 0.0f};
            m_uvs->appendPnt2Value(zero);
        }
    } catch (...) {
        m_importer.reportObjError(QStringLiteral("Out of Memory"), m_line);
    }
}

} // namespace

obj::ReadTuning &obj::readTuning() {
    static ReadTuning tuning;
    return tuning;
}

void OvObjImporter::selectMaterial(OvShape *shape, OvPolyMesh *mesh, const QString &name) {
    chooseMaterial(shape, mesh, name);
}

unsigned int OvObjImporter::readObj(OvTextInputFile &file, OvShape **shapeOut, int &lineNumber,
                                    const OvFileIOSettings &settings) {
    loadSettings(settings);

    auto *shape = new (std::nothrow) OvPolyShape;
    if (!shape)
        throw QString("Out of Memory");
    if (shapeOut)
        *shapeOut = shape;
    OvPolyMesh *mesh = shape->getPolyMesh();
    if (!mesh) {
        mesh = new (std::nothrow) OvPolyMesh;
        if (!mesh)
            throw QString("Out of Memory");
        shape->setPolyMesh(mesh);
    }

    QString shortName = file.name().mid(file.name().lastIndexOf(QLatin1Char('/')) + 1);
    OvApp::statusLine(tr("Reading %1").arg(shortName), true);

    if (mesh->getName().isEmpty()) {
        QString meshName = shortName;
        if (meshName.toLower().endsWith(QLatin1String(".obj")))
            meshName.chop(4);
        mesh->setName(meshName);
    }

    const Options options{m_scale, m_swapYZ, m_includeG, m_includeVT, m_includeUsemtl, m_includeMtllib};
    ObjLines lines(*this, file, shape, mesh, lineNumber, options, m_mtlLib);
    mesh->beginEdit(false);
    if (!m_includeG)
        mesh->activateFaceGroup(m_defaultGroup);
    try {
        lines.readLines(obj::readTuning().fastPaths);
    } catch (const QString &message) {
        reportObjError(message, lineNumber);
    } catch (const char *message) {
        reportObjError(QString::fromLocal8Bit(message), lineNumber);
    } catch (const std::bad_alloc &) {
        reportObjError(QStringLiteral("Out of Memory"), lineNumber);
    } catch (...) {
        reportObjError(QStringLiteral("Unknown Error"), lineNumber);
    }
    lines.finish(shortName);
    mesh->finishEdit();
    return 0;
}
