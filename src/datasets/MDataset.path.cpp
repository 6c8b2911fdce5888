// SPDX-License-Identifier: MIT
// The text of a hierarchy path: "/" and a name, or "/<" id ">" for a numbered level. A slash inside
// a name is written as "//". A name that begins with "<" is written with a second "<", which
// reading does not remove: such a name grows with each round trip through text. Stored paths
// depend on it.
#include "datainterface/MDataset.h"
#include "Common/detail/failure.h"

namespace {

bool isAt(const QString &text, int i, QChar c)
{
    return i < text.size() && text.at(i) == c;
}

/// Reads "<id>" at `i`; false when the text ends before ">".
bool readNumber(const QString &text, int &i, MDataset::pathLevel &level)
{
    const int end = text.indexOf('>', i + 1);
    if (end < 0)
        return false;
    level.id = static_cast<int>(text.mid(i + 1, end - i - 1).toLong(nullptr, 10));
    i = end + 1;
    return true;
}

/// Reads up to a single "/" or the end.
QString readName(const QString &text, int &i)
{
    QString name(QLatin1String("")); // not null: an empty name is still no number
    while (i < text.size()) {
        const bool isSlash = isAt(text, i, '/');
        if (isSlash && !isAt(text, i + 1, '/'))
            break;
        name += text.at(i);
        i += isSlash ? 2 : 1;
    }
    return name;
}

} // namespace

void MDataset::SetHierarchyPath(const QString &path)
{
    mHierarchyPath.clear();
    int i = isAt(path, 0, '/') ? 1 : 0;
    while (i < path.size()) {
        pathLevel level;
        const bool isNumber = isAt(path, i, '<') && !isAt(path, i + 1, '<');
        if (isNumber) {
            if (!readNumber(path, i, level))
                return;
        } else {
            level.name = readName(path, i);
        }
        mHierarchyPath.append(level);
        if (!isAt(path, i, '/'))
            return;
        ++i;
    }
}

QString MDataset::GetHierarchyPathAsString() const
{
    QString path;
    for (const pathLevel &level : mHierarchyPath) {
        if (level.name.isNull()) {
            path += "/<" + QString::number(level.id) + '>';
            continue;
        }
        datainterface::require(!level.name.isEmpty(), "Dataset path is empty");
        path += '/' + QString(level.name.startsWith('<') ? "<" : "") + level.name;
    }
    return path;
}
