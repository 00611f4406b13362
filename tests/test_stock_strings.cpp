// The stock string tables, checked entry by entry against a second transcription of the
// original resource listing (kept below as text in its "index "string"; ..." form), so a typo in
// either copy shows up as a mismatch.

#include "poser/StockStrings.h"

#include <QRegularExpression>
#include <QStringList>
#include <QtGlobal>
#include <gtest/gtest.h>

#include <climits>

using namespace poser;

namespace {

struct Listing {
    int tableId;
    int size;
    const char *text;
};

const Listing kListings[] = {
    {1024, 105,
     R"x(1 "Body"; 2 "Head"; 3 "Neck"; 4 "Chest"; 5 "Abdomen"; 6 "Hip"; 7 "Left Thigh"; )x"
     R"x(8 "Left Shin"; 9 "Left Foot"; 10 "Right Thigh"; 11 "Right Shin"; 12 "Right Foot"; )x"
     R"x(13 "Left Shoulder"; 14 "Left Forearm"; 15 "Left Hand"; 16 "Right Shoulder"; )x"
     R"x(17 "Right Forearm"; 18 "Right Hand"; 19 "Left Collar"; 20 "Right Collar"; 21 "Jaw"; )x"
     R"x(22 "Left Pinky 1"; 23 "Left Pinky 2"; 24 "Left Pinky 3"; 25 "Right Pinky 1"; )x"
     R"x(26 "Right Pinky 2"; 27 "Right Pinky 3"; 28 "Left Ring 1"; 29 "Left Ring 2"; )x"
     R"x(30 "Left Ring 3"; 31 "Right Ring 1"; 32 "Right Ring 2"; 33 "Right Ring 3"; )x"
     R"x(34 "Left Mid 1"; 35 "Left Mid 2"; 36 "Left Mid 3"; 37 "Right Mid 1"; 38 "Right Mid 2"; )x"
     R"x(39 "Right Mid 3"; 40 "Left Index 1"; 41 "Left Index 2"; 42 "Left Index 3"; )x"
     R"x(43 "Right Index 1"; 44 "Right Index 2"; 45 "Right Index 3"; 46 "Left Thumb 1"; )x"
     R"x(47 "Left Thumb 2"; 48 "Left Thumb 3"; 49 "Right Thumb 1"; 50 "Right Thumb 2"; )x"
     R"x(51 "Right Thumb 3"; 52 "Left Toe"; 53 "Right Toe"; 54 "Neck 1"; 55 "Neck 2"; )x"
     R"x(56 "Right Finger 1"; 57 "Right Claw 1"; 58 "Right Finger 2"; 59 "Right Claw 2"; )x"
     R"x(60 "Right Finger 3"; 61 "Right Claw 3"; 62 "Left Finger 1"; 63 "Left Claw 1"; )x"
     R"x(64 "Left Finger 2"; 65 "Left Claw 2"; 66 "Left Finger 3"; 67 "Left Claw 3"; )x"
     R"x(68 "Right Toe 1"; 69 "Right Toe 2"; 70 "Left Toe 1"; 71 "Left Toe 2"; 72 "Tail 1"; )x"
     R"x(73 "Tail 2"; 74 "Tail 3"; 75 "Tail 4"; 76 "Left Up Arm"; 77 "Right Up Arm"; )x"
     R"x(78 "Left Wrist"; 79 "Right Wrist"; 80 "Lower Neck"; 81 "Upper Neck"; 82 "Left Leg"; )x"
     R"x(83 "Right Leg"; 84 "Left Ankle"; 85 "Right Ankle"; 86 "Waist"; 87 "Left Ear 1"; )x"
     R"x(88 "Right Ear 1"; 89 "Left Ear 2"; 90 "Right Ear 2"; 91 "Left Ear 3"; 92 "Right Ear 3"; )x"
     R"x(93 "Tail Fins"; 94 "Right Pect Fin"; 95 "Left Pect Fin"; 96 "Body 1"; 97 "Body 2"; )x"
     R"x(98 "Body 3"; 99 "Body 4"; 100 "Body 5"; 101 "Left Eye"; 102 "Right Eye"; )x"
     R"x(103 "InnerMatSphere"; 104 "outerMatSphere"; 105 "nullMatSphere")x"},
    {1025, 18,
     R"x(1 "Main Camera"; 2 "Side Camera"; 3 "Top Camera"; 4 "Front Camera"; 5 "Posing Camera"; )x"
     R"x(6 "Dolly Camera"; 7 "Shadow Lite 1 Cam"; 8 "Shadow Lite 2 Cam"; 9 "Shadow Lite 3 Cam"; )x"
     R"x(10 "Right Camera"; 11 "Left Camera"; 12 "Face Camera"; 13 "LHand Camera"; )x"
     R"x(14 "RHand Camera"; 15 "Aux Camera"; 16 "Back Camera"; 17 "Bottom Camera"; )x"
     R"x(18 "Shadow Cam Lite 4")x"},
    {1026, 10,
     R"x(1 "Ball"; 2 "Box"; 3 "Cane"; 4 "Stairs"; 5 "Torus"; 6 "Cyl"; 7 "Cone"; 8 "Square"; )x"
     R"x(9 "GROUND"; 10 "UNIVERSE")x"},
    {1027, 3, R"x(1 "Light 1"; 2 "Light 2"; 3 "Light 3")x"},
    {1028, 53,
     R"x(1 "Taper"; 2 "Twist"; 3 "Side-Side"; 4 "Bend"; 5 "Scale"; 6 "xScale"; 7 "yScale"; )x"
     R"x(8 "zScale"; 9 "xRotate"; 10 "yRotate"; 11 "zRotate"; 12 "xTrans"; 13 "yTrans"; )x"
     R"x(14 "zTrans"; 15 "Focal"; 16 "Pitch"; 17 "Yaw"; 18 "Roll"; 19 "Red"; 20 "Green"; )x"
     R"x(21 "Blue"; 22 "Intensity"; 23 "Turn"; 24 "Front-Back"; 25 "DollyX"; 26 "DollyY"; )x"
     R"x(27 "DollyZ"; 28 "Shadow"; 29 "Map Size"; 30 "PanX"; 31 "PanY"; 32 "Zoom"; 33 "xTranB"; )x"
     R"x(34 "yTranB"; 35 "yTranB"; 36 "xOffset"; 37 "yOffset"; 38 "zOffset"; 39 "xOrbit"; )x"
     R"x(40 "yOrbit"; 41 "zOrbit"; 42 "Hand Type"; 43 "BreastSize"; 44 "OriginX"; 45 "OriginY"; )x"
     R"x(46 "OriginZ"; 47 "Fatness"; 48 "Grasp"; 49 "Thumb Grasp"; 50 "Spread"; 51 "Curve"; )x"
     R"x(52 "curve"; 53 "Up-Down")x"},
    {1029, 60,
     R"x(1 "No Bump"; 2 "Male Muscle Bump"; 3 "Female Muscle Bump"; 4 "None"; )x"
     R"x(5 "Male Muscle Texture"; 6 "Female Muscle Texture"; 7 "Ground Default Texture"; )x"
     R"x(8 "male casual texture"; 9 "female casual texture"; 10 "male nude texture"; )x"
     R"x(11 "female nude texture"; 12 "male business texture"; 13 "female business texture"; )x"
     R"x(14 "child nude texture"; 15 "child casual texture"; 16 "ground Default Texture"; )x"
     R"x(17 "angelfishmap"; 18 "biz man texture"; 19 "biz woman texture"; )x"
     R"x(20 "casual child texture"; 21 "casual man texture"; 22 "casual woman texture"; )x"
     R"x(23 "cat texture"; 24 "child hair texture"; 25 "dog texture"; 26 "dolphin texture"; )x"
     R"x(27 "female hair 1 texture"; 28 "female hair 2 texture"; 29 "female hair 3 texture"; )x"
     R"x(30 "female hair 4 texture"; 31 "female hair 5 texture"; 32 "frogmap"; )x"
     R"x(33 "hand texture"; 34 "horse texture"; 35 "lionmap"; 36 "male hair 1 texture"; )x"
     R"x(37 "male hair 2 texture"; 38 "male hair 3 texture"; 39 "male hair 4 texture"; )x"
     R"x(40 "male hair 5 texture"; 41 "nude child texture"; 42 "nude man texture"; )x"
     R"x(43 "nude woman texture"; 44 "raptor texture"; 45 "raptor texture"; 46 "wolfmap"; )x"
     R"x(47 "p4 man bump"; 48 "p4 man bump"; 49 "p4 man texture"; 50 "p4 man texture2"; )x"
     R"x(51 "p4 woman bump"; 52 "p4 woman bump"; 53 "p4 woman texture"; 54 "p4 woman texture2"; )x"
     R"x(55 "p4casboy"; 56 "p4casgirl"; 57 "p4infant"; 58 "p4nudboy"; 59 "p4nudgrl"; 60 "snakelo")x"},
    {1037, 20,
     R"x(1 "Relaxed"; 2 "Cupped"; 3 "Limp"; 4 "Quirky relaxed"; 5 "Greetings"; 6 "Flat"; )x"
     R"x(7 "Coupled"; 8 "Reach"; 9 "Taut"; 10 "Spread"; 11 "Push"; 12 "Scratch"; 13 "Scrape"; )x"
     R"x(14 "Gnarled"; 15 "Fist"; 16 "Pont"; 17 "Gun Point"; 18 "Peace"; 19 "Pinky Point"; )x"
     R"x(20 "OK")x"},
    {1052, 42,
     R"x(1 " "; 2 " "; 3 " "; 4 " "; 5 " "; 6 " "; 7 " "; 8 " "; )x"
     R"x(9 ":Runtime:Geometries:props:ball.obj"; 10 ":Runtime:Geometries:props:box.obj"; )x"
     R"x(11 ":Runtime:Geometries:props:cane.obj"; 12 ":Runtime:Geometries:props:stairs.obj"; )x"
     R"x(13 " "; 14 ":Runtime:Geometries:props:cone.obj"; )x"
     R"x(15 ":Runtime:Geometries:props:cylTex.obj"; 16 ":Runtime:Geometries:props:square.obj"; )x"
     R"x(17 ":Runtime:Geometries:props:torusThin.obj"; )x"
     R"x(18 ":Runtime:Geometries:maleOrig:maleOrig.obj"; )x"
     R"x(19 ":Runtime:Geometries:maleNudeHi:maleNudeHi.obj"; )x"
     R"x(20 ":Runtime:Geometries:maleNudeLo:maleNudeLo.obj"; )x"
     R"x(21 ":Runtime:Geometries:maleSuitHi:maleSuitHi.obj"; )x"
     R"x(22 ":Runtime:Geometries:maleSuitLo:maleSuitLo.obj"; )x"
     R"x(23 ":Runtime:Geometries:maleCasHi:maleCasHi.obj"; )x"
     R"x(24 ":Runtime:Geometries:maleCasLo:maleCasLo.obj"; )x"
     R"x(25 ":Runtime:Geometries:maleSkeleton:maleSkeleton.obj"; )x"
     R"x(26 ":Runtime:Geometries:maleStick:maleStick.obj"; )x"
     R"x(27 ":Runtime:Geometries:femaleOrig:femaleOrig.obj"; )x"
     R"x(28 ":Runtime:Geometries:femaleNudeHi:femaleNudeHi.obj"; )x"
     R"x(29 ":Runtime:Geometries:femaleNudeLo:femaleNudeLo.obj"; )x"
     R"x(30 ":Runtime:Geometries:femaleSuitHi:femaleSuitHi.obj"; )x"
     R"x(31 ":Runtime:Geometries:femaleSuitLo:femaleSuitLo.obj"; )x"
     R"x(32 ":Runtime:Geometries:femaleCasHi:femaleCasHi.obj"; )x"
     R"x(33 ":Runtime:Geometries:femaleCasLo:femaleCasLo.obj"; )x"
     R"x(34 ":Runtime:Geometries:femaleSkeleton:femaleSkeleton.obj"; )x"
     R"x(35 ":Runtime:Geometries:femaleStick:femaleStick.obj"; )x"
     R"x(36 ":Runtime:Geometries:childNudeHi:childNudeHi.obj"; )x"
     R"x(37 ":Runtime:Geometries:childNudeLo:childNudeLo.obj"; )x"
     R"x(38 ":Runtime:Geometries:childCasHi:childCasHi.obj"; )x"
     R"x(39 ":Runtime:Geometries:childCasLo:childCasLo.obj"; )x"
     R"x(40 ":Runtime:Geometries:childStick:childStick.obj"; 41 " "; )x"
     R"x(42 ":Runtime:Geometries:manikin:manikin.obj")x"},
};

using SubLookup = QString (*)(int);

SubLookup subLookup(int tableId) {
    switch (tableId) {
    case 1024:
        return getStringRes1024;
    case 1025:
        return getStringRes1025;
    case 1026:
        return getStringRes1026;
    case 1027:
        return getStringRes1027;
    case 1028:
        return getStringRes1028;
    case 1029:
        return getStringRes1029;
    case 1037:
        return getStringRes1037;
    case 1052:
        return getStringRes1052;
    }
    return nullptr;
}

// Parses "1 "a"; 2 "b"" into its strings, checking that the indexes run 1, 2, 3, ...
QStringList parseListing(const Listing &listing) {
    QStringList entries;
    static const QRegularExpression entry(QStringLiteral("(\\d+) \"([^\"]*)\"(?:; |$)"));
    const QString text = QString::fromLatin1(listing.text);
    int consumed = 0;
    for (auto it = entry.globalMatch(text); it.hasNext();) {
        const auto m = it.next();
        EXPECT_EQ(m.capturedStart(), consumed) << "table " << listing.tableId;
        EXPECT_EQ(m.captured(1).toInt(), entries.size() + 1) << "table " << listing.tableId;
        entries.append(m.captured(2));
        consumed = m.capturedEnd();
    }
    EXPECT_EQ(consumed, text.size()) << "table " << listing.tableId;
    return entries;
}

QStringList g_debugMessages;

void captureDebug(QtMsgType type, const QMessageLogContext &, const QString &message) {
    if (type == QtDebugMsg)
        g_debugMessages.append(message);
}

// Collects the debug traces written while it lives.
class DebugCapture {
public:
    DebugCapture() {
        g_debugMessages.clear();
        m_previous = qInstallMessageHandler(captureDebug);
    }
    ~DebugCapture() { qInstallMessageHandler(m_previous); }
    QStringList messages() const { return g_debugMessages; }

private:
    QtMessageHandler m_previous;
};

QString tableTrace(int tableId) {
    return QStringLiteral("Invalid resource ID passed to OvPZ3Importer::getStringRes%1()").arg(tableId);
}

} // namespace

TEST(StockStrings, EveryEntryMatchesTheListing) {
    for (const Listing &listing : kListings) {
        const QStringList expected = parseListing(listing);
        ASSERT_EQ(expected.size(), listing.size) << "table " << listing.tableId;
        const SubLookup lookup = subLookup(listing.tableId);
        ASSERT_NE(lookup, nullptr);

        DebugCapture capture;
        QStringList viaTable, viaSub;
        for (int i = 1; i <= listing.size; ++i) {
            viaTable.append(getStringRes(listing.tableId, i));
            viaSub.append(lookup(i));
        }
        // Joined, so a failure shows the whole table side by side.
        EXPECT_EQ(viaTable.join('|'), expected.join('|')) << "table " << listing.tableId;
        EXPECT_EQ(viaSub.join('|'), expected.join('|')) << "table " << listing.tableId;
        EXPECT_TRUE(capture.messages().isEmpty()) << "valid lookups must not trace";
    }
}

TEST(StockStrings, IndexesOutsideATableAreEmptyWithThatTablesTrace) {
    for (const Listing &listing : kListings) {
        const SubLookup lookup = subLookup(listing.tableId);
        ASSERT_NE(lookup, nullptr);
        EXPECT_FALSE(getStringRes(listing.tableId, listing.size).isEmpty());
        for (int index : {0, listing.size + 1, -1, INT_MIN, INT_MAX}) {
            DebugCapture capture;
            EXPECT_TRUE(getStringRes(listing.tableId, index).isEmpty()) << listing.tableId << "," << index;
            EXPECT_TRUE(lookup(index).isEmpty()) << listing.tableId << "," << index;
            const QStringList trace{tableTrace(listing.tableId)};
            EXPECT_EQ(capture.messages(), trace + trace) << listing.tableId << "," << index;
        }
    }
}

TEST(StockStrings, UnknownTablesAreEmptyWithTheGeneralTrace) {
    for (int tableId : {1030, 1023, 1036, 1038, 1051, 1053, 0, -1024}) {
        DebugCapture capture;
        EXPECT_TRUE(getStringRes(tableId, 1).isEmpty()) << tableId;
        EXPECT_EQ(capture.messages(),
                  QStringList{QStringLiteral("Invalid resource ID passed to OvPZ3Importer::getStringRes()")})
            << tableId;
    }
}

TEST(StockStrings, TextEdgeCases) {
    EXPECT_EQ(getStringRes(1024, 1), QStringLiteral("Body"));
    EXPECT_EQ(getStringRes(1024, 105), QStringLiteral("nullMatSphere"));
    // Capitalisation is kept as the original has it.
    EXPECT_EQ(getStringRes(1024, 103), QStringLiteral("InnerMatSphere"));
    EXPECT_EQ(getStringRes(1024, 104), QStringLiteral("outerMatSphere"));
    EXPECT_EQ(getStringRes(1026, 9), QStringLiteral("GROUND"));
    EXPECT_EQ(getStringRes(1028, 51), QStringLiteral("Curve"));
    EXPECT_EQ(getStringRes(1028, 52), QStringLiteral("curve"));
    // Repeated entries stay repeated.
    EXPECT_EQ(getStringRes(1028, 34), QStringLiteral("yTranB"));
    EXPECT_EQ(getStringRes(1028, 35), QStringLiteral("yTranB"));
    EXPECT_EQ(getStringRes(1029, 44), QStringLiteral("raptor texture"));
    EXPECT_EQ(getStringRes(1029, 45), QStringLiteral("raptor texture"));

    // The geometry table marks entries without geometry by one blank, never an empty string.
    int blanks = 0;
    for (int i = 1; i <= 42; ++i) {
        const QString s = getStringRes1052(i);
        EXPECT_FALSE(s.isEmpty()) << i;
        if (s == QLatin1String(" "))
            ++blanks;
        else
            EXPECT_TRUE(s.startsWith(QLatin1String(":Runtime:Geometries:")) &&
                        s.endsWith(QLatin1String(".obj")))
                << i << ": " << s.toStdString();
    }
    EXPECT_EQ(blanks, 10);
    EXPECT_EQ(getStringRes1052(13), QStringLiteral(" "));
    EXPECT_EQ(getStringRes1052(41), QStringLiteral(" "));
    EXPECT_EQ(getStringRes1052(42), QStringLiteral(":Runtime:Geometries:manikin:manikin.obj"));
}
