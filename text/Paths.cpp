#include "Paths.h"

namespace text {

QString withSlashes(QString path, unsigned rules) {
    const bool colons =
        (rules & Colons) || ((rules & ColonsUnlessBackslash) && !path.contains(QLatin1Char('\\')));
    if (colons)
        path.replace(QLatin1Char(':'), QLatin1Char('/'));
    if (rules & Backslashes)
        path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return path;
}

} // namespace text
