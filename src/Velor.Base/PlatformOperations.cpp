#include "PlatformOperations.h"

#include "Win32.h"

#include <cstring>
#include <string>

namespace {

bool registerCrashFile(const char* path)
{
    const int bytes = static_cast<int>(std::strlen(path));
    const int units = MultiByteToWideChar(CP_ACP, 0, path, bytes, nullptr, 0);
    if (units < 1) {
        return false;
    }
    std::basic_string<WCHAR> wide(static_cast<std::size_t>(units), WCHAR(0));
    if (MultiByteToWideChar(CP_ACP, 0, path, bytes, wide.data(), units) == 0) {
        return false;
    }
    WerRegisterFile(wide.c_str(), WerRegFileTypeOther, WER_FILE_ANONYMOUS_DATA);
    return true;
}

} // namespace

const PlatformOperations& platformOperations()
{
    static constexpr PlatformOperations Table = {registerCrashFile};
    return Table;
}
