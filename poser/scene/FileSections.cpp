// The top level of a Poser file: each keyword names the section that follows.
#include "../OvPZ3Importer.h"

#include <cstring>

namespace {

bool is(const char *token, const char *keyword) { return std::strcmp(token, keyword) == 0; }

} // namespace

bool OvPZ3Importer::parseFileLine(char **argv, int) {
    const char *key = argv[0];
    if (is(key, "figure")) {
        m_curFigure = nullptr;
        m_curNode = nullptr;
        m_parseMode = ModeFigure;
    } else if (is(key, "movieInfo")) {
        m_parseMode = ModeMovieInfo;
    } else if (is(key, "doc")) {
        m_parseMode = ModeDoc;
    } else if (is(key, "version")) {
        m_parseMode = ModeVersion;
    } else if (is(key, "actor") || is(key, "prop") || is(key, "baseProp") || is(key, "magnetDeformerProp") ||
               is(key, "sphereZoneProp") || is(key, "light") || is(key, "camera")) {
        // Object sections need the node registry, which this build does not have yet: skip them
        // whole rather than read their lines as top-level lines.
        m_curNode = nullptr;
        m_parseMode = ModeIgnore;
    }
    return true;
}
