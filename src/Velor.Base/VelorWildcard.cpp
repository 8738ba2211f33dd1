#include "VelorWildcard.h"

#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

bool VelorWildcard::check(const QString& path, const QString& pattern, Qt::CaseSensitivity sensitivity)
{
    return check(QFileInfo(path).fileName(), QList<QString>{pattern}, sensitivity);
}

bool VelorWildcard::check(const QString& path, const QList<QString>& patterns,
                          Qt::CaseSensitivity sensitivity)
{
    const QString name = QFileInfo(path).fileName();
    for (const QString& pattern : patterns) {
        const auto expression = QRegularExpression::fromWildcard(
            pattern, sensitivity, QRegularExpression::DefaultWildcardConversion);
        if (expression.match(name).hasMatch()) {
            return true;
        }
    }
    return false;
}
