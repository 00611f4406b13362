#pragma once
// What one read of a Poser file starts afresh: where the parser is, the objects the current lines
// talk about, the records the import makes and the facts about the file being read. `read` resets
// all of it by assignment; what lasts from one read to the next (the geometry cache, the deformer
// channels, the last figure geometry's name) stays on the importer.

#include "FolderIndex.h"
#include "LocatedDirList.h"
#include "channels/BinaryMorph.h"
#include "channels/ChannelGroups.h"
#include "figure/Textures.h"
#include "scene/SceneItemIndex.h"
#include "scene/SceneItems.h"
#include <OvTypes.h>
#include <QList>
#include <QPair>
#include <QSet>
#include <QString>
#include <memory>
#include <vector>

struct Pz3InputFile;
class OvElement;
class OvNode;
class OvProperty;
class OvMaterial;
class OvLight;
class OvBasicCamera;
class OvMorph;
class OvPoserJointParam;
class OvNumericProperty;
class OvERCLink;
class OvPoserIKChain;

// A morph found or made in this import, with the node whose object carries it.
struct OvPz3MorphItem {
    OvMorph *morph = nullptr;
    OvNode *node = nullptr;
    int expectedDeltas = 0; // as the indexes line says: room made for them once they come
};

// Delta lines read but not yet added: their numbers are finished a batch at a time.
struct Pz3PendingDeltas {
    static constexpr int Size = 128;
    int count = 0;
    int index[Size];
    float values[3 * Size];
    int32_t divisions[3 * Size];
};

// Kinds of Poser file, told apart by the extension.
enum class Pz3FileKind : int {
    Scene = 0,     // pz3, pzz
    Figure = 1,    // cr2, crz
    Prop = 2,      // pp2, ppz
    Hair = 3,      // hr2, hrz
    Pose = 4,      // pz2, p2z
    LightSet = 5,  // lt2, ltz
    CameraSet = 6, // cm2, cmz
    FacePose = 7,  // fc2, fcz
    HandPose = 8,  // hd2, hdz
    Other = 9,     // any other extension
};

// The hand a hand pose is applied to, or the hand it was written for.
enum class Pz3HandSide : int { Right = 0, Left = 1, NotHandPose = 2 };

// A dependent-parameter block whose controlling property was not there yet: a place-holder
// controller holds its place on the driven property until the end of the import.
struct OvPz3ERCLink {
    OvNumericProperty *property = nullptr; // driven
    int figureIndex = 0;                   // from the node name's ":N", -1 without one
    QString nodeName;                      // controlling node, suffix removed
    QString channelName;                   // controlling channel's Poser name
    float scalar = 1.0f;                   // as read
    int type = 0;                          // OvERCLink::Type
    OvERCLink *placeHolder = nullptr;
    // Where the block was read, for the messages of the end of the import.
    QString fileName;
    int line = 0;
};

// Two channels of a figure that share one value (a linkParms pair).
struct OvPz3LinkParm {
    OvNode *masterNode = nullptr;
    OvNode *slaveNode = nullptr;
    QString masterParm;
    QString slaveParm;
};

// A node to turn into a subdivision surface once the import is complete.
struct OvPz3SubDNode {
    OvNode *node = nullptr;
    int level = 0;
};

// The transform keys of one frame of the current object, gathered from all its channels.
struct Pz3Key {
    float transX = 0, transY = 0, transZ = 0; // Poser units
    float rotX = 0, rotY = 0, rotZ = 0;       // degrees
    float scale = 1;
    float scaleX = 1, scaleY = 1, scaleZ = 1;
    int frame = 0;
    unsigned char interp[10] = {}; // interpolation code of each value above, in order
    int mask = 0;                  // bit i: the file set value i
};

struct Pz3ReadState {
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

    // ---- the file being read ----
    Pz3FileKind m_fileType = Pz3FileKind::Other;
    QString m_fileName;              // short name, shown in messages
    QString m_filePath;              // its folder; then the folder of the last file the user located
    QString m_figureBaseName;        // a figure file's base name, until the first skeleton takes it as label
    bool m_applyToSelection = false; // the file changes the selection instead of making objects
    int m_startFrame = 0;            // frame a pose is applied at
    Pz3HandSide m_handSide = Pz3HandSide::NotHandPose;
    float m_version = 4.0f;

    // ---- input and sections ----
    // Owned, as is every file on the stack: the outer files that a readScript suspended.
    Pz3InputFile *m_file = nullptr;
    OvTStack<Pz3InputFile *> m_fileStack{32};
    ParseMode m_parseMode = ModeFile;
    OvTArray<ParseMode> m_modeStack{8}; // one entry per open section, the file level at the bottom

    // ---- what the current lines talk about ----
    OvNode *m_curFigure = nullptr;
    OvNode *m_curNode = nullptr; // null while a section is skipped
    OvProperty *m_curProperty = nullptr;
    OvPoserJointParam *m_curJointParam = nullptr; // the joint parameter whose body is being read
    OvMaterial *m_material = nullptr;
    OvPoserIKChain *m_curIKChain = nullptr;     // chain of the last inkyChain section; owned by its figure
    OvPz3GeomItem *m_curGeom = nullptr;         // geometry of the last figureResFile or alternate objFile
    OvPz3BinMorph *m_curBinMorphFile = nullptr; // record of the last morphBinaryFile
    OvPz3MorphItem *m_curMorph = nullptr;       // morph of the last targetGeom channel
    int m_deltaVertexLimit = -1;                // vertices of its mesh, -1 when it has none
    Pz3PendingDeltas m_pendingDeltas;           // delta lines of the current morph not yet added
    QString m_altGeomName;                      // labels the shape of the next alternate objFile
    int m_curChannelType = 0; // transform component of the channel being read (ChannelType bits)
    int m_colorComponent = 0; // of a light-colour channel: 0 red, 1 green, 2 blue, 3 intensity
    bool m_isColorChannel = false;
    int m_figureVertexCount = 0;

    // ---- records of this import ----
    OvTArray<OvPz3SceneItem> m_sceneItems{8};
    Pz3SceneItemIndex m_itemIndex;                           // kept in step with m_sceneItems by the registry
    std::vector<std::unique_ptr<OvPz3NodeItem>> m_nodeItems; // entries never move
    QHash<const OvNode *, OvPz3NodeItem *> m_nodeItemOf;
    QHash<QString, int> m_labelCounters; // next counter makeUniqueLabel tries for a base label
    QSet<QString> m_includesRead;        // canonical paths of the files this import read
    qint64 m_includeBytes = 0;
    bool m_inputDamaged = false; // a file could not be read to its end
    OvTArray<OvPz3SubDNode> m_subDNodes{8};
    // (owner, Poser name) -> the host property a Poser channel drives, the first recorded under that
    // name; dependent parameters find their controlling property through it. Properties are owned
    // by their nodes.
    QHash<QPair<const OvElement *, QString>, OvProperty *> m_channelNameIndex;
    std::vector<std::unique_ptr<OvPz3MorphItem>> m_morphItems; // in creation order; entries never move
    QHash<QPair<const OvNode *, QString>, OvPz3MorphItem *> m_morphItemOf; // the first item of each
    std::vector<std::unique_ptr<OvPz3BinMorph>> m_binMorphs;               // one per resolved path
    OvTArray<OvPz3ERCLink> m_ercLinks{8};                                  // in file order
    OvTArray<OvPz3LinkParm> m_linkParms{8};                                // in file order
    qint64 m_linkResolveNanos = 0;              // how long the end of the import took to resolve them
    const OvPz3ERCLink *m_linkRecord = nullptr; // the record being resolved, for its messages
    QList<OvLight *> m_lights;
    QHash<QString, OvLight *> m_lightNamed; // the first of m_lights with that name
    QList<OvBasicCamera *> m_cameras;
    LocatedDirList m_locatedDirs;
    bool m_askForFiles = true;
    FolderIndex m_folderIndex;     // folder listings, made on first need and kept for this read
    QSet<QString> m_missingLogged; // names already logged as not found
    FileNameIndex m_nameIndex;     // content folders by file name, for maps found by name alone

    // ---- flags ----
    int m_limitsAnswer = 0;
    bool m_foundOnFollowTarget = false;
    bool m_jointParmsSeen = false;
    bool m_ignoreKeys = false;
    bool m_keyPending = false;
    int m_lastFrame = 0;
    // The key read last, held until its interpolation is known.
    int m_keyFrame = 0;
    float m_keyValue = 0.0f;
    OvTArray<Pz3Key> m_keys{8};   // the current object's transform keys, one per frame
    QHash<int, int> m_keyIndexOf; // frame -> its record in m_keys
    std::unique_ptr<Pz3ChannelGroupBuilder> m_curGroupNode;
    int m_movieCurrentTime = -1;
    int m_movieLoopStart = -1;
    int m_movieLoopEnd = -1;
};
