#pragma once
// The importer of every Poser-format file: scenes, figures, props, hair, poses, light and camera
// sets, plain or compressed. Its fields are the shared state of all section handlers.

#include "LocatedDirList.h"
#include "scene/SceneItems.h"
#include <OvImporter.h>
#include <OvTypes.h>
#include <QList>
#include <memory>
#include <vector>

struct Pz3InputFile;
class OvNode;
class OvProperty;
class OvMaterial;
class OvLight;
class OvBasicCamera;
class OvSkeleton;
class OvDFormModifier;

// A node to turn into a subdivision surface once the import is complete.
struct OvPz3SubDNode {
    OvNode *node = nullptr;
    int level = 0;
};

// A deformer modifier found or made in this import, with the node whose object carries it.
struct OvPz3DeformerChannelItem {
    OvDFormModifier *modifier = nullptr;
    OvNode *node = nullptr;
};

class OvPZ3Importer : public OvImporter {
    Q_OBJECT
public:
    OvPZ3Importer();
    ~OvPZ3Importer() override;

    static constexpr int NumExtensions = 18;
    static const char *const Extensions[NumExtensions];

    // The section the parser is in.
    enum ParseMode : int {
        ModeFile = 0,
        ModeFigure = 1,
        ModeObject = 2,
        ModeChannels = 3,
        ModeChannel = 4,
        ModeKeys = 5,
        ModeMaterial = 6,
        ModeMovieInfo = 7,
        ModeDoc = 8,
        ModeVersion = 9,
        ModeIgnore = 10,
        ModeTargetGeom = 11,
        ModeDeltas = 12,
        ModeJointParm = 13,
        ModeAltGeom = 14,
        ModeInkyChain = 15,
        ModeParmChannel = 16,
        ModeGroups = 17,
        ModeGroupNode = 18,
        ModeCount
    };

    // Nested includes deeper than this are refused (each open file holds a read buffer).
    static constexpr int MaxIncludeDepth = 32;

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

    // ---- tokens and diagnostics ----
    bool nextLine(char **argv, int &argc);
    // The rest of the line from token `first`, or the stock string a GetStringRes token names.
    QString tokenText(char **argv, int first, int argc) const;
    QString getStringRes(int tableId, int index) const;
    // Errors are malformed content, infos are warnings; both name the line and the file.
    void reportError(const QString &message);
    void reportInfo(const QString &message);

    // ---- content file location ----
    bool findContentFile(const QString &name, QString &foundPath, bool askUser);
    bool locateFile(const QString &name, QString &foundPath, bool isImage);
    bool readScript(const QString &name);

    // ---- node registry ----
    // Cuts a ":N" figure-number suffix off `name` and returns N; -1 (name unchanged) without one.
    static int stripFigureNumber(QString &name);
    QString makeUniqueLabel(const QString &base) const;
    OvNode *getSkeleton(int figureNumber, bool create);
    OvSkeleton *getSelectedSkeleton();
    OvNode *getPropNode(const QString &name, int kind);
    OvNode *getNode(OvNode *item, const QString &name);
    OvNode *findNode(const QString &qualifiedName);
    OvPz3SceneItem *findSceneItem(const OvNode *node);
    OvPz3SceneItem *findSceneItemByName(const QString &name);
    OvPz3NodeItem *getNodeItem(OvNode *node);
    OvPz3NodeItem *findNodeItem(const OvNode *node) const;
    OvLight *getLight(const QString &name);
    OvBasicCamera *getCamera(const QString &name);
    OvPz3DeformerChannelItem *findOrCreateDeformerChannel(OvNode *node, const QString &name);

    // ---- geometry ----
    OvPz3GeomItem *getGeometry(const QString &path);
    bool locateGeometry(const QString &path, QString &found, bool ask);
    int numGeometryItems() const { return int(m_geomItems.size()); }
    const OvPz3GeomItem *geometryItem(int i) const { return m_geomItems[size_t(i)].get(); }

    // ---- object sections ----
    void setNodeOrigin(OvNode *node, const OvVec3 &v);
    void setNodeEndPoint(OvNode *node, const OvVec3 &v);
    void setNodeOrientation(OvNode *node, const OvVec3 &angles);
    OvTSharedPointer<OvMaterial> resolveMaterial(OvNode *node, const QString &name);
    void setBending(OvNode *node, bool on);

    // ---- state that tests and later sections look at ----
    const OvTArray<OvPz3SceneItem> &sceneItems() const { return m_sceneItems; }
    int numNodeItems() const { return int(m_nodeItems.size()); }
    const QList<OvLight *> &lights() const { return m_lights; }
    const QList<OvBasicCamera *> &cameras() const { return m_cameras; }
    const OvTArray<OvPz3SubDNode> &subDNodes() const { return m_subDNodes; }
    OvNode *currentNode() const { return m_curNode; }
    OvNode *currentFigure() const { return m_curFigure; }
    const QString &figureResName() const { return m_figureResName; }
    int figureVertexCount() const { return m_figureVertexCount; }
    int fileType() const { return m_fileType; }
    float version() const { return m_version; }
    ParseMode parseMode() const { return m_parseMode; }
    const OvTArray<ParseMode> &modeStack() const { return m_modeStack; }
    const LocatedDirList &locatedDirs() const { return *m_locatedDirs; }
    bool askForFiles() const { return m_askForFiles; }
    bool applyToSelection() const { return m_applyToSelection; }
    int startFrame() const { return m_startFrame; }

public slots:
    unsigned int read(const QString &fileName, const OvFileIOSettings &options) override;

protected:
    using ModeHandler = bool (OvPZ3Importer::*)(char **argv, int argc);
    static const ModeHandler s_modeHandlers[ModeCount];

    // ---- read driver ----
    void resetForRead();
    bool preparePoseTarget(unsigned int &result);
    bool runLineLoop(char **argv);
    bool handleLine(char **argv, int argc);
    void openSection();
    void closeSection();
    void closeSectionStep();
    bool atEndOfInput();
    void closeCurrentFile();
    void finishImport();
    void askToAddFrames();
    void applySmartParents();
    void convertSubDivisions();
    void recordSourceFiles(const QString &fileName);
    bool isOpenFile(const QString &canonicalPath) const;

    // ---- section handlers (argv[0] is the keyword; false stops the import) ----
    bool parseFileLine(char **argv, int argc);
    bool parseVersionLine(char **argv, int argc);
    bool parseObjectLine(char **argv, int argc);
    bool parseAltGeom(char **argv, int argc);
    // The geometry keywords of object sections; `handled` is false for any other keyword.
    bool parseGeometryKeyword(char **argv, int argc, bool &handled);
    // Object-section helpers.
    bool reparent(const QString &name);
    void recordSmartParent(const QString &name);
    bool selectMaterial(const QString &name);
    void replaceMaterialOnNode(OvNode *node, OvPz3SceneItem *item, OvMaterial *old);
    void replaceWithSpotLight();
    void bindDeformTarget(const QString &name);
    // Drops every record of a node that is about to be deleted.
    void forgetNode(OvNode *node);

    // ---- content location helpers ----
    void learnLocation(const QString &name, const QString &selected);

    int m_fileType = 9;
    // Geometry files read (kept across reads; entries never move).
    std::vector<std::unique_ptr<OvPz3GeomItem>> m_geomItems;
    OvTArray<OvPz3SceneItem> m_sceneItems{8};
    std::vector<std::unique_ptr<OvPz3NodeItem>> m_nodeItems;
    std::vector<std::unique_ptr<OvPz3DeformerChannelItem>> m_deformerChannels;
    OvPz3DeformerChannelItem *m_curDeformerChannel = nullptr;
    OvPz3GeomItem *m_curGeom = nullptr;
    QString m_altGeomName;
    // Binary morph file named by the last morphBinaryFile line, resolved.
    QString m_binMorphFilePath;
    OvTArray<OvPz3SubDNode> m_subDNodes{8};
    std::unique_ptr<LocatedDirList> m_locatedDirs;
    bool m_askForFiles = true;
    QString m_filePath;
    QList<OvLight *> m_lights;
    QList<OvBasicCamera *> m_cameras;

    Pz3InputFile *m_file = nullptr;
    OvTStack<Pz3InputFile *> m_fileStack{32};
    ParseMode m_parseMode = ModeFile;
    OvTArray<ParseMode> m_modeStack{8};

    OvNode *m_curFigure = nullptr;
    OvNode *m_curNode = nullptr;
    OvProperty *m_curProperty = nullptr;
    OvMaterial *m_material = nullptr;
    int m_curChannelType = 0;
    QString m_figureResName;
    int m_figureVertexCount = 0;
    int m_colorComponent = 0;
    bool m_isColorChannel = false;
    int m_limitsAnswer = 0;
    bool m_foundOnFollowTarget = false;
    bool m_jointParmsSeen = false;
    int m_movieCurrentTime = -1;
    int m_movieLoopStart = -1;
    int m_movieLoopEnd = -1;
    QString m_fileName;
    QString m_figureBaseName;
    bool m_ignoreKeys = false;
    int m_startFrame = 0;
    int m_lastFrame = 0;
    bool m_applyToSelection = false;
    int m_handSide = 2;
    int m_fileHandSide = 0;
    float m_version = 4.0f;
    bool m_keyPending = false;
};
