#pragma once
#include <OvImporter.h>

// Importer of every Poser-format file: scenes, figures, props, hair, poses, light and camera sets,
// plain or compressed.
class OvPZ3Importer : public OvImporter {
    Q_OBJECT
public:
    OvPZ3Importer();
    ~OvPZ3Importer() override;

    static constexpr int NumExtensions = 18;
    static const char *const Extensions[NumExtensions];

    OvFileIOFrame *getOptionsFrame() override { return nullptr; }
    void getDefaultOptions(OvFileIOSettings *) override {}
    bool recognize(const QString &fileName) override;
    int getNumExtensions() override { return NumExtensions; }
    QString getExtension(int i) override;
    QString getDescription() override { return QStringLiteral("Poser Files"); }

    // File kind from an extension (exact, case-sensitive): 0 scene, 1 figure, 2 prop, 3 hair,
    // 4 pose, 5 light set, 6 camera set, 7 face pose, 8 hand pose, 9 anything else.
    static int fileTypeOf(const QString &extension);
    // Compressed forms have 'z' as the third character of their extension.
    static bool isCompressedExtension(const QString &extension);

public slots:
    unsigned int read(const QString &fileName, const OvFileIOSettings &options) override;

private:
    int m_fileType = 9;
};
