// The chunked line reader: lines must come out the same whatever the chunk size, compressed or not,
// and every token must stay where it stood in the line, so a caller can walk from one token across
// its NUL into the next.
#include "support/TestSupport.h"

#include <OvTextInputFile.h>
#include <QTemporaryDir>
#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Tokens = std::vector<std::string>;

// The tokens of each line and their offsets from the line's first token.
struct Lines {
    std::vector<Tokens> tokens;
    std::vector<std::vector<long>> offsets;
    bool opened = false, error = false;
    int truncated = 0;
};

// `text` split at '\n' and at blanks (NUL among them), as the reader should give it.
Lines split(const std::string &text) {
    Lines lines;
    const auto blank = [](char c) { return c == '\0' || std::strchr(" \t\r\n\v\f", c); };
    for (size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        Tokens tokens;
        std::vector<long> offsets;
        size_t first = start;
        for (size_t i = start, j = start; i < end && tokens.size() < OvTextInputFile::MaxTokens; i = j) {
            while (i < end && blank(text[i]))
                ++i;
            for (j = i; j < end && !blank(text[j]);)
                ++j;
            if (j > i) {
                first = tokens.empty() ? i : first;
                tokens.push_back(text.substr(i, j - i));
                offsets.push_back(long(i - first));
            }
        }
        lines.tokens.push_back(tokens);
        lines.offsets.push_back(offsets);
    }
    return lines;
}

Lines readAll(const QString &path, bool compressed, size_t chunk) {
    Lines r;
    OvTextInputFile file(path, compressed, true);
    if (chunk)
        file.setChunkSize(chunk);
    if (!(r.opened = file.open()))
        return r;
    char sentinel = 0; // in the entries past the 256, to catch a reader that writes beyond them
    std::vector<char *> argv(OvTextInputFile::MaxTokens + 4, &sentinel);
    int argc = -1;
    while (!file.atEnd() && r.tokens.size() < 100000 && file.getLine(argv.data(), argc)) {
        r.tokens.emplace_back(argv.begin(), argv.begin() + argc);
        r.offsets.emplace_back();
        for (int i = 0; i < argc; ++i)
            r.offsets.back().push_back(long(argv[size_t(i)] - argv[0]));
    }
    EXPECT_EQ(std::count(argv.begin() + OvTextInputFile::MaxTokens, argv.end(), &sentinel), 4);
    EXPECT_FALSE(file.getLine(argv.data(), argc));
    EXPECT_EQ(argc, 0);
    r.error = file.hasError();
    r.truncated = file.truncatedLines();
    return r;
}

QByteArray bytes(const std::string &s) {
    return QByteArray(s.data(), qsizetype(s.size()));
}

class TextInput : public ::testing::Test {
protected:
    QTemporaryDir dir;
};

TEST_F(TextInput, EveryChunkSizeGivesTheSameLinesPlainOrCompressed) {
    std::string mixed = "v 1.0  2.0\t3.0\r\n\n   \t  \nvt\t0.5 0.25\n";
    mixed += std::string("f 1/2/3 4//5 -1\0 7\n", 20); // a NUL inside the line is a blank
    mixed += "g " + std::string(40, 'x') + "  tail\n# two  blanks\r\n" + std::string("\0\0\n", 3);
    mixed += "\f\v usemtl   skin\nlast line  without newline";
    std::string many = "f";
    for (int i = 1; i < 300; ++i)
        many += " " + std::to_string(i); // past the 256 tokens: the rest is dropped
    // clang-format off
    const std::pair<std::string, std::vector<Tokens>> cases[] = { // no lines given: split(text)
        {mixed, {}}, {many + "\nnext 1\n", {}}, {"x", {}}, {"\n\n", {}},
        {"v 1 2\rf 1\r\rg a b\r", {{"v", "1", "2"}, {"f", "1"}, {}, {"g", "a", "b"}}}, // old Mac ends
        {"v 1\rg a", {{"v", "1"}, {"g", "a"}}},
        {"usemtl \"my skin\" x\nmtllib \"open end\n", {{"usemtl", "my skin", "x"}, {"mtllib", "open end"}}}};
    // clang-format on
    for (const auto &[text, lines] : cases) {
        const Lines expected = split(text);
        const QString plain = writeFile(dir, "plain", bytes(text));
        const QString packed = writeGzipFile(dir, "packed", bytes(text));
        for (size_t chunk : {1, 2, 3, 4, 5, 7, 64, 0}) {
            SCOPED_TRACE(testing::Message() << "chunk " << chunk << ", text " << text.substr(0, 20));
            for (const Lines &r : {readAll(plain, false, chunk), readAll(packed, true, chunk)}) {
                ASSERT_TRUE(r.opened);
                EXPECT_FALSE(r.error);
                EXPECT_EQ(r.tokens, lines.empty() ? expected.tokens : lines);
                if (lines.empty()) {
                    EXPECT_EQ(r.offsets, expected.offsets);
                }
            }
        }
    }
}

TEST_F(TextInput, EmptyMissingAndFolderInputs) {
    Lines empty = readAll(writeFile(dir, "empty", QByteArray()), false, 0);
    EXPECT_TRUE(empty.opened && empty.tokens.empty());
    EXPECT_FALSE(readAll(dir.filePath("missing"), false, 0).opened);
    EXPECT_FALSE(readAll(dir.path(), false, 0).opened);
}

TEST_F(TextInput, LongLines) {
    // A 1 MB line is read whole, by tiny chunks as well as by the default ones.
    std::string big = "g";
    for (int i = 0; i < 200; ++i)
        big += " " + std::string(5000, char('a' + i % 26)) + std::to_string(i);
    const QString path = writeFile(dir, "big", bytes(big + "\nv 1 2 3\n"));
    for (size_t chunk : {7, 0}) {
        Lines r = readAll(path, false, chunk);
        EXPECT_EQ(r.tokens, split(big + "\nv 1 2 3").tokens);
        EXPECT_EQ(r.truncated, 0);
    }
    // Past MaxLineLength the line is cut there and its rest skipped, then reading goes on.
    const size_t max = OvTextInputFile::MaxLineLength;
    std::string huge = "g " + std::string(max - 7, 'a') + " bcdefgh" + std::string(1000, 'z') + " more";
    Lines r = readAll(writeFile(dir, "huge", bytes(huge + "\nv 1\n")), false, 0);
    ASSERT_EQ(r.tokens.size(), 2u);
    ASSERT_EQ(r.tokens[0].size(), 3u);
    EXPECT_EQ(r.tokens[0][1].size(), max - 7);
    EXPECT_EQ(r.tokens[0][2], "bcde"); // the first max bytes end four characters into this token
    EXPECT_EQ(r.tokens[1], (Tokens{"v", "1"}));
    EXPECT_EQ(r.truncated, 1);
}

TEST_F(TextInput, CompressedInputFailures) {
    const std::string text = "v 1 2 3\n" + std::string(20000, 'x') + "\nv 4 5 6\n";
    // Plain text under a compressed name is refused rather than read as it is.
    const QString plain = writeFile(dir, "plain.obz", bytes(text));
    EXPECT_FALSE(readAll(plain, true, 0).opened);
    EXPECT_FALSE(readAll(plain, true, 1).opened);
    // A file cut short, inside the data and inside the trailer, must say so; so must damaged data.
    const QByteArray gz = gzipBytes(bytes(text));
    QByteArray damaged = gz;
    for (int i = 20; i < 40; ++i)
        damaged[i] = char(damaged[i] ^ 0x5a);
    for (const QByteArray &bad : {gz.left(gz.size() / 2), gz.left(gz.size() - 4), damaged}) {
        for (size_t chunk : {3, 0}) {
            Lines r = readAll(writeFile(dir, "bad.obz", bad), true, chunk);
            EXPECT_TRUE(r.opened);
            EXPECT_TRUE(r.error) << bad.size() << " of " << gz.size() << " bytes, chunk " << chunk;
        }
    }
}

} // namespace
