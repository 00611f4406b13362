#pragma once
// Binary morph files ("PZMD"): an index of (morph, actor, offset) records read once per file, and
// per morph a block of deltas read only when a morph asks for it. Every number is a big-endian
// 32-bit word; strings are a length byte and that many bytes of 8-bit text.
//
// The file is the only judge of its own sizes: every count and offset is checked against the
// file's size before anything is allocated or read, so a damaged file costs no more than its bytes.

#include <OvTypes.h>
#include <QFile>
#include <QString>
#include <QStringList>

class OvMorph;
class OvMorphDeltas;
class OvNode;

struct OvPz3BinMorphFileItem {
    QString nodeName;
    QString morphName;
    qint64 offset = 0;
};

class OvPz3BinMorphFile : public QFile, public OvRefCountedItem {
public:
    // Opens the file, reads its index and closes it again; a file that cannot be opened or does not
    // begin with "PZMD" has an empty index (problems() says why).
    explicit OvPz3BinMorphFile(const QString &path);
    ~OvPz3BinMorphFile() override;

    bool readIndex();
    // Adds to the morph's deltas the block of the first index record of this node and morph (names
    // compared exactly); false when there is none or the block cannot be read. `vertexLimit` as for
    // readDeltas.
    bool loadMorph(OvMorph *morph, const OvNode *node, int vertexLimit = -1);
    // Reads the block at `offset` into `deltas`; vertex numbers outside [0, vertexLimit) are dropped
    // and counted in droppedDeltas() (a negative limit checks only the sign).
    bool readDeltas(OvMorphDeltas *deltas, qint64 offset, int vertexLimit = -1);

    const OvTArray<OvPz3BinMorphFileItem> &index() const { return m_index; }
    // What was wrong with the file so far, oldest first; the caller reports and clears them.
    QStringList takeProblems();
    int droppedDeltas() const { return m_dropped; }
    // Bytes read from the file since it was opened first (index and blocks).
    qint64 bytesRead() const { return m_bytesRead; }

private:
    bool readInt(qint32 &value);
    bool readFloat(float &value);
    bool readString(QString &text);
    // Makes `n` bytes available at m_at; false (and nothing consumed) past the end of the file.
    bool fill(qint64 n);
    // Starts buffered reading at `offset` of the open file.
    bool seekTo(qint64 offset);
    void problem(const QString &text) { m_problems << text; }

    OvTArray<OvPz3BinMorphFileItem> m_index;
    qint64 m_size = 0;
    QByteArray m_buffer;
    qint64 m_at = 0;       // next unread byte of m_buffer
    qint64 m_pos = 0;      // file offset of m_buffer's first byte
    qint64 m_chunk = 4096; // bytes the next refill reads at least
    qint64 m_bytesRead = 0;
    int m_dropped = 0;
    QStringList m_problems;
};

// One binary morph file named in this import, by its resolved path; the reader is made when a
// morph first needs it and released with the record.
struct OvPz3BinMorph {
    explicit OvPz3BinMorph(const QString &resolved) : path(resolved) {}
    OvPz3BinMorph(const OvPz3BinMorph &) = delete;
    OvPz3BinMorph &operator=(const OvPz3BinMorph &) = delete;
    ~OvPz3BinMorph();

    bool loadMorph(OvMorph *morph, const OvNode *node, int vertexLimit = -1);
    // The reader, made (and its index read) on first use.
    OvPz3BinMorphFile *reader();

    QString path;
    OvPz3BinMorphFile *file = nullptr; // one reference held
};
