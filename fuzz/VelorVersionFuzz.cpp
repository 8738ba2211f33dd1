#include <Velor.Base/VelorVersion.h>

#include <cstdint>
#include <cstdlib>

/// A version's text comes from files of any age. No text is refused, and the dotted form of a version without
/// negative parts must read back as that version.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const VelorVersion version(
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    const VelorVersion readBack(version.toString());
    const bool isNull = version.isNull();
    if (isNull != version.toString().isEmpty() || readBack != (isNull ? VelorVersion() : version) ||
        isNull != version.toCodeString(2).isEmpty()) {
        std::abort();
    }
    return 0;
}
