#include "VelorWildcard.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

namespace {

/// QFileInfo takes a backslash for a separator, and a leading `c:` for a drive, on Windows alone.
QString fileName(const QString& path)
{
    const QString slashed = QString(path).replace(u'\\', u'/');
    return QFileInfo(u'/' + slashed).fileName();
}

} // namespace

bool VelorWildcard::check(const QString& path, const QString& pattern, Qt::CaseSensitivity sensitivity)
{
    return check(path, QList<QString>{pattern}, sensitivity);
}

bool VelorWildcard::check(const QString& path, const QList<QString>& patterns,
                          Qt::CaseSensitivity sensitivity)
{
    const QString name = fileName(path);
    for (const QString& pattern : patterns) {
        const auto expression = QRegularExpression::fromWildcard(
            pattern, sensitivity, QRegularExpression::DefaultWildcardConversion);
        if (expression.match(name).hasMatch()) {
            return true;
        }
    }
    return false;
}
