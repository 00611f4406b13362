// Rejoining the rest of a line and stock-string references, on token arrays from the real reader.
#include "support/TestSupport.h"

#include <OvTextInputFile.h>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <poser/Tokens.h>

namespace {

// Reads the first line of `text` and hands its tokens to `check`.
template <class F> void withLine(const QByteArray &text, F &&check) {
    QTemporaryDir dir;
    OvTextInputFile file(writeFile(dir, "line.txt", text), false, true);
    ASSERT_TRUE(file.open());
    std::unique_ptr<char *[]> argv(new char *[OvTextInputFile::MaxTokens]);
    int argc = 0;
    ASSERT_TRUE(file.getLine(argv.get(), argc));
    check(argv.get(), argc);
}

TEST(PoserTokens, RestOfLineKeepsTheBlanksBetweenTokens) {
    // Each token end (here a tab) reads as one blank; other blanks stay as they were.
    withLine("name  Left\tHand   Glove \n", [](char **argv, int argc) {
        ASSERT_EQ(argc, 4);
        EXPECT_EQ(poser::tokenText(argv, 1, argc), QStringLiteral("Left Hand   Glove"));
        EXPECT_EQ(poser::tokenText(argv, 3, argc), QStringLiteral("Glove"));
        EXPECT_EQ(poser::tokenText(argv, 4, argc), QString());
        EXPECT_EQ(poser::tokenText(argv, 0, argc), QStringLiteral("name  Left Hand   Glove"));
    });
    withLine("readScript :Runtime:libraries:My Poses:walk.pz2", [](char **argv, int argc) {
        EXPECT_EQ(poser::tokenText(argv, 1, argc), QStringLiteral(":Runtime:libraries:My Poses:walk.pz2"));
    });
    // A NUL byte between tokens reads as a blank instead of ending the text.
    withLine(QByteArray("a \0 b c\n", 8), [](char **argv, int argc) {
        ASSERT_EQ(argc, 3);
        EXPECT_EQ(poser::tokenText(argv, 0, argc), QStringLiteral("a   b c"));
    });
    withLine("name caf\xc3\xa9 \xe9t\xe9\n", [](char **argv, int argc) {
        EXPECT_EQ(poser::tokenText(argv, 1, 2), QString::fromUtf8("caf\xc3\xa9"));
        EXPECT_EQ(poser::tokenText(argv, 2, argc), QString::fromLatin1("\xe9t\xe9")) << "not UTF-8: Latin-1";
    });
}

TEST(PoserTokens, StockStringReferences) {
    withLine("name GetStringRes(1024,2)\n", [](char **argv, int argc) {
        EXPECT_EQ(poser::tokenText(argv, 1, argc), QStringLiteral("Head"));
    });
    // The index may stand in the next token, and anything after the reference is ignored.
    withLine("name GetStringRes(1025, 5) trailing words\n", [](char **argv, int argc) {
        EXPECT_EQ(poser::tokenText(argv, 1, argc), QStringLiteral("Posing Camera"));
    });
    withLine("name GetStringRes(1052,1)\n", [](char **argv, int argc) {
        EXPECT_EQ(poser::tokenText(argv, 1, argc), QStringLiteral(" "));
    });
    // Unknown tables, bad indexes and references without two numbers give an empty name.
    for (const char *line : {"n GetStringRes(1030,1)\n", "n GetStringRes(1024,106)\n", "n GetStringRes(1024)\n",
                             "n GetStringRes\n", "n GetStringRes(99999999999999999999999999999999999,1)\n"})
        withLine(line, [line](char **argv, int argc) { EXPECT_EQ(poser::tokenText(argv, 1, argc), QString()) << line; });

    int table = 0, index = 0;
    const char ref[] = "GetStringRes(1029,60)";
    EXPECT_TRUE(poser::parseStringResRef(ref, ref + sizeof ref - 1, table, index));
    EXPECT_EQ(table, 1029);
    EXPECT_EQ(index, 60);
    EXPECT_FALSE(poser::parseStringResRef(ref, ref + 17, table, index)) << "the scan stops at the line end";
}

} // namespace
