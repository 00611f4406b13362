#pragma once
#include <OvImporter.h>
#include <QString>

class OvTextInputFile;
class OvPolyMesh;
class OvShape;
class OvTexture;

// Importer of Wavefront OBJ geometry (plain or gzip-compressed) with its MTL material library.
class OvObjImporter : public OvGeometryImporter {
    Q_OBJECT
public:
    OvObjImporter();

    OvFileIOFrame *getOptionsFrame() override;
    void getDefaultOptions(OvFileIOSettings *settings) override;
    bool recognize(const QString &fileName) override;
    int getNumExtensions() override { return 2; }
    QString getExtension(int i) override;
    QString getDescription() override { return QStringLiteral("Wavefront Object"); }

    unsigned int readShape(const QString &fileName, OvShape **shape,
                           const OvFileIOSettings &settings) override;

    // Reads lines of an open file until its end or a '}' line (inline geometry in a Poser file
    // ends that way) into a new shape; `lineNumber` is incremented once per line read.
    unsigned int readObj(OvTextInputFile &file, OvShape **shape, int &lineNumber,
                         const OvFileIOSettings &settings);
    // Applies an MTL library to the materials of `shape`: 0, 0x200 (cannot open) or 0x65 (failed).
    unsigned int readMtl(OvShape *shape, const QString &mtlPath);
    // The texture of an MTL map path, tried as written and then inside `folder`.
    static OvTexture *loadMapTexture(const QString &path, const QString &folder);
    // With line -1 the message goes to the log as it is; else " on line N in OvObjImporter" follows.
    void reportObjError(const QString &message, int line);

    // The material library named by the last honoured mtllib line (absolute once found).
    const QString &materialLibrary() const { return m_mtlLib; }

private:
    void loadSettings(const OvFileIOSettings &settings);
    static void selectMaterial(OvShape *shape, OvPolyMesh *mesh, const QString &name);

    QString m_defaultGroup;
    QString m_mtlLib;
    float m_scale = 243.84f;
    bool m_swapYZ = false;
    bool m_includeG = true;
    bool m_includeVT = true;
    bool m_includeUsemtl = true;
    bool m_includeMtllib = true;
};
