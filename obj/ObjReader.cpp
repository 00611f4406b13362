// The OBJ line loop: positions, texture coordinates, faces, groups and material selection.
#include "ObjParse.h"
#include "OvObjImporter.h"
#include "VertexBuffer.h"

#include <OvApp.h>
#include <OvMath.h>
#include <OvShape.h>
#include <OvTextInputFile.h>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <text/Numbers.h>

namespace {

// Out-of-range faces are reported one by one up to this many, then counted.
const int kMaxFaceReports = 10;

bool is(const char *token, const char *keyword) {
    return std::strcmp(token, keyword) == 0;
}

} // namespace

void OvObjImporter::selectMaterial(OvShape *shape, OvPolyMesh *mesh, const QString &name) {
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

    const int baseVertex = mesh->getNumVertices();
    const int baseUV = mesh->getUVs()->getNumValues();
    if (mesh->getName().isEmpty()) {
        QString meshName = shortName;
        if (meshName.toLower().endsWith(QLatin1String(".obj")))
            meshName.chop(4);
        mesh->setName(meshName);
    }

    std::unique_ptr<char *[]> argv(new (std::nothrow) char *[OvTextInputFile::MaxTokens]);
    if (!argv)
        throw QString("Out of Memory");
    mesh->beginEdit(false);
    if (!m_includeG)
        mesh->activateFaceGroup(m_defaultGroup);
    const OvQuat swap(OvVec3(1.0f, 0.0f, 0.0f), 1.570796f);
    OvMap *uvs = mesh->getUVs();
    obj::VertexBuffer vertices(256);
    bool materialChosen = false;
    bool endSeen = false;
    int faceReports = 0, unreportedFaces = 0;
    char **av = argv.get();

    try {
        for (;;) {
            int argc = 0;
            ++lineNumber;
            file.getLine(av, argc);
            if (argc > 0) {
                const char *key = av[0];
                switch (key[0]) {
                case 'v':
                    if (key[1] == '\0') {
                        float p[3] = {0.0f, 0.0f, 0.0f};
                        if (argc >= 4) {
                            parsePoserFloats(av + 1, 3, p);
                            p[0] = p[0] * m_scale;
                            p[1] = p[1] * m_scale;
                            p[2] = p[2] * m_scale;
                            if (m_swapYZ)
                                swap.multVec(OvVec3(p)).getValue(p);
                        }
                        vertices.append(p[0], p[1], p[2]);
                    } else if (key[1] == 't' && m_includeVT) {
                        float uv[2] = {0.0f, 0.0f};
                        if (argc >= 3)
                            parsePoserFloats(av + 1, 2, uv);
                        uvs->appendPnt2Value(uv);
                    }
                    break;
                case 'f': {
                    vertices.flushTo(*mesh);
                    if (!materialChosen) {
                        selectMaterial(shape, mesh, QStringLiteral("default"));
                        materialChosen = true;
                    }
                    mesh->startFace();
                    int tex = 0;
                    const bool hasTex = argc > 1 && text::faceTexIndex(av[1], tex);
                    const int faceLine = lineNumber;
                    // Neither count changes while a face is read.
                    const int numVertices = mesh->getNumVertices();
                    const int numUVs = uvs->getNumValues();
                    const bool uvLess = numUVs == 0;
                    int prevUV = 0;
                    bool badFace = false;
                    QString badCorner; // copied: a continuation line reuses the token buffer
                    for (int i = 1; i < argc; ++i) {
                        const char *token = av[i];
                        if (token[0] == '\\') {
                            ++lineNumber;
                            file.getLine(av, argc);
                            i = -1; // the continuation line has no keyword
                            continue;
                        }
                        int value = 0, t = 0;
                        bool tokenTex = false;
                        if (!text::readCorner(token, value, tokenTex, t)) {
                            value = text::leadingInt(token);
                            tokenTex = text::faceTexIndex(token, t);
                        }
                        int v = obj::resolveVertexIndex(value, numVertices, baseVertex);
                        int uv = 0;
                        if (hasTex && !uvLess) {
                            uv = tokenTex ? obj::resolveUVIndex(t, numUVs, baseUV) : prevUV;
                            prevUV = uv;
                        }
                        if (!mesh->addFaceEdge(v, uv) && !badFace) {
                            badFace = true;
                            badCorner = OvFileIO::decodeText(token);
                        }
                    }
                    if (badFace) {
                        if (faceReports < kMaxFaceReports) {
                            ++faceReports;
                            reportObjError(tr("Face ignored: corner \"%1\" refers to no vertex or texture "
                                              "coordinate read so far")
                                               .arg(badCorner),
                                           faceLine);
                        } else {
                            ++unreportedFaces;
                        }
                    }
                    mesh->finishFace();
                    break;
                }
                case 'g':
                    if (m_includeG) {
                        mesh->deactivateAllFaceGroups();
                        for (int i = 1; i < argc; ++i)
                            mesh->activateFaceGroup(OvFileIO::decodeText(av[i]));
                    }
                    break;
                case 'u':
                    if (m_includeUsemtl && argc >= 2 && is(key, "usemtl")) {
                        selectMaterial(shape, mesh, OvFileIO::decodeText(av[1]));
                        materialChosen = true;
                    }
                    break;
                case 'm':
                    if (m_includeMtllib && argc >= 2 && is(key, "mtllib"))
                        m_mtlLib = OvFileIO::decodeText(av[1]);
                    break;
                case '}':
                    endSeen = true;
                    break;
                default:
                    break;
                }
            }
            if (endSeen || file.atEnd())
                break;
        }
    } catch (const QString &message) {
        reportObjError(message, lineNumber);
    } catch (const char *message) {
        reportObjError(QString::fromLocal8Bit(message), lineNumber);
    } catch (const std::bad_alloc &) {
        reportObjError(QStringLiteral("Out of Memory"), lineNumber);
    } catch (...) {
        reportObjError(QStringLiteral("Unknown Error"), lineNumber);
    }

    if (unreportedFaces > 0)
        reportObjError(tr("%1 more faces with indices out of range were ignored in %2")
                           .arg(unreportedFaces)
                           .arg(shortName),
                       -1);
    try {
        vertices.flushTo(*mesh);
        if (uvs->getNumValues() == 0) {
            const float zero[2] = {0.0f, 0.0f};
            uvs->appendPnt2Value(zero);
        }
    } catch (...) {
        reportObjError(QStringLiteral("Out of Memory"), lineNumber);
    }
    mesh->finishEdit();
    return 0;
}
