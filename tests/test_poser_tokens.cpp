// Rejoining the rest of a line and stock-string references, on token arrays from the real reader.
#include "support/TestSupport.h"

#include <OvTextInputFile.h>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <poser/Tokens.h>

namespace {

// The first line of `text`, tokenized by the host's reader, rejoined from token `first` on.
QString rest(const QByteArray &text, int first) {
    QTemporaryDir dir;
    OvTextInputFile file(writeFile(dir, "line.txt", text), false, true);
    std::unique_ptr<char *[]> argv(new char *[OvTextInputFile::MaxTokens]);
    int argc = 0;
    if (!file.open() || !file.getLine(argv.get(), argc))
        return QStringLiteral("<no line>");
    return poser::tokenText(argv.get(), first, argc);
}

TEST(PoserTokens, RestOfLineAndStockStrings) {
    const QByteArray glove = "name  Left\tHand   Glove \n";
    const struct {
        QByteArray line;
        int first;
        QString text;
    } cases[] = {
        // Each token end (here a tab) reads as one blank; other blanks stay as they were.
        {glove, 1, "Left Hand   Glove"},
        {glove, 0, "name  Left Hand   Glove"},
        {glove, 4, ""},
        {"readScript :Runtime:libraries:My Poses:walk.pz2", 1, ":Runtime:libraries:My Poses:walk.pz2"},
        {QByteArray("a \0 b c\n", 8), 0, "a   b c"}, // a NUL between tokens reads as a blank
        {"name caf\xc3\xa9\n", 1, QString::fromUtf8("caf\xc3\xa9")},
        {"name \xe9t\xe9\n", 1, QString::fromLatin1("\xe9t\xe9")}, // not UTF-8: Latin-1
        // A stock string: the index may stand in the next token; what follows the reference is ignored.
        {"name GetStringRes(1024,2)\n", 1, "Head"},
        {"name GetStringRes(1025, 5) trailing words\n", 1, "Posing Camera"},
        {"name GetStringRes(1052,1)\n", 1, " "},
        // Unknown tables, bad indexes and references without two numbers give an empty name.
        {"n GetStringRes(1030,1)\n", 1, ""},
        {"n GetStringRes(1024,106)\n", 1, ""},
        {"n GetStringRes(1024)\n5\n", 1, ""}, // the scan stops at the line end
        {"n GetStringRes\n", 1, ""},
        {"n GetStringRes(99999999999999999999999999999999999,1)\n", 1, ""},
    };
    for (const auto &c : cases)
        EXPECT_EQ(rest(c.line, c.first), c.text) << c.line.constData() << " from " << c.first;
}

} // namespace
