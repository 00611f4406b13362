#include "GltfExport.h"

#include "GltfModel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <ostream>
#include <string_view>

namespace {

// Why `path` cannot be written, or empty.
QString unwritable(const QString &path) {
    const QFileInfo file(path);
    const QFileInfo dir(file.absolutePath());
    if (!dir.isDir())
        return QStringLiteral("cannot write %1: no folder %2").arg(path, dir.filePath());
    if (file.isDir())
        return QStringLiteral("cannot write %1: it is a folder").arg(path);
    if (file.exists() ? !file.isWritable() : !dir.isWritable())
        return QStringLiteral("cannot write %1: permission denied").arg(path);
    return QString();
}

void appendWord(std::string &out, uint32_t word) {
    for (int i = 0; i < 4; ++i)
        out.push_back(char((word >> (8 * i)) & 0xFF)); // little-endian
}

// Takes what tinygltf writes of a .glb for a model whose buffer's bytes are kept outside it, and
// writes its JSON text on to `file`: tinygltf takes the buffer's length from its data (and would
// copy the data to write it), so it is given an empty buffer and the length is put in here. Its
// header and the chunk's padding are left out; the text comes in one piece.
class JsonChunkSink : public std::streambuf {
public:
    JsonChunkSink(QFile &file, size_t binBytes)
        : m_file(file), m_length("\"buffers\":[{\"byteLength\":" + std::to_string(binBytes) + ",") {}
    // Bytes of JSON written; 0 when the text was not as expected or could not be written.
    size_t written() const { return m_ok ? m_written : 0; }

protected:
    std::streamsize xsputn(const char *s, std::streamsize n) override {
        const size_t skip = std::min(kHeaders - m_skipped, size_t(n));
        m_skipped += skip;
        const std::string_view piece(s + skip, size_t(n) - skip);
        if (piece.empty())
            return n;
        if (m_written > 0) // the padding
            m_ok = m_ok && piece.find_first_not_of(' ') == std::string_view::npos;
        else
            writeText(piece);
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
        static constexpr std::string_view empty = "\"buffers\":[{\"byteLength\":0,";
        const size_t at = text.find(empty);
        m_ok = at != std::string_view::npos && text.find(empty, at + 1) == std::string_view::npos &&
               text.back() != ' ' && put(text.substr(0, at)) && put(m_length) &&
               put(text.substr(at + empty.size()));
    }
    bool put(std::string_view bytes) {
        m_written += bytes.size();
        return m_file.write(bytes.data(), qint64(bytes.size())) == qint64(bytes.size());
    }

    static constexpr size_t kHeaders = 20; // the file header, then the JSON chunk's length and type
    QFile &m_file;
    const std::string m_length;
    size_t m_skipped = 0;
    size_t m_written = 0;
    bool m_ok = false;
};

// The model as a binary glTF: the header, the JSON chunk padded with spaces and the BIN chunk
// padded with zeros. The buffer's bytes are taken out of the model while tinygltf writes the JSON
// and written from where they are; the header, which counts the JSON, is written last.
bool writeBinary(tinygltf::Model &model, const QString &path) {
    std::vector<unsigned char> bin;
    bin.swap(model.buffers[0].data);
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || !f.seek(20))
        return false;
    JsonChunkSink sink(f, bin.size());
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
    const auto put = [&f](const void *data, size_t bytes) {
        return f.write(static_cast<const char *>(data), qint64(bytes)) == qint64(bytes);
    };
    return put(tail.data(), tail.size()) && put(bin.data(), bin.size()) &&
           put(zeros, binPadded - bin.size()) && f.seek(0) && put(head.data(), head.size()) && f.flush();
}

} // namespace

GltfExportResult exportGltf(const OvScene &scene, const QString &path, int time) {
    GltfExportResult result;
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool binary = suffix == QLatin1String("glb");
    if (!binary && suffix != QLatin1String("gltf")) {
        result.errors << QStringLiteral("%1: the file name must end in .glb or .gltf").arg(path);
        return result;
    }
    if (const QString why = unwritable(path); !why.isEmpty()) {
        result.errors << why;
        return result;
    }
    tinygltf::Model model;
    const ModelBuild build = buildModel(model, scene, time, path, binary);
    result.notes = build.notes;
    result.errors = build.errors;
    auto removeSideFiles = [&] {
        for (const QString &f : build.sideFiles)
            QFile::remove(f);
    };
    if (!build.errors.isEmpty()) {
        removeSideFiles();
        return result;
    }
    const QFileInfo out(path);
    const QString binFile =
        out.absolutePath() + QLatin1Char('/') + out.completeBaseName() + QStringLiteral(".bin");
    if (!binary) {
        if (const QString why = unwritable(binFile); !why.isEmpty()) {
            removeSideFiles();
            result.errors << why;
            return result;
        }
        model.buffers[0].uri = (out.completeBaseName() + QStringLiteral(".bin")).toStdString();
    }
    bool written = false;
    if (binary) {
        written = writeBinary(model, path);
    } else {
        tinygltf::TinyGLTF writer;
        writer.SetImageWriter(nullptr, nullptr); // made images are already written
        written = writer.WriteGltfSceneToFile(&model, QFile::encodeName(path).toStdString(), false, false,
                                              true, false);
    }
    if (!written) {
        QFile::remove(path);
        if (!binary)
            QFile::remove(binFile);
        removeSideFiles();
        result.errors << QStringLiteral("cannot write %1").arg(path);
        return result;
    }
    result.ok = true;
    return result;
}
