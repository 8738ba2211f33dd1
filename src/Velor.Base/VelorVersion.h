#pragma once

#include "VelorBaseExport.h"

#include <QtCore/QHashFunctions>
#include <QtCore/QString>

#include <compare>

class QDebug;

/// A version number of three parts, such as 6.1.2. A plain value: copies are independent, and every operation
/// on a constant version may run on any thread.
///
/// A version is null while its first part is 0, whatever the others hold: 0.5.1 is null. All six comparisons
/// are there and look at the first part, then the second, then the third, as signed numbers; so two null
/// versions need not be equal.
class VELOR_BASE_EXPORT VelorVersion
{
public:
    /// The null version 0.0.0.
    constexpr VelorVersion() = default;

    /// The version that `text` names: up to three numbers separated by dots, as in `6.1.2`, `v6.1`,
    /// `Version 6.1.2` or `6.1.2 beta 4`.
    ///
    /// Every "Version " goes in any case, then every small `v`, then all from the first blank on; empty parts
    /// do not count. A part is read by QString::toInt: signs are taken, and what is missing, out of its range
    /// or written in other digits than 0 to 9 becomes 0. No text is refused.
    VelorVersion(QString text);

    /// The first, second and third part.
    /// @{
    constexpr int getMajor() const { return mMajor; }
    constexpr int getMid() const { return mMid; }
    constexpr int getMinor() const { return mMinor; }
    /// @}

    /// Compares the first part, then the second, then the third.
    /// @{
    friend constexpr std::strong_ordering operator<=>(const VelorVersion&, const VelorVersion&) = default;
    friend constexpr bool operator==(const VelorVersion&, const VelorVersion&) = default;
    /// @}

    /// The dotted form, such as `6.1.2`, always of three parts; empty for a null version.
    QString toString() const;

    /// The parts without dots, each padded with zeros to two digits at least: only the first when `parts` is
    /// 0, the first two when it is 1, all three for any other value. 6.1.2 becomes `06`, `0601` and `060102`;
    /// a null version has an empty text.
    QString toCodeString(int parts) const;

    /// Whether the first part is 0.
    constexpr bool isNull() const { return mMajor == 0; }

    /// The version of this library.
    static VelorVersion current();

    /// Fits `==`.
    friend size_t qHash(const VelorVersion& version, size_t seed = 0) noexcept
    {
        return qHashMulti(seed, version.mMajor, version.mMid, version.mMinor);
    }

    /// Writes all three parts, also those of a null version.
    friend VELOR_BASE_EXPORT QDebug operator<<(QDebug debug, const VelorVersion& version);

private:
    // The comparisons follow this order.
    int mMajor = 0;
    int mMid = 0;
    int mMinor = 0;
};

Q_DECLARE_TYPEINFO(VelorVersion, Q_RELOCATABLE_TYPE);
