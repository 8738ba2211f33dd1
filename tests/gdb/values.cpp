#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorDropData.h>
#include <Velor.Base/VelorMath.h>
#include <Velor.Base/VelorVectors.h>
#include <Velor.Base/VelorVersion.h>

#include <QtCore/QTemporaryFile>

#include <csignal>

// Stops with one value of each kind that gdb is taught to show.
int main()
{
    const TVec3d<float> point{1, 2.5F, -3};
    [[maybe_unused]] const TVec3d<float>& reference = point;
    [[maybe_unused]] const TMat4d<double> identity;
    [[maybe_unused]] const quat turn{0.5F, 0, 0, -1};
    [[maybe_unused]] const VelorVersion version(QStringLiteral("6.1.2"));
    [[maybe_unused]] const KelbTags tags(QList<QString>{QString(), QStringLiteral("Läufer \U0001F3C3")});
    [[maybe_unused]] const VelorCurveKnot knot{{1, 2}, {0, -1}};
    [[maybe_unused]] const DoubleMinMax range{-1, 2.5F};
    [[maybe_unused]] const VelorDropData drop({{QStringLiteral("Walk"), {}}, {}}, VelorDropData::Clip);
    [[maybe_unused]] const KelbSynonym synonym{};
    const QByteArray text =
        "<KelbSynonyms><KelbSynonym values='run, Jog'/><KelbSynonym values='walk'/></KelbSynonyms>";
    QTemporaryFile file;
    KelbSynonyms synonyms;
    if (!file.open() || file.write(text) != text.size() || !file.flush() || !synonyms.load(file.fileName())) {
        return 1;
    }
    return std::raise(SIGTRAP);
}
