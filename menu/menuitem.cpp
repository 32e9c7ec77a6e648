#include "menu/menuitem.h"

#include <QHash>

namespace {

QString canonical(const QString& text)
{
    return text.normalized(QString::NormalizationForm_C);
}

bool canonicallyEqual(const QString& a, const QString& b)
{
    return a == b || canonical(a) == canonical(b);
}

QString joinedPath(const QStringList& entries)
{
    return entries.join(QString::fromUtf16(kMenuPathSeparator));
}

} // namespace

QString MenuItem::pathKey() const
{
    return joinedPath(menuPath);
}

QString MenuItem::breadcrumb() const
{
    return joinedPath(menuPath.mid(0, menuPath.size() - 1));
}

bool operator==(const MenuItem& a, const MenuItem& b)
{
    if (a.menuPath.size() != b.menuPath.size())
        return false;
    if (!canonicallyEqual(a.title, b.title) || !canonicallyEqual(a.appName, b.appName))
        return false;
    for (qsizetype i = 0; i < a.menuPath.size(); ++i) {
        if (!canonicallyEqual(a.menuPath[i], b.menuPath[i]))
            return false;
    }
    return true;
}

size_t qHash(const MenuItem& item, size_t seed)
{
    // Hash the canonical forms so that equal records hash alike.
    seed = qHashMulti(seed, canonical(item.title), item.menuPath.size());
    for (const QString& entry : item.menuPath)
        seed = qHashMulti(seed, canonical(entry));
    return qHashMulti(seed, canonical(item.appName));
}
