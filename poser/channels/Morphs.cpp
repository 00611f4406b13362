// Morph targets: the targetGeom channel, the delta keywords of its body, the deltas themselves
// (text lines or a block of a binary morph file) and where a new morph goes among the object's
// modifiers.
#include "../OvPZ3Importer.h"
#include "../Pz3InputFile.h"
#include "../scene/SceneHelpers.h"

#include <OvModifiers.h>
#include <OvMorph.h>
#include <OvSkeleton.h>
#include <QtDebug>
#include <algorithm>
#include <cstring>
#include <text/ShortScan.h>

int OvPZ3Importer::vertexLimitOf(const OvNode *node) {
    const OvObject *object = node ? node->getObject() : nullptr;
    if (!object || object->getNumShapes() == 0)
        return -1;
    const auto *mesh = dynamic_cast<const OvPolyMesh *>(object->getShape(0)->getGeometry());
    return mesh ? mesh->getNumVertices() : -1;
}

// Deltas are checked against the geometry as it is when they are read; geometry that reaches the
// actor afterwards (a later section, a pose) may have fewer vertices. What no longer fits is dropped.
void OvPZ3Importer::checkMorphVertices() {
    for (const auto &item : m_morphItems) {
        const int vertices = vertexLimitOf(item->node);
        if (vertices < 0 || !item->morph)
            continue;
        if (const int dropped = item->morph->getDeltas()->dropOutside(vertices))
            reportInfo(tr("Morph \"%1\" of %2: %3 delta(s) name vertices beyond the %4 of its geometry and "
                          "were dropped")
                           .arg(item->morph->getName(), item->node->getName())
                           .arg(dropped)
                           .arg(vertices));
    }
}

OvPz3MorphItem *OvPZ3Importer::findOrCreateMorph(OvNode *node, const QString &name) {
    if (OvPz3MorphItem *item = m_morphItemOf.value({node, name}))
        return item;
    OvObject *object = node ? node->getObject() : nullptr;
    if (!object)
        return nullptr;
    const int count = object->getNumModifiers();
    OvMorph *morph = nullptr;
    if (m_applyToSelection) {
        // A pose only dials morphs the object has.
        for (int i = 0; i < count && !morph; ++i)
            if (auto *m = dynamic_cast<OvMorph *>(object->getModifier(i)); m && m->getName() == name)
                morph = m;
        if (!morph)
            return nullptr;
    } else {
        // Morphs read before the object's joint parameters go ahead of its joint, later ones right
        // behind it.
        int position = 0;
        while (position < count && !dynamic_cast<OvPoserJoint *>(object->getModifier(position)))
            ++position;
        if (position == count)
            position = 0;
        position += m_jointParmsSeen ? 1 : 0;
        morph = new (std::nothrow) OvMorph(name);
        if (!morph)
            throw QString("Out of Memory");
        object->addModifier(morph, position);
    }
    m_morphItems.emplace_back(poser::make<OvPz3MorphItem>());
    OvPz3MorphItem *item = m_morphItems.back().get();
    item->morph = morph;
    item->node = node;
    m_morphItemOf.insert({node, name}, item);
    return item;
}

bool OvPZ3Importer::chanTargetGeom(char **argv, int argc) {
    flushDeltas();
    m_curMorph = nullptr;
    m_curChannelType = 0;
    if (argc < 2) {
        reportError(tr("No morph name was specified"));
        return false;
    }
    if (!m_curNode) {
        m_parseMode = ModeIgnore;
        return true;
    }
    const QString name = tokenText(argv, 1, argc);
    if (m_curNode->getObject()) {
        m_curMorph = findOrCreateMorph(m_curNode, name);
        m_curProperty = m_curMorph ? m_curMorph->morph->getValueChannel() : nullptr;
        m_parseMode = m_curMorph ? ModeTargetGeom : ModeIgnore;
        m_deltaVertexLimit = vertexLimitOf(m_curNode);
    } else if (qobject_cast<OvSkeleton *>(m_curNode)) {
        // A figure-level dial has no deltas: it is a value channel of the figure.
        m_curProperty = getValueProperty(m_curNode, name);
        m_parseMode = ModeChannel;
    } else {
        m_parseMode = ModeIgnore;
    }
    return true;
}

// ---- body keywords ----

bool OvPZ3Importer::morphIndexes(char **argv, int argc) {
    if (!m_curMorph)
        return true;
    m_curMorph->expectedDeltas = argc > 1 ? text::leadingInt(argv[1]) : 0;
    OvMorph *morph = m_curMorph->morph;
    auto *deltas = poser::make<OvMorphDeltas>();
    deltas->setName(morph->getValueChannel()->getLabel());
    morph->setDeltas(deltas);
    return true;
}

bool OvPZ3Importer::morphNumbDeltas(char **argv, int argc) {
    if (!m_curMorph)
        qDebug("NULL morph when parsing deltas");
    if (argc < 2) {
        reportError(tr("No delta count was given"));
        return false;
    }
    if (m_curMorph)
        m_curMorph->morph->getDeltas()->setVertCount(text::leadingInt(argv[1]));
    return true;
}

bool OvPZ3Importer::morphDeltas(char **, int) {
    m_parseMode = m_curMorph ? ModeDeltas : ModeIgnore;
    return true;
}

bool OvPZ3Importer::morphUseBinary(char **, int) {
    const int line = m_file ? m_file->m_lineNumber : 0;
    if (!m_curMorph) {
        qDebug("No current morph for useBinaryMorph on line %d.", line);
        return true;
    }
    if (!m_curBinMorphFile) {
        qDebug("No binary morph file for useBinaryMorph on line %d.", line);
        return true;
    }
    OvMorph *morph = m_curMorph->morph;
    OvPz3BinMorphFile *file = m_curBinMorphFile->reader();
    const bool loaded = file->loadMorph(morph, m_curNode, m_deltaVertexLimit);
    if (!loaded)
        qDebug("Failed to load deltas for morph on line %d.", line);
    // Damage the reader met is the user's to know about; the other morphs still load.
    for (const QString &problem : file->takeProblems())
        reportInfo(tr("Binary morph file: %1").arg(problem));
    if (loaded && file->droppedDeltas() > 0)
        reportInfo(tr("%1 delta(s) of morph %2 name vertices outside the %3 of %4 and were dropped")
                       .arg(file->droppedDeltas())
                       .arg(morph->getName())
                       .arg(m_deltaVertexLimit)
                       .arg(m_curNode->getName()));
    morph->getDeltas()->squeeze();
    return true;
}

// The record of a binary morph file, one per resolved path; the file is opened on first use.
OvPz3BinMorph *OvPZ3Importer::openBinMorphFile(const QString &name) {
    QString found;
    if (!findContentFile(name, found, true))
        return nullptr;
    for (const auto &record : m_binMorphs)
        if (record->path == found)
            return record.get();
    m_binMorphs.emplace_back(new OvPz3BinMorph(found));
    return m_binMorphs.back().get();
}

// ---- deltas ----

bool OvPZ3Importer::deltaVertexOk(int index) {
    if (deltaVertexInRange(index))
        return true;
    reportInfo(tr("Delta of vertex %1 dropped: %2 has %3 vertices")
                   .arg(index)
                   .arg(m_curNode ? m_curNode->getName() : QString())
                   .arg(m_deltaVertexLimit));
    return false;
}

// The numbers of a batch are finished side by side; the batch then joins the current morph.
void OvPZ3Importer::flushDeltas() {
    Pz3PendingDeltas &batch = m_pendingDeltas;
    if (batch.count == 0)
        return;
    float v[3 * Pz3PendingDeltas::Size];
    const int count = 3 * batch.count;
    text::finishFloats(batch.values, batch.divisions, count, v);
    for (int i = 0; i < count; ++i)
        v[i] *= POSER_UNIT_CM;
    if (m_curMorph) {
        OvMorphDeltas *deltas = m_curMorph->morph->getDeltas();
        // Room for the count the file gives, up to a bound a false count cannot make costly.
        if (deltas->getNumDeltas() == 0 && m_curMorph->expectedDeltas > batch.count)
            deltas->reserveMore(size_t(std::min(m_curMorph->expectedDeltas, 1 << 16)));
        deltas->appendDeltas(batch.index, v, size_t(batch.count));
    }
    batch.count = 0;
}

bool OvPZ3Importer::parseDeltaLine(char **argv, int argc) {
    if (argv[0][0] != 'd')
        return true;
    if (!m_curMorph) {
        qDebug("NULL morph when parsing deltas");
        return true;
    }
    if (argc < 5) {
        reportError(tr("Insufficient delta values supplied"));
        return false;
    }
    const int index = text::leadingInt(argv[1]);
    if (!deltaVertexOk(index))
        return true;
    flushDeltas(); // the deltas keep the order of their lines
    float v[3];
    parsePoserFloats(argv + 2, 3, v);
    m_curMorph->morph->getDeltas()->addDelta(
        index, OvVec3(v[0] * POSER_UNIT_CM, v[1] * POSER_UNIT_CM, v[2] * POSER_UNIT_CM), false);
    return true;
}

// Deltas are most of a figure's bytes: the usual "d 12 0.001 0 -0.002" is read straight from the
// line reader's buffer into a batch, with the same numbers the general path gives. The buffer's
// slack lets every eight-character load skip its bound check. Words after the numbers are not read
// on either path; a line long enough to hold more words than the tokenizer keeps is left to it,
// which reports the cut.
bool OvPZ3Importer::readDeltaLine(char *begin, char *end) {
    if (!m_curMorph || end - begin + 1 < text::kMinScanBytes || end - begin > 2 * OvTextInputFile::MaxTokens)
        return false;
    *end = '\0'; // the blank the scanners stop at
    const char *p = text::skipBlanks<true>(begin, end);
    if (end - p < 9 || p[0] != 'd' || !text::swar::blank(p[1]))
        return false;
    p += 2;
    if (text::swar::blank(*p))
        p = text::skipBlanks<true>(p, end);
    int vertex = 0;
    if (!(p = text::scanShortInt<true>(p, end, vertex)))
        return false;
    Pz3PendingDeltas &batch = m_pendingDeltas;
    float *values = batch.values + 3 * batch.count;
    int32_t *divisions = batch.divisions + 3 * batch.count;
    for (int i = 0; i < 3; ++i) {
        if (*p == ' ' && !text::swar::blank(p[1])) // mostly one blank between the numbers
            ++p;
        else
            p = text::skipBlanks<true>(p, end);
        if (p == end || !(p = text::scanShortFloat<true>(p, end, values[i], divisions[i])))
            return false;
    }
    if (deltaVertexInRange(vertex) || deltaVertexOk(vertex)) { // the report stays out of line
        batch.index[batch.count] = vertex;
        if (++batch.count == Pz3PendingDeltas::Size)
            flushDeltas();
    }
    return true;
}
