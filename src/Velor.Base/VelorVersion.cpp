#include "VelorVersion.h"

#include "VelorBaseVersion.h"

#include <QtCore/QDebug>
#include <QtCore/QStringList>

#include <utility>

namespace {

QStringList partsOf(QString text)
{
    text.remove(QStringLiteral("Version "), Qt::CaseInsensitive);
    text.remove(u'v');
    if (const qsizetype blank = text.indexOf(u' '); blank >= 0) {
        text.truncate(blank);
    }
    return text.split(u'.', Qt::SkipEmptyParts);
}

} // namespace

VelorVersion::VelorVersion(QString text)
{
    const QStringList parts = partsOf(std::move(text));
    mMajor = parts.value(0).toInt();
    mMid = parts.value(1).toInt();
    mMinor = parts.value(2).toInt();
}

QString VelorVersion::toString() const
{
    return isNull() ? QString() : QStringLiteral("%1.%2.%3").arg(mMajor).arg(mMid).arg(mMinor);
}

QString VelorVersion::toCodeString(int parts) const
{
    if (isNull()) {
        return {};
    }
    const auto padded = [](int number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    switch (parts) {
    case 0:
        return padded(mMajor);
    case 1:
        return padded(mMajor) + padded(mMid);
    default:
        return padded(mMajor) + padded(mMid) + padded(mMinor);
    }
}

VelorVersion VelorVersion::current()
{
    VelorVersion version;
    version.mMajor = VELOR_BASE_VERSION_MAJOR;
    version.mMid = VELOR_BASE_VERSION_MINOR;
    version.mMinor = VELOR_BASE_VERSION_PATCH;
    return version;
}

QDebug operator<<(QDebug debug, const VelorVersion& version)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << "VelorVersion(" << version.mMajor << '.' << version.mMid << '.'
                           << version.mMinor << ')';
}
