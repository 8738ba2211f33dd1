#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorVectors.h>
#include <Velor.Base/VelorVersion.h>

#include <csignal>

// Stops with one value of each kind that gdb is taught to show.
int main()
{
    [[maybe_unused]] const TVec2d<int> whole{3, -4};
    [[maybe_unused]] const TVec3d<float> point{1, 2.5F, -3};
    [[maybe_unused]] const TVec3d<float>& reference = point;
    [[maybe_unused]] const TMat4d<double> identity;
    [[maybe_unused]] const quat turn{0.5F, 0, 0, -1};
    [[maybe_unused]] const VelorVersion version(QStringLiteral("6.1.2"));
    [[maybe_unused]] const KelbTags noTags;
    [[maybe_unused]] const KelbTags tags(QList<QString>{QString(), QStringLiteral("Läufer \U0001F3C3")});
    [[maybe_unused]] const VelorCategoryTags category(QStringLiteral("walk, run"));
    return std::raise(SIGTRAP);
}
