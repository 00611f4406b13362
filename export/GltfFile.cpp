#include "GltfFile.h"

#include <QFile>
#include <algorithm>
#include <ostream>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Passes the JSON text tinygltf writes on to `file`, with each of `edits` (a text that must occur
// exactly once, and what replaces it) made. The first `skip` bytes (a .glb's header) are left out;
// the text comes in one piece, and what follows it is dropped when it is a .glb chunk's padding of
// spaces, else passed on.
class JsonSink : public std::streambuf {
public:
    using Edits = std::vector<std::pair<std::string, std::string>>;
    JsonSink(QFile &file, size_t skip, bool padded, Edits edits)
        : m_file(file), m_skip(skip), m_padded(padded), m_edits(std::move(edits)) {}
    // Bytes of JSON written; 0 when the text was not as expected or could not be written.
    size_t written() const { return m_ok ? m_written : 0; }

protected:
    std::streamsize xsputn(const char *s, std::streamsize n) override {
        const size_t skip = std::min(m_skip, size_t(n));
        m_skip -= skip;
        const std::string_view piece(s + skip, size_t(n) - skip);
        if (piece.empty())
            return n;
        if (m_written == 0)
            writeText(piece);
        else if (m_padded)
            m_ok = m_ok && piece.find_first_not_of(' ') == std::string_view::npos;
        else
            m_ok = m_ok && put(piece);
        return n;
    }
    int_type overflow(int_type c) override {
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            const char one = traits_type::to_char_type(c);
            xsputn(&one, 1);
        }
        return traits_type::not_eof(c);
    }

private:
    void writeText(std::string_view text) {
        std::vector<std::pair<size_t, const std::pair<std::string, std::string> *>> at;
        for (const auto &edit : m_edits) {
            const size_t found = text.find(edit.first);
            if (found == std::string_view::npos || text.find(edit.first, found + 1) != std::string_view::npos)
                return;
            at.push_back({found, &edit});
        }
        std::sort(at.begin(), at.end());
        size_t done = 0;
        for (const auto &[where, edit] : at) {
            if (!put(text.substr(done, where - done)) || !put(edit->second))
                return;
            done = where + edit->first.size();
        }
        m_ok = put(text.substr(done)) && text.back() != ' ';
    }
    bool put(std::string_view bytes) {
        m_written += bytes.size();
        return m_file.write(bytes.data(), qint64(bytes.size())) == qint64(bytes.size());
    }

    QFile &m_file;
    size_t m_skip;
    bool m_padded;
    Edits m_edits;
    size_t m_written = 0;
    bool m_ok = false;
};

void appendWord(std::string &out, uint32_t word) {
    for (int i = 0; i < 4; ++i)
        out.push_back(char((word >> (8 * i)) & 0xFF)); // little-endian
}

bool put(QFile &f, const void *data, size_t bytes) {
    return f.write(static_cast<const char *>(data), qint64(bytes)) == qint64(bytes);
}

// Whether JSON writes `text` as it is between quotes.
bool plainJson(const std::string &text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return c == '"' || c == '\\' || (unsigned char)(c) < 0x20; });
}

} // namespace

bool writeGlbFile(tinygltf::Model &model, const QString &path) {
    std::vector<unsigned char> bin;
    bin.swap(model.buffers[0].data);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || !f.seek(20)) // the header comes last
        return false;
    // What tinygltf writes: its header and the JSON chunk's (20 bytes), the text, the padding.
    JsonSink sink(f, 20, true,
                  {{"\"buffers\":[{\"byteLength\":0,",
                    "\"buffers\":[{\"byteLength\":" + std::to_string(bin.size()) + ","}});
    std::ostream glb(&sink);
    tinygltf::TinyGLTF writer;
    writer.SetImageWriter(nullptr, nullptr); // images are in the buffer
    if (!writer.WriteGltfSceneToStream(&model, glb, false, true) || sink.written() == 0)
        return false;
    const size_t json = (sink.written() + 3) & ~size_t(3);
    const size_t binPadded = (bin.size() + 3) & ~size_t(3);
    const uint64_t total = 12 + 8 + json + (bin.empty() ? 0 : 8 + binPadded);
    if (total > 0xFFFFFFFFu)
        return false;
    std::string tail(json - sink.written(), ' ');
    if (!bin.empty()) {
        appendWord(tail, uint32_t(binPadded));
        appendWord(tail, 0x004E4942); // BIN
    }
    std::string head = "glTF";
    appendWord(head, 2);
    appendWord(head, uint32_t(total));
    appendWord(head, uint32_t(json));
    appendWord(head, 0x4E4F534A); // JSON
    const char zeros[4] = {0, 0, 0, 0};
    return put(f, tail.data(), tail.size()) && put(f, bin.data(), bin.size()) &&
           put(f, zeros, binPadded - bin.size()) && f.seek(0) && put(f, head.data(), head.size()) &&
           f.flush();
}

bool writeGltfFiles(tinygltf::Model &model, const QString &path, const QString &binFile,
                    const std::string &binUri) {
    tinygltf::TinyGLTF writer;
    writer.SetImageWriter(nullptr, nullptr); // made images are already written
    const std::string &name = model.buffers[0].name;
    if (!plainJson(binUri) || !plainJson(name)) {
        model.buffers[0].uri = binUri;
        return writer.WriteGltfSceneToFile(&model, QFile::encodeName(path).toStdString(), false, false, true,
                                           false);
    }
    const size_t binBytes = model.buffers[0].data.size();
    {
        QFile bin(binFile);
        if (!bin.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            !put(bin, model.buffers[0].data.data(), binBytes) || !bin.flush())
            return false;
    }
    std::vector<unsigned char>().swap(model.buffers[0].data);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    // An empty buffer is written inline, as an empty data URI.
    auto fields = [&name](const std::string &length, const std::string &uri) {
        const std::string indent = ",\n      ";
        return "\"byteLength\": " + length + (name.empty() ? "" : indent + "\"name\": \"" + name + "\"") +
               indent + "\"uri\": \"" + uri + "\"";
    };
    JsonSink sink(
        f, 0, false,
        {{fields("0", "data:application/octet-stream;base64,"), fields(std::to_string(binBytes), binUri)}});
    std::ostream text(&sink);
    return writer.WriteGltfSceneToStream(&model, text, true, false) && sink.written() > 0 && f.flush();
}
