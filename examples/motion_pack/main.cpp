#include "CommandLine.h"
#include "Failure.h"
#include "FolderSurvey.h"
#include "Interruption.h"
#include "Manifest.h"
#include "PackLog.h"
#include "PackProgress.h"

#include <Velor.Base/VelorZipStream.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>

/// \file
/// motion_pack: packs a folder into a zip archive, with a manifest of digests beside it and a log. Either
/// both the archive and the manifest stand at the end, or neither.

namespace {

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

void requireFolder(const QString& name)
{
    const QFileInfo folder(name);
    if (!folder.exists()) {
        throw Failure(QStringLiteral("there is no folder %1").arg(quoted(name)));
    }
    if (!folder.isDir()) {
        throw Failure(QStringLiteral("%1 is no folder").arg(quoted(name)));
    }
}

void requirePlaceForArchive(const QString& name)
{
    const QFileInfo archive(name);
    const QFileInfo place(archive.path());
    if (!place.isDir()) {
        throw Failure(QStringLiteral("there is no folder %1 for the archive").arg(quoted(archive.path())));
    }
    if (archive.exists() && !archive.isFile()) {
        throw Failure(
            QStringLiteral("the archive %1 would replace something that is no file").arg(quoted(name)));
    }
    if (!place.isWritable()) {
        throw Failure(QStringLiteral("the archive cannot be created: the folder %1 is not writable")
                          .arg(quoted(archive.path())));
    }
}

void logSurvey(const FolderSurvey& survey)
{
    for (const FolderSurvey::LeftOut& entry : survey.leftOut) {
        log(entry.isWanted ? VelorLog::Debug0 : VelorLog::Warning,
            QStringLiteral("not packed: %1 (%2)").arg(quoted(entry.name), QLatin1String(entry.reason)));
    }
    log(VelorLog::Info,
        QStringLiteral("%1 files with %2 bytes to pack").arg(survey.files.size()).arg(survey.bytes()));
}

/// The zip library does not say which name it rejected: try them all on an archive of no account.
QString rejectedName(const FolderSurvey& survey)
{
    const QTemporaryDir temporary;
    VelorZipStream trial(temporary.filePath(QStringLiteral("trial.zip")));
    QString name;
    try {
        for (const QString& folder : survey.folders) {
            trial.addFolderEntry(name = folder);
        }
        for (const FolderSurvey::File& file : survey.files) {
            trial.addFile(name = file.name, nullptr, 0);
        }
    } catch (const std::exception&) {
        return name;
    }
    return {};
}

QString whyPackingStopped(const CommandLine& wanted, const FolderSurvey& survey, qsizetype filesPacked)
{
    if (filesPacked < survey.files.size()) {
        const QString name = survey.files[filesPacked].name;
        if (!digestOfFile(QDir(wanted.folder).filePath(name))) {
            return QStringLiteral("the file %1 cannot be read").arg(quoted(name));
        }
    }
    return QStringLiteral("the archive %1 cannot be written; is the disk full?").arg(quoted(wanted.archive));
}

QString howFolderChanged(const CommandLine& wanted, const FolderSurvey& survey)
{
    for (const FolderSurvey::File& file : survey.files) {
        if (!QFileInfo::exists(QDir(wanted.folder).filePath(file.name))) {
            return QStringLiteral("the file %1 vanished while the folder was packed").arg(quoted(file.name));
        }
    }
    return QStringLiteral("the folder %1 changed while it was packed").arg(quoted(wanted.folder));
}

void addFolder(VelorZipStream& zip, const CommandLine& wanted, const FolderSurvey& survey)
{
    PackProgress progress(wanted.isQuiet);
    try {
        if (!zip.addFolder(wanted.folder, true, wanted.excludes, &progress)) {
            throw Failure(whyPackingStopped(wanted, survey, progress.files()));
        }
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(QStringLiteral("%1 cannot be the name of an archive's entry (%2)")
                          .arg(quoted(rejectedName(survey)), QLatin1String(error.what())));
    }
    if (progress.files() != survey.files.size()) {
        throw Failure(howFolderChanged(wanted, survey));
    }
}

/// Leaves the archive and the manifest, or neither.
void pack(const CommandLine& wanted, const FolderSurvey& survey)
{
    auto zip = std::make_unique<VelorZipStream>(wanted.archive);
    if (!zip->isOpen()) {
        throw Failure(QStringLiteral("the archive %1 cannot be created").arg(quoted(wanted.archive)));
    }
    QFile::remove(wanted.manifest()); // That of an older archive is wrong from now on.
    for (const QString& extension : wanted.storeExtensions) {
        zip->addUncompressedExtension(extension);
    }
    try {
        addFolder(*zip, wanted, survey);
        zip.reset();
        if (!QFileInfo::exists(wanted.archive)) {
            throw Failure(QStringLiteral("the archive %1 cannot be finished; is the disk full?")
                              .arg(quoted(wanted.archive)));
        }
        log(VelorLog::Info,
            QStringLiteral("archive finished, %1 bytes").arg(QFileInfo(wanted.archive).size()));
        writeManifest(wanted.manifest(), wanted.folder, survey.files);
        log(VelorLog::Info, QStringLiteral("manifest written: %1").arg(quoted(wanted.manifest())));
    } catch (...) {
        zip.reset();
        QFile::remove(wanted.archive);
        throw;
    }
}

void printSummary(const CommandLine& wanted, const FolderSurvey& survey, const QString& logPath)
{
    const qint64 packed = QFileInfo(wanted.archive).size();
    const double percent = 100.0 * double(packed) / double(std::max<qint64>(survey.bytes(), 1));
    std::printf("packed %lld files: %lld bytes into %lld (%.1f %%)\n",
                static_cast<long long>(survey.files.size()), static_cast<long long>(survey.bytes()),
                static_cast<long long>(packed), percent);
    if (!survey.leftOut.isEmpty()) {
        std::printf("left out: %lld, named in the log\n", static_cast<long long>(survey.leftOut.size()));
    }
    std::printf("archive:  %s\nmanifest: %s\nlog:      %s\n", qUtf8Printable(wanted.archive),
                qUtf8Printable(wanted.manifest()), qUtf8Printable(logPath));
}

void run(CommandLine wanted)
{
    requireFolder(wanted.folder);
    requirePlaceForArchive(wanted.archive);
    const QString logPath = startLog(wanted.logFolder);
    log(VelorLog::Info,
        QStringLiteral("packing %1 into %2").arg(quoted(wanted.folder), quoted(wanted.archive)));
    // It may lie in the folder, and would grow while it is packed.
    wanted.excludes.append(QFileInfo(logPath).fileName());

    const FolderSurvey survey =
        FolderSurvey::of(wanted.folder, wanted.excludes, {wanted.archive, wanted.manifest()});
    logSurvey(survey);
    if (survey.files.isEmpty()) {
        throw Failure(QStringLiteral("the folder %1 holds no file to pack").arg(quoted(wanted.folder)));
    }
    pack(wanted, survey);
    if (!wanted.isQuiet) {
        printSummary(wanted, survey, logPath);
    }
}

int fail(const std::exception& error, int exitCode)
{
    std::fprintf(stderr, "motion_pack: %s\n", error.what());
    log(VelorLog::Error, QString::fromUtf8(error.what()));
    return exitCode;
}

} // namespace

int main(int argc, char* argv[])
{
    logQtMessages();
    const QCoreApplication application(argc, argv);
    try {
        const CommandLine wanted = CommandLine::parse(QCoreApplication::arguments());
        if (wanted.isHelpWanted) {
            std::printf("%s", qUtf8Printable(CommandLine::helpText()));
            return 0;
        }
        awaitInterruption();
        run(wanted);
        return 0;
    } catch (const UsageError& error) {
        return fail(error, ExitUsage);
    } catch (const std::exception& error) {
        return fail(error, ExitFailure);
    }
}
