// The chunked line reader: lines must come out the same whatever the chunk size, compressed or not,
// and the token layout must let a caller walk from one token across its NUL into the next.
#include "support/TestSupport.h"

#include <OvTextInputFile.h>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Tokens = std::vector<std::string>;

bool blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f' || c == 0;
}

// Lines of `text` split at `eol`; a last line without an end-of-line still counts.
std::vector<std::string> splitLines(const std::string &text, char eol = '\n') {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find(eol, start);
        if (end == std::string::npos)
            end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

Tokens splitTokens(const std::string &line) {
    Tokens tokens;
    for (size_t i = 0; i < line.size() && tokens.size() < size_t(OvTextInputFile::MaxTokens);) {
        while (i < line.size() && blank(line[i]))
            ++i;
        size_t j = i;
        while (j < line.size() && !blank(line[j]))
            ++j;
        if (j > i)
            tokens.push_back(line.substr(i, j - i));
        i = j;
    }
    return tokens;
}

// Every byte from the first token to the end of the last one is the original byte, except one NUL
// right after each token, written over a blank.
void expectLayout(char **argv, int argc, const std::string &original, int lineIndex) {
    if (argc == 0)
        return;
    size_t offset = 0;
    while (offset < original.size() && blank(original[offset]))
        ++offset;
    const char *base = argv[0];
    const char *end = argv[argc - 1] + std::strlen(argv[argc - 1]);
    int next = 0; // token whose terminator comes next
    for (const char *q = base; q < end; ++q) {
        size_t k = offset + size_t(q - base);
        ASSERT_LT(k, original.size()) << "line " << lineIndex;
        if (next < argc - 1 && q == argv[next] + std::strlen(argv[next])) {
            EXPECT_TRUE(blank(original[k])) << "line " << lineIndex << ": NUL not over a blank at " << k;
            ++next;
        } else {
            ASSERT_EQ(*q, original[k]) << "line " << lineIndex << " byte " << k;
        }
    }
    EXPECT_EQ(next, argc - 1) << "line " << lineIndex << ": tokens not in line order";
}

struct ReadResult {
    std::vector<Tokens> lines;
    bool opened = false;
    bool error = false;
    int truncated = 0;
};

// Reads the whole file; with `originals` each line's token layout is checked against its text.
ReadResult readAll(const QString &path, bool compressed, size_t chunk,
                   const std::vector<std::string> *originals = nullptr) {
    ReadResult r;
    OvTextInputFile file(path, compressed, true);
    if (chunk)
        file.setChunkSize(chunk);
    r.opened = file.open();
    if (!r.opened)
        return r;
    // Room past the 256 entries to catch a reader that writes beyond them.
    std::vector<char *> argv(OvTextInputFile::MaxTokens + 4, nullptr);
    char sentinel = 0;
    for (size_t i = OvTextInputFile::MaxTokens; i < argv.size(); ++i)
        argv[i] = &sentinel;
    int argc = -1;
    while (!file.atEnd()) {
        if (!file.getLine(argv.data(), argc))
            break;
        Tokens tokens;
        for (int i = 0; i < argc; ++i)
            tokens.emplace_back(argv[size_t(i)]);
        if (originals && r.lines.size() < originals->size())
            expectLayout(argv.data(), argc, (*originals)[r.lines.size()], int(r.lines.size()));
        r.lines.push_back(tokens);
        if (r.lines.size() > 100000)
            break;
    }
    for (size_t i = OvTextInputFile::MaxTokens; i < argv.size(); ++i)
        EXPECT_EQ(argv[i], &sentinel) << "token array written past its end";
    EXPECT_FALSE(file.getLine(argv.data(), argc));
    EXPECT_EQ(argc, 0);
    r.error = file.hasError();
    r.truncated = file.truncatedLines();
    return r;
}

std::vector<Tokens> expectedLines(const std::string &text, char eol = '\n') {
    std::vector<Tokens> lines;
    for (const std::string &line : splitLines(text, eol))
        lines.push_back(splitTokens(line));
    return lines;
}

QByteArray bytes(const std::string &s) {
    return QByteArray(s.data(), qsizetype(s.size()));
}

class TextInput : public ::testing::Test {
protected:
    QTemporaryDir dir;
};

std::string mixedText() {
    std::string text = "v 1.0  2.0\t3.0\r\n"
                       "\n"
                       "   \t  \n"
                       "vt\t0.5 0.25\n";
    text += std::string("f 1/2/3 4//5 -1\0 7\n", 20); // a NUL inside the line is a blank
    text += "g " + std::string(40, 'x') + "  tail\n";
    text += "# comment with  two  blanks\r\n";
    text += std::string("\0\0\n", 3);
    text += "\f\v usemtl   skin\n";
    text += "last line  without newline";
    return text;
}

TEST_F(TextInput, EveryChunkSizeGivesTheSameLinesAndLayout) {
    const std::string text = mixedText();
    const std::vector<std::string> originals = splitLines(text);
    const std::vector<Tokens> expected = expectedLines(text);
    ASSERT_EQ(expected.size(), 10u);
    ASSERT_EQ(expected[4], (Tokens{"f", "1/2/3", "4//5", "-1", "7"}));
    QString plain = writeFile(dir, "mixed.txt", bytes(text));
    QString packed = writeGzipFile(dir, "mixed.gz", bytes(text));
    for (size_t chunk : {size_t(1), size_t(2), size_t(3), size_t(4), size_t(5), size_t(6), size_t(7),
                         size_t(64), size_t(0)}) {
        SCOPED_TRACE(testing::Message() << "chunk " << chunk);
        ReadResult r = readAll(plain, false, chunk, &originals);
        ASSERT_TRUE(r.opened);
        EXPECT_EQ(r.lines, expected);
        EXPECT_FALSE(r.error);
        ReadResult z = readAll(packed, true, chunk, &originals);
        ASSERT_TRUE(z.opened);
        EXPECT_EQ(z.lines, expected);
        EXPECT_FALSE(z.error);
    }
}

TEST_F(TextInput, LineEndings) {
    struct Case {
        const char *name;
        std::string text;
        std::vector<Tokens> lines;
    } cases[] = {
        {"cr", "v 1 2\rf 1\r\rg a b\r", {{"v", "1", "2"}, {"f", "1"}, {}, {"g", "a", "b"}}},
        {"cr-last", "v 1\rg a", {{"v", "1"}, {"g", "a"}}},
        {"crlf", "v 1 2\r\nf 1\r\n\r\ng\r\n", {{"v", "1", "2"}, {"f", "1"}, {}, {"g"}}},
        {"lf-last", "a\nb c", {{"a"}, {"b", "c"}}},
        {"one-token", "x", {{"x"}}},
        {"blank-lines", "\n\n", {{}, {}}},
    };
    for (const Case &c : cases) {
        QString path = writeFile(dir, QString::fromLatin1(c.name), bytes(c.text));
        for (size_t chunk : {size_t(1), size_t(2), size_t(3), size_t(5), size_t(0)}) {
            ReadResult r = readAll(path, false, chunk);
            EXPECT_EQ(r.lines, c.lines) << c.name << ", chunk " << chunk;
        }
    }
}

TEST_F(TextInput, EmptyMissingAndFolderInputs) {
    ReadResult empty = readAll(writeFile(dir, "empty", QByteArray()), false, 0);
    EXPECT_TRUE(empty.opened);
    EXPECT_TRUE(empty.lines.empty());
    EXPECT_FALSE(readAll(dir.filePath("missing"), false, 0).opened);
    EXPECT_FALSE(readAll(dir.path(), false, 0).opened);
}

TEST_F(TextInput, ExtraTokensAreDroppedAndTheNextLineIsIntact) {
    std::string line = "f";
    for (int i = 1; i < 300; ++i)
        line += " " + std::to_string(i);
    QString path = writeFile(dir, "many", bytes(line + "\nnext 1\n"));
    for (size_t chunk : {size_t(3), size_t(0)}) {
        ReadResult r = readAll(path, false, chunk);
        ASSERT_EQ(r.lines.size(), 2u);
        ASSERT_EQ(r.lines[0].size(), size_t(OvTextInputFile::MaxTokens));
        EXPECT_EQ(r.lines[0][0], "f");
        EXPECT_EQ(r.lines[0][255], "255");
        EXPECT_EQ(r.lines[1], (Tokens{"next", "1"}));
    }
}

TEST_F(TextInput, LongLines) {
    // A 1 MB line is read whole, by tiny chunks as well as by the default ones.
    std::string big = "g";
    for (int i = 0; i < 200; ++i)
        big += " " + std::string(5000, char('a' + i % 26)) + std::to_string(i);
    ASSERT_GT(big.size(), 1000000u);
    QString path = writeFile(dir, "big", bytes(big + "\nv 1 2 3\n"));
    for (size_t chunk : {size_t(7), size_t(0)}) {
        ReadResult r = readAll(path, false, chunk);
        ASSERT_EQ(r.lines.size(), 2u);
        EXPECT_EQ(r.lines[0], splitTokens(big));
        EXPECT_EQ(r.lines[1], (Tokens{"v", "1", "2", "3"}));
        EXPECT_EQ(r.truncated, 0);
    }

    // Past MaxLineLength the line is cut there and its rest skipped, then reading goes on.
    const size_t max = OvTextInputFile::MaxLineLength;
    std::string huge = "g " + std::string(max - 7, 'a') + " bcdefgh" + std::string(1000, 'z') + " more";
    QString hugePath = writeFile(dir, "huge", bytes(huge + "\nv 1\n"));
    ReadResult r = readAll(hugePath, false, 0);
    ASSERT_EQ(r.lines.size(), 2u);
    ASSERT_EQ(r.lines[0].size(), 3u);
    EXPECT_EQ(r.lines[0][1].size(), max - 7);
    EXPECT_EQ(r.lines[0][2], "bcde"); // the first max bytes end four characters into this token
    EXPECT_EQ(r.lines[1], (Tokens{"v", "1"}));
    EXPECT_EQ(r.truncated, 1);
}

TEST_F(TextInput, QuotedTokensKeepTheirBlanks) {
    QString path = writeFile(dir, "quoted", "usemtl \"my skin\" x\nmtllib \"open end\n");
    for (size_t chunk : {size_t(2), size_t(0)}) {
        ReadResult r = readAll(path, false, chunk);
        ASSERT_EQ(r.lines.size(), 2u);
        EXPECT_EQ(r.lines[0], (Tokens{"usemtl", "my skin", "x"}));
        EXPECT_EQ(r.lines[1], (Tokens{"mtllib", "open end"}));
    }
}

TEST_F(TextInput, CompressedInputFailures) {
    const std::string text = "v 1 2 3\n" + std::string(20000, 'x') + "\nv 4 5 6\n";
    // Plain text under a compressed name is refused rather than read as it is.
    QString plain = writeFile(dir, "plain.obz", bytes(text));
    EXPECT_FALSE(readAll(plain, true, 0).opened);
    EXPECT_FALSE(readAll(plain, true, 1).opened);

    const QByteArray gz = gzipBytes(bytes(text));
    ReadResult whole = readAll(writeFile(dir, "whole.obz", gz), true, 0);
    EXPECT_EQ(whole.lines, expectedLines(text));
    EXPECT_FALSE(whole.error);

    // A file cut short, inside the data and inside the trailer, must say so.
    for (int keep : {int(gz.size()) / 2, int(gz.size()) - 4}) {
        for (size_t chunk : {size_t(3), size_t(0)}) {
            ReadResult cut = readAll(writeFile(dir, "cut.obz", gz.left(keep)), true, chunk);
            EXPECT_TRUE(cut.opened);
            EXPECT_TRUE(cut.error) << "kept " << keep << " of " << gz.size() << " bytes, chunk " << chunk;
        }
    }
    // Damaged data in the middle.
    QByteArray damaged = gz;
    for (int i = 20; i < 40; ++i)
        damaged[i] = char(damaged[i] ^ 0x5a);
    EXPECT_TRUE(readAll(writeFile(dir, "damaged.obz", damaged), true, 0).error);
}

} // namespace
