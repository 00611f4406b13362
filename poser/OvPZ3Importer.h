#pragma once
// The importer of every Poser-format file: scenes, figures, props, hair, poses, light and camera
// sets, plain or compressed. The per-read state (ReadState.h) is what the section handlers share;
// the importer itself keeps only what lasts from one read to the next.

#include "ReadState.h"
#include <OvImporter.h>
#include <OvMaterial.h>
#include <OvTypes.h>
#include <QHash>
#include <QList>
#include <memory>
#include <vector>

class OvSkeleton;
class OvDFormModifier;

// A deformer modifier found or made in this import, with the node whose object carries it.
struct OvPz3DeformerChannelItem {
    OvDFormModifier *modifier = nullptr;
    OvNode *node = nullptr;
};

class OvPZ3Importer : public OvImporter, protected Pz3ReadState {
    Q_OBJECT
public:
    OvPZ3Importer();
    ~OvPZ3Importer() override;

    static constexpr int NumExtensions = 18;
    static const char *const Extensions[NumExtensions];

    // Nested includes deeper than this are refused (each open file holds a read buffer).
    static constexpr int MaxIncludeDepth = 32;
    // Bounds of one import, far beyond real content: included files (each read once) and their
    // bytes, and sections open at once.
    static constexpr int MaxIncludes = 10000;
    static constexpr qint64 MaxIncludeBytes = qint64(16) << 30;
    static constexpr int MaxSectionDepth = 1000;

    OvFileIOFrame *getOptionsFrame() override { return nullptr; }
    void getDefaultOptions(OvFileIOSettings *) override {}
    bool recognize(const QString &fileName) override;
    int getNumExtensions() override { return NumExtensions; }
    QString getExtension(int i) override;
    QString getDescription() override { return QStringLiteral("Poser Files"); }

    // File kind from an extension (exact, case-sensitive).
    static Pz3FileKind fileTypeOf(const QString &extension);
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
    // The one search for a file a Poser file names (geometry, includes, images, sounds): exact
    // names under every content folder and located folder first, then names that match without
    // regard to letter case; a clean absolute path. `askUser` lets locateFile ask as a last resort.
    bool findContentFile(const QString &name, QString &foundPath, bool askUser);
    bool locateFile(const QString &name, QString &foundPath, bool isImage);
    bool readScript(const QString &name);

    // ---- node registry ----
    // Cuts a ":N" figure-number suffix off `name` and returns N; -1 (name unchanged) without one.
    static int stripFigureNumber(QString &name);
    QString makeUniqueLabel(const QString &base);
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

    // ---- morph targets ----
    OvPz3MorphItem *findOrCreateMorph(OvNode *node, const QString &name);
    OvPz3BinMorph *openBinMorphFile(const QString &name);
    const std::vector<std::unique_ptr<OvPz3MorphItem>> &morphItems() const { return m_morphItems; }

    // ---- geometry ----
    OvPz3GeomItem *getGeometry(const QString &path);
    bool locateGeometry(const QString &path, QString &found, bool ask);
    int numGeometryItems() const { return int(m_geomItems.size()); }

    // ---- object sections ----
    void setNodeOrigin(OvNode *node, const OvVec3 &v);
    void setNodeEndPoint(OvNode *node, const OvVec3 &v);
    void setNodeOrientation(OvNode *node, const OvVec3 &angles);
    OvTSharedPointer<OvMaterial> resolveMaterial(OvNode *node, const QString &name);
    void setBending(OvNode *node, bool on);

    // ---- materials and texture maps ----
    // The cached or newly loaded texture of a map value; null when its image is not found or not read.
    OvTexture *getPoserTexture(const QString &value);
    bool findTextureFile(const QString &name, QString &foundPath, bool askUser);
    bool findInContentDirs(const QString &fileName, QString &foundPath);
    bool findFileBelow(const QString &folder, const QString &fileName, QString &foundPath);
    // The name a map's texture is cached under: its file name without folders or extension.
    static QString textureKey(const QString &path);
    // Every texture loaded by this importer, over all its reads.
    const OvTArray<OvTSharedPointer<OvTexture>> &textures() const { return m_textures; }
    // Content folders listed for file names during the last read.
    int foldersListedForNames() const { return m_nameIndex.foldersListed(); }

    // ---- channels ----
    // Transform component codes of m_curChannelType.
    enum ChannelType : int {
        TranslateX = 0x1,
        TranslateY = 0x2,
        TranslateZ = 0x4,
        RotateX = 0x10,
        RotateY = 0x20,
        RotateZ = 0x40,
        UniformScale = 0x100,
        ScaleX = 0x200,
        ScaleY = 0x400,
        ScaleZ = 0x800,
    };
    // The float property that stands for a Poser value channel of `node`; made when missing
    // (except while applying a file to the selection).
    OvFloatProperty *getValueProperty(OvNode *node, const QString &name);
    // The property of `node` that the Poser channel `name` drives, or null.
    OvProperty *findChannelProperty(OvNode *node, const QString &name) const;
    void addChannelNameMap(OvProperty *property, const QString &name);
    // Records a rotation channel (axis 0 X, 1 Y, 2 Z) for the node's rotation order.
    void trackRotationAxis(OvNode *node, int axis);
    // Rotation order from the first two rotation axes, in the order their channels appeared.
    static OvRotationOrder rotationOrderFor(int count, const short axes[3]);
    // Switches off the rotation limits of a node and, for a figure, of all its bones.
    void turnOffLimits(OvNode *node);

    // ---- dependent parameters (ERC) and linked parameters ----
    // Reads a valueOp block (its further lines too) for the current channel.
    bool readValueOp(char **argv, int argc, int type);
    // Links `driven` to the controlling channel, or (deferIfMissing) leaves a place-holder and a
    // record when that channel is not there yet; a given place-holder becomes the link. True when
    // the controlling channel was found (linked, or refused as circular).
    bool createERCLink(OvNumericProperty *driven, int figureIndex, const QString &nodeName,
                       const QString &channelName, float scalar, int type, OvERCLink *placeHolder,
                       bool deferIfMissing);
    void resolveLinkParm(const OvPz3LinkParm &record);
    // Records a linkParms pair for the end of the import.
    void addLinkParm(OvNode *master, const QString &masterParm, OvNode *slave, const QString &slaveParm);
    // The numeric property a Poser channel name stands for on `node`: channel records first, then
    // morphs by name, properties by label, morphs by label.
    OvNumericProperty *findLinkProperty(OvNode *node, const QString &channelName);
    // True when `driven` would end up computed from itself if it followed `controller`.
    static bool wouldCreateCycle(const OvNumericProperty *controller, const OvNumericProperty *driven);
    // Removes the first ERC link of `driven` of this type and controlling property.
    static void removeMatchingERC(OvNumericProperty *driven, int type, const OvNumericProperty *controller);
    // Nanoseconds the last read spent resolving deferred links and linkParms pairs.
    qint64 linkResolutionNanos() const { return m_linkResolveNanos; }

    // ---- what the last read left ----
    const OvTArray<OvPz3SceneItem> &sceneItems() const { return m_sceneItems; }
    const OvTArray<OvPz3SubDNode> &subDNodes() const { return m_subDNodes; }
    float version() const { return m_version; }
    bool askForFiles() const { return m_askForFiles; }
    bool applyToSelection() const { return m_applyToSelection; }

public slots:
    unsigned int read(const QString &fileName, const OvFileIOSettings &options) override;

protected:
    using ModeHandler = bool (OvPZ3Importer::*)(char **argv, int argc);
    static const ModeHandler s_modeHandlers[ModeCount];

    // ---- keyword tables ----
    // What a keyword line with too few tokens does; the keyword's handler is not called.
    enum class Short : unsigned char {
        Skip,  // nothing, reading goes on
        Warn,  // reportInfo(message), reading goes on
        Error, // reportError(message), reading goes on
        Stop,  // reportError(message), the import stops
    };
    // What must be current before the tokens are counted; without it the line is skipped silently.
    enum class Needs : unsigned char { Nothing, Node, Figure, Property };
    // One keyword of a section. A table ends with a row whose keyword is null; the first row whose
    // keyword equals the line's first token takes the line.
    struct KeywordRow {
        const char *keyword;
        int minTokens; // the keyword included
        Short whenShort;
        const char *message; // passed through tr()
        ModeHandler handler;
        Needs needs = Needs::Nothing;
    };
    static const KeywordRow s_fileKeywords[];
    static const KeywordRow s_objectKeywords[];
    static const KeywordRow s_geometryKeywords[];
    static const KeywordRow s_altGeomKeywords[];
    static const KeywordRow s_versionKeywords[];
    static const KeywordRow s_materialKeywords[];
    static const KeywordRow s_figureKeywords[];
    static const KeywordRow s_inkyChainKeywords[];
    static const KeywordRow s_channelBodyKeywords[];
    static const KeywordRow s_targetGeomKeywords[];
    static const KeywordRow s_parmChannelKeywords[];
    static const KeywordRow s_movieInfoKeywords[];
    static const KeywordRow *findKeyword(const KeywordRow *table, const char *keyword);
    bool runKeyword(const KeywordRow &row, char **argv, int argc);
    bool dispatchKeyword(const KeywordRow *table, char **argv, int argc);
    // Handlers shared by every table.
    bool ignoreLine(char **, int) { return true; }
    template <ParseMode Mode> bool enterSection(char **, int) {
        m_parseMode = Mode;
        return true;
    }

    // ---- read driver ----
    bool preparePoseTarget(unsigned int &result);
    bool runLineLoop(char **argv);
    // The next line the in-place readers leave to the general path; false at the end of the file.
    bool nextGeneralLine(char *&begin, char *&end, bool fastPaths);
    bool handleLine(char **argv, int argc);
    bool openSection();
    void closeSection();
    void closeSectionStep();
    bool atEndOfInput();
    void closeCurrentFile();
    void finishImport();
    // Retries the deferred ERC links, resolves the linkParms pairs and names what stayed unresolved.
    void resolveDeferredLinks();
    // Drops the link records of a node that is about to be deleted.
    void forgetLinksOf(const OvNode *node);
    // The node a link names below `root`; unlike getNode it never makes a bone.
    OvNode *findControlNode(OvNode *root, const QString &name);
    // reportInfo, naming the file and line of the valueOp block being linked.
    void reportLinkInfo(const QString &message);
    void askToAddFrames();
    void applySmartParents();
    void convertSubDivisions();
    void recordSourceFiles(const QString &fileName);
    // The movie section's current frame and loop range, once every key exists.
    void applyMovieTimes();
    // What this import created goes where the user dropped it, as the drop options say.
    void placeDroppedItems();
    void dropOnTarget(OvNode *node, OvNode *target);
    void dropAtPoint(OvNode *node, const OvVec3 &point);
    bool isOpenFile(const QString &canonicalPath) const;

    // ---- mode handlers (argv[0] is the keyword; false stops the import) ----
    bool parseFileLine(char **argv, int argc);
    bool parseVersionLine(char **argv, int argc);
    bool parseObjectLine(char **argv, int argc);
    bool parseAltGeom(char **argv, int argc);
    bool parseJointParam(char **argv, int argc);
    bool parseMaterialLine(char **argv, int argc);
    bool parseFigureLine(char **argv, int argc);
    bool parseMovieInfoLine(char **argv, int argc);

    // ---- keyword handlers: movieInfo section ----
    bool movieCurrentFrame(char **argv, int argc);
    bool movieLoopStart(char **argv, int argc);
    bool movieLoopEnd(char **argv, int argc);
    bool movieFramesPerSec(char **argv, int argc);
    bool movieSoundFile(char **argv, int argc);
    // Whether a sound named by the file replaces the one the scene has.
    bool askReplaceAudio();
    bool parseInkyChainLine(char **argv, int argc);

    // ---- keyword handlers: figure and material sections ----
    bool figRoot(char **argv, int argc);
    bool figWeld(char **argv, int argc);
    bool figMaterial(char **argv, int argc);
    bool figConforming(char **argv, int argc);
    bool figInkyChain(char **argv, int argc);
    bool figSubdivision(char **argv, int argc);
    bool figLinkParms(char **argv, int argc);
    // The node the next line names (all of it), or null; false at the end of the input.
    bool nextLineNode(char **argv, int &argc, OvNode *&node);
    // The rest of the line from token `first` as a figure-qualified node name, or null.
    OvNode *nodeNamed(char **argv, int first, int argc) { return findNode(tokenText(argv, first, argc)); }

    // ---- keyword handlers: IK chains ----
    bool ikOn(char **argv, int argc);
    bool ikOff(char **argv, int argc);
    bool ikName(char **argv, int argc);
    bool ikAddLink(char **argv, int argc);
    bool ikGoal(char **argv, int argc);
    bool ikLinkWeight(char **argv, int argc);
    template <void (OvDefaultMaterial::*Set)(const QColor &)> bool matColor(char **argv, int argc);
    bool matAmbientColor(char **argv, int argc);
    bool matNsExponent(char **argv, int argc);
    bool matBumpStrength(char **argv, int argc);
    bool matReflectionStrength(char **argv, int argc);
    bool matTMax(char **argv, int argc);
    template <void (OvDefaultMaterial::*Set)(OvTexture *)> bool matMap(char **argv, int argc);
    OvDefaultMaterial *currentMaterial(const char *trace);
    bool materialNumber(const char *token, float &value);
    bool materialColor(char **argv, QColor &color);

    // ---- keyword handlers: top level ----
    bool fileFigureResFile(char **argv, int argc);
    bool openBinMorphFile(char **argv, int argc);
    bool fileActor(char **argv, int argc);
    bool fileProp(char **argv, int argc);
    bool fileBaseProp(char **argv, int argc);
    bool fileMagnetDeformerProp(char **argv, int argc);
    bool fileSphereZoneProp(char **argv, int argc);
    bool fileLight(char **argv, int argc);
    bool fileCamera(char **argv, int argc);
    bool fileFigure(char **argv, int argc);
    bool openObjectSection(OvNode *node);
    bool openDeformerProp(char **argv, int argc, int kind, const char *nodeClass);

    // ---- keyword handlers: object sections ----
    bool objParent(char **argv, int argc);
    bool objSmartParent(char **argv, int argc);
    bool objOrigin(char **argv, int argc);
    bool objEndPoint(char **argv, int argc);
    bool objOrientation(char **argv, int argc);
    bool objMaterial(char **argv, int argc);
    bool objConformingTarget(char **argv, int argc);
    bool objBend(char **argv, int argc);
    bool objCastsShadow(char **argv, int argc);
    bool objLightType(char **argv, int argc);
    bool objOn(char **argv, int argc);
    bool objOff(char **argv, int argc);
    bool objHidden(char **argv, int argc);
    bool objDeformTarget(char **argv, int argc);
    bool objBaseProp(char **argv, int argc);
    bool objAddZone(char **argv, int argc);
    bool objDeformerProp(char **argv, int argc);
    bool objNewFalloffCurve(char **argv, int argc);
    bool objFalloffCpt(char **argv, int argc);
    bool objSubdivision(char **argv, int argc);
    // Object-section helpers.
    bool reparent(const QString &name);
    void recordSmartParent(const QString &name);
    bool selectMaterial(const QString &name);
    void replaceMaterialOnNode(OvNode *node, OvPz3SceneItem *item, OvMaterial *old);
    void replaceWithSpotLight();
    void bindDeformTarget(const QString &name);
    void attachToMagnet(char **argv, int argc, bool base);
    // Drops every record of a node that is about to be deleted.
    void forgetNode(OvNode *node);
    // Appends to m_sceneItems and its index (every append goes through here).
    void addSceneItem(const OvPz3SceneItem &item);
    // After m_lights changed other than by getLight.
    void reindexLights();

    // ---- keyword handlers: geometry ----
    bool geomCustom(char **argv, int argc);
    bool geomHandlerGeom(char **argv, int argc);
    bool geomAlternate(char **argv, int argc);
    bool geomObjFile(char **argv, int argc);
    bool altGeomName(char **argv, int argc);
    bool altGeomObjFile(char **argv, int argc);
    void linkGenitalsOff();

    bool versionNumber(char **argv, int argc);

    // ---- channels section: one handler per channel kind ----
    enum class ChannelMatch : unsigned char { Exact, Prefix };
    struct ChannelKindRow {
        const char *keyword;
        ChannelMatch match;
        ModeHandler handler;
    };
    // The first row that matches the line's first token takes the line; no match skips the body.
    static const ChannelKindRow s_channelKinds[];
    bool parseChannelsLine(char **argv, int argc);
    bool chanRotate(char **argv, int argc);
    bool chanTranslate(char **argv, int argc);
    bool chanScale(char **argv, int argc);
    bool chanLightColor(char **argv, int argc);
    bool chanIntensity(char **argv, int argc);
    bool chanFocal(char **argv, int argc);
    bool chanFalloffEnd(char **argv, int argc);
    bool chanGroups(char **argv, int argc);
    bool chanValueParm(char **argv, int argc);
    bool chanGeomChan(char **argv, int argc);
    bool chanDeformerPropChan(char **argv, int argc);
    bool chanPointAt(char **argv, int argc);
    // After a transform channel chose its property: the Poser name is recorded against it.
    void recordChannelName(char **argv, int argc);

    // ---- channel bodies ----
    bool parseChannelBody(char **argv, int argc);
    bool parseTargetGeomBody(char **argv, int argc);
    bool parseParmChannelBody(char **argv, int argc);
    bool bodyInitValue(char **argv, int argc);
    bool bodyMin(char **argv, int argc);
    bool bodyMax(char **argv, int argc);
    bool bodyTrackingScale(char **argv, int argc);
    bool bodyForceLimits(char **argv, int argc);
    bool bodyName(char **argv, int argc);
    bool bodyHidden(char **argv, int argc);
    bool bodyKeys(char **argv, int argc);
    bool bodyPointAtTarget(char **argv, int argc);
    bool bodyDeformerProp(char **argv, int argc);
    template <int Type> bool bodyValueOp(char **argv, int argc) { return readValueOp(argv, argc, Type); }
    // A channel value in host units: translations (and a deformer zone's size) are Poser lengths.
    float channelUnits(float value) const;
    bool bodyValue(char **argv, float &value);
    bool setChannelLimit(char **argv, bool upper);
    // After each limit line: crossed limits are swapped, a clamped value is held within them.
    void checkChannelLimits();
    // The last scene item whose Poser name (or, without one, its node's label) is `name`.
    OvNode *lastSceneItemNamed(const QString &name) const;

    // ---- joint parameters ----
    // The channel line of a bend, twist, smooth-scale or curve parameter.
    bool chanJoint(char **argv, int argc);
    static const KeywordRow s_jointParamKeywords[];
    // Reads the two raw sphere matrices from the lines that follow, braces included.
    bool readSphereMats(char **argv, int argc);
    bool jointOtherActor(char **argv, int argc);
    bool jointAngles(char **argv, int argc);
    bool jointDoBulge(char **argv, int argc);
    bool jointBulge(char **argv, int argc);
    bool jointStartPt(char **argv, int argc);
    bool jointEndPt(char **argv, int argc);
    bool jointSmoothZones(char **argv, int argc);
    bool jointFlipped(char **argv, int argc);
    // m_curJointParam as a P, or null after the wrong-type warning naming `tag`.
    template <class P> P *jointParamAs(const char *tag);

    // ---- animation keys ----
    bool parseKeysLine(char **argv, int argc);
    // A key or interpolation line of the usual form read in place; false leaves it to parseKeysLine.
    bool readKeyLine(char *begin, char *end);
    void flushKey(int interpCode);
    void addTransformKey(int frame, float value, int interpCode);
    void setKey(OvProperty *property, int frame, float value, int colorComponent, int interpCode);
    void applyTransformKeys(OvNode *node, OvTArray<Pz3Key> &keys, float version);
    // A rotation key beyond a clamped dial's limits asks, once per import, to turn limits off.
    void checkKeyLimits(OvNode *node, const OvFloatProperty *control, float value);
    bool askTurnOffLimits(const QString &what);
    static OvInterpolation hostInterpolation(int code);

    // ---- channel groups ----
    bool parseGroupsLine(char **argv, int argc);
    bool parseGroupNodeLine(char **argv, int argc);
    bool openGroupNode(char **argv, int argc);
    void closeGroupNode();
    void applyChannelGroups();

    // ---- cameras ----
    bool parseDocLine(char **argv, int argc);
    void finishCameras();

    // ---- morph targets: the targetGeom channel, its body keywords and its deltas ----
    bool chanTargetGeom(char **argv, int argc);
    bool morphIndexes(char **argv, int argc);
    bool morphNumbDeltas(char **argv, int argc);
    bool morphDeltas(char **argv, int argc);
    bool morphUseBinary(char **argv, int argc);
    bool parseDeltaLine(char **argv, int argc);
    // A "d index x y z" line of plain numbers read in place; false leaves the line to parseDeltaLine.
    bool readDeltaLine(char *begin, char *end);
    // True when the vertex lies in the current morph's mesh (any vertex when it has none).
    bool deltaVertexInRange(int index) const {
        return index >= 0 && (m_deltaVertexLimit < 0 || index < m_deltaVertexLimit);
    }
    // deltaVertexInRange, and a report of the line when it is not.
    bool deltaVertexOk(int index);
    // Adds the batch of deltas readDeltaLine read to the current morph.
    void flushDeltas();
    // Vertices of the mesh the node's object shows first; -1 when it has none.
    static int vertexLimitOf(const OvNode *node);
    // At the end of the import: deltas that name no vertex of their actor's geometry are dropped.
    void checkMorphVertices();

    // ---- content location helpers ----
    void learnLocation(const QString &name, const QString &selected);
    QString searchContent(const QString &p, bool folded);
    void logMissing(const QString &name);

    // ---- kept from one read to the next ----
    // Geometry files read (entries never move).
    std::vector<std::unique_ptr<OvPz3GeomItem>> m_geomItems;
    QHash<QString, OvPz3GeomItem *> m_geomByPath; // the same entries by resolved path
    std::vector<std::unique_ptr<OvPz3DeformerChannelItem>> m_deformerChannels;
    OvPz3DeformerChannelItem *m_curDeformerChannel = nullptr;
    QString m_figureResName;
    // Textures loaded by this importer, each named with its key; never searched for again.
    OvTArray<OvTSharedPointer<OvTexture>> m_textures{8};
    QHash<QString, OvTexture *> m_textureNamed; // the same textures by key
    Pz3HandSide m_fileHandSide = Pz3HandSide::Right;
};
