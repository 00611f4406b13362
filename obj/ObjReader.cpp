// The OBJ line loop: positions, texture coordinates, faces, groups and material selection.
//
// Lines of the usual forms take the fast path (ObjFastPath.cpp). Every other line, and any of those
// with something unusual in it, is split into tokens and read here by the general path, which
// defines what a line means.
#include "ObjLines.h"
#include "ObjParse.h"

#include <OvApp.h>
#include <OvShape.h>
#include <cstring>

namespace {

// Out-of-range faces are reported one by one up to this many, then counted.
const int kMaxFaceReports = 10;

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

} // namespace

namespace obj {

// With the fast path, the lines whole in the reader's buffer are read in one pass, and a line at
// the buffer's end alone.
void ObjLines::readLines(bool fast) {
    for (;;) {
        if (fast) {
            readWholeLines();
            if (m_endSeen || m_file.atEnd())
                break;
        }
        char *begin = nullptr, *end = nullptr;
        ++m_line;
        if (m_file.getRawLine(begin, end) && !(fast && fastLine(begin, end)))
            generalRawLine(begin, end);
        if (m_endSeen || m_file.atEnd())
            break;
    }
}

void ObjLines::generalRawLine(char *begin, char *end) {
    flushPending(); // positions and UVs keep their order with those of the general path
    char **av = m_argv.get();
    const int argc = tokenize(begin, end, av);
    if (argc > 0)
        generalLine(av, argc);
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

} // namespace obj

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

    const obj::Options options{m_scale, m_swapYZ, m_includeG, m_includeVT, m_includeUsemtl, m_includeMtllib};
    obj::ObjLines lines(*this, file, shape, mesh, lineNumber, options, m_mtlLib);
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
