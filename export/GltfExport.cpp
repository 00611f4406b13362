#include "GltfExport.h"

#include "GltfModel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <ostream>

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

// Keeps what tinygltf writes of a .glb without its header: the JSON chunk (its buffer is empty).
class JsonSink : public std::streambuf {
public:
    std::string text;

protected:
    std::streamsize xsputn(const char *s, std::streamsize n) override {
        const size_t skip = std::min(kHeaders - m_skipped, size_t(n));
        m_skipped += skip;
        text.append(s + skip, size_t(n) - skip);
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
    static constexpr size_t kHeaders = 20; // the file header, then the JSON chunk's length and type
    size_t m_skipped = 0;
};

// The JSON text tinygltf writes into a .glb for `model`, whose buffer holds `binBytes` bytes kept
// outside it: tinygltf takes the buffer's length from its data and copies the data to write it,
// so it serialises an empty buffer and the length is put in here. Empty on failure.
std::string glbJson(const tinygltf::Model &model, size_t binBytes) {
    JsonSink sink;
    std::ostream glb(&sink);
    tinygltf::TinyGLTF writer;
    writer.SetImageWriter(nullptr, nullptr); // images are in the buffer
    if (!writer.WriteGltfSceneToStream(&model, glb, false, true) || sink.text.empty())
        return std::string();
    std::string text = std::move(sink.text);
    text.erase(text.find_last_not_of(' ') + 1); // the chunk's padding
    static const std::string empty = "\"buffers\":[{\"byteLength\":0,";
    const size_t at = text.find(empty);
    if (at == std::string::npos || text.find(empty, at + 1) != std::string::npos)
        return std::string();
    text.replace(at, empty.size(), "\"buffers\":[{\"byteLength\":" + std::to_string(binBytes) + ",");
    return text;
}

void appendWord(std::string &out, uint32_t word) {
    for (int i = 0; i < 4; ++i)
        out.push_back(char((word >> (8 * i)) & 0xFF)); // little-endian
}

// A binary glTF: the header, the JSON chunk padded with spaces and the BIN chunk padded with
// zeros, the bytes written from where they are.
bool writeGlb(const QString &path, std::string json, const std::vector<unsigned char> &bin) {
    json.append((4 - json.size() % 4) % 4, ' ');
    const size_t binPadded = (bin.size() + 3) & ~size_t(3);
    const uint64_t total = 12 + 8 + json.size() + (bin.empty() ? 0 : 8 + binPadded);
    if (total > 0xFFFFFFFFu)
        return false;
    std::string head = "glTF";
    appendWord(head, 2);
    appendWord(head, uint32_t(total));
    appendWord(head, uint32_t(json.size()));
    appendWord(head, 0x4E4F534A); // JSON
    std::string binHead;
    appendWord(binHead, uint32_t(binPadded));
    appendWord(binHead, 0x004E4942); // BIN
    const char zeros[4] = {0, 0, 0, 0};
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    bool ok = f.write(head.data(), qint64(head.size())) == qint64(head.size()) &&
              f.write(json.data(), qint64(json.size())) == qint64(json.size());
    if (ok && !bin.empty())
        ok = f.write(binHead.data(), 8) == 8 &&
             f.write(reinterpret_cast<const char *>(bin.data()), qint64(bin.size())) == qint64(bin.size()) &&
             f.write(zeros, qint64(binPadded - bin.size())) == qint64(binPadded - bin.size());
    return ok && f.flush();
}

// The model as a .glb: its buffer's bytes are taken out of it while tinygltf writes the JSON.
bool writeBinary(tinygltf::Model &model, const QString &path) {
    std::vector<unsigned char> bin;
    bin.swap(model.buffers[0].data);
    std::string json = glbJson(model, bin.size());
    return !json.empty() && writeGlb(path, std::move(json), bin);
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
