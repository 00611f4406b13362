#pragma once
// One read of OBJ lines into a shape's mesh, shared by the general path (ObjReader.cpp), which
// splits lines into tokens, and the fast path (ObjFastPath.cpp), which parses the usual lines in
// place.

#include "OvObjImporter.h"

#include <OvMath.h>
#include <OvPolyMesh.h>
#include <OvTextInputFile.h>
#include <QString>
#include <cstdint>
#include <memory>
#include <new>
#include <text/Numbers.h>
#include <vector>

class OvShape;

namespace obj {

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
    void readWholeLines();
    bool fastLine(char *begin, char *end);
    const char *fastLineAt(const char *p, const char *last);
    template <int Width> const char *fastRow(const char *p, const char *last, PendingRows<Width> &rows);
    const char *fastFace(const char *p, const char *last);
    void generalRawLine(char *begin, char *end);
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

} // namespace obj
