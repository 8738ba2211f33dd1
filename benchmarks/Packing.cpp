#include "Pairs.h"

#include <Velor.Base/VelorZipStream.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>

#include <cmath>
#include <string>

// A folder into an archive at the highest level, beside the program `zip` on the same files, half of them
// floats and half XML.

namespace {

QByteArray floats(int bytes, int seed)
{
    QByteArray content;
    for (int i = 0; content.size() < bytes; ++i) {
        const float value = std::sin(float(i + seed) * 0.01F) * 0.5F + float(i % 97) * 0.001F;
        content.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    return content;
}

QByteArray xml(int bytes, int seed)
{
    QByteArray content;
    for (int i = seed; content.size() < bytes; ++i) {
        content += "<Key frame=\"" + QByteArray::number(i) + "\" value=\"" +
                   QByteArray::number(std::cos(i * 0.013) * 100, 'f', 4) + "\" joint=\"left_arm\" />\n";
    }
    return content;
}

/// A new folder with `count` files.
QString folderOf(int count, int bytesPerFile)
{
    const QString folder = QString::fromStdString(bench::scratch("folder" + std::to_string(count)));
    bench::demand(QDir().mkpath(folder));
    for (int i = 0; i < count; ++i) {
        QFile file(folder + QStringLiteral("/clip%1.%2").arg(i).arg(i % 2 == 0 ? u"bin" : u"xml"));
        bench::demand(file.open(QIODevice::WriteOnly));
        file.write((i % 2 == 0 ? floats : xml)(bytesPerFile, i).left(bytesPerFile));
    }
    return folder;
}

bench::Work packing(const QString& folder)
{
    return [folder, archive = QString::fromStdString(bench::scratch("ours.zip"))] {
        bench::demand(VelorZipStream(archive).addFolder(folder, true));
    };
}

bench::Work zipProgram(const QString& folder)
{
    return [folder, archive = QString::fromStdString(bench::scratch("theirs.zip"))] {
        QFile::remove(archive);
        QProcess zip;
        zip.setWorkingDirectory(folder);
        zip.start(QStringLiteral("zip"),
                  {QStringLiteral("-9qr"), QDir::current().absoluteFilePath(archive), QStringLiteral(".")});
        bench::demand(zip.waitForFinished(-1) && zip.exitCode() == 0);
    };
}

void pairs()
{
    const QString small = folderOf(20'000, 1 << 10);
    bench::pair("`addFolder`, 20,000 files of 1 KiB", "`zip -9 -r`", packing(small), zipProgram(small));
    const QString large = folderOf(8, 1 << 20);
    bench::pair("`addFolder`, 8 files of 1 MiB", "`zip -9 -r`", packing(large), zipProgram(large));
}

void growths()
{
    bench::growth("`addFolder`, n files of 100 bytes", {100, 1000, 10'000, 100'000},
                  [](int count) { return packing(folderOf(count, 100)); });
}

const bench::Family family("Packing", pairs, growths);

} // namespace
