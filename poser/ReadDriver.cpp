// The line loop: sections open and close on '{' and '}' lines, every other line goes to the
// handler of the current parse mode.
#include "OvPZ3Importer.h"
#include "Pz3InputFile.h"

#include <OvApp.h>
#include <OvMaterial.h>
#include <OvMorph.h>
#include <OvScene.h>
#include <OvSubDShape.h>
#include <QDir>
#include <QFileInfo>
#include <QtDebug>
#include <cstring>
#include <new>
#include <text/Numbers.h>

// One handler per parse mode, in mode order. A null entry skips the lines of that section: its
// reader is not part of this build yet, or (ModeIgnore) the section is skipped on purpose.
const OvPZ3Importer::ModeHandler OvPZ3Importer::s_modeHandlers[ModeCount] = {
    &OvPZ3Importer::parseFileLine,        // ModeFile         top-level sections
    &OvPZ3Importer::parseFigureLine,      // ModeFigure       figure section
    &OvPZ3Importer::parseObjectLine,      // ModeObject       actor, prop, light, camera sections
    &OvPZ3Importer::parseChannelsLine,    // ModeChannels    channels section
    &OvPZ3Importer::parseChannelBody,     // ModeChannel      body of a channel
    &OvPZ3Importer::parseKeysLine,        // ModeKeys         animation keys
    &OvPZ3Importer::parseMaterialLine,    // ModeMaterial     material section
    &OvPZ3Importer::parseMovieInfoLine,   // ModeMovieInfo    movieInfo section
    &OvPZ3Importer::parseDocLine,         // ModeDoc          doc section
    &OvPZ3Importer::parseVersionLine,     // ModeVersion      version section
    nullptr,                              // ModeIgnore       skipped
    &OvPZ3Importer::parseTargetGeomBody,  // ModeTargetGeom morph target body
    &OvPZ3Importer::parseDeltaLine,       // ModeDeltas       morph deltas
    &OvPZ3Importer::parseJointParam,      // ModeJointParm    joint-parameter body
    &OvPZ3Importer::parseAltGeom,         // ModeAltGeom      alternate geometry
    &OvPZ3Importer::parseInkyChainLine,   // ModeInkyChain    IK chain
    &OvPZ3Importer::parseParmChannelBody, // ModeParmChannel deformer channel body
    &OvPZ3Importer::parseGroupsLine,      // ModeGroups       channel groups
    &OvPZ3Importer::parseGroupNodeLine,   // ModeGroupNode    channel group node
};

// ---- keyword tables ----

const OvPZ3Importer::KeywordRow *OvPZ3Importer::findKeyword(const KeywordRow *table, const char *keyword) {
    // Every line of a section with a table comes here: the first characters rule out most rows
    // before a string is compared. A row's first character is never NUL, so when it matches,
    // keyword + 1 still lies inside the token.
    for (const KeywordRow *row = table; row->keyword; ++row)
        if (row->keyword[0] == keyword[0] && std::strcmp(row->keyword + 1, keyword + 1) == 0)
            return row;
    return nullptr;
}

bool OvPZ3Importer::runKeyword(const KeywordRow &row, char **argv, int argc) {
    if ((row.needs == Needs::Node && !m_curNode) || (row.needs == Needs::Figure && !m_curFigure) ||
        (row.needs == Needs::Property && !m_curProperty))
        return true;
    if (argc >= row.minTokens)
        return (this->*row.handler)(argv, argc);
    switch (row.whenShort) {
    case Short::Skip:
        return true;
    case Short::Warn:
        reportInfo(tr(row.message));
        return true;
    case Short::Error:
        reportError(tr(row.message));
        return true;
    case Short::Stop:
        reportError(tr(row.message));
        return false;
    }
    return true;
}

// Keywords that the table does not list are ignored.
bool OvPZ3Importer::dispatchKeyword(const KeywordRow *table, char **argv, int argc) {
    const KeywordRow *row = findKeyword(table, argv[0]);
    return row ? runKeyword(*row, argv, argc) : true;
}

// ---- the line loop ----

namespace {

// In a section that has no handler only brace lines and readScript lines do anything, so its
// other lines are not split into tokens: the first character tells, and for readScript the first
// word. A line that begins with a quote is split, as its first token is what the quote holds.
bool passOver(const char *p, const char *end) {
    static const char kScript[] = "readScript";
    const ptrdiff_t n = sizeof kScript - 1;
    while (p < end && text::isBlank(*p))
        ++p;
    if (p < end && (*p == '{' || *p == '}' || *p == '"'))
        return false;
    return !(end - p >= n && std::memcmp(p, kScript, size_t(n)) == 0 &&
             (end - p == n || text::isBlank(p[n])));
}

} // namespace

poser::ReadTuning &poser::readTuning() {
    static ReadTuning tuning;
    return tuning;
}

// Runs of delta and key lines stay in this loop while the in-place readers take them.
bool OvPZ3Importer::nextGeneralLine(char *&begin, char *&end, bool fastPaths) {
    while (m_file->getRawLine(begin, end)) {
        ++m_file->m_lineNumber;
        if (!fastPaths)
            return true;
        if (m_parseMode == ModeDeltas) {
            if (!readDeltaLine(begin, end))
                return true;
        } else if (m_parseMode != ModeKeys || m_ignoreKeys || !readKeyLine(begin, end)) {
            return true;
        }
    }
    return false;
}

bool OvPZ3Importer::runLineLoop(char **argv) {
    const bool fastPaths = poser::readTuning().fastPaths;
    bool carryOn = true;
    do {
        try {
            int argc = 0;
            char *begin = nullptr, *end = nullptr;
            if (nextGeneralLine(begin, end, fastPaths)) {
                const bool handled = m_parseMode >= 0 && m_parseMode < ModeCount &&
                                     s_modeHandlers[m_parseMode] &&
                                     !(m_parseMode == ModeKeys && m_ignoreKeys);
                if (handled || !passOver(begin, end))
                    argc = m_file->tokenize(begin, end, argv);
            }
            if (argc > 0)
                carryOn = handleLine(argv, argc);
        } catch (const QString &message) {
            reportError(message);
        } catch (const char *message) {
            reportError(QString::fromLocal8Bit(message));
        } catch (const std::bad_alloc &) {
            reportError(QStringLiteral("Out of Memory"));
        } catch (...) {
            reportError(tr("Unknown error"));
        }
    } while (carryOn && !atEndOfInput());
    return carryOn;
}

bool OvPZ3Importer::handleLine(char **argv, int argc) {
    switch (argv[0][0]) {
    case '*':
        return true;
    case '{':
        return openSection();
    case '}':
        closeSection();
        return true;
    default:
        break;
    }
    if (std::strcmp(argv[0], "readScript") == 0) {
        if (argc < 2) {
            reportError(tr("No script name was specified"));
            return true;
        }
        return readScript(tokenText(argv, 1, argc));
    }
    if (m_parseMode < 0 || m_parseMode >= ModeCount)
        return true;
    if (m_parseMode == ModeKeys && m_ignoreKeys)
        return true;
    ModeHandler handler = s_modeHandlers[m_parseMode];
    return handler ? (this->*handler)(argv, argc) : true;
}

bool OvPZ3Importer::openSection() {
    if (m_modeStack.size() > MaxSectionDepth) {
        reportError(tr("Sections are nested more than %1 deep; the rest of the file is not read")
                        .arg(MaxSectionDepth));
        return false;
    }
    ++m_file->m_braceDepth;
    m_modeStack.append(m_parseMode);
    return true;
}

void OvPZ3Importer::closeSection() {
    closeSectionStep();
    if (--m_file->m_braceDepth < 0) {
        reportInfo(tr("Unexpected '}' found in file"));
        m_file->m_braceDepth = 0;
        return;
    }
    if (m_modeStack.isEmpty()) {
        qDebug("Stack underflow");
        return;
    }
    m_modeStack.removeLast();
    if (m_modeStack.isEmpty()) {
        // Cannot happen while depths are counted per file; keep reading at the top level.
        qDebug("Stack underflow");
        m_modeStack.append(ModeFile);
    }
    m_parseMode = m_modeStack.last();
}

// What a section leaves behind when it closes.
void OvPZ3Importer::closeSectionStep() {
    switch (m_parseMode) {
    case ModeChannel:
        m_curChannelType = 0;
        m_curProperty = nullptr;
        m_ignoreKeys = false;
        m_isColorChannel = false;
        break;
    case ModeChannels:
        // Nested channels sections close into their outer one; only the outermost fixes the order.
        if (m_modeStack.size() < 2 || m_modeStack[m_modeStack.size() - 2] != ModeChannels) {
            applyChannelGroups();
            if (m_curNode) {
                OvPz3NodeItem *item = getNodeItem(m_curNode);
                if (item->rotAxisCount > 0)
                    item->rotOrderFixed = true;
            }
        }
        break;
    case ModeKeys:
        flushKey(1);
        break;
    case ModeGroupNode:
        closeGroupNode();
        break;
    case ModeDeltas:
        flushDeltas();
        if (m_curMorph)
            m_curMorph->morph->getDeltas()->squeeze(); // growth room is a third of the deltas' size
        break;
    case ModeObject:
        // Keys bring the rotation order with them; without keys it is set here.
        if (!m_keys.isEmpty()) {
            applyTransformKeys(m_curNode, m_keys, m_version);
            m_keys.clear();
            m_keyIndexOf.clear();
        } else if (m_curNode) {
            if (OvPz3NodeItem *item = findNodeItem(m_curNode); item && item->rotAxisCount > 0)
                m_curNode->setRotationOrder(item->rotOrder);
        }
        m_foundOnFollowTarget = false;
        m_jointParmsSeen = false;
        break;
    case ModeMaterial:
        if (!m_material) {
            qDebug("NULL m_material");
        } else if (auto *m = dynamic_cast<OvDefaultMaterial *>(m_material)) {
            // A transparency map carries the opacity; the base value must not dim it further.
            if (m->getOpacityMap())
                m->setBaseOpacity(1.0f);
        }
        break;
    default:
        break;
    }
}

void OvPZ3Importer::closeCurrentFile() {
    if (!m_file)
        return;
    if (m_file->hasError()) {
        reportError(tr("Could not read the rest of %1: %2").arg(m_file->name(), m_file->errorString()));
        m_inputDamaged = true;
    }
    if (m_file->truncatedLines() > 0)
        reportInfo(tr("%1 line(s) longer than %2 MB were cut, the first on line %3")
                       .arg(m_file->truncatedLines())
                       .arg(OvTextInputFile::MaxLineLength >> 20)
                       .arg(m_file->firstTruncatedLine()));
    if (m_file->tokenCutLines() > 0)
        reportInfo(tr("%1 line(s) with more than %2 words lost the rest, the first on line %3")
                       .arg(m_file->tokenCutLines())
                       .arg(OvTextInputFile::MaxTokens)
                       .arg(m_file->firstTokenCutLine()));
    m_file->close();
    delete m_file;
    m_file = nullptr;
}

// True once every file is read; an included file that ends resumes the one that included it.
bool OvPZ3Importer::atEndOfInput() {
    while (m_file->atEnd()) {
        // A damaged file may end inside sections: said once per file (a file cut short says so).
        if (m_file->m_braceDepth > 0 && !m_file->hasError())
            reportInfo(tr("%1 sections still open at the end of file").arg(m_file->m_braceDepth));
        closeCurrentFile();
        if (m_fileStack.isEmpty())
            return true;
        m_file = m_fileStack.pop();
    }
    return false;
}

bool OvPZ3Importer::isOpenFile(const QString &canonicalPath) const {
    if (canonicalPath.isEmpty())
        return false;
    if (m_file && m_file->m_canonicalPath == canonicalPath)
        return true;
    for (int i = 0; i < m_fileStack.count(); ++i)
        if (m_fileStack[i]->m_canonicalPath == canonicalPath)
            return true;
    return false;
}

void OvPZ3Importer::finishImport() {
    flushDeltas(); // a file may end inside a deltas section
    // Files still open when a handler stopped the loop.
    while (m_file) {
        closeCurrentFile();
        if (!m_fileStack.isEmpty())
            m_file = m_fileStack.pop();
    }
    finishCameras();
    resolveDeferredLinks();
    checkMorphVertices();
    applyMovieTimes();
    placeDroppedItems();
}

// Parents named by smartparent lines, applied once every node exists.
void OvPZ3Importer::applySmartParents() {
    for (const auto &item : m_nodeItems) {
        if (!item->smartParent || item->smartParent == item->node)
            continue;
        // A parent that hangs below the node would make a cycle: the host refuses it, and so do we.
        if (item->node->isAncestorOf(item->smartParent))
            continue;
        if (OvNode *parent = item->node->getNodeParent())
            parent->removeNodeChild(item->node, false);
        else
            OvApp::getScene()->removeNode(item->node);
        item->smartParent->addNodeChild(item->node, false);
    }
}

void OvPZ3Importer::convertSubDivisions() {
    for (int i = 0; i < m_subDNodes.size(); ++i)
        OvSubDShape::convertToSubD(m_subDNodes[i].node, m_subDNodes[i].level);
}

// Every top-level object this import created remembers the file it came from. A figure the file
// only found (the selection a prop's smartparent or a hair file's parent names) keeps its own.
void OvPZ3Importer::recordSourceFiles(const QString &name) {
    if (m_applyToSelection)
        return;
    const QString fileName = QDir::cleanPath(QFileInfo(name).absoluteFilePath());
    for (int i = 0; i < m_sceneItems.size(); ++i) {
        OvNode *node = m_sceneItems[i].node;
        if (!node || !m_sceneItems[i].created)
            continue;
        if (auto *data =
                dynamic_cast<OvSourceFileData *>(node->findDataItem(QStringLiteral("SourceFileData"))))
            data->setSourceFilePath(fileName);
        else
            node->addDataItem(new OvSourceFileData(fileName));
    }
}
