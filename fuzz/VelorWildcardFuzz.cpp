#include <Velor.Base/VelorWildcard.h>

#include <QtCore/QList>
#include <QtCore/QString>

#include <cstdint>
#include <cstdlib>

/// Patterns are what a user types. The first line of the input is the pattern, the rest is the path: the list
/// form must answer as the single form does, and folders in front of the name must not count.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const qsizetype lineEnd = text.indexOf(u'\n');
    const QString pattern = text.left(lineEnd);
    const QString path = lineEnd < 0 ? QString() : text.mid(lineEnd + 1);
    for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        const bool matches = VelorWildcard::check(path, pattern, sensitivity);
        if (matches != VelorWildcard::check(path, QList<QString>{pattern}, sensitivity) ||
            matches != VelorWildcard::check(QStringLiteral("folder/") + path, pattern, sensitivity)) {
            std::abort();
        }
    }
    return 0;
}
