// The stock string tables: the lookup rules, and spot checks that catch a table that is shifted,
// cut short, assigned the wrong id, or "corrected" where the original has odd entries.

#include "poser/StockStrings.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <climits>

using namespace poser;

namespace {

QStringList g_traces;

void collectTrace(QtMsgType type, const QMessageLogContext &, const QString &message) {
    if (type == QtDebugMsg)
        g_traces.append(message);
}

const struct {
    int id;
    QString (*lookup)(int);
    int size;
    // The first, an inner and the last entry, and entries that look like slips of the original but
    // must stay as they are (entries without geometry are one blank, never empty).
    std::vector<std::pair<int, const char *>> spots;
} kTables[] = {
    // clang-format off
    {1024, getStringRes1024, 105, {{1, "Body"}, {54, "Neck 1"}, {103, "InnerMatSphere"}, {104, "outerMatSphere"},
                                   {105, "nullMatSphere"}}},
    {1025, getStringRes1025, 18, {{1, "Main Camera"}, {13, "LHand Camera"}, {18, "Shadow Cam Lite 4"}}},
    {1026, getStringRes1026, 10, {{1, "Ball"}, {9, "GROUND"}, {10, "UNIVERSE"}}},
    {1027, getStringRes1027, 3, {{1, "Light 1"}, {3, "Light 3"}}},
    {1028, getStringRes1028, 53, {{1, "Taper"}, {34, "yTranB"}, {35, "yTranB"}, {51, "Curve"}, {52, "curve"},
                                  {53, "Up-Down"}}},
    {1029, getStringRes1029, 60, {{1, "No Bump"}, {16, "ground Default Texture"}, {45, "raptor texture"},
                                  {60, "snakelo"}}},
    {1037, getStringRes1037, 20, {{1, "Relaxed"}, {16, "Pont"}, {20, "OK"}}},
    {1052, getStringRes1052, 42, {{1, " "}, {9, ":Runtime:Geometries:props:ball.obj"}, {41, " "},
                                  {42, ":Runtime:Geometries:manikin:manikin.obj"}}},
    // clang-format on
};

TEST(StockStrings, SpotChecksThroughBothLookupsWithoutTraces) {
    g_traces.clear();
    qInstallMessageHandler(collectTrace);
    for (const auto &t : kTables) {
        for (const auto &[index, text] : t.spots)
            EXPECT_EQ(getStringRes(t.id, index) + "|" + t.lookup(index), QString(text) + "|" + text) << t.id;
        for (int i = 1; i <= t.size; ++i)
            EXPECT_FALSE(t.lookup(i).isEmpty()) << t.id << "," << i;
    }
    qInstallMessageHandler(nullptr);
    EXPECT_TRUE(g_traces.isEmpty());
}

TEST(StockStrings, OutsideATableIsEmptyWithATrace) {
    qInstallMessageHandler(collectTrace);
    for (const auto &t : kTables) {
        const QString trace =
            QString("Invalid resource ID passed to OvPZ3Importer::getStringRes%1()").arg(t.id);
        for (int index : {0, t.size + 1, -1, INT_MIN, INT_MAX}) {
            g_traces.clear();
            EXPECT_TRUE(getStringRes(t.id, index).isEmpty() && t.lookup(index).isEmpty())
                << t.id << "," << index;
            EXPECT_EQ(g_traces, QStringList({trace, trace})) << t.id << "," << index;
        }
    }
    for (int id : {1030, 1023, 1036, 1038, 1051, 1053, 0, -1024}) {
        g_traces.clear();
        EXPECT_TRUE(getStringRes(id, 1).isEmpty()) << id;
        EXPECT_EQ(g_traces, QStringList{"Invalid resource ID passed to OvPZ3Importer::getStringRes()"});
    }
    qInstallMessageHandler(nullptr);
}

} // namespace
