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

using Lines = std::vector<std::string>;

// `text` as the reader should give it: a string per line with every blank (NUL among them) turned
// into a space and none at either end.
Lines split(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\0' || std::strchr("\t\r\v\f", c); }, ' ');
    Lines lines;
    for (size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        const size_t first = std::min(text.find_first_not_of(' ', start), end);
        lines.push_back(text.substr(first, end - first));
        lines.back().erase(lines.back().find_last_not_of(' ') + 1);
    }
    return lines;
}

struct Read {
    Lines lines; // each line's tokens put back where they stood, the gaps filled with spaces
    bool opened = false, error = false;
    int truncated = 0;
};

Read readAll(const QString &path, bool compressed, size_t chunk) {
    Read r;
    OvTextInputFile file(path, compressed, true);
    if (chunk)
        file.setChunkSize(chunk);
    if (!(r.opened = file.open()))
        return r;
    char sentinel = 0; // in the entries past the 256, to catch a reader that writes beyond them
    std::vector<char *> argv(OvTextInputFile::MaxTokens + 4, &sentinel);
    int argc = -1;
    while (!file.atEnd() && r.lines.size() < 100000 && file.getLine(argv.data(), argc)) {
        std::string line;
        for (int i = 0; i < argc; ++i) {
            line.resize(size_t(argv[size_t(i)] - argv[0]), ' ');
            line += argv[size_t(i)];
        }
        r.lines.push_back(line);
    }
    EXPECT_EQ(std::count(argv.begin() + OvTextInputFile::MaxTokens, argv.end(), &sentinel), 4);
    EXPECT_FALSE(file.getLine(argv.data(), argc));
    EXPECT_EQ(argc, 0);
    r.error = file.hasError();
    r.truncated = file.truncatedLines();
    return r;
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
    std::string many = "f", kept;
    for (int i = 1; i < 300; ++i) {
        many += " " + std::to_string(i); // past the 256 tokens: the rest is dropped
        kept = i == 255 ? many : kept;
    }
    // clang-format off
    const std::pair<std::string, Lines> cases[] = { // no lines given: split(text)
        {mixed, {}}, {"", {}}, {"x", {}}, {"\n\n", {}}, {many + "\nnext  1\n", {kept, "next  1"}},
        {"v 1 2\rf 1\r\rg a b\r", {"v 1 2", "f 1", "", "g a b"}}, {"v 1\rg a", {"v 1", "g a"}}, // CR ends
        {"usemtl \"my skin\" x\nmtllib \"open end\n", {"usemtl  my skin  x", "mtllib  open end"}}};
    // clang-format on
    for (const auto &[text, lines] : cases) {
        const QString plain = writeFile(dir, "plain", QByteArray::fromStdString(text));
        const QString packed = writeGzipFile(dir, "packed", QByteArray::fromStdString(text));
        for (size_t chunk : {1, 2, 3, 4, 5, 7, 64, 0}) {
            SCOPED_TRACE(testing::Message() << "chunk " << chunk << ", text " << text.substr(0, 20));
            for (const Read &r : {readAll(plain, false, chunk), readAll(packed, true, chunk)}) {
                ASSERT_TRUE(r.opened);
                EXPECT_FALSE(r.error);
                EXPECT_EQ(r.lines, lines.empty() ? split(text) : lines);
            }
        }
    }
}

// Past MaxLineLength the line is cut there and its rest skipped, then reading goes on.
TEST_F(TextInput, LinesLongerThanTheLimit) {
    const size_t max = OvTextInputFile::MaxLineLength;
    const std::string head = "g " + std::string(max - 7, 'a') + " bcde";
    const Read r =
        readAll(writeFile(dir, "huge",
                          QByteArray::fromStdString(head + "fgh" + std::string(1000, 'z') + " more\nv 1\n")),
                false, 0);
    EXPECT_TRUE(r.lines == Lines({head, "v 1"})); // the first max bytes end four characters into a token
    EXPECT_EQ(r.truncated, 1);
}

TEST_F(TextInput, InputsThatDoNotOpenOrFailHalfway) {
    EXPECT_FALSE(readAll(dir.filePath("missing"), false, 0).opened);
    EXPECT_FALSE(readAll(dir.path(), false, 0).opened);
    const std::string text = "v 1 2 3\n" + std::string(20000, 'x') + "\nv 4 5 6\n";
    // Plain text under a compressed name is refused rather than read as it is.
    const QString plain = writeFile(dir, "plain.obz", QByteArray::fromStdString(text));
    EXPECT_FALSE(readAll(plain, true, 0).opened);
    EXPECT_FALSE(readAll(plain, true, 1).opened);
    // A file cut short, inside the data and inside the trailer, must say so; so must damaged data.
    const QByteArray gz = gzipBytes(QByteArray::fromStdString(text));
    QByteArray damaged = gz;
    for (int i = 20; i < 40; ++i)
        damaged[i] = char(damaged[i] ^ 0x5a);
    for (const QByteArray &bad : {gz.left(gz.size() / 2), gz.left(gz.size() - 4), damaged}) {
        for (size_t chunk : {3, 0}) {
            const Read r = readAll(writeFile(dir, "bad.obz", bad), true, chunk);
            EXPECT_TRUE(r.opened);
            EXPECT_TRUE(r.error) << bad.size() << " of " << gz.size() << " bytes, chunk " << chunk;
        }
    }
}

} // namespace
