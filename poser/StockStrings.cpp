#include "StockStrings.h"

#include <QtDebug>

#include <cstddef>

namespace poser {

namespace {

// Body-part (actor) names.
const char *const kTable1024[] = {
    "Body",           "Head",           "Neck",          "Chest",          "Abdomen",       "Hip",
    "Left Thigh",     "Left Shin",      "Left Foot",     "Right Thigh",    "Right Shin",    "Right Foot",
    "Left Shoulder",  "Left Forearm",   "Left Hand",     "Right Shoulder", "Right Forearm", "Right Hand",
    "Left Collar",    "Right Collar",   "Jaw",           "Left Pinky 1",   "Left Pinky 2",  "Left Pinky 3",
    "Right Pinky 1",  "Right Pinky 2",  "Right Pinky 3", "Left Ring 1",    "Left Ring 2",   "Left Ring 3",
    "Right Ring 1",   "Right Ring 2",   "Right Ring 3",  "Left Mid 1",     "Left Mid 2",    "Left Mid 3",
    "Right Mid 1",    "Right Mid 2",    "Right Mid 3",   "Left Index 1",   "Left Index 2",  "Left Index 3",
    "Right Index 1",  "Right Index 2",  "Right Index 3", "Left Thumb 1",   "Left Thumb 2",  "Left Thumb 3",
    "Right Thumb 1",  "Right Thumb 2",  "Right Thumb 3", "Left Toe",       "Right Toe",     "Neck 1",
    "Neck 2",         "Right Finger 1", "Right Claw 1",  "Right Finger 2", "Right Claw 2",  "Right Finger 3",
    "Right Claw 3",   "Left Finger 1",  "Left Claw 1",   "Left Finger 2",  "Left Claw 2",   "Left Finger 3",
    "Left Claw 3",    "Right Toe 1",    "Right Toe 2",   "Left Toe 1",     "Left Toe 2",    "Tail 1",
    "Tail 2",         "Tail 3",         "Tail 4",        "Left Up Arm",    "Right Up Arm",  "Left Wrist",
    "Right Wrist",    "Lower Neck",     "Upper Neck",    "Left Leg",       "Right Leg",     "Left Ankle",
    "Right Ankle",    "Waist",          "Left Ear 1",    "Right Ear 1",    "Left Ear 2",    "Right Ear 2",
    "Left Ear 3",     "Right Ear 3",    "Tail Fins",     "Right Pect Fin", "Left Pect Fin", "Body 1",
    "Body 2",         "Body 3",         "Body 4",        "Body 5",         "Left Eye",      "Right Eye",
    "InnerMatSphere", "outerMatSphere", "nullMatSphere",
};

// Camera names.
const char *const kTable1025[] = {
    "Main Camera",  "Side Camera",       "Top Camera",        "Front Camera",      "Posing Camera",
    "Dolly Camera", "Shadow Lite 1 Cam", "Shadow Lite 2 Cam", "Shadow Lite 3 Cam", "Right Camera",
    "Left Camera",  "Face Camera",       "LHand Camera",      "RHand Camera",      "Aux Camera",
    "Back Camera",  "Bottom Camera",     "Shadow Cam Lite 4",
};

// Prop names.
const char *const kTable1026[] = {
    "Ball", "Box", "Cane", "Stairs", "Torus", "Cyl", "Cone", "Square", "GROUND", "UNIVERSE",
};

// Light names.
const char *const kTable1027[] = {
    "Light 1",
    "Light 2",
    "Light 3",
};

// Channel (parameter) names; 34 and 35 are both "yTranB" in the original resources.
const char *const kTable1028[] = {
    "Taper",       "Twist",     "Side-Side",  "Bend",    "Scale",    "xScale",    "yScale",  "zScale",
    "xRotate",     "yRotate",   "zRotate",    "xTrans",  "yTrans",   "zTrans",    "Focal",   "Pitch",
    "Yaw",         "Roll",      "Red",        "Green",   "Blue",     "Intensity", "Turn",    "Front-Back",
    "DollyX",      "DollyY",    "DollyZ",     "Shadow",  "Map Size", "PanX",      "PanY",    "Zoom",
    "xTranB",      "yTranB",    "yTranB",     "xOffset", "yOffset",  "zOffset",   "xOrbit",  "yOrbit",
    "zOrbit",      "Hand Type", "BreastSize", "OriginX", "OriginY",  "OriginZ",   "Fatness", "Grasp",
    "Thumb Grasp", "Spread",    "Curve",      "curve",   "Up-Down",
};

// Texture and bump map names; the repeats (raptor, p4 bumps) are in the original resources.
const char *const kTable1029[] = {
    "No Bump",
    "Male Muscle Bump",
    "Female Muscle Bump",
    "None",
    "Male Muscle Texture",
    "Female Muscle Texture",
    "Ground Default Texture",
    "male casual texture",
    "female casual texture",
    "male nude texture",
    "female nude texture",
    "male business texture",
    "female business texture",
    "child nude texture",
    "child casual texture",
    "ground Default Texture",
    "angelfishmap",
    "biz man texture",
    "biz woman texture",
    "casual child texture",
    "casual man texture",
    "casual woman texture",
    "cat texture",
    "child hair texture",
    "dog texture",
    "dolphin texture",
    "female hair 1 texture",
    "female hair 2 texture",
    "female hair 3 texture",
    "female hair 4 texture",
    "female hair 5 texture",
    "frogmap",
    "hand texture",
    "horse texture",
    "lionmap",
    "male hair 1 texture",
    "male hair 2 texture",
    "male hair 3 texture",
    "male hair 4 texture",
    "male hair 5 texture",
    "nude child texture",
    "nude man texture",
    "nude woman texture",
    "raptor texture",
    "raptor texture",
    "wolfmap",
    "p4 man bump",
    "p4 man bump",
    "p4 man texture",
    "p4 man texture2",
    "p4 woman bump",
    "p4 woman bump",
    "p4 woman texture",
    "p4 woman texture2",
    "p4casboy",
    "p4casgirl",
    "p4infant",
    "p4nudboy",
    "p4nudgrl",
    "snakelo",
};

// Hand pose names ("Pont" is spelt so in the original resources).
const char *const kTable1037[] = {
    "Relaxed", "Cupped", "Limp",      "Quirky relaxed", "Greetings",   "Flat",   "Coupled",
    "Reach",   "Taut",   "Spread",    "Push",           "Scratch",     "Scrape", "Gnarled",
    "Fist",    "Pont",   "Gun Point", "Peace",          "Pinky Point", "OK",
};

// Geometry files of the stock figures and props as Mac-style runtime paths; a single blank marks
// an entry without geometry.
const char *const kTable1052[] = {
    " ",
    " ",
    " ",
    " ",
    " ",
    " ",
    " ",
    " ",
    ":Runtime:Geometries:props:ball.obj",
    ":Runtime:Geometries:props:box.obj",
    ":Runtime:Geometries:props:cane.obj",
    ":Runtime:Geometries:props:stairs.obj",
    " ",
    ":Runtime:Geometries:props:cone.obj",
    ":Runtime:Geometries:props:cylTex.obj",
    ":Runtime:Geometries:props:square.obj",
    ":Runtime:Geometries:props:torusThin.obj",
    ":Runtime:Geometries:maleOrig:maleOrig.obj",
    ":Runtime:Geometries:maleNudeHi:maleNudeHi.obj",
    ":Runtime:Geometries:maleNudeLo:maleNudeLo.obj",
    ":Runtime:Geometries:maleSuitHi:maleSuitHi.obj",
    ":Runtime:Geometries:maleSuitLo:maleSuitLo.obj",
    ":Runtime:Geometries:maleCasHi:maleCasHi.obj",
    ":Runtime:Geometries:maleCasLo:maleCasLo.obj",
    ":Runtime:Geometries:maleSkeleton:maleSkeleton.obj",
    ":Runtime:Geometries:maleStick:maleStick.obj",
    ":Runtime:Geometries:femaleOrig:femaleOrig.obj",
    ":Runtime:Geometries:femaleNudeHi:femaleNudeHi.obj",
    ":Runtime:Geometries:femaleNudeLo:femaleNudeLo.obj",
    ":Runtime:Geometries:femaleSuitHi:femaleSuitHi.obj",
    ":Runtime:Geometries:femaleSuitLo:femaleSuitLo.obj",
    ":Runtime:Geometries:femaleCasHi:femaleCasHi.obj",
    ":Runtime:Geometries:femaleCasLo:femaleCasLo.obj",
    ":Runtime:Geometries:femaleSkeleton:femaleSkeleton.obj",
    ":Runtime:Geometries:femaleStick:femaleStick.obj",
    ":Runtime:Geometries:childNudeHi:childNudeHi.obj",
    ":Runtime:Geometries:childNudeLo:childNudeLo.obj",
    ":Runtime:Geometries:childCasHi:childCasHi.obj",
    ":Runtime:Geometries:childCasLo:childCasLo.obj",
    ":Runtime:Geometries:childStick:childStick.obj",
    " ",
    ":Runtime:Geometries:manikin:manikin.obj",
};

template <std::size_t N> QString lookup(const char *const (&table)[N], int index, const char *trace) {
    if (index < 1 || index > int(N)) {
        qDebug("%s", trace);
        return QString();
    }
    return QString::fromLatin1(table[index - 1]);
}

} // namespace

QString getStringRes1024(int index) {
    return lookup(kTable1024, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1024()");
}

QString getStringRes1025(int index) {
    return lookup(kTable1025, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1025()");
}

QString getStringRes1026(int index) {
    return lookup(kTable1026, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1026()");
}

QString getStringRes1027(int index) {
    return lookup(kTable1027, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1027()");
}

QString getStringRes1028(int index) {
    return lookup(kTable1028, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1028()");
}

QString getStringRes1029(int index) {
    return lookup(kTable1029, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1029()");
}

QString getStringRes1037(int index) {
    return lookup(kTable1037, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1037()");
}

QString getStringRes1052(int index) {
    return lookup(kTable1052, index, "Invalid resource ID passed to OvPZ3Importer::getStringRes1052()");
}

QString getStringRes(int tableId, int index) {
    switch (tableId) {
    case 1024:
        return getStringRes1024(index);
    case 1025:
        return getStringRes1025(index);
    case 1026:
        return getStringRes1026(index);
    case 1027:
        return getStringRes1027(index);
    case 1028:
        return getStringRes1028(index);
    case 1029:
        return getStringRes1029(index);
    case 1037:
        return getStringRes1037(index);
    case 1052:
        return getStringRes1052(index);
    default:
        qDebug("Invalid resource ID passed to OvPZ3Importer::getStringRes()");
        return QString();
    }
}

} // namespace poser
