#pragma once
// Sound of a scene: an audio clip read from a WAV or AIFF file, and the multimedia manager that
// imports clips. Only the file's header is read: the clip knows its format and length, the samples
// stay in the file for the host's player.

#include <QString>
#include <QtGlobal>

class QIODevice;

// What a sound file's header says.
struct OvAudioFormat {
    QString container;       // "WAV" or "AIFF"
    int channels = 0;        // interleaved channels per sample frame
    double sampleRate = 0;   // sample frames per second
    int bitsPerSample = 0;   // per channel; 0 when the encoding does not say
    qint64 sampleFrames = 0; // in the file

    // Length in scene time units (OvScene::TimeUnitsPerSecond a second), rounded to the nearest
    // unit and capped at the largest int.
    int lengthInTimeUnits() const;
};

// Reads the header of a WAV (RIFF/WAVE) or AIFF (FORM/AIFF or AIFC) stream. False, with the reason
// in `why`, for anything else or a header that does not hold together.
bool readAudioHeader(QIODevice &in, OvAudioFormat &format, QString &why);

class OvAudioClip {
public:
    virtual ~OvAudioClip() = default;

    // The file the clip plays; empty until a clip is imported into it.
    const QString &getPath() const { return m_path; }
    const OvAudioFormat &getFormat() const { return m_format; }
    // Length in scene time units.
    int getLength() const { return m_length; }

    void setSound(const QString &path, const OvAudioFormat &format) {
        m_path = path;
        m_format = format;
        m_length = format.lengthInTimeUnits();
    }

private:
    QString m_path;
    OvAudioFormat m_format;
    int m_length = 0;
};

// The clip class the host plays on the desktop.
class OvWinAudioClip : public OvAudioClip {
public:
    OvWinAudioClip() = default;
};

class OvMultiMediaMgr {
public:
    enum ImportResult { ImportOk = 0, ImportNoFile = 1, ImportNotReadable = 2, ImportNotAudio = 3 };

    // Reads the sound file's header into `clip`; 0 on success. A refused file leaves the clip as it
    // was and says why in the host log, naming the file. `options` is the host's import flags word;
    // -1 asks for the defaults, and no flag changes how the header is read.
    int importAudioClip(const QString &path, OvAudioClip *clip, int options = -1);
    // Why the last import was refused; empty after a success.
    const QString &errorString() const { return m_error; }
    // Clips imported so far.
    int numImports() const { return m_imports; }

private:
    QString m_error;
    int m_imports = 0;
};
